#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/DirectoryRecord.h"

namespace vt {

/// Directory records from a table that a test fills.
///
/// A record answers to its name and to every value of its "dsAttrTypeStandard:RecordName".
class MemoryRecords final : public RecordSource {
 public:
  void add(DirectoryRecord record) { table_.push_back(std::move(record)); }
  void setPassword(const std::string& name, std::string password) {
    passwords_[name] = std::move(password);
  }

  std::vector<DirectoryRecord> records(std::string_view type,
                                       std::optional<std::string_view> name) const override;
  bool verifyPassword(const std::string& name, const std::string& password) const override;

 private:
  std::vector<DirectoryRecord> table_;
  std::map<std::string, std::string> passwords_;
};

/// A user record of the usual shape, at home in "/Local/Default". A group's members.
DirectoryRecord userRecord(const std::string& name, const std::string& uid, const std::string& gid,
                           const std::string& fullName);
DirectoryRecord groupRecord(const std::string& name, std::vector<std::string> members);

}  // namespace vt
