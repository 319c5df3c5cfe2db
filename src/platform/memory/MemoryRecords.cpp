#include "platform/memory/MemoryRecords.h"

#include <algorithm>

#include "platform/DirectoryConstants.h"

namespace vt {
namespace {

bool answersTo(const DirectoryRecord& record, std::string_view name) {
  if (record.name == name) return true;
  return std::ranges::any_of(record.attributes, [&](const DirectoryAttribute& attribute) {
    return attribute.type == kDSNAttrRecordName &&
           std::ranges::find(attribute.values, name) != attribute.values.end();
  });
}

}  // namespace

std::vector<DirectoryRecord> MemoryRecords::records(std::string_view type,
                                                    std::optional<std::string_view> name) const {
  std::vector<DirectoryRecord> found;
  for (const DirectoryRecord& record : table_) {
    if (record.type == type && (!name || answersTo(record, *name))) found.push_back(record);
  }
  return found;
}

bool MemoryRecords::verifyPassword(const std::string& name, const std::string& password) const {
  const auto found = passwords_.find(name);
  return found != passwords_.end() && found->second == password;
}

DirectoryRecord userRecord(const std::string& name, const std::string& uid, const std::string& gid,
                           const std::string& fullName) {
  return {kDSStdRecordTypeUsers,
          name,
          {{kDSNAttrRecordName, {name}},
           {kDS1AttrUniqueID, {uid}},
           {kDS1AttrPrimaryGroupID, {gid}},
           {kDS1AttrDistinguishedName, {fullName}},
           {kDSNAttrMetaNodeLocation, {kDSLocalNodePath}}}};
}

DirectoryRecord groupRecord(const std::string& name, std::vector<std::string> members) {
  return {kDSStdRecordTypeGroups,
          name,
          {{kDSNAttrRecordName, {name}}, {kDSNAttrGroupMembership, std::move(members)}}};
}

}  // namespace vt
