#pragma once

#include "platform/RecordDirectoryServices.h"

namespace vt {

/// The directory of this machine, over AccountRecords.
class LinuxDirectoryServices final : public RecordDirectoryServices {
 public:
  using RecordDirectoryServices::RecordDirectoryServices;
};

}  // namespace vt
