#include "platform/linux/images/ReceivedPicture.h"

#include <cstring>
#include <utility>

namespace vt {

std::optional<Image> pictureIn(std::string&& bytes, const worker::ImageRequest& request) {
  worker::PictureHeader header;
  if (bytes.size() < sizeof header) return std::nullopt;
  std::memcpy(&header, bytes.data(), sizeof header);
  if (header.width > request.width || header.height > request.height) return std::nullopt;
  bytes.erase(0, sizeof header);
  Image image{header.width, header.height, std::move(bytes)};
  return image.isWhole() ? std::optional(std::move(image)) : std::nullopt;
}

}  // namespace vt
