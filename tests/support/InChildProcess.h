#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <functional>
#include <string>

namespace vt {

/// What `work` answers in a child process, so that this one stays who it is; the text of what it
/// throws, or how the child ended, when it does not answer. gtest's expectations are lost in there.
inline std::string inChildProcess(const std::function<std::string()>& work) {
  int ends[2];
  if (pipe(ends) != 0) return "no pipe";
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child < 0) return "no child";
  if (child == 0) {
    close(ends[0]);
    std::string answer;
    try {
      answer = work();
    } catch (const std::exception& error) {
      answer = std::string("threw ") + error.what();
    }
    const ssize_t written = write(ends[1], answer.data(), answer.size());
    _exit(written == static_cast<ssize_t>(answer.size()) ? 0 : 1);
  }
  close(ends[1]);
  std::string answer;
  char buffer[4096];
  for (ssize_t count = 0; (count = read(ends[0], buffer, sizeof(buffer))) > 0;) {
    answer.append(buffer, static_cast<std::size_t>(count));
  }
  close(ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  return status == 0 ? answer : answer + " (ended with status " + std::to_string(status) + ")";
}

}  // namespace vt
