#include "metadata/rights/AccessControlList.h"

#include <algorithm>
#include <utility>

namespace vt {
namespace {

constexpr std::size_t kHeaderBytes = 4;
constexpr std::size_t kEntryBytes = 8;
constexpr std::uint32_t kVersion = 2;

std::uint32_t littleEndian(std::span<const std::uint8_t> bytes) {
  std::uint32_t number = 0;
  for (std::size_t i = bytes.size(); i-- > 0;) number = number << 8 | bytes[i];
  return number;
}

bool isTag(std::uint32_t tag) {
  return tag != 0 && tag <= 0x20 && (tag & (tag - 1)) == 0;  // one bit
}

bool mayRepeat(AccessControlList::Tag tag) {
  return tag == AccessControlList::Tag::kUser || tag == AccessControlList::Tag::kGroup;
}

}  // namespace

Result<AccessControlList, AccessControlListError> AccessControlList::parse(
    std::span<const std::uint8_t> bytes) {
  if (bytes.size() < kHeaderBytes || (bytes.size() - kHeaderBytes) % kEntryBytes != 0) {
    return AccessControlListError{bytes.size(), "it ends within an entry"};
  }
  if (littleEndian(bytes.first(kHeaderBytes)) != kVersion) {
    return AccessControlListError{0, "its version is unknown"};
  }
  AccessControlList list;
  std::uint32_t tags = 0;
  for (std::size_t at = kHeaderBytes; at < bytes.size(); at += kEntryBytes) {
    const std::span<const std::uint8_t> entry = bytes.subspan(at, kEntryBytes);
    const std::uint32_t tag = littleEndian(entry.first(2));
    const std::uint32_t permissions = littleEndian(entry.subspan(2, 2));
    if (!isTag(tag)) return AccessControlListError{at, "an entry has an unknown tag"};
    if (permissions > 7) return AccessControlListError{at + 2, "a permission is unknown"};
    const Entry read{static_cast<Tag>(tag), static_cast<Permissions>(permissions),
                     littleEndian(entry.subspan(4, 4))};
    // Tags are bits in the order of the entries, so everything seen so far is at most this one.
    if (tags > (tag << 1) - 1) return AccessControlListError{at, "its entries are out of order"};
    if ((tags & tag) != 0 && !mayRepeat(read.tag)) {
      return AccessControlListError{at, "an entry is repeated"};
    }
    tags |= tag;
    if (read.tag == Tag::kMask) list.mask_ = read.permissions;
    list.entries_.push_back(read);
  }
  constexpr std::uint32_t kNeeded = 0x01 | 0x04 | 0x20;
  if ((tags & kNeeded) != kNeeded) {
    return AccessControlListError{bytes.size(), "owner, owning group or others are missing"};
  }
  return list;
}

bool AccessControlList::grants(const Credentials& who, std::uint32_t owningGroup,
                               Permissions wanted) const {
  bool isInSomeGroup = false;
  for (const Entry& entry : entries_) {
    switch (entry.tag) {
      case Tag::kUser:
        if (entry.id == who.uid()) return (entry.permissions & mask_ & wanted) == wanted;
        break;
      case Tag::kOwningGroup:
      case Tag::kGroup:
        if (who.isMemberOf(entry.tag == Tag::kGroup ? entry.id : owningGroup)) {
          // One group must give all that is wanted; two halves do not make a whole.
          if ((entry.permissions & wanted) == wanted) return (mask_ & wanted) == wanted;
          isInSomeGroup = true;
        }
        break;
      case Tag::kOthers:
        return !isInSomeGroup && (entry.permissions & wanted) == wanted;
      case Tag::kOwner:
      case Tag::kMask:
        break;
    }
  }
  return false;
}

}  // namespace vt
