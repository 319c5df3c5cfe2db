#pragma once

#include <bit>
#include <cstdint>

#include "images/ImageFormat.h"
#include "worker/WorkerProtocol.h"

namespace vt::worker {

/// What an image worker is asked for. Into the pipe go a PictureHeader and its pixels.
struct ImageRequest {
  ImageFormat format = ImageFormat::kPixels;
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t iconMode = 0;
};

inline WorkerRequest workerRequest(const ImageRequest& request) {
  return std::bit_cast<WorkerRequest>(request);
}
/// Of any numbers: the format need be none.
inline ImageRequest imageRequest(const WorkerRequest& request) {
  return std::bit_cast<ImageRequest>(request);
}

struct PictureHeader {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
};

/// The most pixels that a picture is unpacked from.
inline constexpr std::uint64_t kMostSourcePixels = 200'000'000;

}  // namespace vt::worker
