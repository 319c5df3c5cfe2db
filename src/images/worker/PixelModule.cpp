#include "images/worker/DecoderModule.h"
#include "images/worker/PixelDecoder.h"
#ifdef VT_WITH_AUDIO
#include "images/worker/AudioDecoder.h"
#endif
#ifdef VT_WITH_PACKAGES
#include "images/worker/PackageDecoder.h"
#endif

vt::worker::Decode vtDecoderOf(vt::ImageFormat format) {
  static const bool isLoaded = vt::worker::loadPixelDecoder();
  if (!isLoaded) return nullptr;
  switch (format) {
    case vt::ImageFormat::kPixels:
      return vt::worker::decodePixels;
#ifdef VT_WITH_AUDIO
    case vt::ImageFormat::kAudio:
      return vt::worker::decodeAudio;
#endif
#ifdef VT_WITH_PACKAGES
    case vt::ImageFormat::kPackage:
      return vt::worker::decodePackage;
#endif
    default:
      return nullptr;
  }
}
