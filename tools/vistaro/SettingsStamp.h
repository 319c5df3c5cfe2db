#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <tuple>

#include "settings/VTSettings.h"

namespace vt::tool {

/// Tells when the settings file was replaced. Looks at its status alone.
class SettingsStamp {
 public:
  /// Whether it is another file than at the last call; true for the first.
  bool hasChanged();

 private:
  using Stamp = std::tuple<std::uint64_t, std::uint64_t, std::int64_t, std::int64_t, std::int64_t>;

  std::optional<std::string> path_ = VTSettings::settingsStoragePath();
  Stamp stamp_{1, 0, 0, 0, 0};  // of no file
};

}  // namespace vt::tool
