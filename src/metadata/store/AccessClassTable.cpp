#include "metadata/store/AccessClassTable.h"

#include <functional>

namespace vt {
namespace {

constexpr std::size_t kFewestSlots = 64;  // a power of two

}  // namespace

std::uint32_t AccessClassTable::numberOf(const FileOwnership& ownership, AclPresence acl,
                                         std::span<const std::uint8_t> aclBytes) {
  Class wanted{ownership, acl, {}};
  if (acl == AclPresence::kPresent) {
    wanted.aclBytes = {reinterpret_cast<const char*>(aclBytes.data()), aclBytes.size()};
  }
  if (2 * (classes_.size() + 1) > slots_.size()) makeRoom();
  Slot& slot = slotOf(wanted);
  if (slot.number == kNoNumber) {
    slot = {static_cast<std::uint32_t>(classes_.size()), ownership, acl};
    if (!wanted.aclBytes.empty()) wanted.aclBytes = lists_.emplace_back(wanted.aclBytes);
    classes_.push_back(wanted);
  }
  return slot.number;
}

std::size_t AccessClassTable::hashOf(const FileOwnership& ownership) {
  // Odd numbers without pattern; of a product the high bits are the good ones.
  const std::uint64_t hash = ownership.uid * 0x9E3779B97F4A7C15 ^
                             ownership.gid * 0xBF58476D1CE4E5B9 ^
                             ownership.mode * 0x94D049BB133111EB;
  return hash >> 32;
}

std::size_t AccessClassTable::hashOf(const Class& one) {
  const std::size_t list = one.aclBytes.empty() ? 0 : std::hash<std::string_view>{}(one.aclBytes);
  return hashOf(one.ownership) ^ list;
}

AccessClassTable::Slot& AccessClassTable::slotOf(const Class& wanted) {
  const std::size_t last = slots_.size() - 1;
  for (std::size_t at = hashOf(wanted) & last;; at = (at + 1) & last) {
    Slot& slot = slots_[at];
    if (slot.number == kNoNumber) return slot;
    if (slot.ownership == wanted.ownership && slot.acl == wanted.acl &&
        (slot.acl != AclPresence::kPresent || classes_[slot.number].aclBytes == wanted.aclBytes)) {
      return slot;
    }
  }
}

void AccessClassTable::makeRoom() {
  slots_.assign(slots_.empty() ? kFewestSlots : 2 * slots_.size(), Slot());
  for (std::uint32_t number = 0; number < classes_.size(); ++number) {
    const Class& one = classes_[number];
    slotOf(one) = {number, one.ownership, one.acl};
  }
}

}  // namespace vt
