#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "foundation/Dictionary.h"
#include "foundation/ObjectArray.h"
#include "foundation/VTObject.h"

namespace vt {

class VTSearchFolder;
class VTUser;

/// The settings of the server: one object for the process, kept in one property-list file.
///
/// Holds the file as one mutable tree. Global settings are reached by key: a key that the class
/// does not declare is a global setting, and is saved. Each user has a storage dictionary inside
/// the tree. Used from one thread.
class VTSettings final : public VTObject {
 public:
  /// The one instance, made and loaded by the first call.
  static std::shared_ptr<VTSettings> sharedInstance();

  /// The full path of the settings file, its directory made if need be; nil, with a log line, when
  /// the directory cannot be made.
  static std::optional<std::string> settingsStoragePath();

  /// Reads the file anew and replaces all state in memory, then announces a change of every
  /// observable global setting. A file that is missing or does not parse gives empty settings.
  /// Always true.
  bool reloadConfig();

  /// Writes the whole tree to the file, which is replaced as a whole or left as it was. False, with
  /// a log line, when it could not be written; the settings in memory stay in force.
  bool saveStorage();

  /// The dictionary of global settings inside the tree, made when there is none.
  std::shared_ptr<Dictionary> globalSettings();

  std::optional<Value> valueForUndefinedKey(std::string_view key) const override;
  void setValueForUndefinedKey(std::optional<Value> value, std::string_view key) override;

  /// The user id under which startup reads the attribute names; nil when unset.
  std::optional<Value> startupUserId() const;
  void setStartupUserId(std::optional<Value> userId);

  /// `storageForUser:`
  /// The user's dictionary inside the tree, made when there is none; what is changed in it is
  /// written by the next save. Saves nothing itself.
  std::shared_ptr<Dictionary> storageForUser(const VTUser& user);

  /// `setStorage:forUser:`
  /// Stores `dictionary` as the user's storage and saves. Unless `dictionary` itself holds "Users",
  /// the storage of every other user is dropped: to change a user's storage, change it in place.
  void setStorage(const std::shared_ptr<Dictionary>& dictionary, const VTUser& user);

  /// The configured folders: the array itself.
  std::shared_ptr<ObjectArray<VTSearchFolder>> searchFolders() const { return searchFolders_; }
  /// `setSearchFolders:`
  /// Keeps the array itself, stores its folders, and saves while saveSettingsOnChanges() is set.
  void setSearchFolders(std::shared_ptr<ObjectArray<VTSearchFolder>> folders);

  /// `searchFolderForTitle:`
  /// The first of searchFolders() with exactly this title, without looking into groups; or nullptr.
  std::shared_ptr<VTSearchFolder> searchFolderForTitle(const std::string& title) const;

  /// The share points read by the last load; nil when the directory could not be opened.
  std::shared_ptr<ObjectArray<Dictionary>> sharepoints() const { return sharePoints_; }

  /// The user called "root"; nullptr when the directory has none.
  std::shared_ptr<VTUser> defaultUser() const;

  /// Fixed paths behind the root prefix; nothing is made on disk.
  std::string logFile() const;
  std::string cacheDirectory() const;
  std::string thumbnailCacheDirectory() const;

  /// Whether each change of a global setting or of the search folders is written at once.
  bool saveSettingsOnChanges() const { return saveSettingsOnChanges_; }
  void setSaveSettingsOnChanges(bool save) { saveSettingsOnChanges_ = save; }

  /// Whether a setting was changed that only takes effect at the next start. Cleared by every save
  /// and every reload.
  bool serverRestartNecessary() const { return serverRestartNecessary_; }
  void setServerRestartNecessary(bool necessary) { serverRestartNecessary_ = necessary; }

  /// Queries executed and users logged in since the start; never saved.
  std::uint64_t searchCount() const { return searchCount_; }
  void setSearchCount(std::uint64_t count) { searchCount_ = count; }
  std::uint64_t parallelUserCount() const { return parallelUserCount_; }
  void setParallelUserCount(std::uint64_t count) { parallelUserCount_ = count; }

 protected:
  const Property* propertyNamed(std::string_view key) const override;

 private:
  VTSettings() = default;

  std::shared_ptr<Dictionary> storage_;
  std::shared_ptr<ObjectArray<Dictionary>> sharePoints_;
  std::shared_ptr<ObjectArray<VTSearchFolder>> searchFolders_;
  std::uint64_t searchCount_ = 0;
  std::uint64_t parallelUserCount_ = 0;
  bool saveSettingsOnChanges_ = true;
  bool serverRestartNecessary_ = false;
};

}  // namespace vt
