#pragma once

#include <string>

#include "platform/Images.h"

namespace vt {

class VTUser;

/// One picture of a file, to be written to a file.
struct ImageOrder {
  std::string source;  ///< an absolute path, bytes
  std::string target;  ///< likewise; what is there is replaced
  ThumbnailSize size;
};

/// Makes the picture with the rights of `user`, who may be nullptr (see ItemAccess).
///
/// Asks for a thumbnail, in the way that the platform says, and takes the icon when there is none.
/// False when there is neither, the user may not read the source, or the target cannot be written.
bool makeImage(const ImageOrder& order, const VTUser* user);

/// Whether `user`, who may be nullptr (see ItemAccess), may read the file or folder at `path` now:
/// to be asked before they are handed a picture of it that was made for anybody.
bool mayReadSource(const std::string& path, const VTUser* user);

}  // namespace vt
