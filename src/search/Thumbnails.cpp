// The cache of thumbnails of a group's items.

#include <stdexcept>

#include "platform/Files.h"
#include "platform/Platform.h"
#include "search/ImageCache.h"
#include "search/ImageMaker.h"
#include "search/VTSearchResult.h"
#include "settings/VTSettings.h"

namespace vt {

std::string VTSearchResult::thumbnailFileNameForFile(const std::string& path) {
  return thumbnailFileName(path, /*smallVersion=*/false);
}

std::string VTSearchResult::smallThumbnailFileNameForFile(const std::string& path) {
  return thumbnailFileName(path, /*smallVersion=*/true);
}

std::optional<std::string> VTSearchResult::thumbnailFileNameForItemAtIndex(
    std::uint64_t index) const {
  return thumbnailFileNameForItemAtIndex(index, /*smallVersion=*/false);
}

std::optional<std::string> VTSearchResult::thumbnailFileNameForItemAtIndex(
    std::uint64_t index, bool smallVersion) const {
  const std::optional<std::string> path = pathForItemAtIndex(index);
  return path ? std::optional(thumbnailFileName(*path, smallVersion)) : std::nullopt;
}

std::optional<std::string> VTSearchResult::validThumbnailForFile(
    const std::string& path, const std::string& targetDirectory) {
  return validThumbnailForFile(path, targetDirectory, /*smallVersion=*/false);
}

std::optional<std::string> VTSearchResult::validThumbnailForFile(const std::string& path,
                                                                 const std::string& targetDirectory,
                                                                 bool smallVersion) {
  const Files& files = Platform::current().files();
  std::string image = targetDirectory + "/" + thumbnailFileName(path, smallVersion);
  const std::optional<Date> made = files.modificationDate(image);
  if (!made) return std::nullopt;
  const std::optional<Date> modified = files.modificationDate(path);
  return modified && *modified > *made ? std::nullopt : std::optional(std::move(image));
}

std::optional<std::string> VTSearchResult::thumbnailPathForItemAtIndex(std::uint64_t index) const {
  const std::optional<std::string> path = pathForItemAtIndex(index);
  if (!path) return std::nullopt;
  return validThumbnailForFile(*path, VTSettings::sharedInstance()->thumbnailCacheDirectory());
}

bool VTSearchResult::thumbnailFileExistsForItemAtIndex(std::uint64_t index) const {
  return thumbnailFileExistsForItemAtIndex(index, /*smallVersion=*/false);
}

bool VTSearchResult::thumbnailFileExistsForItemAtIndex(std::uint64_t index,
                                                       bool smallVersion) const {
  const std::optional<std::string> path = pathForItemAtIndex(index);
  return path && validThumbnailForFile(
                     *path, VTSettings::sharedInstance()->thumbnailCacheDirectory(), smallVersion);
}

void VTSearchResult::buildThumbnails() const { buildThumbnailsFromIndex(0, kWholeGroup); }

void VTSearchResult::buildThumbnailsFromIndex(std::uint64_t first, std::uint64_t last) const {
  buildThumbnailsFromIndex(first, last, /*smallVersion=*/false);
}

void VTSearchResult::buildThumbnailsFromIndex(std::uint64_t first, std::uint64_t last,
                                              bool smallVersion) const {
  if (!results_) return;
  if (first == kWholeGroup) first = 0;
  const std::uint64_t end = last == kWholeGroup || last >= count() ? count() : last + 1;
  if (first >= end && !(first == 0 && count() == 0)) {
    throw std::out_of_range("buildThumbnailsFromIndex: the first index lies behind the last");
  }
  std::vector<std::string> paths;
  for (std::uint64_t index = first; index < end; ++index) {
    if (std::optional<std::string> path = pathForItemAtIndex(index)) {
      paths.push_back(*std::move(path));
    }
  }
  if (smallVersion) {
    buildThumbnailsForFiles(paths, /*smallVersion=*/true);
  } else {
    buildThumbnailsForFiles(paths);
  }
}

bool VTSearchResult::buildThumbnailForItemAtIndex(std::uint64_t index) const {
  return buildThumbnailForFile(pathForItemAtIndex(index));
}

bool VTSearchResult::buildThumbnailForFile(const std::optional<std::string>& path) const {
  return path && buildThumbnailsForFiles({*path});
}

bool VTSearchResult::buildThumbnailsForFiles(const std::vector<std::string>& paths) const {
  return buildThumbnailsForFiles(paths, /*smallVersion=*/false);
}

bool VTSearchResult::buildThumbnailsForFiles(const std::vector<std::string>& paths,
                                             bool smallVersion) const {
  const std::string folder = VTSettings::sharedInstance()->thumbnailCacheDirectory();
  const double length = smallVersion ? kSmallThumbnailSize : kThumbnailSize;
  for (const std::string& path : paths) {
    if (validThumbnailForFile(path, folder, smallVersion)) continue;
    makeCacheFolders();
    buildThumbnailForFile(path, folder + "/" + thumbnailFileName(path, smallVersion),
                          /*iconMode=*/true, length, length);
  }
  return true;
}

bool VTSearchResult::buildThumbnailForFile(const std::string& path, const std::string& targetFile,
                                           bool iconMode, double width, double height) const {
  return makeImage({path, targetFile, {width, height, iconMode}}, user_.get());
}

}  // namespace vt
