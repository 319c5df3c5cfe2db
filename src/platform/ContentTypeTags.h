#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vt {

/// The class of tags that are MIME types.
inline constexpr std::string_view kUTTagClassMIMEType = "public.mime-type";

/// What content types are called outside: their tags, by class of tag.
class ContentTypeTags {
 public:
  virtual ~ContentTypeTags() = default;

  /// The preferred tag of the content type `type` ("com.adobe.pdf") in the class `tagClass`;
  /// nothing when the type is unknown or has no such tag.
  virtual std::optional<std::string> UTTypeCopyPreferredTagWithClass(
      std::string_view type, std::string_view tagClass) const = 0;
};

}  // namespace vt
