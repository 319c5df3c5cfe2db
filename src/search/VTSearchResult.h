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

  /// The records in display order: the array itself.
  std::shared_ptr<Records> results() const { return results_; }
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

 protected:
  const Property* propertyNamed(std::string_view key) const override;

 private:
  VTSearchResult() = default;

  bool typeTreeContains(std::string_view type, std::uint64_t index) const;

  // As given to the initialiser.
  std::shared_ptr<VTUser> user_;
  std::shared_ptr<VTSearchKind> groupKind_;
  std::shared_ptr<Folders> searchFolders_;
  std::vector<std::string> attributeKeys_;

  std::shared_ptr<Records> results_;
  std::uint64_t currentPage_ = 1;
  bool thumbnailMode_ = false;
  std::optional<std::string> sortAttribute_;
  bool descendingSort_ = true;
};

}  // namespace vt
