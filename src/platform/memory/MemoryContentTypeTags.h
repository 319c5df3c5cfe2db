#pragma once

#include <map>
#include <utility>

#include "platform/ContentTypeTags.h"

namespace vt {

/// Tags from a table: those that a test adds, and no others.
class MemoryContentTypeTags final : public ContentTypeTags {
 public:
  void add(std::string type, std::string_view tagClass, std::string tag) {
    tags_[{std::move(type), std::string(tagClass)}] = std::move(tag);
  }

  std::optional<std::string> UTTypeCopyPreferredTagWithClass(
      std::string_view type, std::string_view tagClass) const override {
    const auto found = tags_.find({std::string(type), std::string(tagClass)});
    return found == tags_.end() ? std::nullopt : std::optional(found->second);
  }

 private:
  std::map<std::pair<std::string, std::string>, std::string> tags_;
};

}  // namespace vt
