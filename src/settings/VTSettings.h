#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "foundation/Date.h"
#include "foundation/Dictionary.h"
#include "foundation/ObjectArray.h"
#include "foundation/VTObject.h"
#include "settings/AttributeNames.h"

namespace vt {

class NetService;
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
  /// observable global setting. A file that is missing, cannot be read or holds no property-list
  /// dictionary gives empty settings. Always true.
  bool reloadConfig();

  /// Writes the whole tree to the file, which is replaced as a whole or left as it was. False, with
  /// a log line, when it could not be written; the settings in memory stay in force. What stood in
  /// the file and was not understood by the load is kept once, beside it, as
  /// "Settings.plist.damaged".
  bool saveStorage();

  /// The dictionary of global settings inside the tree, made when there is none.
  std::shared_ptr<Dictionary> globalSettings();

  /// `valueForUndefinedKey:`
  /// The global setting of that name; nil when unset.
  std::optional<Value> valueForUndefinedKey(std::string_view key) const override;
  /// `setValue:forUndefinedKey:`
  /// Stores the global setting, or removes it for nil, between the two announcements, and saves
  /// while saveSettingsOnChanges() is set. A value that no property list holds, the null object
  /// among them, is stored; no save succeeds while it stands.
  void setValueForUndefinedKey(std::optional<Value> value, std::string_view key) override;

  /// The user id under which startup reads the attribute names; nil when unset.
  std::optional<Value> startupUserId() const;
  void setStartupUserId(std::optional<Value> userId);

  /// `storageForUser:`
  /// The user's dictionary inside the tree, made when there is none; what is changed in it is
  /// written by the next save. Saves nothing itself.
  std::shared_ptr<Dictionary> storageForUser(const VTUser& user);

  /// `setStorage:forUser:`
  /// Stores `dictionary`, which is not nullptr, as the user's storage and saves. The storage of
  /// every other user is dropped: to change a user's storage, change it in place. A `dictionary`
  /// that holds a dictionary "Users" is stored in that one instead, which leaves the settings as
  /// they were, and it then holds itself: break the cycle, or it is never freed.
  void setStorage(const std::shared_ptr<Dictionary>& dictionary, const VTUser& user);

  /// The configured folders: the array itself.
  std::shared_ptr<ObjectArray<VTSearchFolder>> searchFolders() const { return searchFolders_; }
  /// `setSearchFolders:`
  /// Keeps the array itself, stores its folders, and saves while saveSettingsOnChanges() is set.
  /// Nullptr counts as a new, empty array. Throws InvalidArgumentError, and changes nothing, for a
  /// folder that has no stored form.
  void setSearchFolders(std::shared_ptr<ObjectArray<VTSearchFolder>> folders);

  /// `searchFolderForTitle:`
  /// The first of searchFolders() with exactly this title, without looking into groups; or nullptr.
  std::shared_ptr<VTSearchFolder> searchFolderForTitle(const std::string& title) const;

  /// The share points read by the last load; nil when the directory could not be opened.
  std::shared_ptr<ObjectArray<Dictionary>> sharepoints() const { return sharePoints_; }

  /// The user called "root"; nullptr when the directory has none.
  std::shared_ptr<VTUser> defaultUser() const;

  /// The server's name as clients reach it: the setting, else the host's name, else, of a host
  /// called "localhost", the second of its names. Nil when the host has none. May ask the resolver.
  std::optional<std::string> serverName() const;
  /// `setServerName:`
  /// Nil and "" remove the setting. Restart necessary.
  void setServerName(std::optional<std::string> name);
  /// A number as it was stored; 9000 when unset.
  Value serverPort() const;
  /// `setServerPort:`
  /// Restart necessary, but the save of this very change clears that again.
  void setServerPort(std::optional<Value> port);
  /// "http://NAME:PORT", and "https://NAME", without port, while SSL is enabled. The text of the
  /// address: nothing is escaped, and a nil name prints as "(null)".
  std::string internalServerURL() const;
  std::string serverURL() const;

  // Plain settings, as they were stored: nil when unset, numbers where a boolean is meant, and a
  // value of another type as it stands in the file. A nil argument removes the setting.

  std::optional<Value> userAuthenticationDisabled() const;
  void setUserAuthenticationDisabled(std::optional<Value> disabled);
  std::optional<Value> sslEnabled() const;
  /// `setSslEnabled:`
  /// Restart necessary, but the save of this very change clears that again.
  void setSslEnabled(std::optional<Value> enabled);
  std::optional<Value> useSSLTestCertificate() const;
  void setUseSSLTestCertificate(std::optional<Value> use);
  std::optional<Value> sslCertificatePath() const;
  void setSslCertificatePath(std::optional<Value> path);

  // Outgoing mail. Each setter makes a restart necessary.

  std::optional<Value> mailEnabled() const;
  void setMailEnabled(std::optional<Value> enabled);
  std::optional<Value> smtpFromEmailAddress() const;
  void setSmtpFromEmailAddress(std::optional<Value> address);
  std::optional<Value> smtpServerAddress() const;
  void setSmtpServerAddress(std::optional<Value> address);
  std::optional<Value> smtpCustomServerPort() const;
  void setSmtpCustomServerPort(std::optional<Value> port);
  /// YES when unset.
  Value smtpDefaultServerPort() const;
  void setSmtpDefaultServerPort(std::optional<Value> useDefault);
  std::optional<Value> smtpUseSSL() const;
  void setSmtpUseSSL(std::optional<Value> use);
  std::optional<Value> smtpServerUsername() const;
  void setSmtpServerUsername(std::optional<Value> username);
  /// Nil when none is set, or it cannot be deciphered (with a log line).
  std::optional<std::string> smtpServerPassword() const;
  /// `setSmtpServerPassword:`
  /// Stores the password enciphered, with a key that the first one makes and all later ones use
  /// (docs/mail-password.md). Nil and "" remove it.
  void setSmtpServerPassword(const std::optional<std::string>& password);
  /// Zero or unset: the mode that goes with port 465; else the one that goes with 587.
  std::optional<Value> smtpServerAuthenticationMode() const;
  void setSmtpServerAuthenticationMode(std::optional<Value> mode);
  /// The port that mail goes to: 25, 465 or 587 as SSL and mode say, or the custom one.
  std::uint64_t smtpServerPort() const;
  /// Whether mail is enabled and has server, port and sender.
  bool mailingConfiguredAndEnabled() const;

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

  /// Makes the server known, once it is ready to serve: logs the installed version, loads the
  /// attribute names, announces the web server on the local network, and writes the process id to
  /// "/tmp/vistaro.pid" behind the root prefix. False when the server has no name, with a log line,
  /// or the service cannot be made; the attribute names are loaded and the server counts as running
  /// all the same. Does not wait for the network. Called again, it does all of it again. Needs a
  /// platform with service discovery.
  bool finishStartupOfServer();
  /// The part of startup that builds the tables behind displayNameForAttributeKey() and
  /// attributesForShortName(), for programs that do not serve. Logs one line.
  void loadAttributeNames();

  /// `displayNameForAttributeKey:`
  /// The localised name of an attribute; nil when it has none, and before startup.
  std::optional<std::string> displayNameForAttributeKey(const std::string& key) const;
  /// `attributesForShortName:`
  /// The names of the attributes that go by a short name, case ignored, as texts; nil when none
  /// does, and before startup.
  std::shared_ptr<Array> attributesForShortName(const std::string& shortName) const;
  /// What the two look into.
  const AttributeNames& attributeNames() const { return attributeNames_; }

  /// Whether startup has loaded the attribute names, and when; nil before.
  bool isUpAndRunning() const { return upAndRunning_; }
  std::optional<Date> startTime() const { return startTime_; }
  /// searchCount() and parallelUserCount().
  std::uint64_t totalSearches() const { return searchCount_; }
  std::uint64_t currentParallelUsers() const { return parallelUserCount_; }

  /// Queries executed and users logged in since the start; never saved.
  std::uint64_t searchCount() const { return searchCount_; }
  void setSearchCount(std::uint64_t count) { searchCount_ = count; }
  std::uint64_t parallelUserCount() const { return parallelUserCount_; }
  void setParallelUserCount(std::uint64_t count) { parallelUserCount_ = count; }

 protected:
  const Property* propertyNamed(std::string_view key) const override;

 private:
  VTSettings() = default;

  static void initialize();
  void readStorage();
  std::optional<Value> setting(std::string_view name) const;
  void store(std::string_view name, std::optional<Value> value);
  std::shared_ptr<Dictionary> presentGlobalSettings() const;
  std::shared_ptr<Dictionary> dictionaryIn(Dictionary& parent, std::string_view key);
  std::shared_ptr<Dictionary> newDictionaryIn(Dictionary& parent, std::string_view key);

  std::shared_ptr<Dictionary> storage_;
  std::shared_ptr<ObjectArray<Dictionary>> sharePoints_;
  std::shared_ptr<ObjectArray<VTSearchFolder>> searchFolders_;
  AttributeNames attributeNames_;
  std::vector<std::shared_ptr<NetService>> bonjourServices_;  // announced while the process lives
  std::optional<Date> startTime_;
  std::uint64_t searchCount_ = 0;
  std::uint64_t parallelUserCount_ = 0;
  bool upAndRunning_ = false;
  bool saveSettingsOnChanges_ = true;
  bool serverRestartNecessary_ = false;
  bool fileHoldsMoreThanStorage_ = false;  // so that the next save must not just replace it
};

}  // namespace vt
