#include "images/worker/DecoderTable.h"

#include <dlfcn.h>

#ifdef VT_WITH_AUDIO
#include "images/worker/AudioDecoder.h"
#endif
#ifdef VT_WITH_PACKAGES
#include "images/worker/PackageDecoder.h"
#endif
#ifdef VT_WITH_PDF
#include "images/worker/PdfDecoder.h"
#endif
#include "images/worker/PixelDecoder.h"
#include "images/worker/SvgDecoder.h"
#include "images/worker/TextDecoder.h"

namespace vt::worker {

DecoderTable::DecoderTable() {
  const auto put = [this](ImageFormat format, Decode decode) {
    decoders_[static_cast<std::size_t>(format)] = decode;
  };
  const bool hasPixels = loadPixelDecoder();
  loadFonts();
  put(ImageFormat::kSvg, decodeSvg);
  for (const ImageFormat text :
       {ImageFormat::kText, ImageFormat::kSource, ImageFormat::kMarkdown, ImageFormat::kHtml}) {
    put(text, decodeText);
  }
#ifdef VT_WITH_PDF
  put(ImageFormat::kPdf, decodePdf);
#endif
  if (!hasPixels) return;
  put(ImageFormat::kPixels, decodePixels);
#ifdef VT_WITH_PACKAGES
  put(ImageFormat::kPackage, decodePackage);
#endif
#ifdef VT_WITH_AUDIO
  put(ImageFormat::kAudio, decodeAudio);
#endif
}

Decode DecoderTable::decoderOf(ImageFormat format) {
  if (format == ImageFormat::kVideo) return videoDecoder();
  return decoders_[static_cast<std::size_t>(format)];
}

Decode DecoderTable::videoDecoder() {
  if (videoDecoder_) return *videoDecoder_;
  videoDecoder_ = nullptr;
  void* module = ::dlopen(VT_IMAGE_MODULES "/vistaro-video.so", RTLD_NOW | RTLD_LOCAL);
  using Entry = Decode (*)();
  const auto entry = module ? reinterpret_cast<Entry>(::dlsym(module, "vtVideoDecoder")) : nullptr;
  if (entry) videoDecoder_ = entry();
  return *videoDecoder_;
}

}  // namespace vt::worker
