#include "Classes.h"
#include "Message.h"
#include "directory/VTUser.h"
#include "kinds/VTSearchKind.h"
#include "scopes/VTSearchFolder.h"
#include "search/VTSearchResult.h"

namespace vt::ruby {
namespace {

using R = VTSearchResult;
using ValueAtIndex = std::optional<Value> (R::*)(std::string_view, std::uint64_t) const;

// An operation of objects that needs none of the object's state.
std::optional<std::string> encodedURL(const R&, const std::string& url) {
  return R::encodedURL(url);
}

}  // namespace

void defineVTSearchResult(VALUE module) {
  static constexpr Message kMessages[] = {
      initialiser<&R::initWithGroupKind>(
          "initWithGroupKind:results:searchFolders:attributeKeys:user:"),
      message<&R::groupKind>("groupKind"),
      message<&R::groupName>("groupName"),
      message<&R::title>("title"),
      message<&R::results>("results"),
      message<&R::count>("count"),
      message<&R::numberOfPages>("numberOfPages"),
      message<&R::currentPage>("currentPage"),
      message<&R::setCurrentPage>("setCurrentPage:"),
      message<&R::thumbnailMode>("thumbnailMode"),
      message<&R::setThumbnailMode>("setThumbnailMode:"),
      message<&R::sortAttribute>("sortAttribute"),
      message<&R::descendingSort>("descendingSort"),
      message<&R::groupSortOrderCompare>("groupSortOrderCompare:"),
      message<static_cast<ValueAtIndex>(&R::valueForKey), Trait::kReadOnly>("valueForKey:atIndex:"),
      message<&R::pathForItemAtIndex>("pathForItemAtIndex:"),

      message<&R::mimeTypeForItemAtIndex>("mimeTypeForItemAtIndex:"),
      message<&R::isEmailableAtIndex>("isEmailableAtIndex:"),
      message<&R::webLinkForItemAtIndex>("webLinkForItemAtIndex:"),
      message<&R::isDownloadableForItemAtIndex>("isDownloadableForItemAtIndex:"),
      message<&R::isiPhoneDownloadableForItemAtIndex>("isiPhoneDownloadableForItemAtIndex:"),
      classMessage<&R::encodedURL>("encodedURL:"),
      message<encodedURL>("encodedURL:"),
      message<&R::openURLPathForItemAtIndex>(
          "openURLPathForItemAtIndex:windowsClient:localClient:"),
      message<&R::afpURLPathForItemAtIndex>("afpURLPathForItemAtIndex:"),
      message<&R::smbURLPathForItemAtIndex>("smbURLPathForItemAtIndex:windowsClient:"),
      message<&R::metadataForItemAtIndex, Trait::kReadOnly>("metadataForItemAtIndex:"),
      message<&R::sortByAttribute>("sortByAttribute:"),
  };
  defineClass<R>(module, "VTSearchResult", classNamed(module, "VTObject"), kMessages);
}

}  // namespace vt::ruby
