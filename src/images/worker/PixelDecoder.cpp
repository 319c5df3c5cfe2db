#include "images/worker/PixelDecoder.h"

#include <gmodule.h>
#include <vips/vips.h>

#include <algorithm>
#include <array>
#include <functional>
#include <memory>
#include <string_view>

#include "images/worker/ImageRequest.h"

namespace vt::worker {
namespace {

struct Unref {
  void operator()(void* object) const { g_object_unref(object); }
};
using Source = std::unique_ptr<VipsSource, Unref>;
using Picture = std::unique_ptr<VipsImage, Unref>;
using MakeSource = std::function<Source()>;

bool isAllowed(std::string_view loader) {
  static constexpr std::array<std::string_view, 6> kLoaders = {
      "VipsForeignLoadJpegSource", "VipsForeignLoadPngSource",  "VipsForeignLoadWebpSource",
      "VipsForeignLoadTiffSource", "VipsForeignLoadHeifSource", "VipsForeignLoadNsgifSource"};
  return std::ranges::find(kLoaders, loader) != kLoaders.end();
}

/// What is told of an image before it is unpacked; nullptr when it is not of an allowed format, or
/// too large. Looks at its beginning alone.
Picture headerOf(VipsSource* source) {
  const char* loader = vips_foreign_find_load_source(source);
  if (!loader || !isAllowed(loader)) return nullptr;
  Picture header(vips_image_new_from_source(source, "", nullptr));
  if (!header) return nullptr;
  const auto width = static_cast<std::uint64_t>(vips_image_get_width(header.get()));
  const auto height = static_cast<std::uint64_t>(vips_image_get_page_height(header.get()));
  const bool isDecodable = width > 0 && height > 0 && width * height <= kMostSourcePixels;
  return isDecodable ? std::move(header) : nullptr;
}

Picture thumbnailOf(VipsSource* source, PixelSize most, bool hasProfile) {
  VipsImage* out = nullptr;
  // Without a profile the colours are sRGB already, and a conversion would bend them.
  const char* profileOption = hasProfile ? "export_profile" : nullptr;
  const int result = vips_thumbnail_source(source, &out, static_cast<int>(most.width), "height",
                                           static_cast<int>(most.height), "size", VIPS_SIZE_DOWN,
                                           profileOption, "srgb", nullptr);
  return Picture(result == 0 ? out : nullptr);
}

using Operation = std::function<int(VipsImage* in, VipsImage** out)>;

Picture applied(Picture picture, const Operation& operation) {
  VipsImage* out = nullptr;
  if (!picture || operation(picture.get(), &out) != 0) return nullptr;
  return Picture(out);
}

/// As red, green, blue and perhaps alpha of 8 bits.
Picture asPixels(Picture picture) {
  picture = applied(std::move(picture), [](VipsImage* in, VipsImage** out) {
    return vips_colourspace(in, out, VIPS_INTERPRETATION_sRGB, nullptr);
  });
  return applied(std::move(picture), [](VipsImage* in, VipsImage** out) {
    return vips_cast(in, out, VIPS_FORMAT_UCHAR, nullptr);
  });
}

void appendRow(const VipsPel* row, int width, int bands, std::string& pixels) {
  constexpr std::size_t kColours = 3;
  for (int x = 0; x < width; ++x, row += bands) {
    pixels.append(reinterpret_cast<const char*>(row), kColours);
    pixels += bands == kColours ? '\xff' : static_cast<char>(row[kColours]);
  }
}

/// Works the pixels out strip by strip on this thread: a picture this small is not worth starting
/// threads for, and none may run when a child is forked.
std::optional<Image> imageOf(VipsImage* picture) {
  const int bands = vips_image_get_bands(picture);
  if (bands != 3 && bands != 4) return std::nullopt;
  const std::unique_ptr<VipsRegion, Unref> region(vips_region_new(picture));
  if (!region || vips_image_pio_input(picture) != 0) return std::nullopt;
  const int width = vips_image_get_width(picture);
  const int height = vips_image_get_height(picture);
  Image image{static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height)};
  image.pixels.reserve(std::size_t{image.width} * image.height * Image::kBytesPerPixel);
  constexpr int kStripHeight = 16;
  for (int top = 0; top < height; top += kStripHeight) {
    const VipsRect strip{0, top, width, std::min(kStripHeight, height - top)};
    if (vips_region_prepare(region.get(), &strip) != 0) return std::nullopt;
    for (int y = top; y < top + strip.height; ++y) {
      appendRow(VIPS_REGION_ADDR(region.get(), 0, y), width, bands, image.pixels);
    }
  }
  return image;
}

/// Grey, of 64 by 64 pixels, a JPEG.
std::string photograph() {
  constexpr const char* kBase64 =
      "/9j/2wBDAAgGBgcGBQgHBwcJCQgKDBQNDAsLDBkSEw8UHRofHh0aHBwgJC4nICIsIxwcKDcpLDAxNDQ0Hyc5PTgyPC4z"
      "NDL/wAALCABAAEABAREA/8QAFQABAQAAAAAAAAAAAAAAAAAAAAj/xAAUEAEAAAAAAAAAAAAAAAAAAAAA/9oACAEBAAA/"
      "AJ/AAAAAAAAAAAAAAAAAAAAAf//Z";
  gsize size = 0;
  const std::unique_ptr<guchar, decltype(&g_free)> bytes(g_base64_decode(kBase64, &size), g_free);
  return {reinterpret_cast<const char*>(bytes.get()), size};
}

std::optional<Image> decode(const MakeSource& makeSource, PixelSize most) {
  const Source forHeader = makeSource();
  const Picture header = forHeader ? headerOf(forHeader.get()) : nullptr;
  const Source source = header ? makeSource() : nullptr;
  if (!source) return std::nullopt;
  const bool hasProfile = vips_image_get_typeof(header.get(), VIPS_META_ICC_NAME) != 0;
  const Picture picture = asPixels(thumbnailOf(source.get(), most, hasProfile));
  return picture ? imageOf(picture.get()) : std::nullopt;
}

}  // namespace

bool loadPixelDecoder() {
  // Looked for there, modules are not found: each is one more parser, and only one is wanted.
  g_setenv("VIPSHOME", "/nonexistent", TRUE);
  if (vips_init("vistaro-images") != 0) return false;
  vips_concurrency_set(1);
  vips_cache_set_max(0);
  // Its absence costs HEIC and AVIF. The types that it registers must stay.
  if (GModule* heif = g_module_open(VT_VIPS_MODULES "/vips-heif.so", G_MODULE_BIND_LOCAL)) {
    g_module_make_resident(heif);
  }
  // What libvips sets up with its first picture takes a third as long as a photograph. Here it is
  // done once, and not in each child.
  const std::string first = photograph();
  decodePixelsIn(first, {8, 8});
  return true;
}

std::optional<Image> decodePixels(const DecodeJob& job) {
  return decode([&] { return Source(vips_source_new_from_descriptor(job.descriptor)); },
                {job.width, job.height});
}

std::optional<Image> decodePixelsIn(const std::string& bytes, PixelSize most) {
  return decode([&] { return Source(vips_source_new_from_memory(bytes.data(), bytes.size())); },
                most);
}

}  // namespace vt::worker
