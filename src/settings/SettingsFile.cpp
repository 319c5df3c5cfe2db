// The settings file: where it lies, and how it is read and replaced.

#include <array>

#include "foundation/NSLog.h"
#include "foundation/PropertyList.h"
#include "foundation/PropertyListLimits.h"
#include "foundation/XMLPropertyListWriter.h"
#include "platform/Files.h"
#include "platform/Platform.h"
#include "platform/Process.h"
#include "scopes/VTSearchFolder.h"
#include "scopes/VTSharePoint.h"
#include "settings/VTSettings.h"

namespace vt {
namespace {

constexpr std::string_view kStorageDirectory = "/Library/Application Support/Vistaro/";
constexpr std::string_view kStorageDirectoryParent = "/Library/Application Support";
constexpr std::uint32_t kParentPermissions = 509;  // octal 0775

constexpr std::array kAnnouncedAtReload = {
    "userAuthenticationDisabled",
    "serverName",
    "serverPort",
    "sslEnabled",
    "mailEnabled",
    "smtpServerAddress",
    "smtpCustomServerPort",
    "smtpServerUsername",
    "smtpServerPassword",
    "smtpServerAuthenticationMode",
    "smtpFromEmailAddress",
    "smtpDefaultServerPort",
    "smtpUseSSL",
};

bool makeStorageDirectory(const std::string& directory) {
  Platform& platform = Platform::current();
  Files& files = platform.files();
  // Looked for a second time: another process may have made it in between.
  if (files.exists(directory) || files.createDirectory(directory) || files.exists(directory)) {
    return true;
  }
  if (!files.changeAttributes(platform.systemPath(kStorageDirectoryParent), "admin",
                              kParentPermissions)) {
    NSLog("Unable to correct file permissions for /Library/Application Support");
  } else if (files.createDirectory(directory)) {
    return true;
  }
  NSLog("Unable to create storage directory for Vistaro Settings at %@", directory);
  return false;
}

}  // namespace

std::optional<std::string> VTSettings::settingsStoragePath() {
  initialize();
  const std::string directory = Platform::current().systemPath(kStorageDirectory);
  if (!makeStorageDirectory(directory)) return std::nullopt;
  return directory + "Settings.plist";
}

void VTSettings::readStorage() {
  fileHoldsMoreThanStorage_ = false;
  const std::optional<std::string> path = settingsStoragePath();
  if (!path) return;
  const Files& files = Platform::current().files();
  if (const Result<std::string, FileError> bytes = files.read(*path, PropertyListLimits().bytes)) {
    const auto root = readPropertyList(*bytes);
    if (root) storage_ = root->dictionary();
  }
  fileHoldsMoreThanStorage_ = !storage_ && files.exists(*path);
}

bool VTSettings::reloadConfig() {
  Platform::current().process().loadApplication();
  storage_ = nullptr;
  searchFolders_ = nullptr;
  sharePoints_ = nullptr;

  readStorage();
  if (storage_) {
    const Value* stored = storage_->find("SearchFolders");
    searchFolders_ =
        VTSearchFolder::deserializedFoldersFromStorage(stored ? stored->array() : nullptr);
  } else {
    storage_ = Dictionary::make();
    searchFolders_ = ObjectArray<VTSearchFolder>::make();
  }
  sharePoints_ = VTSharePoint::allSharePoints();

  for (const char* key : kAnnouncedAtReload) willChangeValueForKey(key);
  for (const char* key : kAnnouncedAtReload) didChangeValueForKey(key);
  serverRestartNecessary_ = false;
  return true;
}

bool VTSettings::saveStorage() {
  const auto bytes = writeXMLPropertyList(Value(storage_));
  if (!bytes) {
    NSLog("Unable to create property list for storage with error: %@", bytes.error().description());
    return false;
  }
  const std::optional<std::string> path = settingsStoragePath();
  std::optional<FileError> error;
  if (!path) {
    error = FileError{0, "there is no settings directory"};
  } else {
    Files& files = Platform::current().files();
    if (fileHoldsMoreThanStorage_ && files.exists(*path))
      error = files.keepAs(*path, *path + ".damaged");
    if (!error) error = files.writeAtomically(*path, *bytes);
  }
  if (error) {
    NSLog("Unable to save storage file with error %@", error->text);
  } else {
    fileHoldsMoreThanStorage_ = false;
  }
  serverRestartNecessary_ = false;
  return !error;
}

}  // namespace vt
