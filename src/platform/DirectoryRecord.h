#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vt {

/// One attribute of a directory record, with its values in the directory's order.
struct DirectoryAttribute {
  std::string type;
  std::vector<std::string> values;

  friend bool operator==(const DirectoryAttribute&, const DirectoryAttribute&) = default;
};

/// One record of the directory: a user, a group, a share point.
struct DirectoryRecord {
  std::string type;
  std::string name;
  std::vector<DirectoryAttribute> attributes;

  friend bool operator==(const DirectoryRecord&, const DirectoryRecord&) = default;
};

/// Where a directory takes its records and its verdicts on passwords from.
class RecordSource {
 public:
  virtual ~RecordSource() = default;

  /// The records of type `type` called exactly `name`, or all of them when `name` is absent.
  virtual std::vector<DirectoryRecord> records(std::string_view type,
                                               std::optional<std::string_view> name) const = 0;

  /// Whether `password` is that of the user whose record is called `name`, and the account may be
  /// used now. May take as long as the system's own check does.
  virtual bool verifyPassword(const std::string& name, const std::string& password) const = 0;
};

}  // namespace vt
