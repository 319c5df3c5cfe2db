#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/Dictionary.h"
#include "foundation/ObjectArray.h"
#include "foundation/VTObject.h"

namespace vt {

class HitRecords;
class VTSearchFolder;
class VTSearchKind;
class VTUser;

/// The hits of one search that are of one kind of content.
///
/// A hit is one record: a dictionary keyed by attribute names, in the order kMDItemPath,
/// kMDItemDisplayName, kMDItemContentModificationDate, kMDItemContentTypeTree, kMDItemFSSize,
/// kMDItemLastUsedDate, that ends at the first attribute which the hit lacks.
class VTSearchResult final : public VTObject {
 public:
  using Records = ObjectArray<Dictionary>;
  using Folders = ObjectArray<VTSearchFolder>;

  /// `initWithGroupKind:results:searchFolders:attributeKeys:user:`
  /// A group on page 1 that keeps `results` itself: records that others append later are in the
  /// group. Shown as thumbnails when the kind's default view is 1, else as a list.
  ///
  /// The records stay in the order in which they come, newest modification first, and yet the sort
  /// state says last-used date, descending. Anything may be nil.
  static std::shared_ptr<VTSearchResult> initWithGroupKind(std::shared_ptr<VTSearchKind> groupKind,
                                                           std::shared_ptr<Records> results,
                                                           std::shared_ptr<Folders> searchFolders,
                                                           std::vector<std::string> attributeKeys,
                                                           std::shared_ptr<VTUser> user);

  std::shared_ptr<VTSearchKind> groupKind() const { return groupKind_; }
  /// Both the kind's title; nil without a kind.
  std::optional<std::string> groupName() const { return title(); }
  std::optional<std::string> title() const;

  /// The records in display order: the array itself. Makes those that were not asked for before,
  /// about a microsecond each; the look-ups of single items make their own alone.
  std::shared_ptr<Records> results() const;
  std::uint64_t count() const { return results_ ? results_->size() : 0; }

  /// How many pages the records fill, by the user's resultsPerPage() read as a signed 32-bit
  /// integer; 0 without records. A negative one counts as the unsigned 64-bit number of its bits,
  /// so that everything is on one page. Throws ArithmeticError when it reads 0, as it does without
  /// a user.
  std::uint64_t numberOfPages() const;

  /// The page shown, from 1; not checked against numberOfPages().
  std::uint64_t currentPage() const { return currentPage_; }
  void setCurrentPage(std::uint64_t page) { currentPage_ = page; }
  bool thumbnailMode() const { return thumbnailMode_; }
  void setThumbnailMode(bool thumbnails) { thumbnailMode_ = thumbnails; }

  /// The attribute by which the group counts as sorted, and in which direction.
  std::optional<std::string> sortAttribute() const { return sortAttribute_; }
  bool descendingSort() const { return descendingSort_; }

  /// `sortByAttribute:`
  /// Sorts the records by the values under `attribute` (see sortedRecords()), ascending; by the
  /// current sort attribute, the other way round. The sorted list replaces results().
  void sortByAttribute(const std::string& attribute);

  /// `groupSortOrderCompare:`
  /// -1, 0 or 1 as this group's kind has a smaller, the same or a larger sort order than the
  /// other's.
  int groupSortOrderCompare(const VTSearchResult& other) const;

  using VTObject::valueForKey;
  /// `valueForKey:atIndex:`
  /// The value of the attribute `key` in the record at `index`; nil when the record lacks it or
  /// `index` is past the end. Throws std::out_of_range for any index of a group without records,
  /// for its last index wraps around to the largest.
  std::optional<Value> valueForKey(std::string_view key, std::uint64_t index) const;

  /// `pathForItemAtIndex:`
  /// The absolute path of the item, as bytes. Nil and throws as valueForKey().
  std::optional<std::string> pathForItemAtIndex(std::uint64_t index) const;

  // Each of these treats a value that the item's record lacks as absent: a type that is not told is
  // not this or that one, and a path that is not told leads nowhere. Past the end everything is
  // absent; on a group without records each throws as valueForKey(). What looks at the file itself
  // does so with the rights of the group's user (see ItemAccess), anew each time.

  /// `mimeTypeForItemAtIndex:`
  /// See mimeTypeAtPath(). Nil also when the user may not read the item.
  std::optional<std::string> mimeTypeForItemAtIndex(std::uint64_t index) const;

  /// `isEmailableAtIndex:`
  /// Whether mail is set up and the item is no folder; however large it is.
  bool isEmailableAtIndex(std::uint64_t index) const;

  /// `webLinkForItemAtIndex:`
  /// The address that a web link file holds (see isWebLinkPath() and webLinkInFile()), unchecked:
  /// whoever makes a link of it must look at its scheme. Nil for any other item, one that the user
  /// may not read, one that holds no address, and one above kMostWebLinkBytes.
  std::optional<std::string> webLinkForItemAtIndex(std::uint64_t index) const;

  /// `isDownloadableForItemAtIndex:`
  /// Whether one of the search folders lets users download the item. Never for a folder.
  bool isDownloadableForItemAtIndex(std::uint64_t index) const;

  /// `isiPhoneDownloadableForItemAtIndex:`
  /// Whether the item may be downloaded and is of a type that phones show: an image, text other
  /// than RTF, a Word or Excel document of before 2007, or a PDF.
  bool isiPhoneDownloadableForItemAtIndex(std::uint64_t index) const;

  /// `metadataForItemAtIndex:`
  /// A new dictionary of what the metadata index knows of the item's file, by the names that people
  /// have for the attributes, in the order of the index; attributes without such a name are left
  /// out, and so are all of them before startup has loaded the names. Empty for what the user may
  /// not read. Arrays in it may be the index's own: to be read, never changed.
  std::shared_ptr<Dictionary> metadataForItemAtIndex(std::uint64_t index) const;

  // Links that open an item. Nil for an item without path; they throw as valueForKey().

  /// `encodedURL:`
  /// `url` with percent escapes replaced by what they stand for, and then each "'" by "%27". Nil
  /// when an escape is malformed or the text is then not UTF-8.
  static std::optional<std::string> encodedURL(const std::string& url);

  /// `openURLPathForItemAtIndex:windowsClient:localClient:`
  /// The link that opens the item, through encodedURL(): for a local client "urlrunner://file//"
  /// and the path, else the AFP link, else, and for a Windows client, the SMB link. Nil when there
  /// is none or encodedURL() refuses it.
  std::optional<std::string> openURLPathForItemAtIndex(std::uint64_t index, bool windowsClient,
                                                       bool localClient) const;
  /// `afpURLPathForItemAtIndex:`
  /// The shortest AFP address that a search folder gives, the earliest of equally short ones, with
  /// nothing escaped.
  std::optional<std::string> afpURLPathForItemAtIndex(std::uint64_t index) const;
  /// `smbURLPathForItemAtIndex:windowsClient:`
  /// The same for SMB. A Windows client is sent to the folder that holds the file.
  std::optional<std::string> smbURLPathForItemAtIndex(std::uint64_t index,
                                                      bool windowsClient) const;

  // Pictures of items: PNG files that lie in the settings' cache folders, which are made when they
  // are missing. A thumbnail is as wide and high as kThumbnailSize, or kSmallThumbnailSize in the
  // small version; it is made once for each path, size and modification of the file.
  //
  // What is read of a file to make its picture is read with the rights of the group's user. A
  // picture that is there already is told of to anybody: whoever hands it on must first make sure
  // that its receiver may read the file. See docs/images.md.

  static constexpr double kThumbnailSize = 128;
  static constexpr double kSmallThumbnailSize = 65;
  static constexpr double kPreviewSize = 1024;

  /// As a first index the start of the group, as a last index its end.
  static constexpr std::uint64_t kWholeGroup = 9223372036854775807;

  /// `thumbnailFileNameForFile:`, `smallThumbnailFileNameForFile:`
  /// The file name of the thumbnail of the file at `path`, which is bytes: a digest of the path.
  static std::string thumbnailFileNameForFile(const std::string& path);
  static std::string smallThumbnailFileNameForFile(const std::string& path);
  /// `thumbnailFileNameForItemAtIndex:`, `thumbnailFileNameForItemAtIndex:inSmallVersion:`
  /// The same of an item; nil for an item without path. Throws as valueForKey().
  std::optional<std::string> thumbnailFileNameForItemAtIndex(std::uint64_t index) const;
  std::optional<std::string> thumbnailFileNameForItemAtIndex(std::uint64_t index,
                                                             bool smallVersion) const;

  /// `validThumbnailForFile:inTargetDirectory:`,
  /// `validThumbnailForFile:inTargetDirectory:inSmallVersion:`
  /// The path of the thumbnail in the folder `targetDirectory`. Nil when there is none, and when
  /// the file at `path`, links followed, was modified after it; a file that is gone was not.
  static std::optional<std::string> validThumbnailForFile(const std::string& path,
                                                          const std::string& targetDirectory);
  static std::optional<std::string> validThumbnailForFile(const std::string& path,
                                                          const std::string& targetDirectory,
                                                          bool smallVersion);
  /// `thumbnailPathForItemAtIndex:`
  /// The path of the item's valid thumbnail of normal size in the settings' folder of thumbnails;
  /// nil when there is none. Throws as valueForKey(), as do the next two.
  std::optional<std::string> thumbnailPathForItemAtIndex(std::uint64_t index) const;
  /// `thumbnailFileExistsForItemAtIndex:`, `thumbnailFileExistsForItemAtIndex:inSmallVersion:`
  bool thumbnailFileExistsForItemAtIndex(std::uint64_t index) const;
  bool thumbnailFileExistsForItemAtIndex(std::uint64_t index, bool smallVersion) const;

  /// `buildThumbnails`, `buildThumbnailsFromIndex:toIndex:`,
  /// `buildThumbnailsFromIndex:toIndex:inSmallVersion:`
  /// Makes the thumbnails that are missing or not valid of the items from `first` to `last`, both
  /// included; a `last` past the end means the end. Throws std::out_of_range when `first` lies
  /// behind `last`, and for any `first` but 0 of an empty group.
  void buildThumbnails() const;
  void buildThumbnailsFromIndex(std::uint64_t first, std::uint64_t last) const;
  void buildThumbnailsFromIndex(std::uint64_t first, std::uint64_t last, bool smallVersion) const;
  /// `buildThumbnailForItemAtIndex:`
  /// As buildThumbnailForFile() with the item's path. Throws as valueForKey().
  bool buildThumbnailForItemAtIndex(std::uint64_t index) const;
  /// `buildThumbnailForFile:`
  /// As buildThumbnailsForFiles() with this path alone; false without one.
  bool buildThumbnailForFile(const std::optional<std::string>& path) const;
  /// `buildThumbnailsForFiles:`, `buildThumbnailsForFiles:inSmallVersion:`
  /// Makes the thumbnails that are missing or not valid, in that order. Always true: one that
  /// cannot be made keeps nothing from the rest.
  bool buildThumbnailsForFiles(const std::vector<std::string>& paths) const;
  bool buildThumbnailsForFiles(const std::vector<std::string>& paths, bool smallVersion) const;

  /// `buildPreviewForItemAtIndex:`
  /// Makes a large picture of the item, which takes the place of the last one that was made for the
  /// group's user, and gives its path. Nil, and there is no preview any more, when none can be
  /// made. Nil, and nothing is touched, for a group without user. Throws as valueForKey().
  std::optional<std::string> buildPreviewForItemAtIndex(std::uint64_t index) const;

  /// `buildThumbnailForFile:targetFile:iconMode:width:height:`
  /// Writes a picture of the file at `path` that fits into `width` by `height` pixels to
  /// `targetFile`, as a whole or not at all: of its content, else its icon. False when there is
  /// neither, the group's user may not read the file, or it cannot be written.
  bool buildThumbnailForFile(const std::string& path, const std::string& targetFile, bool iconMode,
                             double width, double height) const;

  /// Appends the hit at `position`, whose record is made when somebody asks for it. All hits of a
  /// group are those of one `found`, and come before anybody asks.
  void appendHit(const std::shared_ptr<const HitRecords>& found, std::int32_t position);

 protected:
  const Property* propertyNamed(std::string_view key) const override;

 private:
  VTSearchResult() = default;

  /// The record at `index`, below the count; may be nullptr.
  const std::shared_ptr<Dictionary>& recordAt(std::uint64_t index) const;

  bool typeTreeContains(std::string_view type, std::uint64_t index) const;

  // As given to the initialiser.
  std::shared_ptr<VTUser> user_;
  std::shared_ptr<VTSearchKind> groupKind_;
  std::shared_ptr<Folders> searchFolders_;
  std::vector<std::string> attributeKeys_;

  std::shared_ptr<Records> results_;
  // Of the records that are nullptr because they were not made yet: the first ones, in order.
  mutable std::shared_ptr<const HitRecords> unmade_;
  mutable std::vector<std::int32_t> unmadePositions_;
  std::uint64_t currentPage_ = 1;
  bool thumbnailMode_ = false;
  std::optional<std::string> sortAttribute_;
  bool descendingSort_ = true;
};

}  // namespace vt
