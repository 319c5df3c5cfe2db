#include "images/worker/TextDecoder.h"

#include <pango/pangocairo.h>

#include <memory>
#include <string>

#include "images/worker/CairoImage.h"
#include "images/worker/PageText.h"
#include "worker/ReadInput.h"

namespace vt::worker {
namespace {

// More than fills a page in the smallest face.
constexpr std::uint64_t kMostBytes = 32768;

// The page, in points: as wide to its height as paper is, whatever the country.
constexpr double kPageWidth = 600;
constexpr double kPageHeight = 800;
constexpr double kMargin = 48;

struct Unref {
  void operator()(void* object) const { g_object_unref(object); }
};

/// A face that is read in a preview, and that still tells text from code in a thumbnail.
const char* faceOf(const DecodeJob& job) {
  const bool isLarge = job.height >= 400;
  if (job.format == ImageFormat::kSource) return isLarge ? "Monospace 10" : "Monospace 17";
  return isLarge ? "Serif 12" : "Serif 20";
}

void fill(PangoLayout* layout, const DecodeJob& job, const std::string& bytes) {
  std::string text = readableText(bytes);
  if (job.format == ImageFormat::kHtml) text = textOfHtml(text);
  if (job.format == ImageFormat::kMarkdown) {
    const std::string markup = markupOfMarkdown(text);
    if (pango_parse_markup(markup.data(), static_cast<int>(markup.size()), 0, nullptr, nullptr,
                           nullptr, nullptr)) {
      pango_layout_set_markup(layout, markup.data(), static_cast<int>(markup.size()));
      return;
    }
  }
  pango_layout_set_text(layout, text.data(), static_cast<int>(text.size()));
}

}  // namespace

void loadFonts() {
  const CairoImage canvas({1, 1});
  const std::unique_ptr<PangoLayout, Unref> layout(pango_cairo_create_layout(canvas.context()));
  pango_layout_set_text(layout.get(), "x", 1);
  pango_layout_get_size(layout.get(), nullptr, nullptr);
}

std::optional<Image> decodeText(const DecodeJob& job) {
  const std::string bytes = readBeginning(job.descriptor, kMostBytes);
  if (bytes.empty()) return std::nullopt;
  const PixelSize size = fitInto({job.width, job.height}, kPageWidth, kPageHeight);
  CairoImage canvas(size);
  canvas.paint(1, 1, 1);
  cairo_t* context = canvas.context();
  cairo_scale(context, size.width / kPageWidth, size.height / kPageHeight);
  const double width = kPageWidth - 2 * kMargin;
  const double height = kPageHeight - 2 * kMargin;
  cairo_rectangle(context, kMargin, kMargin, width, height);
  cairo_clip(context);
  cairo_move_to(context, kMargin, kMargin);
  cairo_set_source_rgb(context, 0.1, 0.1, 0.1);

  const std::unique_ptr<PangoLayout, Unref> layout(pango_cairo_create_layout(context));
  const std::unique_ptr<PangoFontDescription, decltype(&pango_font_description_free)> face(
      pango_font_description_from_string(faceOf(job)), pango_font_description_free);
  pango_layout_set_font_description(layout.get(), face.get());
  pango_layout_set_width(layout.get(), static_cast<int>(width * PANGO_SCALE));
  pango_layout_set_height(layout.get(), static_cast<int>(height * PANGO_SCALE));
  pango_layout_set_wrap(layout.get(), PANGO_WRAP_WORD_CHAR);
  fill(layout.get(), job, bytes);
  pango_cairo_show_layout(context, layout.get());
  canvas.frame();
  return canvas.image();
}

}  // namespace vt::worker
