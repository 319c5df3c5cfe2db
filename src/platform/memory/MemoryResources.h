#pragma once

#include <map>
#include <string>
#include <utility>

#include "platform/Resources.h"

namespace vt {

/// Shipped files from a table.
class MemoryResources final : public Resources {
 public:
  void add(std::string_view name, std::string_view type, std::string bytes) {
    resources_[{std::string(name), std::string(type)}] = std::move(bytes);
  }

  std::optional<std::string> resource(std::string_view name, std::string_view type) const override {
    const auto found = resources_.find({std::string(name), std::string(type)});
    return found == resources_.end() ? std::nullopt : std::optional<std::string>(found->second);
  }

 private:
  std::map<std::pair<std::string, std::string>, std::string> resources_;
};

}  // namespace vt
