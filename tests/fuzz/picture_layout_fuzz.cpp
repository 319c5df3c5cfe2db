// Whatever bytes come, the head of a picture and a colour profile are told or not.
#include <cstdlib>

#include "extraction/media/PictureLayout.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const auto layout = vt::pictureLayoutOf(bytes);
  if (layout && layout->colorSpace.empty()) std::abort();
  const vt::ColorProfile profile = vt::colorProfileOf(bytes);
  // No name is longer in UTF-8 than what it was made of.
  if (profile.name.size() > 3 * size) std::abort();
  return 0;
}
