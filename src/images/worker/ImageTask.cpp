#include "images/worker/ImageTask.h"

#include <cstring>
#include <optional>
#include <string_view>
#include <utility>

#include "images/worker/ImageRequest.h"
#include "worker/WriteAll.h"

namespace vt::worker {
namespace {

TaskEnd decodeInto(int output, Decode decode, const DecodeJob& job) {
  const std::optional<Image> image = decode(job);
  if (!image || !image->isWhole()) return TaskEnd::kNone;
  const PictureHeader header{image->width, image->height};
  const std::string_view headerBytes(reinterpret_cast<const char*>(&header), sizeof header);
  const bool written = writeAll(output, headerBytes) && writeAll(output, image->pixels);
  return written ? TaskEnd::kMade : TaskEnd::kNotWritten;
}

}  // namespace

TaskSource imageTasks(DecoderSource decoders) {
  return [decoders = std::move(decoders)](const WorkerRequest& asked, bool ownFilesOnly) -> Task {
    const ImageRequest request = imageRequest(asked);
    if (static_cast<std::uint32_t>(request.format) >= kImageFormats) return {};
    if (ownFilesOnly && request.format != ImageFormat::kSvg) return {};
    const Decode decode = decoders(request.format);
    if (!decode) return {};
    return [=](int input, int output) {
      return decodeInto(
          output, decode,
          {input, request.format, request.width, request.height, request.iconMode != 0});
    };
  };
}

}  // namespace vt::worker
