#pragma once

#include "extraction/documents/XmlParser.h"
#include "extraction/documents/ZipPackage.h"

namespace vt {

/// Reads the entry that the package stands at as XML, as far as it is well formed and time and the
/// handler like. False when that is not to its end.
bool readPart(ZipPackage& package, XmlHandler& handler);

}  // namespace vt
