#pragma once

#include <optional>
#include <string>
#include <vector>

namespace vt {

/// The names of the machine that this process runs on.
class Host {
 public:
  virtual ~Host() = default;

  /// The host's name; nothing when it has none.
  virtual std::optional<std::string> name() const = 0;
  /// All names under which the host knows itself, name() first. May be empty.
  virtual std::vector<std::string> names() const = 0;
};

}  // namespace vt
