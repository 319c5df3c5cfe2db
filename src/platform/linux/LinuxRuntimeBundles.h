#pragma once

#include "platform/RecordRuntimeBundles.h"

namespace vt {

/// OpenDirectory on this machine, over AccountRecords: its password check is PAM's, or that of the
/// files under the root prefix.
class LinuxRuntimeBundles final : public RecordRuntimeBundles {
 public:
  using RecordRuntimeBundles::RecordRuntimeBundles;
};

}  // namespace vt
