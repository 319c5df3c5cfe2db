#pragma once

#include <cairo.h>

#include <memory>
#include <optional>

#include "images/worker/FitSize.h"
#include "platform/Image.h"

namespace vt::worker {

/// A surface to draw on, of pixels.
class CairoImage {
 public:
  explicit CairoImage(PixelSize size);

  /// Nullptr when memory does not suffice.
  cairo_t* context() const { return context_.get(); }
  /// Fills the whole surface.
  void paint(double red, double green, double blue);
  /// A thin grey line around it, without which a white page cannot be seen on white.
  void frame();
  /// What was drawn; nothing when some of it failed.
  std::optional<Image> image() const;

 private:
  struct Destroy {
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
    void operator()(cairo_t* context) const { cairo_destroy(context); }
  };

  PixelSize size_;
  std::unique_ptr<cairo_surface_t, Destroy> surface_;
  std::unique_ptr<cairo_t, Destroy> context_;
};

}  // namespace vt::worker
