#pragma once

#include <optional>
#include <string>

#include "platform/ActingAs.h"

namespace vt {

class VTUser;

/// The rights under which somebody looks into the file of an item, from its making to its end.
///
/// | process runs as | user given | what is looked at |
/// |---|---|---|
/// | root | yes | what the user may read, as the kernel sees it (ActingAs) |
/// | anyone else | yes | what the process may read and the user's accessAllowedToPath() grants |
/// | anyone | no | what the process may read |
///
/// Whatever is opened meanwhile stays open afterwards: open, end the access, then read.
class ItemAccess {
 public:
  /// `user` may be nullptr; `path` is absolute. Both are borrowed for the call.
  ItemAccess(const VTUser* user, const std::string& path);

  /// Whether one may go on to look. When not, nothing must be opened.
  bool isGranted() const { return isGranted_; }

 private:
  std::optional<ActingAs> acting_;
  bool isGranted_ = true;
};

}  // namespace vt
