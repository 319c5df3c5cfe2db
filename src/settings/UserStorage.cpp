// What the settings keep for each user.

#include <fmt/format.h>

#include "directory/VTUser.h"
#include "settings/VTSettings.h"

namespace vt {
namespace {

// "%d": the low 32 bits as a signed number, which for every account that counts is its id.
std::string storageKey(const VTUser& user) {
  return fmt::format("{}", static_cast<std::int32_t>(user.uid()));
}

}  // namespace

std::shared_ptr<Dictionary> VTSettings::storageForUser(const VTUser& user) {
  return dictionaryIn(*dictionaryIn(*storage_, "Users"), storageKey(user));
}

void VTSettings::setStorage(const std::shared_ptr<Dictionary>& dictionary, const VTUser& user) {
  // "Users" is looked for in the dictionary that was passed in. As a rule it is not there, and the
  // storage of every other user goes; whoever changes a storage in place calls saveStorage().
  const Value* inner = dictionary->find("Users");
  std::shared_ptr<Dictionary> users = inner ? inner->dictionary() : nullptr;
  if (!users) users = newDictionaryIn(*storage_, "Users");
  users->set(storageKey(user), dictionary);
  saveStorage();
}

std::shared_ptr<VTUser> VTSettings::defaultUser() const { return VTUser::userWithName("root"); }

}  // namespace vt
