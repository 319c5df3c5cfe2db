#pragma once

#include <memory>
#include <optional>
#include <string>

#include "foundation/Dictionary.h"
#include "foundation/ObjectArray.h"
#include "foundation/VTObject.h"

namespace vt {

class VTSearchFolder;

/// A query that a user keeps under a title, with the search folder that it was made for.
///
/// A passing view: the dictionaries in the user's storage are the truth, and a changed search is
/// stored by adding it again. The title is its identity.
class VTSavedSearch : public VTObject {
 public:
  /// `initWithQuery:title:`
  /// A saved search without a folder.
  static std::shared_ptr<VTSavedSearch> initWithQuery(std::optional<std::string> query,
                                                      std::optional<std::string> title);

  /// `initWithDictionary:`
  /// Sets every key of `stored` by access by key. Throws UndefinedKeyError for any but "query",
  /// "title" and "searchFolderTitle". Without the last the folder title is nil, not "".
  static std::shared_ptr<VTSavedSearch> initWithDictionary(const Dictionary& stored);

  /// `savedSearchesFromStorage:`
  /// A new array of the searches under "SavedSearches", in stored order. An entry that cannot be
  /// read back is logged and left out.
  static std::shared_ptr<ObjectArray<VTSavedSearch>> savedSearchesFromStorage(
      const Dictionary& userStorage);

  std::optional<std::string> query() const { return query_; }
  void setQuery(std::optional<std::string> query);
  std::optional<std::string> title() const { return title_; }
  void setTitle(std::optional<std::string> title);

  /// The first folder of the settings that answers for the stored title; nullptr when none does or
  /// no title is stored.
  std::shared_ptr<VTSearchFolder> searchFolder() const;
  /// `setSearchFolder:`
  /// Remembers the folder's title, "" for nullptr or a folder without one.
  void setSearchFolder(const std::shared_ptr<VTSearchFolder>& folder);

  std::optional<std::string> searchFolderTitle() const { return searchFolderTitle_; }
  void setSearchFolderTitle(std::optional<std::string> title);

  /// A new dictionary with "query", "title" and "searchFolderTitle"; the null object for nil.
  std::shared_ptr<Dictionary> storageDictionary() const;

  /// `addToStorage:`
  /// Appends this search to "SavedSearches", in place of one with its title.
  void addToStorage(Dictionary& userStorage) const;
  /// `removeFromStorage:`
  /// Removes the first entry with this title and every entry equal to it.
  void removeFromStorage(Dictionary& userStorage) const;

  /// `isEqual:`
  /// Whether `other` is a saved search with the same title. One without title equals nothing.
  bool isEqual(const VTObject* other) const;

 protected:
  const Property* propertyNamed(std::string_view key) const override;

 private:
  VTSavedSearch() = default;

  std::optional<std::string> query_;
  std::optional<std::string> title_;
  std::optional<std::string> searchFolderTitle_;
};

}  // namespace vt
