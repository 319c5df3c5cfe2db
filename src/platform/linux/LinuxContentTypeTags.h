#pragma once

#include <memory>
#include <utility>

#include "metadata/types/ContentTypes.h"
#include "platform/ContentTypeTags.h"

namespace vt {

/// The tags that the table of content types lists: MIME types, and no others.
class LinuxContentTypeTags final : public ContentTypeTags {
 public:
  /// Without a table (nullptr) no type has a tag.
  explicit LinuxContentTypeTags(std::shared_ptr<const ContentTypes> types)
      : types_(std::move(types)) {}

  std::optional<std::string> UTTypeCopyPreferredTagWithClass(
      std::string_view type, std::string_view tagClass) const override {
    if (!types_ || tagClass != kUTTagClassMIMEType) return std::nullopt;
    return types_->preferredMimeType(type);
  }

 private:
  std::shared_ptr<const ContentTypes> types_;
};

}  // namespace vt
