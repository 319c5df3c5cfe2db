// Where clients reach a search folder over the network: typed by the administrator, or derived from
// the share point that covers the folder.

#include <fmt/format.h>

#include "platform/DirectoryConstants.h"
#include "scopes/VTConcreteSearchFolder.h"
#include "settings/VTSettings.h"

namespace vt {
namespace {

constexpr std::string_view kSMBScheme = "smb://";
constexpr std::string_view kWindowsScheme = "file://///";

std::optional<std::string> textIn(const std::shared_ptr<Dictionary>& record, const char* key) {
  const Value* value = record ? record->find(key) : nullptr;
  const std::string* text = value ? value->get<std::string>() : nullptr;
  return text ? std::optional(*text) : std::nullopt;
}

/// The base address of the folder at `path` behind `scheme`, through the share point that covers
/// it; nil when that has no name in the protocol.
std::optional<std::string> derivedAddress(std::string_view scheme, const char* nameKey,
                                          const std::shared_ptr<Dictionary>& record,
                                          const std::optional<std::string>& path) {
  const std::optional<std::string> name = textIn(record, nameKey);
  const std::optional<std::string> shared = textIn(record, kDSNativeAttrDirectoryPath);
  if (!name || !shared || !path || !path->starts_with(*shared)) return std::nullopt;
  return fmt::format("{}{}/{}{}", scheme,
                     VTSettings::sharedInstance()->serverName().value_or("(null)"), *name,
                     path->substr(shared->size()));
}

/// `file` below `base`, the address of `folder`; nil when the folder does not cover it.
std::optional<std::string> addressBelow(const std::optional<std::string>& base,
                                        const std::optional<std::string>& folder,
                                        const std::string& file) {
  // An empty path is found nowhere, and so covers nothing.
  if (!base || !folder || folder->empty() || !file.starts_with(*folder)) return std::nullopt;
  return *base + file.substr(folder->size() - (folder->ends_with('/') ? 1 : 0));
}

void replaceAll(std::string& text, std::string_view old, std::string_view replacement) {
  for (std::size_t at = text.find(old); at != std::string::npos;
       at = text.find(old, at + replacement.size())) {
    text.replace(at, old.size(), replacement);
  }
}

}  // namespace

std::shared_ptr<Dictionary> VTConcreteSearchFolder::sharePointData() const {
  const auto sharePoints = VTSettings::sharedInstance()->sharepoints();
  const std::optional<std::string> covered = path();
  if (!sharePoints || !covered) return nullptr;
  for (const std::shared_ptr<Dictionary>& record : *sharePoints) {
    const std::optional<std::string> shared = textIn(record, kDSNativeAttrDirectoryPath);
    if (shared && !shared->empty() && covered->starts_with(*shared)) return record;
  }
  return nullptr;
}

std::optional<std::string> VTConcreteSearchFolder::sharePointName() const {
  return textIn(sharePointData(), kDSNAttrRecordName);
}

std::optional<std::string> VTConcreteSearchFolder::afpURLPath() const {
  if (userDefinedURLPaths_) return afpURLPath_.load();
  if (std::optional<std::string> cached = cachedAFPURLPath_.load()) return cached;
  std::optional<std::string> address =
      derivedAddress("afp://", kDSNativeAttrAFPName, sharePointData(), path());
  if (address) cachedAFPURLPath_.store(address);
  return address;
}

std::optional<std::string> VTConcreteSearchFolder::smbURLPath() const {
  if (userDefinedURLPaths_) return smbURLPath_.load();
  if (std::optional<std::string> cached = cachedSMBURLPath_.load()) return cached;
  std::optional<std::string> address =
      derivedAddress(kSMBScheme, kDSNativeAttrSMBName, sharePointData(), path());
  if (address) cachedSMBURLPath_.store(address);
  return address;
}

bool VTConcreteSearchFolder::afpAvailable() const {
  if (userDefinedURLPaths_) return !afpURLPath().value_or("").empty();
  return textIn(sharePointData(), kDSNativeAttrAFPShared) == "1";
}

bool VTConcreteSearchFolder::smbAvailable() const {
  if (userDefinedURLPaths_) return !smbURLPath().value_or("").empty();
  return textIn(sharePointData(), kDSNativeAttrSMBShared) == "1";
}

std::optional<std::string> VTConcreteSearchFolder::afpURLforPath(const std::string& path) const {
  return addressBelow(afpURLPath(), this->path(), path);
}

std::optional<std::string> VTConcreteSearchFolder::smbURLforPath(const std::string& path,
                                                                 bool windowsClient) const {
  std::optional<std::string> address = addressBelow(smbURLPath(), this->path(), path);
  if (address && windowsClient) replaceAll(*address, kSMBScheme, kWindowsScheme);
  return address;
}

}  // namespace vt
