#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "foundation/Dictionary.h"
#include "foundation/ObjectArray.h"
#include "foundation/VTObject.h"

namespace vt {

class DirServiceWrapper;
class VTSavedSearch;
class VTSearchFolder;
class VTSearchKind;

/// A person as the directory knows them, with the preferences and saved searches that the settings
/// keep for them.
class VTUser : public VTObject {
 public:
  /// `userWithName:`
  /// The user called `name`, without asking for a password; nullptr when there is none.
  static std::shared_ptr<VTUser> userWithName(const std::string& name);

  /// `userWithName:password:`
  /// The user called `name` if `password` is theirs; else nullptr.
  static std::shared_ptr<VTUser> userWithName(const std::string& name, const std::string& password);

  /// `initWithUsername:fromDirectoryService:`
  /// As userWithName(), asking `directory`, or one opened for this call when it is nullptr.
  static std::shared_ptr<VTUser> initWithUsername(
      const std::string& name, const std::shared_ptr<DirServiceWrapper>& directory);

  std::uint64_t uid() const { return uid_; }
  std::uint64_t gid() const { return gid_; }
  /// The record's own short name, whatever name it was found by.
  std::string username() const { return username_; }
  std::optional<std::string> fullname() const { return fullname_; }
  bool administrator() const { return administrator_; }
  /// The further groups, without the primary one, ended by -1; nullptr when there are none.
  const std::int32_t* groups() const { return groups_.empty() ? nullptr : groups_.data(); }

  /// Count this user among those logged in, and no longer; each at most once.
  void login();
  void logout();

  /// The user's dictionary in the settings.
  std::shared_ptr<Dictionary> userStorage() const;

  /// How many hits a page shows, as it was stored; 25 when nothing was.
  Value resultsPerPage() const;
  /// `setResultsPerPage:`
  /// Throws InvalidArgumentError for nil.
  void setResultsPerPage(std::optional<Value> resultsPerPage);

  /// The folder, at any depth, that answers for the stored title; nullptr when none does.
  std::shared_ptr<VTSearchFolder> defaultSearchFolder() const;
  void setDefaultSearchFolder(const std::shared_ptr<VTSearchFolder>& folder);
  std::shared_ptr<VTSearchKind> defaultSearchKind() const;
  void setDefaultSearchKind(const std::shared_ptr<VTSearchKind>& kind);
  std::int32_t defaultAction() const;
  void setDefaultAction(std::int32_t action);

  void addSavedSearch(const VTSavedSearch& search);
  void removeSavedSearch(const VTSavedSearch& search);
  /// A new array on every call.
  std::shared_ptr<ObjectArray<VTSavedSearch>> savedSearches() const;

  /// `accessAllowedToPath:`
  /// Whether the file at the absolute path `path` and every directory above it pass
  /// accessAllowedToFileIntern(). The root itself is not asked; "/" and "" answer NO.
  bool accessAllowedToPath(const std::string& path) const;

  /// `accessAllowedToFileIntern:`
  /// Whether owner, group and permission bits of this one path let the user at it: search
  /// permission counts as read permission. NO for a missing file.
  bool accessAllowedToFileIntern(const std::string& path) const;

 protected:
  VTUser() = default;
  const Property* propertyNamed(std::string_view key) const override;

 private:
  bool statusAllowsAccess(const std::string& path) const;

  std::uint64_t uid_ = 0;
  std::uint64_t gid_ = 0;
  std::vector<std::int32_t> groups_;
  std::string username_;
  std::optional<std::string> fullname_;
  bool administrator_ = false;
  bool loggedIn_ = false;
};

}  // namespace vt
