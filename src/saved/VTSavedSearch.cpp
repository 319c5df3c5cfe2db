#include "saved/VTSavedSearch.h"

#include <algorithm>
#include <utility>

#include "foundation/Array.h"
#include "foundation/NSLog.h"
#include "foundation/Property.h"
#include "scopes/VTSearchFolder.h"
#include "settings/VTSettings.h"

namespace vt {
namespace {

constexpr std::string_view kStorageKey = "SavedSearches";

// Nullptr when there is none; a value of another type counts as none.
std::shared_ptr<Array> storedSearches(const Dictionary& userStorage) {
  const Value* stored = userStorage.find(kStorageKey);
  return stored ? stored->array() : nullptr;
}

Value valueOrNull(const std::optional<std::string>& text) {
  return text ? Value(*text) : Value(nullptr);
}

}  // namespace

std::shared_ptr<VTSavedSearch> VTSavedSearch::initWithQuery(std::optional<std::string> query,
                                                            std::optional<std::string> title) {
  std::shared_ptr<VTSavedSearch> search(new VTSavedSearch);
  search->query_ = std::move(query);
  search->title_ = std::move(title);
  search->searchFolderTitle_ = "";
  return search;
}

std::shared_ptr<VTSavedSearch> VTSavedSearch::initWithDictionary(const Dictionary& stored) {
  std::shared_ptr<VTSavedSearch> search(new VTSavedSearch);
  for (const auto& [key, value] : stored) search->setValue(value, key.str());
  return search;
}

std::shared_ptr<ObjectArray<VTSavedSearch>> VTSavedSearch::savedSearchesFromStorage(
    const Dictionary& userStorage) {
  auto searches = ObjectArray<VTSavedSearch>::make();
  const std::shared_ptr<Array> stored = storedSearches(userStorage);
  if (!stored) return searches;
  for (const Value& element : *stored) {
    const std::shared_ptr<Dictionary> entry = element.dictionary();
    if (!entry) {
      NSLog("Stored search left out: it is %@, not a dictionary", describeKind(element.kind()));
      continue;
    }
    try {
      searches->append(initWithDictionary(*entry));
    } catch (const UndefinedKeyError& error) {
      NSLog("Stored search left out: %@", error.what());
    } catch (const InvalidArgumentError& error) {
      NSLog("Stored search left out: %@", error.what());
    }
  }
  return searches;
}

void VTSavedSearch::setQuery(std::optional<std::string> query) { query_ = std::move(query); }

void VTSavedSearch::setTitle(std::optional<std::string> title) { title_ = std::move(title); }

std::shared_ptr<VTSearchFolder> VTSavedSearch::searchFolder() const {
  if (!searchFolderTitle_ || searchFolderTitle_->empty()) return nullptr;
  const auto folders = VTSettings::sharedInstance()->searchFolders();
  for (const auto& folder : *folders) {
    if (auto found = folder->searchFolderForTitle(*searchFolderTitle_)) return found;
  }
  return nullptr;
}

void VTSavedSearch::setSearchFolder(const std::shared_ptr<VTSearchFolder>& folder) {
  searchFolderTitle_ = folder ? folder->title().value_or("") : "";
}

void VTSavedSearch::setSearchFolderTitle(std::optional<std::string> title) {
  searchFolderTitle_ = std::move(title);
}

std::shared_ptr<Dictionary> VTSavedSearch::storageDictionary() const {
  return Dictionary::make({{"query", valueOrNull(query_)},
                           {"title", valueOrNull(title_)},
                           {"searchFolderTitle", valueOrNull(searchFolderTitle_)}});
}

void VTSavedSearch::addToStorage(Dictionary& userStorage) const {
  removeFromStorage(userStorage);
  std::shared_ptr<Array> stored = storedSearches(userStorage);
  if (!stored) {
    stored = Array::make();
    userStorage.set(kStorageKey, stored);
  }
  stored->append(storageDictionary());
}

void VTSavedSearch::removeFromStorage(Dictionary& userStorage) const {
  const std::shared_ptr<Array> stored = storedSearches(userStorage);
  if (!stored || !title_) return;
  const Value title(*title_);
  const auto found = std::ranges::find_if(stored->elements(), [&](const Value& element) {
    const std::shared_ptr<Dictionary> entry = element.dictionary();
    return entry && entry->get("title") == title;
  });
  if (found == stored->elements().end()) return;
  // A copy: the element itself is among those that go.
  // NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
  const Value removed = *found;
  std::erase(stored->elements(), removed);
}

bool VTSavedSearch::isEqual(const VTObject* other) const {
  const auto* search = dynamic_cast<const VTSavedSearch*>(other);
  return search && title_ && title_ == search->title_;
}

const Property* VTSavedSearch::propertyNamed(std::string_view key) const {
  using Search = VTSavedSearch;
  static constexpr Property kProperties[] = {
      property<&Search::query, &Search::setQuery>("query"),
      property<&Search::title, &Search::setTitle>("title"),
      property<&Search::searchFolderTitle, &Search::setSearchFolderTitle>("searchFolderTitle"),
  };
  return findProperty(kProperties, key);
}

}  // namespace vt
