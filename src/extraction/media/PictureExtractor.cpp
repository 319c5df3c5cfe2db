#include "extraction/media/PictureExtractor.h"

#include <algorithm>
#include <exiv2/bmffimage.hpp>
#include <exiv2/exiv2.hpp>
#include <utility>

#include "extraction/FoundAttributes.h"
#include "extraction/media/CameraAttributes.h"
#include "extraction/media/CaptionAttributes.h"
#include "extraction/media/MappedInput.h"
#include "extraction/media/PictureLayout.h"

namespace vt {
namespace {

constexpr int kMostOrientation = 8;
constexpr int kFirstTurnedOrientation = 5;  // from here on, width and height change places

ExtractionFailure malformed(const char* reason) {
  return {ExtractionFailure::Kind::kMalformed, reason};
}

/// The size as the picture is seen: with the top where the camera had it.
void tellSize(std::uint32_t width, std::uint32_t height, const Exiv2::ExifData& exif,
              FoundAttributes& found) {
  if (width == 0 || height == 0) return;
  const auto orientation = exif.findKey(Exiv2::ExifKey("Exif.Image.Orientation"));
  if (orientation != exif.end() && orientation->count() == 1 &&
      orientation->toLong() >= kFirstTurnedOrientation &&
      orientation->toLong() <= kMostOrientation) {
    std::swap(width, height);
  }
  found.setNumber("kMDItemPixelWidth", width);
  found.setNumber("kMDItemPixelHeight", height);
  found.setNumber("kMDItemPixelCount", static_cast<double>(width) * height);
  found.setNumber("kMDItemOrientation", height > width ? 1 : 0);
}

void tellLayout(const PictureLayout& layout, FoundAttributes& found) {
  found.setNumber("kMDItemBitsPerSample", layout.bitsPerSample);
  found.setText("kMDItemColorSpace", layout.colorSpace);
  if (layout.hasAlpha) found.setBoolean("kMDItemHasAlphaChannel", *layout.hasAlpha);
}

void tellProfile(Exiv2::Image& image, FoundAttributes& found) {
  const Exiv2::DataBuf* const profile = image.iccProfile();
  if (!image.iccProfileDefined() || profile == nullptr || profile->pData_ == nullptr) return;
  const ColorProfile told =
      colorProfileOf({reinterpret_cast<const char*>(profile->pData_),
                      static_cast<std::size_t>(std::max(profile->size_, 0L))});
  found.setText("kMDItemProfileName", told.name);
  found.setText("kMDItemColorSpace", told.colorSpace);
}

}  // namespace

PictureExtractor::PictureExtractor(const ContentTypes& types)
    : types_(types, {"public.jpeg",
                     "public.jpeg-2000",
                     "public.tiff",
                     "public.png",
                     "com.compuserve.gif",
                     "com.microsoft.bmp",
                     "public.heif-standard",
                     "org.webmproject.webp",
                     "com.adobe.photoshop-image",
                     "com.truevision.tga-image",
                     "public.mpo-image",
                     "com.adobe.raw-image",
                     "com.canon.cr2-raw-image",
                     "com.canon.cr3-raw-image",
                     "com.canon.crw-raw-image",
                     "com.nikon.raw-image",
                     "com.nikon.nrw-raw-image",
                     "com.sony.arw-raw-image",
                     "com.sony.sr2-raw-image",
                     "com.fuji.raw-image",
                     "com.olympus.raw-image",
                     "com.panasonic.rw2-raw-image",
                     "com.pentax.raw-image",
                     "com.samsung.raw-image",
                     "com.konicaminolta.raw-image"}) {
  // What the library has to say of a file, nobody reads.
  Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
  Exiv2::enableBMFF();
}

Result<Extraction, ExtractionFailure> PictureExtractor::extract(int file, ContentTypeId /*type*/) {
  const std::optional<MappedInput> input = MappedInput::of(file);
  if (!input) {
    return ExtractionFailure{ExtractionFailure::Kind::kTooLarge, "it does not fit into memory"};
  }
  if (input->bytes().empty()) return malformed("it is empty");
  Extraction extraction;
  FoundAttributes found(extraction);
  const std::optional<PictureLayout> layout = pictureLayoutOf(input->bytes());
  if (layout) tellLayout(*layout, found);
  try {
    const auto image =
        Exiv2::ImageFactory::open(reinterpret_cast<const Exiv2::byte*>(input->bytes().data()),
                                  static_cast<long>(input->bytes().size()));
    image->readMetadata();
    const bool isTold = image->pixelWidth() > 0 && image->pixelHeight() > 0;
    if (isTold) {
      tellSize(static_cast<std::uint32_t>(image->pixelWidth()),
               static_cast<std::uint32_t>(image->pixelHeight()), image->exifData(), found);
    } else if (layout) {
      tellSize(layout->width, layout->height, image->exifData(), found);
    }
    tellCaptions(*image, found);
    tellCamera(image->exifData(), found);
    tellProfile(*image, found);
  } catch (const Exiv2::AnyError&) {
    // The size stands at the beginning: it is told even of a picture that is cut off.
    if (!layout) return malformed("it holds no picture that can be read");
    tellSize(layout->width, layout->height, {}, found);
  }
  return extraction;
}

}  // namespace vt
