#include "platform/linux/RunningServer.h"

#include <errno.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <strings.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <charconv>
#include <filesystem>
#include <string_view>

#include "platform/linux/FileDescriptor.h"

namespace vt {
namespace {

using State = RunningServer::State;

// The clock may have been set a little between the two readings, and the ticks are coarse.
constexpr double kToleranceInSeconds = 2;
// A process with very many mappings or a huge command line is read this far.
constexpr std::size_t kLongestProcFile = 4 << 20;

double seconds(const timespec& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

double now(clockid_t clock) {
  timespec time{};
  ::clock_gettime(clock, &time);
  return seconds(time);
}

std::string readAll(int descriptor, std::size_t limit) {
  std::string bytes;
  char buffer[16384];
  while (bytes.size() < limit) {
    const ssize_t count = ::read(descriptor, buffer, sizeof buffer);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
    bytes.append(buffer, static_cast<std::size_t>(count));
  }
  return bytes;
}

std::string readProc(const std::string& path) {
  const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  return file ? readAll(file.get(), kLongestProcFile) : std::string();
}

// Decimal digits, and at most a line end such as an administrator's editor leaves.
std::optional<std::int32_t> processIdIn(std::string_view text) {
  if (text.ends_with('\n')) text.remove_suffix(1);
  std::int32_t id = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), id);
  if (error != std::errc() || end != text.data() + text.size() || id <= 0) return std::nullopt;
  return id;
}

bool namesVistaro(const std::string& text) {
  return ::strcasestr(text.c_str(), "vistaro") != nullptr;
}

std::string lastPart(const std::string& path) { return path.substr(path.rfind('/') + 1); }

// Paths by their last part alone: a shell in a folder called so is no server.
bool hasVistaroArgument(const std::string& commandLine) {
  std::size_t begin = 0;
  while (begin < commandLine.size()) {
    const std::size_t end = std::min(commandLine.find('\0', begin), commandLine.size());
    if (namesVistaro(lastPart(commandLine.substr(begin, end - begin)))) return true;
    begin = end + 1;
  }
  return false;
}

bool hasVistaroLoaded(const std::string& maps) {
  std::size_t begin = 0;
  while (begin < maps.size()) {
    const std::size_t end = std::min(maps.find('\n', begin), maps.size());
    if (namesVistaro(lastPart(maps.substr(begin, end - begin)))) return true;
    begin = end + 1;
  }
  return false;
}

bool isVistaro(const std::string& processFolder) {
  std::error_code ignored;
  const std::string program = std::filesystem::read_symlink(processFolder + "/exe", ignored);
  return namesVistaro(lastPart(program)) ||
         hasVistaroArgument(readProc(processFolder + "/cmdline")) ||
         hasVistaroLoaded(readProc(processFolder + "/maps"));
}

// When the process started, in seconds since 1970, by its twenty-second field of "stat".
std::optional<double> startOf(const std::string& processFolder) {
  const std::string stat = readProc(processFolder + "/stat");
  std::size_t position = stat.rfind(')');  // the second field is a name that may hold anything
  if (position == std::string::npos) return std::nullopt;
  constexpr int kBlanksBeforeStart = 20;
  for (int i = 0; i < kBlanksBeforeStart && position != std::string::npos; ++i) {
    position = stat.find(' ', position + 1);
  }
  if (position == std::string::npos) return std::nullopt;
  std::uint64_t ticks = 0;
  const char* first = stat.data() + position + 1;
  if (std::from_chars(first, stat.data() + stat.size(), ticks).ec != std::errc()) {
    return std::nullopt;
  }
  const double sinceBoot = static_cast<double>(ticks) / static_cast<double>(::sysconf(_SC_CLK_TCK));
  return now(CLOCK_REALTIME) - now(CLOCK_BOOTTIME) + sinceBoot;
}

bool isServerOf(const struct stat& file, std::int32_t processId) {
  const std::string folder = fmt::format("/proc/{}", processId);
  struct stat process{};
  if (::stat(folder.c_str(), &process) != 0 || process.st_uid != file.st_uid) return false;
  const std::optional<double> start = startOf(folder);
  return start && *start <= seconds(file.st_mtim) + kToleranceInSeconds && isVistaro(folder);
}

}  // namespace

RunningServer runningServer(const std::string& path) {
  RunningServer server;
  const FileDescriptor file(
      ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY));
  if (!file) {
    if (errno == ELOOP) server.state = State::kGarbage;
    if (errno == EACCES || errno == EPERM) server.state = State::kUnreadable;
    return server;
  }
  struct stat status{};
  if (::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
    server.state = State::kGarbage;
    return server;
  }
  constexpr std::size_t kLongestId = 16;
  const std::optional<std::int32_t> id = status.st_size <= static_cast<off_t>(kLongestId)
                                             ? processIdIn(readAll(file.get(), kLongestId))
                                             : std::nullopt;
  if (!id) {
    server.state = State::kGarbage;
    return server;
  }
  server.processId = *id;
  server.since = dateFromTimespec(status.st_mtim);
  server.state = isServerOf(status, *id) ? State::kRunning : State::kStale;
  return server;
}

}  // namespace vt
