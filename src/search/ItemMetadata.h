#pragma once

#include <memory>
#include <string>

#include "foundation/Dictionary.h"

namespace vt {

class VTUser;

/// All that the metadata index tells of the file at the absolute path `path`, by attribute name, in
/// the order of the index, with the rights of `user` (see ItemAccess), who may be nullptr. Empty
/// for what may not be read, and without an index; never nullptr.
std::shared_ptr<Dictionary> metadataAttributes(const std::string& path, const VTUser* user);

}  // namespace vt
