#include "extraction/media/CameraAttributes.h"

#include <fmt/format.h>

#include <array>
#include <chrono>
#include <cmath>
#include <exiv2/exiv2.hpp>
#include <optional>
#include <string>
#include <string_view>

#include "extraction/FoundAttributes.h"
#include "extraction/media/WrittenDate.h"

namespace vt {
namespace {

constexpr double kCentimetresPerInch = 2.54;
constexpr double kKilometresPerMile = 1.609344;
constexpr double kKilometresPerKnot = 1.852;
constexpr long kFlashFired = 1;
constexpr long kRedEyeReduction = 0x40;

constexpr std::array<std::string_view, 9> kExposurePrograms = {
    "",         "Manual", "Program AE", "Aperture priority", "Shutter priority",
    "Creative", "Action", "Portrait",   "Landscape"};
constexpr std::array<std::string_view, 7> kMeteringModes = {
    "", "Average", "Center-weighted average", "Spot", "Multi-spot", "Pattern", "Partial"};

/// The fields of a camera, asked for by their names.
class CameraFields {
 public:
  explicit CameraFields(const Exiv2::ExifData& exif) : exif_(exif) {}

  const Exiv2::Exifdatum* field(const char* key) const {
    const auto found = exif_.findKey(Exiv2::ExifKey(key));
    return found == exif_.end() || found->count() == 0 ? nullptr : &*found;
  }

  std::optional<double> number(const char* key, long index = 0) const {
    const Exiv2::Exifdatum* const found = field(key);
    if (found == nullptr || found->count() <= index) return std::nullopt;
    const Exiv2::TypeId type = found->typeId();
    if (type == Exiv2::unsignedRational || type == Exiv2::signedRational) {
      const Exiv2::Rational ratio = found->toRational(index);
      if (ratio.second == 0) return std::nullopt;
      // A ratio of unsigned numbers comes back in signed ones.
      if (type == Exiv2::signedRational) return static_cast<double>(ratio.first) / ratio.second;
      return static_cast<double>(static_cast<std::uint32_t>(ratio.first)) /
             static_cast<std::uint32_t>(ratio.second);
    }
    if (type == Exiv2::asciiString || type == Exiv2::undefined) return std::nullopt;
    return found->toFloat(index);
  }

  std::string text(const char* key) const {
    const Exiv2::Exifdatum* const found = field(key);
    return found == nullptr ? std::string() : tidiedText(found->toString());
  }

  /// The text of a field that begins with the name of its encoding.
  std::string comment(const char* key) const {
    const Exiv2::Exifdatum* const found = field(key);
    const auto* const value =
        found == nullptr ? nullptr : dynamic_cast<const Exiv2::CommentValue*>(&found->value());
    return value == nullptr ? std::string() : value->comment();
  }

  /// The bytes of a field that is no text.
  std::string bytes(const char* key) const {
    const Exiv2::Exifdatum* const found = field(key);
    constexpr long kMostBytes = 1024;
    if (found == nullptr || found->size() > kMostBytes) return "";
    std::string copied(static_cast<std::size_t>(found->size()), '\0');
    found->copy(reinterpret_cast<Exiv2::byte*>(copied.data()), Exiv2::littleEndian);
    return copied;
  }

 private:
  const Exiv2::ExifData& exif_;
};

void tellNumber(const CameraFields& fields, const char* key, const char* attribute,
                FoundAttributes& found) {
  if (const std::optional<double> number = fields.number(key)) found.setNumber(attribute, *number);
}

template <std::size_t kCount>
void tellNamed(const CameraFields& fields, const char* key,
               const std::array<std::string_view, kCount>& names, const char* attribute,
               FoundAttributes& found) {
  const std::optional<double> number = fields.number(key);
  if (number && *number >= 0 && *number < kCount) {
    found.setText(attribute, names[static_cast<std::size_t>(*number)]);
  }
}

/// "0230" is version 2.3, "0221" is 2.21.
std::string versionOf(const std::string& digits) {
  if (digits.size() != 4 || digits.find_first_not_of("0123456789") != std::string::npos) return "";
  std::string version = fmt::format("{}.{}", std::stoi(digits.substr(0, 2)), digits.substr(2));
  if (version.ends_with('0')) version.pop_back();
  return version;
}

/// "1/250" for short times, "2.5" for long ones.
std::string timeText(double seconds) {
  if (seconds > 0 && seconds < 0.5) return fmt::format("1/{}", std::lround(1 / seconds));
  return fmt::format("{:g}", seconds);
}

void tellResolution(const CameraFields& fields, FoundAttributes& found) {
  constexpr double kInches = 2;
  constexpr double kCentimetres = 3;
  const double unit = fields.number("Exif.Image.ResolutionUnit").value_or(kInches);
  if (unit != kInches && unit != kCentimetres) return;
  const double perInch = unit == kCentimetres ? kCentimetresPerInch : 1;
  const auto width = fields.number("Exif.Image.XResolution");
  const auto height = fields.number("Exif.Image.YResolution");
  if (width) found.setNumber("kMDItemResolutionWidthDPI", *width * perInch);
  if (height) found.setNumber("kMDItemResolutionHeightDPI", *height * perInch);
}

/// How the samples of a TIFF file make colours.
void tellColours(const CameraFields& fields, FoundAttributes& found) {
  constexpr std::array<std::string_view, 9> kSpaces = {"Gray", "Gray", "RGB", "RGB", "",
                                                       "CMYK", "RGB",  "",    "Lab"};
  tellNamed(fields, "Exif.Image.PhotometricInterpretation", kSpaces, "kMDItemColorSpace", found);
  tellNumber(fields, "Exif.Image.BitsPerSample", "kMDItemBitsPerSample", found);
}

void tellExposure(const CameraFields& fields, FoundAttributes& found) {
  if (const std::optional<double> seconds = fields.number("Exif.Photo.ExposureTime")) {
    found.setNumber("kMDItemExposureTimeSeconds", *seconds);
    found.setText("kMDItemExposureTimeString", timeText(*seconds));
  }
  tellNumber(fields, "Exif.Photo.FNumber", "kMDItemFNumber", found);
  tellNumber(fields, "Exif.Photo.ApertureValue", "kMDItemAperture", found);
  tellNumber(fields, "Exif.Photo.MaxApertureValue", "kMDItemMaxAperture", found);
  tellNumber(fields, "Exif.Photo.ISOSpeedRatings", "kMDItemISOSpeed", found);
  tellNumber(fields, "Exif.Photo.FocalLength", "kMDItemFocalLength", found);
  tellNumber(fields, "Exif.Photo.FocalLengthIn35mmFilm", "kMDItemFocalLength35mm", found);
  tellNumber(fields, "Exif.Photo.ExposureMode", "kMDItemExposureMode", found);
  tellNumber(fields, "Exif.Photo.WhiteBalance", "kMDItemWhiteBalance", found);
  tellNamed(fields, "Exif.Photo.ExposureProgram", kExposurePrograms, "kMDItemExposureProgram",
            found);
  tellNamed(fields, "Exif.Photo.MeteringMode", kMeteringModes, "kMDItemMeteringMode", found);
  if (const std::optional<double> flash = fields.number("Exif.Photo.Flash")) {
    const auto bits = static_cast<long>(*flash);
    found.setNumber("kMDItemFlashOnOff", (bits & kFlashFired) != 0 ? 1 : 0);
    found.setBoolean("kMDItemRedEyeOnOff", (bits & kRedEyeReduction) != 0);
  }
}

/// Degrees, to the south and west below 0, of three ratios: degrees, minutes, seconds.
void tellAngle(const CameraFields& fields, const char* key, const char* reference, double most,
               const char* attribute, FoundAttributes& found) {
  const std::optional<double> degrees = fields.number(key, 0);
  if (!degrees) return;
  const std::string side = fields.text(reference);
  double angle =
      *degrees + fields.number(key, 1).value_or(0) / 60 + fields.number(key, 2).value_or(0) / 3600;
  if (angle > most) return;
  if (side.starts_with('S') || side.starts_with('W')) angle = -angle;
  found.setNumber(attribute, angle);
}

void tellTimeOfPlace(const CameraFields& fields, FoundAttributes& found) {
  const std::string day = fields.text("Exif.GPSInfo.GPSDateStamp");
  found.setText("kMDItemGPSDateStamp", day);
  const auto hours = fields.number("Exif.GPSInfo.GPSTimeStamp", 0);
  const auto minutes = fields.number("Exif.GPSInfo.GPSTimeStamp", 1);
  const auto seconds = fields.number("Exif.GPSInfo.GPSTimeStamp", 2);
  const std::optional<Date> date = dateOfWritten(day + " 00:00:00Z");
  if (!date || !hours || !minutes || !seconds || *hours >= 24 || *minutes >= 60 || *seconds > 60) {
    return;
  }
  const std::chrono::duration<double> time(*hours * 3600 + *minutes * 60 + *seconds);
  found.setDate("kMDItemTimestamp", *date + std::chrono::round<Date::duration>(time));
}

void tellPlace(const CameraFields& fields, FoundAttributes& found) {
  tellAngle(fields, "Exif.GPSInfo.GPSLatitude", "Exif.GPSInfo.GPSLatitudeRef", 90,
            "kMDItemLatitude", found);
  tellAngle(fields, "Exif.GPSInfo.GPSLongitude", "Exif.GPSInfo.GPSLongitudeRef", 180,
            "kMDItemLongitude", found);
  tellAngle(fields, "Exif.GPSInfo.GPSDestLatitude", "Exif.GPSInfo.GPSDestLatitudeRef", 90,
            "kMDItemGPSDestLatitude", found);
  tellAngle(fields, "Exif.GPSInfo.GPSDestLongitude", "Exif.GPSInfo.GPSDestLongitudeRef", 180,
            "kMDItemGPSDestLongitude", found);
  if (const std::optional<double> altitude = fields.number("Exif.GPSInfo.GPSAltitude")) {
    const bool isBelowSea = fields.number("Exif.GPSInfo.GPSAltitudeRef").value_or(0) == 1;
    found.setNumber("kMDItemAltitude", isBelowSea ? -*altitude : *altitude);
  }
  if (const std::optional<double> speed = fields.number("Exif.GPSInfo.GPSSpeed")) {
    const std::string unit = fields.text("Exif.GPSInfo.GPSSpeedRef");
    const double kilometres = unit == "M"   ? kKilometresPerMile
                              : unit == "N" ? kKilometresPerKnot
                                            : 1;
    found.setNumber("kMDItemSpeed", *speed * kilometres);
  }
  tellNumber(fields, "Exif.GPSInfo.GPSTrack", "kMDItemGPSTrack", found);
  tellNumber(fields, "Exif.GPSInfo.GPSImgDirection", "kMDItemImageDirection", found);
  tellNumber(fields, "Exif.GPSInfo.GPSDOP", "kMDItemGPSDOP", found);
  found.setText("kMDItemGPSStatus", fields.text("Exif.GPSInfo.GPSStatus"));
  found.setText("kMDItemGPSMapDatum", fields.text("Exif.GPSInfo.GPSMapDatum"));
  found.setText("kMDItemGPSAreaInformation", fields.comment("Exif.GPSInfo.GPSAreaInformation"));
  tellTimeOfPlace(fields, found);
  const std::string version = fields.bytes("Exif.GPSInfo.GPSVersionID");
  if (version.size() == 4) {
    found.setText("kMDItemEXIFGPSVersion",
                  fmt::format("{}.{}.{}.{}", int{version[0]}, int{version[1]}, int{version[2]},
                              int{version[3]}));
  }
}

}  // namespace

void tellCamera(const Exiv2::ExifData& exif, FoundAttributes& found) {
  const CameraFields fields(exif);
  found.setText("kMDItemAcquisitionMake", fields.text("Exif.Image.Make"));
  found.setText("kMDItemAcquisitionModel", fields.text("Exif.Image.Model"));
  found.setText("kMDItemCameraOwner", fields.text("Exif.Photo.CameraOwnerName"));
  found.setText("kMDItemLensModel", fields.text("Exif.Photo.LensModel"));
  found.setText("kMDItemEXIFVersion", versionOf(fields.bytes("Exif.Photo.ExifVersion")));
  tellColours(fields, found);
  tellResolution(fields, found);
  tellExposure(fields, found);
  tellPlace(fields, found);
}

}  // namespace vt
