#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vt {

/// The files that ship with the library.
class Resources {
 public:
  virtual ~Resources() = default;

  /// The bytes of the resource called `name` of type `type` ("ContentTypeGroups", "plist"); nothing
  /// when there is none or it cannot be read.
  virtual std::optional<std::string> resource(std::string_view name,
                                              std::string_view type) const = 0;
};

}  // namespace vt
