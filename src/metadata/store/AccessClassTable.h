#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
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

  /// The number of the class, which is a new one when there was none like it.
  std::uint32_t numberOf(const FileOwnership& ownership, AclPresence acl,
                         std::span<const std::uint8_t> aclBytes);

  std::size_t size() const { return classes_.size(); }
  const Class& operator[](std::size_t number) const { return classes_[number]; }

 private:
  struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const {
      return std::hash<std::string_view>{}(text);
    }
  };

  /// A class without list bytes that was asked for not long ago: files of a folder share a few.
  struct Recent {
    FileOwnership ownership;
    AclPresence acl = AclPresence::kNone;
    std::uint32_t number = kNoNumber;
  };
  static constexpr std::uint32_t kNoNumber = 0xFFFFFFFF;
  static constexpr std::size_t kRecents = 256;

  Recent& recentFor(const FileOwnership& ownership);
  std::uint32_t lookUp(const FileOwnership& ownership, AclPresence acl,
                       std::span<const std::uint8_t> aclBytes);

  std::array<Recent, kRecents> recents_;
  std::string key_;  // kept for its memory
  std::unordered_map<std::string, std::uint32_t, TextHash, std::equal_to<>> numbers_;
  std::vector<Class> classes_;  // lists are borrowed from the keys of numbers_, which never move
};

}  // namespace vt
