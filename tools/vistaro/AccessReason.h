#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "directory/VTUser.h"

namespace vt::tool {

/// Says why a user may not read a file, as the kernel sees it now. For root alone, who may know.
class AccessReason {
 public:
  /// Without a user nothing is refused.
  explicit AccessReason(std::shared_ptr<VTUser> user) : user_(std::move(user)) {}

  /// What is in the way, with its mode and owners: "/a/b may not be searched (drwx------ 0:0)".
  /// That the file is gone, or readable by now, when it is.
  std::string of(const std::string& path);

 private:
  std::optional<std::string> refusalOnTheWayTo(const std::string& path);
  bool isAllowed(const std::string& path, int wanted) const;

  std::shared_ptr<VTUser> user_;
  // Of each folder that was asked about: why it can't be passed; nothing when it can.
  std::unordered_map<std::string, std::optional<std::string>> folders_;
};

}  // namespace vt::tool
