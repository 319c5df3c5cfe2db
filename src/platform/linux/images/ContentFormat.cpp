#include "platform/linux/images/ContentFormat.h"

#include <string_view>

namespace vt {
namespace {

struct Row {
  std::string_view type;
  ImageFormat format;
};

// The first row whose type a file's type is, or conforms to, decides.
constexpr Row kFormats[] = {
    {"public.svg-image", ImageFormat::kSvg},
    {"public.image", ImageFormat::kPixels},
    {"com.adobe.pdf", ImageFormat::kPdf},
    {"public.html", ImageFormat::kHtml},
    {"public.xhtml", ImageFormat::kHtml},
    {"net.daringfireball.markdown", ImageFormat::kMarkdown},
    {"public.source-code", ImageFormat::kSource},
    {"public.json", ImageFormat::kSource},
    {"public.xml", ImageFormat::kSource},
    {"public.delimited-values-text", ImageFormat::kSource},
    {"public.log", ImageFormat::kSource},
    {"public.plain-text", ImageFormat::kText},
    {"org.openxmlformats.openxml", ImageFormat::kPackage},
    {"org.oasis-open.opendocument", ImageFormat::kPackage},
    {"com.apple.iwork.pages.sffpages", ImageFormat::kPackage},
    {"com.apple.iwork.numbers.sffnumbers", ImageFormat::kPackage},
    {"com.apple.iwork.keynote.sffkey", ImageFormat::kPackage},
    {"org.idpf.epub-container", ImageFormat::kPackage},
    {"public.audio", ImageFormat::kAudio},
    {"public.movie", ImageFormat::kVideo},
    {"public.video", ImageFormat::kVideo},
};

}  // namespace

std::optional<ImageFormat> formatOf(const ContentTypes& types, ContentTypeId type) {
  for (const Row& row : kFormats) {
    const std::optional<ContentTypeId> ancestor = types.find(row.type);
    if (ancestor && types.conforms(type, *ancestor)) return row.format;
  }
  return std::nullopt;
}

}  // namespace vt
