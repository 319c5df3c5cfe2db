#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vt {

/// The lines of the file at `path`, without blank ones and comments. Empty when it cannot be read,
/// is no regular file or is longer than 64 MiB.
std::vector<std::string> accountFileLines(const std::string& path);

/// The fields of one line between colons.
std::vector<std::string_view> accountFields(std::string_view line);

/// A user or group id written in decimal; nothing for anything else, and for the last 32-bit
/// number, which is no id.
std::optional<std::uint32_t> accountId(std::string_view field);

}  // namespace vt
