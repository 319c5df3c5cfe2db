#include "images/worker/PdfDecoder.h"

#include <poppler.h>
#include <unistd.h>

#include <memory>

#include "images/worker/CairoImage.h"
#include "images/worker/DecoderModule.h"

namespace vt::worker {
namespace {

struct Unref {
  void operator()(void* object) const { g_object_unref(object); }
};

}  // namespace

std::optional<Image> decodePdf(const DecodeJob& job) {
  // The document closes the descriptor that it is given.
  const std::unique_ptr<PopplerDocument, Unref> document(
      poppler_document_new_from_fd(::dup(job.descriptor), nullptr, nullptr));
  if (!document || poppler_document_get_n_pages(document.get()) < 1) return std::nullopt;
  const std::unique_ptr<PopplerPage, Unref> page(poppler_document_get_page(document.get(), 0));
  if (!page) return std::nullopt;
  double width = 0;
  double height = 0;
  poppler_page_get_size(page.get(), &width, &height);
  if (!(width > 0 && height > 0)) return std::nullopt;
  const PixelSize size = fitInto({job.width, job.height}, width, height);
  CairoImage canvas(size);
  canvas.paint(1, 1, 1);
  cairo_scale(canvas.context(), size.width / width, size.height / height);
  poppler_page_render(page.get(), canvas.context());
  canvas.frame();
  return canvas.image();
}

}  // namespace vt::worker

vt::worker::Decode vtDecoderOf(vt::ImageFormat format) {
  return format == vt::ImageFormat::kPdf ? vt::worker::decodePdf : nullptr;
}
