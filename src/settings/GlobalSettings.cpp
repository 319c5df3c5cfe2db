// The global settings: one flat dictionary, reached by keys that the class does not declare.

#include <utility>

#include "settings/VTSettings.h"

namespace vt {

// The dictionary under `key`, made when there is none. A value of another type counts as none.
std::shared_ptr<Dictionary> VTSettings::dictionaryIn(Dictionary& parent, std::string_view key) {
  const Value* present = parent.find(key);
  std::shared_ptr<Dictionary> dictionary = present ? present->dictionary() : nullptr;
  return dictionary ? dictionary : newDictionaryIn(parent, key);
}

// Puts an empty dictionary under `key`. When a value of another type makes way, the file that holds
// it is kept at the next save.
std::shared_ptr<Dictionary> VTSettings::newDictionaryIn(Dictionary& parent, std::string_view key) {
  const Value* replaced = parent.find(key);
  if (replaced && !replaced->dictionary()) fileHoldsMoreThanStorage_ = true;
  std::shared_ptr<Dictionary> made = Dictionary::make();
  parent.set(key, made);
  return made;
}

std::shared_ptr<Dictionary> VTSettings::globalSettings() {
  return dictionaryIn(*storage_, "GlobalSettings");
}

// Reading makes no dictionary: a value of the wrong type in its place is left as it is.
std::shared_ptr<Dictionary> VTSettings::presentGlobalSettings() const {
  const Value* present = storage_->find("GlobalSettings");
  return present ? present->dictionary() : nullptr;
}

std::optional<Value> VTSettings::valueForUndefinedKey(std::string_view key) const {
  const std::shared_ptr<Dictionary> settings = presentGlobalSettings();
  return settings ? settings->get(key) : std::nullopt;
}

void VTSettings::setValueForUndefinedKey(std::optional<Value> value, std::string_view key) {
  const ValueChange change(*this, key);
  if (value) {
    globalSettings()->set(key, *std::move(value));
  } else {
    globalSettings()->remove(key);
  }
  if (saveSettingsOnChanges_) saveStorage();
}

std::optional<Value> VTSettings::startupUserId() const {
  return valueForUndefinedKey("startupUserId");
}

void VTSettings::setStartupUserId(std::optional<Value> userId) {
  setValueForUndefinedKey(std::move(userId), "startupUserId");
}

}  // namespace vt
