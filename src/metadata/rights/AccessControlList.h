#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "foundation/Result.h"
#include "metadata/rights/Credentials.h"
#include "metadata/rights/Permissions.h"

namespace vt {

/// Why the bytes of an access control list make no sense.
struct AccessControlListError {
  std::size_t offset = 0;
  std::string reason;
};

/// A POSIX access control list, as the kernel stores it in "system.posix_acl_access".
///
/// Layout, little endian: a 32-bit version, which is 2; then entries of a 16-bit tag, 16-bit
/// permissions and a 32-bit user or group id, which only named entries use.
class AccessControlList {
 public:
  enum class Tag : std::uint16_t {
    kOwner = 0x01,
    kUser = 0x02,
    kOwningGroup = 0x04,
    kGroup = 0x08,
    kMask = 0x10,
    kOthers = 0x20,
  };

  struct Entry {
    Tag tag = Tag::kOthers;
    Permissions permissions = 0;
    std::uint32_t id = 0;
  };

  /// Fails on a wrong version or length, an unknown tag or permission, and on entries that are not
  /// in the order of their tags or miss or repeat one of owner, owning group and others.
  static Result<AccessControlList, AccessControlListError> parse(
      std::span<const std::uint8_t> bytes);

  /// Whether somebody who is not the owner gets all of `wanted`, on a file of `owningGroup`.
  bool grants(const Credentials& who, std::uint32_t owningGroup, Permissions wanted) const;

  const std::vector<Entry>& entries() const { return entries_; }

 private:
  AccessControlList() = default;

  std::vector<Entry> entries_;
  Permissions mask_ = 7;
};

}  // namespace vt
