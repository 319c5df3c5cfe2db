#include "platform/linux/LinuxTasks.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

#include "platform/linux/ChildProcess.h"
#include "platform/linux/Pipe.h"

namespace vt {
namespace {

using Clock = std::chrono::steady_clock;

/// One of the program's outputs, as far as it has been read.
class Capture {
 public:
  Capture(const Pipe& pipe, std::size_t limit) : end_(pipe.read.get()), limit_(limit) {
    ::fcntl(end_, F_SETFL, O_NONBLOCK);
  }

  /// What poll() is to wait for: nothing once the program has closed its end.
  pollfd awaited() const { return {isOpen_ ? end_ : -1, POLLIN, 0}; }
  /// Reads once; whether there was something.
  bool readSome() {
    if (!isOpen_) return false;
    std::array<char, 65536> buffer;
    const ssize_t count = ::read(end_, buffer.data(), buffer.size());
    if (count == 0) isOpen_ = false;
    if (count <= 0) return count < 0 && errno == EINTR;
    const auto wanted = std::min(static_cast<std::size_t>(count), limit_ - text_.size());
    text_.append(buffer.data(), wanted);
    overflowed_ |= wanted < static_cast<std::size_t>(count);
    return true;
  }
  bool overflowed() const { return overflowed_; }
  std::string take() { return std::move(text_); }

 private:
  int end_;
  std::size_t limit_;
  std::string text_;
  bool isOpen_ = true;
  bool overflowed_ = false;
};

int millisecondsUntil(Clock::time_point deadline) {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
  // Waiting in steps of an hour at most: a longer limit does not fit into what poll() takes.
  return static_cast<int>(std::clamp<decltype(left)>(left, 0, 3'600'000));
}

/// Follows the program to its end, or to the limit that it breaks. Nothing when it ended by itself.
std::optional<TaskEnd> follow(ChildProcess& program, Capture& output, Capture& errors,
                              Clock::time_point deadline) {
  for (;;) {
    std::array<pollfd, 3> awaited{
        {output.awaited(), errors.awaited(), {program.handle(), POLLIN, 0}}};
    if (::poll(awaited.data(), awaited.size(), millisecondsUntil(deadline)) < 0) continue;
    const bool ended = awaited[2].revents != 0;
    // What the program started could hold its outputs open, and write on.
    if (ended) program.kill();
    bool more = false;
    do {
      const bool moreOutput = output.readSome();
      const bool moreErrors = errors.readSome();
      more = ended && (moreOutput || moreErrors);
      if (output.overflowed()) return TaskEnd::kTooMuchOutput;
    } while (more && Clock::now() < deadline);
    if (ended) return std::nullopt;
    if (Clock::now() >= deadline) return TaskEnd::kTimedOut;
  }
}

/// The absolute path of the program; nothing when there is none, with the reason in errno.
std::optional<std::string> pathOf(const std::string& program) {
  if (program.starts_with('/')) return program;
  errno = ENOENT;
  if (program.empty() || program.find('/') != program.npos) return std::nullopt;
  std::string_view folders = kProgramFolders;
  while (!folders.empty()) {
    const std::string_view folder = folders.substr(0, folders.find(':'));
    folders.remove_prefix(std::min(folder.size() + 1, folders.size()));
    std::string path = std::string(folder) + "/" + program;
    if (::faccessat(AT_FDCWD, path.c_str(), X_OK, AT_EACCESS) == 0) return path;
  }
  return std::nullopt;
}

TaskResult notStarted(int reason) { return {TaskEnd::kNotStarted, reason, {}, {}}; }

}  // namespace

TaskResult LinuxTasks::run(const Task& task) {
  const std::optional<std::string> path = pathOf(task.program);
  if (!path) return notStarted(errno);
  std::vector<std::string> arguments{task.program};
  arguments.insert(arguments.end(), task.arguments.begin(), task.arguments.end());
  const bool holdsNul = std::ranges::any_of(
      arguments, [](const std::string& text) { return text.find('\0') != text.npos; });
  if (holdsNul) return notStarted(EINVAL);  // the program would see half of it

  std::optional<Pipe> outputPipe = makePipe();
  std::optional<Pipe> errorPipe = makePipe();
  if (!outputPipe || !errorPipe) return notStarted(EMFILE);
  const Clock::time_point deadline = Clock::now() + task.limit;
  ChildProcess program(
      *path, std::move(arguments), {std::string("PATH=") + kProgramFolders, "LC_ALL=C.UTF-8"},
      {.input = {}, .output = outputPipe->write.get(), .errors = errorPipe->write.get()});
  if (program.startError() != 0) return notStarted(program.startError());
  // Our copies of the writing ends stay open: the end is told by the process, not by its outputs.
  Capture output(*outputPipe, task.outputLimit);
  Capture errors(*errorPipe, kKeptErrorBytes);
  const std::optional<TaskEnd> broken = follow(program, output, errors, deadline);
  program.kill();
  const std::optional<int> status = program.collect();

  TaskResult result{TaskEnd::kUnknown, 0, output.take(), errors.take()};
  if (broken) {
    result.end = *broken;
  } else if (status && WIFEXITED(*status)) {
    result.end = TaskEnd::kExited;
    result.status = WEXITSTATUS(*status);
  } else if (status && WIFSIGNALED(*status)) {
    result.end = TaskEnd::kSignalled;
    result.status = WTERMSIG(*status);
  }
  return result;
}

}  // namespace vt
