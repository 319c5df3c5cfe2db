#pragma once

#include <array>
#include <chrono>
#include <cstdint>

// What a worker and the process that started it tell each other. Both are built together and run on
// one machine, so messages are structures as they lie in memory.
//
// The worker's standard input is a socket that keeps messages apart. The worker first sends a
// WorkerGreeting. Each WorkerRequest comes with two descriptors: the file, open for reading, and
// the writing end of a pipe. Into the pipe goes whatever is found, and it is closed; a WorkerAnswer
// comes over the socket once nobody looks into the file any more. Requests are answered one by one,
// in their order. The worker ends when the socket is closed.

namespace vt::worker {

/// What stands between whoever looks into a file and the machine.
enum Wall : std::uint32_t {
  kBubblewrap = 1,  ///< namespaces of its own: no network, other processes or files
  kLandlock = 2,    ///< no file but libraries and fonts
  kSeccomp = 4,     ///< no system call but those that decoding needs
};

struct WorkerGreeting {
  std::uint32_t walls = 0;
};

/// Files with the same number may be looked into by one process, one after the other, since the
/// same people could have changed them and the same may read them.
using FileOrigin = std::uint64_t;

/// Of a file that is to have a process of its own.
inline constexpr FileOrigin kOwnOrigin = 0;

/// What is to be done with a file; the numbers mean what each worker says.
struct WorkerRequest {
  std::uint32_t job = 0;
  std::array<std::uint32_t, 3> arguments{};
  FileOrigin origin = kOwnOrigin;
};

/// How the looking into one file ended.
enum class WorkerEnd : std::uint32_t {
  kMade,      ///< what was asked for is in the pipe
  kNone,      ///< the file has none to give
  kCrashed,   ///< or broke one of its limits
  kTimedOut,  ///< was killed after kFileLimit
  kNotTried,  ///< there could be no process, or none that is confined
};

struct WorkerAnswer {
  WorkerEnd end = WorkerEnd::kNone;
  /// Whether the process had looked into others before: then those may be to blame for its end.
  bool wasShared = false;
};

/// What one file may take: by the clock, of a processor, of address space.
inline constexpr std::chrono::seconds kFileLimit{20};
inline constexpr std::uint64_t kProcessorSeconds = 10;
inline constexpr std::uint64_t kAddressSpace = std::uint64_t{2} << 30;

/// The worker's options.
inline constexpr const char* kInsideBubblewrap = "--inside-bubblewrap";
inline constexpr const char* kOwnFilesOnly = "--own-files-only";

}  // namespace vt::worker
