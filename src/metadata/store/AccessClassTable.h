#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "metadata/rights/AccessJudge.h"
#include "metadata/rights/AclReader.h"

namespace vt {

/// Numbers the classes of files that share owner, group, mode and access control list.
class AccessClassTable {
 public:
  struct Class {
    FileOwnership ownership;
    AclPresence acl = AclPresence::kNone;
    std::string_view aclBytes;  ///< as the kernel stores them; "" unless the list is present
  };

  AccessClassTable() = default;
  AccessClassTable(AccessClassTable&&) noexcept = default;
  AccessClassTable& operator=(AccessClassTable&&) noexcept = default;

  /// The number of the class, which is a new one when there was none like it.
  std::uint32_t numberOf(const FileOwnership& ownership, AclPresence acl,
                         std::span<const std::uint8_t> aclBytes);

  std::size_t size() const { return classes_.size(); }
  const Class& operator[](std::size_t number) const { return classes_[number]; }

  /// Has the processor fetch where a class of that ownership without a list is looked for.
  void prefetch(const FileOwnership& ownership) const {
    if (!slots_.empty()) __builtin_prefetch(&slots_[hashOf(ownership) & (slots_.size() - 1)]);
  }

 private:
  static constexpr std::uint32_t kNoNumber = 0xFFFFFFFF;

  /// A place in a hash table. Has all that tells most classes apart: looking at these themselves
  /// would be one more step through memory.
  struct Slot {
    std::uint32_t number = kNoNumber;
    FileOwnership ownership;
    AclPresence acl = AclPresence::kNone;
  };

  static std::size_t hashOf(const FileOwnership& ownership);
  static std::size_t hashOf(const Class& one);
  /// The slot of the class, or where it is to be put.
  Slot& slotOf(const Class& wanted);
  void makeRoom();

  std::vector<Class> classes_;
  std::deque<std::string> lists_;  // which never move: classes_ borrows from them
  std::vector<Slot> slots_;        // half of them empty, or more
};

}  // namespace vt
