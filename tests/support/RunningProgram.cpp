#include "support/RunningProgram.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <stdexcept>

namespace vt {

RunningProgram::RunningProgram(const std::vector<std::string>& arguments,
                               const std::map<std::string, std::string>& environment) {
  std::vector<char*> argv;
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  int input[2];
  int output[2];
  int started[2];
  if (pipe2(input, O_CLOEXEC) != 0 || pipe2(output, O_CLOEXEC) != 0 ||
      pipe2(started, O_CLOEXEC) != 0) {
    throw std::runtime_error("no pipe");
  }
  pid_ = fork();
  if (pid_ == 0) {
    for (const auto& [name, value] : environment) setenv(name.c_str(), value.c_str(), 1);
    dup2(input[0], STDIN_FILENO);
    dup2(output[1], STDOUT_FILENO);
    dup2(output[1], STDERR_FILENO);
    execvp(argv[0], argv.data());
    _exit(127);
  }
  close(input[0]);
  close(output[1]);
  close(started[1]);
  // The other end is closed by becoming the program, or by the failure to.
  char nothing = 0;
  while (read(started[0], &nothing, 1) < 0) continue;
  close(started[0]);
  input_ = input[1];
  outputEnd_ = output[0];
  if (pid_ < 0) throw std::runtime_error("no process");
}

std::string RunningProgram::waitForLine(std::string_view text, std::chrono::seconds limit) {
  const auto end = std::chrono::steady_clock::now() + limit;
  for (;;) {
    for (std::size_t feed; (feed = output_.find('\n', searched_)) != std::string::npos;) {
      std::string line = output_.substr(searched_, feed - searched_);
      searched_ = feed + 1;
      if (line.find(text) != std::string::npos) return line;
    }
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        end - std::chrono::steady_clock::now());
    pollfd ready{outputEnd_, POLLIN, 0};
    if (left.count() <= 0 || poll(&ready, 1, static_cast<int>(left.count())) <= 0) return "";
    std::array<char, 4096> buffer;
    const ssize_t count = read(outputEnd_, buffer.data(), buffer.size());
    if (count <= 0) return "";
    output_.append(buffer.data(), static_cast<std::size_t>(count));
  }
}

void RunningProgram::end() {
  if (pid_ <= 0) return;
  close(input_);
  kill(pid_, SIGTERM);
  const int process = static_cast<int>(syscall(SYS_pidfd_open, pid_, 0));
  pollfd ended{process, POLLIN, 0};
  constexpr int kPatienceInMilliseconds = 5000;
  if (process < 0 || poll(&ended, 1, kPatienceInMilliseconds) <= 0) kill(pid_, SIGKILL);
  if (process >= 0) close(process);
  waitpid(pid_, nullptr, 0);
  close(outputEnd_);
  pid_ = -1;
}

}  // namespace vt
