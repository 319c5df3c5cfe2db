#pragma once

#include <memory>

#include "foundation/Dictionary.h"
#include "foundation/ObjectArray.h"
#include "foundation/VTObject.h"

namespace vt {

/// The folders that this machine shares over the network.
class VTSharePoint final : public VTObject {
 public:
  /// `allSharePoints`
  /// The share-point records of the local directory in its order, each a dictionary of attribute
  /// type to text as GetRecordList() makes it; nil when the session or the local node cannot be
  /// opened. Asks the directory each time, which may start programs. Uses gDirRef: one call at a
  /// time.
  static std::shared_ptr<ObjectArray<Dictionary>> allSharePoints();
};

}  // namespace vt
