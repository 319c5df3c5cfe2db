#include "metadata/store/AccessClassTable.h"

#include <cstring>

namespace vt {
namespace {

void append(std::string& key, std::uint32_t number) {
  key.append(reinterpret_cast<const char*>(&number), sizeof number);
}

}  // namespace

std::uint32_t AccessClassTable::numberOf(const FileOwnership& ownership, AclPresence acl,
                                         std::span<const std::uint8_t> aclBytes) {
  if (acl == AclPresence::kPresent) return lookUp(ownership, acl, aclBytes);
  Recent& recent = recentFor(ownership);
  if (recent.number == kNoNumber || recent.acl != acl || recent.ownership != ownership) {
    recent = {ownership, acl, lookUp(ownership, acl, aclBytes)};
  }
  return recent.number;
}

AccessClassTable::Recent& AccessClassTable::recentFor(const FileOwnership& ownership) {
  const std::uint32_t mixed = (ownership.uid * 31 + ownership.gid) * 31 + ownership.mode;
  return recents_[mixed % kRecents];
}

std::uint32_t AccessClassTable::lookUp(const FileOwnership& ownership, AclPresence acl,
                                       std::span<const std::uint8_t> aclBytes) {
  key_.clear();
  append(key_, ownership.uid);
  append(key_, ownership.gid);
  append(key_, ownership.mode);
  append(key_, static_cast<std::uint32_t>(acl));
  const std::size_t beforeList = key_.size();
  if (acl == AclPresence::kPresent) {
    key_.append(reinterpret_cast<const char*>(aclBytes.data()), aclBytes.size());
  }
  const auto known = numbers_.find(std::string_view(key_));
  if (known != numbers_.end()) return known->second;
  const auto number = static_cast<std::uint32_t>(classes_.size());
  const std::string& kept = numbers_.emplace(key_, number).first->first;
  classes_.push_back({ownership, acl, std::string_view(kept).substr(beforeList)});
  return number;
}

}  // namespace vt
