#pragma once

#include <optional>
#include <string>

namespace vt {

/// `mimeTypeAtPath:`
/// The MIME type of the file at the absolute path `path` (bytes) by its content type: the preferred
/// one of those that the type has. Nil when the metadata index has no item there that the effective
/// user may read, and for a type without MIME type, as most folders are of. Nothing is read of the
/// file itself.
std::optional<std::string> mimeTypeAtPath(const std::string& path);

}  // namespace vt
