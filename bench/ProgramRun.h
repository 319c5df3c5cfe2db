#pragma once

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "Report.h"

extern char** environ;

namespace vt {

/// What a program took that ran to its end.
struct ProgramRun {
  double seconds = 0;
  double mebibytes = 0;  ///< of memory in RAM at most, mapped files included
};

/// Runs a program, looked up in PATH, with its output thrown away. Throws when it can't be started
/// or fails: exit code 1 says that nothing was found.
inline ProgramRun runMeasured(std::vector<std::string> command) {
  std::vector<char*> arguments;
  for (std::string& argument : command) arguments.push_back(argument.data());
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  for (const int descriptor : {1, 2}) {
    posix_spawn_file_actions_addopen(&actions, descriptor, "/dev/null", O_WRONLY, 0);
  }
  ProgramRun run;
  rusage usage{};
  int status = -1;
  run.seconds = secondsOf([&] {
    pid_t child = 0;
    if (posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ) == 0) {
      wait4(child, &status, 0, &usage);
    }
  });
  posix_spawn_file_actions_destroy(&actions);
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    throw std::runtime_error(command[0] + " failed");
  }
  run.mebibytes = static_cast<double>(usage.ru_maxrss) / 1024;
  return run;
}

/// The same, and how long it took, in seconds.
inline double secondsOfProgram(std::vector<std::string> command) {
  return runMeasured(std::move(command)).seconds;
}

/// The least of what `work` measures in so many rounds: the one that was disturbed least.
template <class Work>
double bestOf(int rounds, Work work) {
  double best = std::numeric_limits<double>::infinity();
  for (int round = 0; round < rounds; ++round) best = std::min(best, work());
  return best;
}

}  // namespace vt
