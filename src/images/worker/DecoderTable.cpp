#include "images/worker/DecoderTable.h"

#include <dlfcn.h>
#include <glib.h>

#include <string>

#include "images/worker/DecoderModule.h"
#include "images/worker/SvgDecoder.h"
#include "images/worker/TextDecoder.h"

namespace vt::worker {
namespace {

Decode decoderInModule(const char* name, ImageFormat format) {
  const std::string file = std::string(VT_IMAGE_MODULES "/") + name;
  // Loading it again only counts it.
  void* module = ::dlopen(file.c_str(), RTLD_LAZY | RTLD_LOCAL);
  const auto entry =
      module ? reinterpret_cast<decltype(&vtDecoderOf)>(::dlsym(module, "vtDecoderOf")) : nullptr;
  return entry ? entry(format) : nullptr;
}

Decode loaded(ImageFormat format) {
  switch (format) {
    case ImageFormat::kSvg:
      return decodeSvg;
    case ImageFormat::kText:
    case ImageFormat::kSource:
    case ImageFormat::kMarkdown:
    case ImageFormat::kHtml:
      loadFonts();
      return decodeText;
    case ImageFormat::kPdf:
      loadFonts();
      return decoderInModule("vistaro-pdf.so", format);
    case ImageFormat::kVideo:
      return decoderInModule("vistaro-video.so", format);
    case ImageFormat::kPixels:
    case ImageFormat::kPackage:
    case ImageFormat::kAudio:
      return decoderInModule("vistaro-pixels.so", format);
  }
  return nullptr;
}

}  // namespace

DecoderTable::DecoderTable() {
  // What libraries think of a file is nobody's to read.
  g_log_set_writer_func([](auto, auto, auto, auto) { return G_LOG_WRITER_HANDLED; }, nullptr,
                        nullptr);
}

Decode DecoderTable::decoderOf(ImageFormat format) {
  std::optional<Decode>& decoder = decoders_[static_cast<std::size_t>(format)];
  if (!decoder) decoder = loaded(format);
  return *decoder;
}

}  // namespace vt::worker
