#include "images/worker/CairoImage.h"

#include <cstring>

namespace vt::worker {

CairoImage::CairoImage(PixelSize size)
    : size_(size),
      surface_(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, static_cast<int>(size.width),
                                          static_cast<int>(size.height))),
      context_(cairo_create(surface_.get())) {}

void CairoImage::paint(double red, double green, double blue) {
  cairo_set_source_rgb(context(), red, green, blue);
  cairo_paint(context());
}

void CairoImage::frame() {
  cairo_identity_matrix(context());
  cairo_reset_clip(context());
  cairo_rectangle(context(), 0.5, 0.5, size_.width - 1.0, size_.height - 1.0);
  cairo_set_line_width(context(), 1);
  cairo_set_source_rgb(context(), 0.75, 0.75, 0.75);
  cairo_stroke(context());
}

std::optional<Image> CairoImage::image() const {
  if (cairo_status(context()) != CAIRO_STATUS_SUCCESS) return std::nullopt;
  cairo_surface_flush(surface_.get());
  const unsigned char* row = cairo_image_surface_get_data(surface_.get());
  const int stride = cairo_image_surface_get_stride(surface_.get());
  if (!row) return std::nullopt;
  Image image{size_.width, size_.height};
  image.pixels.reserve(std::size_t{size_.width} * size_.height * Image::kBytesPerPixel);
  for (std::uint32_t y = 0; y < size_.height; ++y, row += stride) {
    for (std::uint32_t x = 0; x < size_.width; ++x) {
      std::uint32_t pixel = 0;
      std::memcpy(&pixel, row + std::size_t{x} * sizeof pixel, sizeof pixel);
      const std::uint32_t alpha = pixel >> 24;
      const auto append = [&](std::uint32_t multiplied) {
        image.pixels += static_cast<char>(alpha == 0 ? 0 : (multiplied * 255 + alpha / 2) / alpha);
      };
      append(pixel >> 16 & 0xff);
      append(pixel >> 8 & 0xff);
      append(pixel & 0xff);
      image.pixels += static_cast<char>(alpha);
    }
  }
  return image;
}

}  // namespace vt::worker
