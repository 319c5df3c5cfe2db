#include "directory/VTUser.h"

#include <algorithm>
#include <array>
#include <limits>

#include "directory/DirServiceWrapper.h"
#include "foundation/Array.h"
#include "foundation/Property.h"
#include "kinds/VTSearchKind.h"
#include "platform/Identity.h"
#include "platform/Platform.h"
#include "saved/VTSavedSearch.h"
#include "scopes/VTSearchFolder.h"
#include "settings/VTSettings.h"

namespace vt {
namespace {

constexpr const char* kAdministratorsGroup = "admin";
constexpr int kMaximumGroups = 256;
constexpr std::uint32_t kDefaultResultsPerPage = 25;
constexpr std::int32_t kEndOfGroups = -1;

// Two of these are misspelt; stored files hold them so.
constexpr std::string_view kResultsPerPageKey = "resultsPerPage";
constexpr std::string_view kDefaultSearchFolderKey = "deaultSearchFolderTitle";
constexpr std::string_view kDefaultSearchKindKey = "deaultSearchKindTitle";
constexpr std::string_view kDefaultActionKey = "defaultAction";

/// The values under `type`; nullptr when there are none.
std::shared_ptr<Array> valuesOf(const Dictionary& attributes, std::string_view type) {
  const Value* values = attributes.find(type);
  return values ? values->array() : nullptr;
}

std::optional<std::string> firstText(const Dictionary& attributes, std::string_view type) {
  const std::shared_ptr<Array> values = valuesOf(attributes, type);
  if (!values) return std::nullopt;
  return *values->at(0).get<std::string>();
}

/// The text under `type` as a signed 32-bit number, clamped; 0 when it is missing or none.
std::int32_t firstNumber(const Dictionary& attributes, std::string_view type) {
  using Limits = std::numeric_limits<std::int32_t>;
  const std::int64_t number = Value(firstText(attributes, type).value_or("")).integerValue();
  return static_cast<std::int32_t>(std::clamp<std::int64_t>(number, Limits::min(), Limits::max()));
}

bool lists(const Dictionary& group, const std::optional<std::string>& name) {
  const std::shared_ptr<Array> members = valuesOf(group, kDSNAttrGroupMembership);
  return members && name && std::ranges::find(*members, Value(*name)) != members->end();
}

/// The groups of the account called `name` without `baseGroup`, ended by -1; empty when it has no
/// further ones.
std::vector<std::int32_t> furtherGroups(const std::string& name, std::int32_t baseGroup) {
  std::array<std::int32_t, kMaximumGroups> fetched{};
  int count = kMaximumGroups;
  Platform::current().identity().getgrouplist(name, baseGroup, fetched.data(), &count);
  count = std::min(count, kMaximumGroups);  // it may come back as what would have been needed
  if (count < 2) return {};
  std::vector<std::int32_t> groups(fetched.begin() + 1, fetched.begin() + count);
  groups.push_back(kEndOfGroups);
  return groups;
}

bool holdsNul(const std::string& text) { return text.find('\0') != text.npos; }

/// Changes the user's storage, then saves the settings.
template <class Change>
void changeStorage(const VTUser& user, Change change) {
  change(*user.userStorage());
  VTSettings::sharedInstance()->saveStorage();
}

void storeTitle(const VTUser& user, std::string_view key, const std::optional<std::string>& title) {
  if (!title) throw InvalidArgumentError("the user's storage takes no object without a title");
  changeStorage(user, [&](Dictionary& storage) { storage.set(key, *title); });
}

std::optional<std::string> storedTitle(const VTUser& user, std::string_view key) {
  const std::optional<Value> title = user.userStorage()->get(key);
  if (!title || !title->get<std::string>()) return std::nullopt;
  return *title->get<std::string>();
}

}  // namespace

std::shared_ptr<VTUser> VTUser::userWithName(const std::string& name) {
  return initWithUsername(name, /*directory=*/nullptr);
}

std::shared_ptr<VTUser> VTUser::userWithName(const std::string& name, const std::string& password) {
  // The directory takes texts that end at the first NUL: what comes behind would go unchecked.
  if (holdsNul(name) || holdsNul(password)) return nullptr;
  const std::shared_ptr<DirServiceWrapper> directory = DirServiceWrapper::init();
  if (!directory || !directory->authenticateUser(name.c_str(), password.c_str())) return nullptr;
  return initWithUsername(name, directory);
}

std::shared_ptr<VTUser> VTUser::initWithUsername(
    const std::string& name, const std::shared_ptr<DirServiceWrapper>& directory) {
  if (holdsNul(name)) return nullptr;
  const std::shared_ptr<DirServiceWrapper> wrapper =
      directory ? directory : DirServiceWrapper::init();
  if (!wrapper) return nullptr;
  const auto record = wrapper->attributeDataForNodeOfType(
      kDSStdRecordTypeUsers, name.c_str(), kDSNAttrRecordName, kDS1AttrUniqueID,
      kDS1AttrPrimaryGroupID, kDS1AttrDistinguishedName, /*attr5=*/nullptr, /*attr6=*/nullptr);
  const auto administrators = wrapper->attributeDataForNodeOfType(
      kDSStdRecordTypeGroups, kAdministratorsGroup, kDSNAttrRecordName, kDSNAttrGroupMembership,
      /*attr3=*/nullptr, /*attr4=*/nullptr, /*attr5=*/nullptr, /*attr6=*/nullptr);
  const std::optional<std::string> username = firstText(*record, kDSNAttrRecordName);
  if (!username) return nullptr;

  std::shared_ptr<VTUser> user(new VTUser);
  user->username_ = *username;
  user->fullname_ = firstText(*record, kDS1AttrDistinguishedName);
  const std::int32_t gid = firstNumber(*record, kDS1AttrPrimaryGroupID);
  user->uid_ = static_cast<std::uint64_t>(firstNumber(*record, kDS1AttrUniqueID));
  user->gid_ = static_cast<std::uint64_t>(gid);
  user->administrator_ =
      lists(*administrators, user->fullname_) || lists(*administrators, username);
  user->groups_ = furtherGroups(name, gid);
  return user;
}

void VTUser::login() {
  if (loggedIn_) return;
  const std::shared_ptr<VTSettings> settings = VTSettings::sharedInstance();
  settings->setParallelUserCount(settings->parallelUserCount() + 1);
  loggedIn_ = true;
}

void VTUser::logout() {
  if (!loggedIn_) return;
  const std::shared_ptr<VTSettings> settings = VTSettings::sharedInstance();
  settings->setParallelUserCount(settings->parallelUserCount() - 1);
  loggedIn_ = false;
}

std::shared_ptr<Dictionary> VTUser::userStorage() const {
  return VTSettings::sharedInstance()->storageForUser(*this);
}

Value VTUser::resultsPerPage() const {
  return userStorage()->get(kResultsPerPageKey).value_or(Value(kDefaultResultsPerPage));
}

void VTUser::setResultsPerPage(std::optional<Value> resultsPerPage) {
  if (!resultsPerPage || resultsPerPage->isNull()) {
    throw InvalidArgumentError("the property \"resultsPerPage\" takes a number, not nil");
  }
  changeStorage(*this, [&](Dictionary& storage) {
    storage.set(kResultsPerPageKey, std::move(*resultsPerPage));
  });
}

std::shared_ptr<VTSearchFolder> VTUser::defaultSearchFolder() const {
  const std::optional<std::string> title = storedTitle(*this, kDefaultSearchFolderKey);
  const auto folders = VTSettings::sharedInstance()->searchFolders();
  if (!title || !folders) return nullptr;
  for (const std::shared_ptr<VTSearchFolder>& folder : *folders) {
    if (auto found = folder->searchFolderForTitle(*title)) return found;
  }
  return nullptr;
}

void VTUser::setDefaultSearchFolder(const std::shared_ptr<VTSearchFolder>& folder) {
  if (folder) return storeTitle(*this, kDefaultSearchFolderKey, folder->title());
  changeStorage(*this, [](Dictionary& storage) { storage.remove(kDefaultSearchFolderKey); });
}

std::shared_ptr<VTSearchKind> VTUser::defaultSearchKind() const {
  const std::optional<std::string> title = storedTitle(*this, kDefaultSearchKindKey);
  return title ? VTSearchKind::kindWithTitle(*title) : nullptr;
}

void VTUser::setDefaultSearchKind(const std::shared_ptr<VTSearchKind>& kind) {
  if (kind) return storeTitle(*this, kDefaultSearchKindKey, kind->title());
  changeStorage(*this, [](Dictionary& storage) { storage.remove(kDefaultSearchKindKey); });
}

std::int32_t VTUser::defaultAction() const {
  const std::optional<Value> action = userStorage()->get(kDefaultActionKey);
  return action ? action->intValue() : 0;
}

void VTUser::setDefaultAction(std::int32_t action) {
  changeStorage(*this, [&](Dictionary& storage) {
    storage.set(kDefaultActionKey, static_cast<std::uint32_t>(action));
  });
}

void VTUser::addSavedSearch(const VTSavedSearch& search) {
  changeStorage(*this, [&](Dictionary& storage) { search.addToStorage(storage); });
}

void VTUser::removeSavedSearch(const VTSavedSearch& search) {
  changeStorage(*this, [&](Dictionary& storage) { search.removeFromStorage(storage); });
}

std::shared_ptr<ObjectArray<VTSavedSearch>> VTUser::savedSearches() const {
  return VTSavedSearch::savedSearchesFromStorage(*userStorage());
}

const Property* VTUser::propertyNamed(std::string_view key) const {
  static constexpr Property kProperties[] = {
      property<&VTUser::uid>("uid"),
      property<&VTUser::gid>("gid"),
      property<&VTUser::username>("username"),
      property<&VTUser::fullname>("fullname"),
      property<&VTUser::administrator>("administrator"),
      property<&VTUser::resultsPerPage, &VTUser::setResultsPerPage>("resultsPerPage"),
      property<&VTUser::defaultSearchKind, &VTUser::setDefaultSearchKind>("defaultSearchKind"),
      property<&VTUser::defaultSearchFolder, &VTUser::setDefaultSearchFolder>(
          "defaultSearchFolder"),
      property<&VTUser::defaultAction, &VTUser::setDefaultAction>("defaultAction"),
  };
  return findProperty(kProperties, key);
}

}  // namespace vt
