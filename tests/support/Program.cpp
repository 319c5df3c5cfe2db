#include "support/Program.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <stdexcept>

namespace vt {
namespace {

void drain(int output, int errors, ProgramResult& result) {
  std::array<pollfd, 2> ends{{{output, POLLIN, 0}, {errors, POLLIN, 0}}};
  const std::array<std::string*, 2> texts{&result.output, &result.errors};
  int open = 2;
  while (open > 0 && poll(ends.data(), ends.size(), -1) > 0) {
    for (std::size_t i = 0; i < ends.size(); ++i) {
      if (ends[i].fd < 0 || ends[i].revents == 0) continue;
      std::array<char, 65536> buffer;
      const ssize_t count = read(ends[i].fd, buffer.data(), buffer.size());
      if (count > 0) {
        texts[i]->append(buffer.data(), static_cast<std::size_t>(count));
      } else {
        close(ends[i].fd);
        ends[i].fd = -1;
        --open;
      }
    }
  }
}

}  // namespace

ProgramResult runProgram(const std::vector<std::string>& arguments,
                         const std::map<std::string, std::string>& environment) {
  std::vector<char*> argv;
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);

  int output[2];
  int errors[2];
  if (pipe2(output, O_CLOEXEC) != 0 || pipe2(errors, O_CLOEXEC) != 0) {
    throw std::runtime_error("no pipe");
  }
  const pid_t child = fork();
  if (child == 0) {
    for (const auto& [name, value] : environment) setenv(name.c_str(), value.c_str(), 1);
    dup2(open("/dev/null", O_RDONLY | O_CLOEXEC), STDIN_FILENO);
    dup2(output[1], STDOUT_FILENO);
    dup2(errors[1], STDERR_FILENO);
    execvp(argv[0], argv.data());
    _exit(127);
  }
  close(output[1]);
  close(errors[1]);
  ProgramResult result;
  drain(output[0], errors[0], result);
  int status = 0;
  waitpid(child, &status, 0);
  result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return result;
}

}  // namespace vt
