#pragma once

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
  return {static_cast<std::uint32_t>(request.format),
          {request.width, request.height, request.iconMode}};
}
/// Of any numbers: the format need be none.
inline ImageRequest imageRequest(const WorkerRequest& request) {
  const auto& [width, height, iconMode] = request.arguments;
  return {static_cast<ImageFormat>(request.job), width, height, iconMode};
}

struct PictureHeader {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
};

/// The most pixels that a picture is unpacked from.
inline constexpr std::uint64_t kMostSourcePixels = 200'000'000;

}  // namespace vt::worker
