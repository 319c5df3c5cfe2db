#include "vistaro/Checkup.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "directory/DirServiceWrapper.h"
#include "foundation/Dictionary.h"
#include "foundation/PropertyList.h"
#include "foundation/PropertyListLimits.h"
#include "kinds/VTSearchKind.h"
#include "metadata/query/AttributeSchema.h"
#include "metadata/types/ContentTypes.h"
#include "platform/DirectoryConstants.h"
#include "platform/Files.h"
#include "platform/Identity.h"
#include "platform/Platform.h"
#include "platform/Resources.h"
#include "platform/linux/AccountRecords.h"
#include "platform/linux/LinuxTasks.h"
#include "platform/linux/PamPasswords.h"
#include "platform/linux/SharePointRecordSource.h"
#include "settings/VTSettings.h"

namespace vt::tool {
namespace {

Diagnosis ok(std::string text) { return {Finding::kOk, std::move(text)}; }
Diagnosis note(std::string text) { return {Finding::kNote, std::move(text)}; }
Diagnosis fault(std::string text) { return {Finding::kFault, std::move(text)}; }

std::string rootPrefix() { return Platform::current().systemPath(""); }

/// The members of the administrators' group as the library reads them: nothing when the record
/// does not come through.
std::optional<std::vector<std::string>> administrators() {
  const auto directory = DirServiceWrapper::init();
  if (!directory) return std::nullopt;
  const auto record = directory->attributeDataForNodeOfType(
      kDSStdRecordTypeGroups, "admin", kDSNAttrRecordName, kDSNAttrGroupMembership,
      /*attr3=*/nullptr, /*attr4=*/nullptr, /*attr5=*/nullptr, /*attr6=*/nullptr);
  if (!record->contains(kDSNAttrRecordName)) return std::nullopt;
  std::vector<std::string> names;
  if (const Value* members = record->find(kDSNAttrGroupMembership)) {
    for (const Value& member : *members->array()) names.push_back(*member.get<std::string>());
  }
  return names;
}

Diagnosis checkAdministrators(const Accounts& accounts) {
  if (const auto members = administrators()) {
    if (members->empty()) return note("the administrators' group has no members");
    return ok(fmt::format("administrators: {}", fmt::join(*members, ", ")));
  }
  for (const char* name : {"admin", "sudo", "wheel"}) {
    if (accounts.groupNamed(name)) {
      return fault(
          fmt::format("the group \"{}\" has too many members for the directory's buffer of "
                      "2,048 bytes: nobody is an administrator",
                      name));
    }
  }
  return note("no group is called admin, sudo or wheel: nobody is an administrator");
}

}  // namespace

std::vector<Diagnosis> checkIdentity() {
  const std::uint32_t uid = Platform::current().identity().geteuid();
  std::vector<Diagnosis> found;
  found.push_back(
      uid == 0 ? ok("running as root: can search on behalf of everybody")
               : note(fmt::format("running as user id {}: can search as that user only", uid)));
  found.push_back(rootPrefix().empty()
                      ? ok("the system's own paths are used as they are")
                      : note(fmt::format("the system's own paths lie behind {}", rootPrefix())));
  return found;
}

std::vector<Diagnosis> checkResources() {
  const Resources& resources = Platform::current().resources();
  std::vector<Diagnosis> found;
  if (const std::size_t kinds = VTSearchKind::allSearchKinds()->size(); kinds == 0) {
    found.push_back(fault("ContentTypeGroups.plist is missing or unreadable: hits have no kind"));
  } else if (!VTSearchKind::defaultKind()) {
    found.push_back(fault("no kind is the default: files of unlisted types are never shown"));
  } else {
    found.push_back(ok(fmt::format("{} kinds", kinds)));
  }
  const auto types = resources.resource("types", "tsv");
  const auto parsedTypes = ContentTypes::parse(types.value_or(""));
  found.push_back(types && parsedTypes ? ok("content types are readable")
                                       : fault("types.tsv is missing or damaged"));
  const auto attributes = resources.resource("attributes", "tsv");
  const auto parsedAttributes = query::AttributeSchema::parse(attributes.value_or(""));
  found.push_back(attributes && parsedAttributes ? ok("attributes are readable")
                                                 : fault("attributes.tsv is missing or damaged"));
  return found;
}

std::vector<Diagnosis> checkAccounts() {
  const std::string prefix = rootPrefix();
  const std::shared_ptr<const Accounts> accounts = accountsUnder(prefix);
  std::vector<Diagnosis> found;
  found.push_back(ok(hasOwnAccounts(prefix)
                         ? fmt::format("accounts come from {}/etc/passwd", prefix)
                         : std::string("accounts are those of this machine")));
  found.push_back(checkAdministrators(*accounts));
  const std::vector<std::string> members = administrators().value_or(std::vector<std::string>());
  for (const Account& account : accounts->allAccounts()) {
    const bool byFullName = std::ranges::find(members, account.realName) != members.end();
    const bool byName = std::ranges::find(members, account.name) != members.end();
    if (byFullName && !byName) {
      found.push_back(
          note(fmt::format("\"{}\" is an administrator by full name (\"{}\"), which "
                           "equals a member of the group",
                           account.name, account.realName)));
    }
  }
  return found;
}

std::vector<Diagnosis> checkPasswords() {
  if (hasOwnAccounts(rootPrefix())) {
    const std::string shadow = rootPrefix() + "/etc/shadow";
    return {access(shadow.c_str(), R_OK) == 0
                ? ok(fmt::format("passwords come from {}", shadow))
                : note(fmt::format("{} cannot be read: nobody can log in", shadow))};
  }
  std::vector<Diagnosis> found;
  const std::string helper = PamPasswords::installedHelper();
  found.push_back(access(helper.c_str(), X_OK) == 0
                      ? ok(fmt::format("passwords are checked by {}", helper))
                      : fault(fmt::format("{} is missing: nobody can log in", helper)));
  constexpr const char* kService = "/etc/pam.d/vistaro";
  found.push_back(
      std::filesystem::exists(kService)
          ? ok(fmt::format("PAM service {}", kService))
          : note(fmt::format("{} is missing: nobody can log in with a password", kService)));
  return found;
}

std::vector<Diagnosis> checkSettings() {
  const std::optional<std::string> path = VTSettings::settingsStoragePath();
  if (!path) {
    return {
        note(fmt::format("the settings folder {} cannot be made: defaults are used and nothing "
                         "is kept",
                         Platform::current().systemPath("/Library/Application Support/Vistaro/")))};
  }
  const Files& files = Platform::current().files();
  if (!files.exists(*path)) return {ok(fmt::format("no settings yet in {}", *path))};
  const auto bytes = files.read(*path, PropertyListLimits().bytes);
  if (!bytes) return {fault(bytes.error().text)};
  const auto tree = readPropertyList(*bytes);
  if (tree && tree->dictionary()) return {ok(fmt::format("settings in {}", *path))};
  return {fault(
      fmt::format("{} is damaged{}: the server starts with empty settings and keeps the "
                  "file as Settings.plist.damaged at its next save",
                  *path, tree ? std::string() : fmt::format(" ({})", tree.error().description())))};
}

std::vector<Diagnosis> checkShares() {
  const auto shares =
      SharePointRecordSource(std::make_shared<LinuxTasks>(), rootPrefix()).listing();
  const std::size_t count = shares.records.size();
  std::vector<Diagnosis> found{
      ok(count == 0   ? std::string("no folder is shared over SMB or AFP")
         : count == 1 ? std::string("1 folder is shared over SMB or AFP")
                      : fmt::format("{} folders are shared over SMB or AFP", count))};
  for (const std::string& text : shares.notes) found.push_back(note(text));
  return found;
}

}  // namespace vt::tool
