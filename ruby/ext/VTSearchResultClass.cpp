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

/// Operations of objects that need none of the object's state.
template <auto Function>
struct Stateless;
template <class Result, class... P, Result (*Function)(P...)>
struct Stateless<Function> {
  static Result call(const R&, P... arguments) { return Function(arguments...); }
};

template <auto Function>
consteval Message statelessMessage(std::string_view keyed) {
  return message<&Stateless<Function>::call>(keyed);
}

using ValidThumbnail = std::optional<std::string> (*)(const std::string&, const std::string&);
using ValidThumbnailInSize = std::optional<std::string> (*)(const std::string&, const std::string&,
                                                            bool);
using NameAtIndex = std::optional<std::string> (R::*)(std::uint64_t) const;
using NameAtIndexInSize = std::optional<std::string> (R::*)(std::uint64_t, bool) const;
using TestAtIndex = bool (R::*)(std::uint64_t) const;
using TestAtIndexInSize = bool (R::*)(std::uint64_t, bool) const;
using BuildRange = void (R::*)(std::uint64_t, std::uint64_t) const;
using BuildRangeInSize = void (R::*)(std::uint64_t, std::uint64_t, bool) const;
using BuildFile = bool (R::*)(const std::optional<std::string>&) const;
using BuildFiles = bool (R::*)(const std::vector<std::string>&) const;
using BuildFilesInSize = bool (R::*)(const std::vector<std::string>&, bool) const;
using BuildImage = bool (R::*)(const std::string&, const std::string&, bool, double, double) const;

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
      statelessMessage<&R::encodedURL>("encodedURL:"),
      message<&R::openURLPathForItemAtIndex>(
          "openURLPathForItemAtIndex:windowsClient:localClient:"),
      message<&R::afpURLPathForItemAtIndex>("afpURLPathForItemAtIndex:"),
      message<&R::smbURLPathForItemAtIndex>("smbURLPathForItemAtIndex:windowsClient:"),
      message<&R::metadataForItemAtIndex, Trait::kReadOnly>("metadataForItemAtIndex:"),
      message<&R::sortByAttribute>("sortByAttribute:"),

      statelessMessage<&R::thumbnailFileNameForFile>("thumbnailFileNameForFile:"),
      statelessMessage<&R::smallThumbnailFileNameForFile>("smallThumbnailFileNameForFile:"),
      message<static_cast<NameAtIndex>(&R::thumbnailFileNameForItemAtIndex)>(
          "thumbnailFileNameForItemAtIndex:"),
      message<static_cast<NameAtIndexInSize>(&R::thumbnailFileNameForItemAtIndex)>(
          "thumbnailFileNameForItemAtIndex:inSmallVersion:"),
      statelessMessage<static_cast<ValidThumbnail>(&R::validThumbnailForFile)>(
          "validThumbnailForFile:inTargetDirectory:"),
      statelessMessage<static_cast<ValidThumbnailInSize>(&R::validThumbnailForFile)>(
          "validThumbnailForFile:inTargetDirectory:inSmallVersion:"),
      message<&R::thumbnailPathForItemAtIndex>("thumbnailPathForItemAtIndex:"),
      message<static_cast<TestAtIndex>(&R::thumbnailFileExistsForItemAtIndex)>(
          "thumbnailFileExistsForItemAtIndex:"),
      message<static_cast<TestAtIndexInSize>(&R::thumbnailFileExistsForItemAtIndex)>(
          "thumbnailFileExistsForItemAtIndex:inSmallVersion:"),
      message<&R::buildThumbnails, Trait::kReleasesLock>("buildThumbnails"),
      message<static_cast<BuildRange>(&R::buildThumbnailsFromIndex), Trait::kReleasesLock>(
          "buildThumbnailsFromIndex:toIndex:"),
      message<static_cast<BuildRangeInSize>(&R::buildThumbnailsFromIndex), Trait::kReleasesLock>(
          "buildThumbnailsFromIndex:toIndex:inSmallVersion:"),
      message<&R::buildThumbnailForItemAtIndex, Trait::kReleasesLock>(
          "buildThumbnailForItemAtIndex:"),
      message<static_cast<BuildFile>(&R::buildThumbnailForFile), Trait::kReleasesLock>(
          "buildThumbnailForFile:"),
      message<static_cast<BuildFiles>(&R::buildThumbnailsForFiles), Trait::kReleasesLock>(
          "buildThumbnailsForFiles:"),
      message<static_cast<BuildFilesInSize>(&R::buildThumbnailsForFiles), Trait::kReleasesLock>(
          "buildThumbnailsForFiles:inSmallVersion:"),
      message<&R::buildPreviewForItemAtIndex, Trait::kReleasesLock>("buildPreviewForItemAtIndex:"),
      message<static_cast<BuildImage>(&R::buildThumbnailForFile), Trait::kReleasesLock>(
          "buildThumbnailForFile:targetFile:iconMode:width:height:"),
  };
  defineClass<R>(module, "VTSearchResult", classNamed(module, "VTObject"), kMessages);
}

}  // namespace vt::ruby
