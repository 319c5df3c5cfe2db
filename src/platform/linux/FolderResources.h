#pragma once

#include <string>
#include <utility>

#include "platform/Resources.h"

namespace vt {

/// The shipped files, in one folder.
class FolderResources final : public Resources {
 public:
  /// `folder` is an absolute path; see Environment for the one to use.
  explicit FolderResources(std::string folder) : folder_(std::move(folder)) {}

  /// The file "NAME.TYPE" of the folder. Nothing for a name or type with a slash, or a file that is
  /// longer than 64 MiB.
  std::optional<std::string> resource(std::string_view name, std::string_view type) const override;

 private:
  std::string folder_;
};

}  // namespace vt
