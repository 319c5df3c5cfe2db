#pragma once

#include <chrono>
#include <cstdint>

#include "images/ImageFormat.h"
#include "platform/Image.h"

// What the image worker and the library tell each other. Both are built together and run on one
// machine, so messages are structures as they lie in memory.
//
// The worker's standard input is a socket that keeps messages apart. The worker first sends a
// WorkerGreeting. Each ImageRequest comes with two descriptors: the file, open for reading, and the
// writing end of a pipe. Into the pipe go a PictureHeader and its pixels, and it is closed; an
// ImageAnswer comes over the socket once the process that decoded is gone, and the worker can be
// asked again. The worker ends when the socket is closed.

namespace vt::worker {

/// What stands between a decoder and the machine.
enum Wall : std::uint32_t {
  kBubblewrap = 1,  ///< namespaces of its own: no network, other processes or files
  kLandlock = 2,    ///< no file but libraries and fonts
  kSeccomp = 4,     ///< no system call but those that decoding needs
};

struct WorkerGreeting {
  std::uint32_t walls = 0;
};

struct ImageRequest {
  ImageFormat format = ImageFormat::kPixels;
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t iconMode = 0;
};

/// How the process that decoded one file ended.
enum class ImageEnd : std::uint32_t {
  kMade,      ///< the picture is in the pipe
  kNone,      ///< the file has none to give
  kCrashed,   ///< or broke one of its limits
  kTimedOut,  ///< was killed after kFileLimit
  kNotTried,  ///< there could be no process, or none that is confined
};

struct ImageAnswer {
  ImageEnd end = ImageEnd::kNone;
};

struct PictureHeader {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
};

/// What one file may take: by the clock, of a processor, of address space.
inline constexpr std::chrono::seconds kFileLimit{20};
inline constexpr std::uint64_t kProcessorSeconds = 10;
inline constexpr std::uint64_t kAddressSpace = std::uint64_t{2} << 30;
/// The most pixels that a picture is unpacked from.
inline constexpr std::uint64_t kMostSourcePixels = 200'000'000;

/// The worker's options.
inline constexpr const char* kInsideBubblewrap = "--inside-bubblewrap";
inline constexpr const char* kIconsOnly = "--icons-only";

}  // namespace vt::worker
