#include "extraction/media/CaptionAttributes.h"

#include <algorithm>
#include <array>
#include <exiv2/exiv2.hpp>
#include <string>

#include "extraction/FoundAttributes.h"
#include "extraction/media/WrittenDate.h"

namespace vt {
namespace {

/// Where an attribute may stand in a picture, the first that is there counting.
struct CaptionRow {
  const char* attribute;
  bool isList;
  std::array<const char*, 3> keys;  // nullptr for fewer
};

constexpr CaptionRow kRows[] = {
    {"kMDItemTitle", false, {"Xmp.dc.title", "Iptc.Application2.ObjectName", nullptr}},
    {"kMDItemHeadline", false, {"Xmp.photoshop.Headline", "Iptc.Application2.Headline", nullptr}},
    {"kMDItemDescription",
     false,
     {"Xmp.dc.description", "Iptc.Application2.Caption", "Exif.Image.ImageDescription"}},
    {"kMDItemInstructions",
     false,
     {"Xmp.photoshop.Instructions", "Iptc.Application2.SpecialInstructions", nullptr}},
    {"kMDItemComment", false, {"Exif.Photo.UserComment", nullptr, nullptr}},
    {"kMDItemKeywords", true, {"Xmp.dc.subject", "Iptc.Application2.Keywords", nullptr}},
    {"kMDItemAuthors", true, {"Xmp.dc.creator", "Iptc.Application2.Byline", "Exif.Image.Artist"}},
    {"kMDItemEditors", true, {"Xmp.photoshop.CaptionWriter", "Iptc.Application2.Writer", nullptr}},
    {"kMDItemContributors", true, {"Xmp.dc.contributor", nullptr, nullptr}},
    {"kMDItemPublishers", true, {"Xmp.dc.publisher", nullptr, nullptr}},
    {"kMDItemCopyright",
     false,
     {"Xmp.dc.rights", "Iptc.Application2.Copyright", "Exif.Image.Copyright"}},
    {"kMDItemRights", false, {"Xmp.xmpRights.UsageTerms", nullptr, nullptr}},
    {"kMDItemIdentifier", false, {"Xmp.dc.identifier", nullptr, nullptr}},
    {"kMDItemLanguages", true, {"Xmp.dc.language", nullptr, nullptr}},
    {"kMDItemCreator",
     false,
     {"Xmp.xmp.CreatorTool", "Exif.Image.Software", "Iptc.Application2.Program"}},
    {"kMDItemCity", false, {"Xmp.photoshop.City", "Iptc.Application2.City", nullptr}},
    {"kMDItemStateOrProvince",
     false,
     {"Xmp.photoshop.State", "Iptc.Application2.ProvinceState", nullptr}},
    {"kMDItemCountry", false, {"Xmp.photoshop.Country", "Iptc.Application2.CountryName", nullptr}},
    {"kMDItemNamedLocation",
     false,
     {"Xmp.iptc.Location", "Iptc.Application2.SubLocation", nullptr}},
    {"kMDItemOrganizations", true, {"Xmp.photoshop.Credit", "Iptc.Application2.Credit", nullptr}},
};

/// The texts of one field: the default language of several, all elements of a list.
std::vector<std::string> textsOf(const Exiv2::Value& value) {
  if (const auto* languages = dynamic_cast<const Exiv2::LangAltValue*>(&value)) {
    return {languages->toString("x-default").empty() && !languages->value_.empty()
                ? languages->value_.begin()->second
                : languages->toString("x-default")};
  }
  if (const auto* list = dynamic_cast<const Exiv2::XmpArrayValue*>(&value)) {
    std::vector<std::string> texts;
    texts.reserve(static_cast<std::size_t>(list->count()));
    for (long i = 0; i < list->count(); ++i) texts.push_back(list->toString(i));
    return texts;
  }
  // Says its own encoding, which is no part of it.
  if (const auto* comment = dynamic_cast<const Exiv2::CommentValue*>(&value)) {
    return {comment->comment()};
  }
  return {value.toString()};
}

class Captions {
 public:
  explicit Captions(const Exiv2::Image& image) : image_(image) {}

  std::vector<std::string> textsAt(const std::string& key) const {
    if (key.starts_with("Xmp.")) return textsIn(image_.xmpData(), Exiv2::XmpKey(key));
    if (key.starts_with("Iptc.")) {
      const Exiv2::IptcKey wanted(key);
      std::vector<std::string> texts;  // each keyword is a field of its own
      for (const Exiv2::Iptcdatum& field : image_.iptcData()) {
        if (field.tag() == wanted.tag() && field.record() == wanted.record()) {
          texts.push_back(field.toString());
        }
      }
      return texts;
    }
    return textsIn(image_.exifData(), Exiv2::ExifKey(key));
  }

  std::string textAt(const std::string& key) const {
    const std::vector<std::string> texts = textsAt(key);
    return texts.empty() ? std::string() : texts.front();
  }

 private:
  template <class Fields, class Key>
  static std::vector<std::string> textsIn(const Fields& fields, const Key& key) {
    const auto field = fields.findKey(key);
    return field == fields.end() || field->count() == 0 ? std::vector<std::string>()
                                                        : textsOf(field->value());
  }

  const Exiv2::Image& image_;
};

void tellDates(const Captions& captions, FoundAttributes& found) {
  const auto exifDate = [&](const char* date, const char* fraction, const char* zone) {
    const std::string digits = captions.textAt(fraction);
    return captions.textAt(date) + (digits.empty() ? "" : "." + digits) + captions.textAt(zone);
  };
  const std::string written[] = {
      exifDate("Exif.Photo.DateTimeOriginal", "Exif.Photo.SubSecTimeOriginal", "Exif.Photo.0x9011"),
      exifDate("Exif.Photo.DateTimeDigitized", "Exif.Photo.SubSecTimeDigitized",
               "Exif.Photo.0x9012"),
      captions.textAt("Xmp.photoshop.DateCreated"),
      captions.textAt("Iptc.Application2.DateCreated") + " " +
          captions.textAt("Iptc.Application2.TimeCreated"),
      captions.textAt("Xmp.xmp.CreateDate"),
  };
  for (const std::string& text : written) {
    found.setDate("kMDItemContentCreationDate", dateOfWritten(text));
  }
}

/// Stars from 0 to 5; -1, which says that a picture is rejected, counts as none.
void tellRating(const Captions& captions, FoundAttributes& found) {
  for (const char* key : {"Xmp.xmp.Rating", "Exif.Image.Rating"}) {
    const std::string text = captions.textAt(key);
    if (text.empty()) continue;
    char* end = nullptr;
    const double stars = std::strtod(text.c_str(), &end);
    if (end != text.c_str() && stars >= -1 && stars <= 5) {
      found.setNumber("kMDItemStarRating", std::max(stars, 0.0));
    }
  }
}

}  // namespace

void tellCaptions(const Exiv2::Image& image, FoundAttributes& found) {
  const Captions captions(image);
  for (const CaptionRow& row : kRows) {
    const bool isFromAll = std::string_view(row.attribute) == "kMDItemKeywords";
    for (const char* key : row.keys) {
      if (key == nullptr || (found.has(row.attribute) && !isFromAll)) break;
      for (const std::string& text : captions.textsAt(key)) {
        if (row.isList) {
          found.addText(row.attribute, text);
        } else {
          found.setText(row.attribute, text);
        }
      }
    }
  }
  found.setText("kMDItemComment", image.comment());
  tellDates(captions, found);
  tellRating(captions, found);
}

}  // namespace vt
