#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "foundation/Date.h"
#include "metadata/crawl/FolderOpener.h"
#include "metadata/crawl/FolderScanner.h"
#include "metadata/types/ContentTypes.h"
#include "metadata/update/FileChanges.h"
#include "metadata/update/KnownIndex.h"
#include "metadata/update/OtherNames.h"

namespace vt {

/// Looks at the places where files may have changed, and tells the index what is there.
///
/// Folders are looked at from the top downwards: what is named below a folder that has been moved
/// is then looked for where the folder is now. A folder that went from its place is kept aside
/// until all places have been looked at, for it may have come to one of them.
class ChangeWalk {
 public:
  /// Borrows both. `coarsestTick`: see IndexUpdater::Options.
  ChangeWalk(KnownIndex& index, const ContentTypes& types, std::chrono::microseconds coarsestTick);

  void run(const FileChanges& changes);

  /// Whether anything was found of folders that their rows do not tell.
  bool hasChangedFolders() const { return hasChangedFolders_; }
  /// Whether a file with several names has changed of which not all were looked at.
  bool missesOtherNames() const { return otherNames_.missesSome(); }

 private:
  /// How much of a known folder is believed when it is listed.
  enum class Trust : std::uint8_t {
    kAll,     ///< what is known of the folders in it
    kStamps,  ///< that of folders that have not been changed since they were seen
    kNone,
  };
  /// What is to be done about a folder.
  struct Task {
    std::set<std::string> names;   // of entries to look at
    std::optional<Trust> listing;  // the whole is to be listed
  };

  void lookAround(const FileChanges& changes);
  /// Whether the nearest folder above that is known is an indexed one.
  bool isBelowCovered(std::string_view path) const;
  void takePaths(const FileChanges& changes);
  void takeEntry(const std::string& path);
  void takeFolder(const std::string& path, Trust trust);
  void enqueue(std::uint32_t folder) { queue_.insert({index_.folders.depthOf(folder), folder}); }
  void lookAt(std::uint32_t folder, const std::string& name);
  void list(std::uint32_t folder, Trust trust);
  void lookAtFolderItself(std::uint32_t folder);

  void work(std::uint32_t folder);
  void lookAtNames(std::uint32_t folder, int open, const std::set<std::string>& names);
  void scan(std::uint32_t folder, const std::string& path, Trust trust);
  void refreshRoot(std::uint32_t folder, int open);

  void arrive(std::uint32_t folder, std::uint32_t row, const CrawledEntry& entry, Trust trust);
  void arriveFolder(std::uint32_t folder, std::uint32_t row, const CrawledEntry& entry,
                    Trust trust);
  void depart(std::uint32_t row);
  std::uint32_t findMoved(const CrawledEntry& entry, std::uint32_t newParent);
  void moveHere(std::uint32_t moved, std::uint32_t folder, const CrawledEntry& entry);
  bool isStillAt(std::uint32_t folder, const CrawledEntry& entry);
  void removeDetached();
  bool lookAtOtherNames();
  static bool isSame(const KnownFolder& known, const CrawledEntry& entry);
  bool isSurelySame(const KnownFolder& known) const;
  bool isUnchanged(const KnownFolder& known, const CrawledEntry& entry) const;

  KnownIndex& index_;
  FolderOpener opener_;
  FolderScanner scanner_;
  std::chrono::microseconds coarsestTick_;
  Date now_;
  OtherNames otherNames_;
  bool hasChangedFolders_ = false;
  bool seesAll_;  // the superuser's walk: no change of rights shows or hides anything
  std::unordered_map<std::uint32_t, Task> tasks_;                            // by folder
  std::set<std::pair<std::uint32_t, std::uint32_t>> queue_;                  // depth and folder
  std::vector<std::uint32_t> waiting_;                                       // for a place
  std::unordered_map<std::uint32_t, Trust> listed_;                          // folders, and how
  std::unordered_map<std::uint32_t, std::unordered_set<std::string>> seen_;  // entries, by folder
  std::unordered_set<std::uint32_t> detached_;
  std::vector<std::uint32_t> moved_;
  std::unordered_set<std::string> found_;       // paths of entries in folders that are known
  std::unordered_set<std::uint32_t> notFound_;  // folders that were not at their places once
};

}  // namespace vt
