#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/Value.h"

namespace vt::tool {

/// What kind of value a global setting holds.
enum class SettingType { kText, kBoolean, kPort, kInteger, kSecret, kTexts, kAddresses };

/// Whether settings of that type are lists of values.
inline bool isList(SettingType type) {
  return type == SettingType::kTexts || type == SettingType::kAddresses;
}

/// A global setting that the server knows.
struct KnownSetting {
  std::string_view key;
  SettingType type;
  std::string_view meaning;  ///< for people, without a full stop
};

/// The setting called `key`; nullptr for one that the server does not know.
const KnownSetting* knownSetting(std::string_view key);

/// Every known setting, in the order in which they are listed.
std::span<const KnownSetting> knownSettings();

/// `text` as a value of that type, or as an element of a list of that type. Throws CommandError
/// (usage) when it is none.
Value settingFromText(SettingType type, std::string_view text);

/// `texts` as a value of that type: for lists as many as there are, or one that holds all of them
/// as an array in JSON. Throws CommandError (usage) when they are none.
Value settingFromTexts(SettingType type, const std::vector<std::string>& texts);

/// The value as people read it, on one line; a secret only says that it is set.
std::string textOfSetting(std::string_view key, const Value& value);

}  // namespace vt::tool
