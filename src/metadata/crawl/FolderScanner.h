#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "foundation/FunctionRef.h"
#include "metadata/crawl/CrawlMemory.h"
#include "metadata/crawl/EntryBatch.h"
#include "metadata/crawl/FileSystems.h"
#include "metadata/crawl/FolderOpener.h"
#include "metadata/crawl/PendingFolders.h"
#include "metadata/live/FolderReader.h"
#include "metadata/types/ContentTypes.h"

namespace vt {

/// Finds out all about the entries of one folder after the other. One for each thread.
class FolderScanner {
 public:
  /// Takes entries; false when the scan is to end there.
  using Take = FunctionRef<bool(std::span<CrawledEntry>)>;

  /// What there is to say of a folder when its entries have been told.
  struct Outcome {
    FolderStamp stamp;        ///< all 0 when it could not be opened
    bool isComplete = false;  ///< all entries were seen and taken
  };

  /// Borrows both for its life; `memory` may be nullptr.
  FolderScanner(const ContentTypes& types, const CrawlMemory* memory)
      : types_(types), memory_(memory) {}

  /// Hands all entries of the folder to `take`, some at a time. None when it is gone, is another
  /// by now, cannot be listed, or is where a file system of the kernel's own is mounted.
  Outcome scan(const PendingFolder& pending, Take take);

  /// Hands the entry `name` of the open folder `folder` to `take`; false when there is none.
  bool look(int folder, const std::string& name, Take take);

 private:
  bool mayEnter(const PendingFolder& pending);
  bool list(int folder, CrawledFolderId before, Take take);
  bool ask(int folder, CrawledFolderId before, Take take);
  bool add(int folder, const char* name, const RememberedEntry* remembered);
  bool isUnchanged(const FileStatus& status, const RememberedEntry* remembered) const;
  AclPresence aclOf(int folder, const char* name, const FileStatus& status,
                    const RememberedEntry* remembered);
  bool flush(Take take);

  const ContentTypes& types_;
  const CrawlMemory* memory_;
  FolderOpener opener_;
  FolderReader reader_;
  FileSystems fileSystems_;
  EntryBatch batch_;
  std::vector<std::uint8_t> aclBytes_;
  std::unordered_set<std::uint64_t> devicesWithoutAcls_;
  std::unordered_map<std::string_view, RememberedEntry> remembered_;
  std::string name_;
};

}  // namespace vt
