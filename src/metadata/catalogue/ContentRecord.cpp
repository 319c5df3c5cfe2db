#include "metadata/catalogue/ContentRecord.h"

namespace vt {

ContentIdentity identityOf(const FileStatus& status) { return {status.device, status.inode}; }

ContentVersion versionOf(const FileStatus& status) {
  return {status.modified.time_since_epoch().count(), status.sizeInBytes,
          status.attributesChanged.time_since_epoch().count()};
}

}  // namespace vt
