#pragma once

#include <cstdint>

namespace vt {

/// Permission bits as mode bits and access control entries number them; they may be or-ed.
using Permissions = std::uint8_t;

inline constexpr Permissions kMaySearch = 1;  ///< look a name up in a folder
inline constexpr Permissions kMayRead = 4;    ///< read a file, list a folder

}  // namespace vt
