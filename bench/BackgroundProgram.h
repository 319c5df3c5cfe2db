#pragma once

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>

#include <stdexcept>
#include <string>
#include <vector>

extern char** environ;

namespace vt {

/// A program that runs beside this one, with its output thrown away, and is ended with this object.
class BackgroundProgram {
 public:
  /// Looked up in PATH. Throws when it can't be started.
  explicit BackgroundProgram(std::vector<std::string> command) {
    std::vector<char*> arguments;
    for (std::string& argument : command) arguments.push_back(argument.data());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    for (const int descriptor : {1, 2}) {
      posix_spawn_file_actions_addopen(&actions, descriptor, "/dev/null", O_WRONLY, 0);
    }
    const int error =
        posix_spawnp(&process_, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) throw std::runtime_error(command[0] + " can't be started");
  }
  BackgroundProgram(const BackgroundProgram&) = delete;
  BackgroundProgram& operator=(const BackgroundProgram&) = delete;
  ~BackgroundProgram() {
    ::kill(process_, SIGTERM);
    ::waitpid(process_, nullptr, 0);
  }

 private:
  pid_t process_ = 0;
};

}  // namespace vt
