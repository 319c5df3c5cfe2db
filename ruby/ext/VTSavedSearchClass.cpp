#include "Classes.h"
#include "Message.h"
#include "saved/VTSavedSearch.h"
#include "scopes/VTSearchFolder.h"

namespace vt::ruby {

void defineVTSavedSearch(VALUE module) {
  using S = VTSavedSearch;
  static constexpr Message kMessages[] = {
      initialiser<&S::initWithQuery>("initWithQuery:title:"),
      initialiser<&S::initWithDictionary>("initWithDictionary:"),
      classMessage<&S::savedSearchesFromStorage>("savedSearchesFromStorage:"),
      message<&S::query>("query"),
      message<&S::setQuery>("setQuery:"),
      message<&S::title>("title"),
      message<&S::setTitle>("setTitle:"),
      message<&S::searchFolder>("searchFolder"),
      message<&S::setSearchFolder>("setSearchFolder:"),
      message<&S::searchFolderTitle>("searchFolderTitle"),
      message<&S::setSearchFolderTitle>("setSearchFolderTitle:"),
      message<&S::storageDictionary>("storageDictionary"),
      message<&S::addToStorage>("addToStorage:"),
      message<&S::removeFromStorage>("removeFromStorage:"),
      message<&S::isEqual>("isEqual:"),
  };
  defineClass<S>(module, "VTSavedSearch", classNamed(module, "VTObject"), kMessages);
}

}  // namespace vt::ruby
