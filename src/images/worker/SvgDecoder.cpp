#include "images/worker/SvgDecoder.h"

#include <librsvg/rsvg.h>

#include <memory>
#include <string>

#include "images/worker/CairoImage.h"
#include "images/worker/FitSize.h"
#include "worker/ReadInput.h"

namespace vt::worker {
namespace {

constexpr std::uint64_t kMostBytes = 32 << 20;

struct Size {
  double width = 1;
  double height = 1;
};

/// What the drawing says of its size, in any unit; a square when it says nothing.
Size sizeOf(RsvgHandle* drawing) {
  Size size;
  if (rsvg_handle_get_intrinsic_size_in_pixels(drawing, &size.width, &size.height) &&
      size.width > 0 && size.height > 0) {
    return size;
  }
  gboolean hasWidth = FALSE;
  gboolean hasHeight = FALSE;
  gboolean hasViewBox = FALSE;
  RsvgLength width{};
  RsvgLength height{};
  RsvgRectangle viewBox{};
  rsvg_handle_get_intrinsic_dimensions(drawing, &hasWidth, &width, &hasHeight, &height, &hasViewBox,
                                       &viewBox);
  if (hasViewBox && viewBox.width > 0 && viewBox.height > 0) {
    return {viewBox.width, viewBox.height};
  }
  return {};
}

}  // namespace

std::optional<Image> decodeSvg(const DecodeJob& job) {
  const std::optional<std::string> bytes = readInput(job.descriptor, kMostBytes);
  if (!bytes || bytes->empty()) return std::nullopt;
  // From memory and without a base address: there is nothing that a reference could be relative to.
  const std::unique_ptr<RsvgHandle, decltype(&g_object_unref)> drawing(
      rsvg_handle_new_from_data(reinterpret_cast<const guint8*>(bytes->data()), bytes->size(),
                                nullptr),
      g_object_unref);
  if (!drawing) return std::nullopt;
  const Size natural = sizeOf(drawing.get());
  const PixelSize size = fitInto({job.width, job.height}, natural.width, natural.height);
  const CairoImage canvas(size);
  const RsvgRectangle everything{0, 0, static_cast<double>(size.width),
                                 static_cast<double>(size.height)};
  if (!rsvg_handle_render_document(drawing.get(), canvas.context(), &everything, nullptr)) {
    return std::nullopt;
  }
  return canvas.image();
}

}  // namespace vt::worker
