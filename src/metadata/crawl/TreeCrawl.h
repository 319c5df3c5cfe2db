#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <vector>

#include "foundation/FunctionRef.h"
#include "foundation/Mutex.h"
#include "metadata/crawl/CrawlMemory.h"
#include "metadata/crawl/CrawlSink.h"
#include "metadata/crawl/FolderScanner.h"
#include "metadata/crawl/PendingFolders.h"
#include "metadata/types/ContentTypes.h"

namespace vt {

/// How far a crawl has come.
struct CrawlCounts {
  std::uint64_t folders = 0;  ///< walked, the unreadable ones among them
  std::uint64_t entries = 0;  ///< found in them
  std::uint64_t leftOut = 0;  ///< folders that could not be walked, or not to the end
};

/// A folder below which everything is to be found.
struct CrawlRoot {
  std::string path;                           ///< absolute and canonical
  CrawledFolderId folder = kNoCrawledFolder;  ///< what the sink calls it
};

/// Walks trees of folders with several threads and hands all that is in them to a sink, with the
/// rights of this process.
///
/// No link is followed, and each folder is opened by its whole path and must be the one that its
/// parent listed (see FolderOpener). Folders that vanish, move or cannot be listed are left out.
/// Other file systems are entered, but for those in which the kernel shows itself. Neither depth
/// nor length of paths is bounded.
///
/// With a memory of an earlier crawl, a folder that has not changed since is not listed again: its
/// entries are asked for their status by the remembered names. Nor is the access control list of an
/// entry read whose inode has not changed. What is found is the same as without.
class TreeCrawl {
 public:
  /// Is told how far the crawl has come, some times a second, on the thread that called run();
  /// ends the crawl by answering false.
  using Progress = FunctionRef<bool(const CrawlCounts&)>;

  enum class End : std::uint8_t { kDone, kStopped, kSinkFull };

  /// Borrows all for its life; `memory` may be nullptr.
  TreeCrawl(const ContentTypes& types, const CrawlMemory* memory, CrawlSink& sink,
            std::size_t threads = 2)
      : types_(types), memory_(memory), sink_(sink), threads_(threads) {}

  /// Walks the trees, none of which may lie in another. Throws what a thread ran into, such as
  /// std::bad_alloc. To be called once.
  End run(const std::vector<CrawlRoot>& roots, Progress progress);

  CrawlCounts counts();

 private:
  void addRoot(const CrawlRoot& root) VT_REQUIRES(mutex_);
  void work();
  void scanOne(FolderScanner& scanner, const PendingFolder& folder);

  const ContentTypes& types_;
  const CrawlMemory* memory_;
  CrawlSink& sink_;  // used only with the mutex held
  std::size_t threads_;

  Mutex mutex_;
  Condition changed_;   // what follows changed in a way that may wake a worker
  Condition finished_;  // the last worker has ended
  PendingFolders pending_ VT_GUARDED_BY(mutex_);
  std::size_t scanning_ VT_GUARDED_BY(mutex_) = 0;
  std::size_t working_ VT_GUARDED_BY(mutex_) = 0;
  bool isStopped_ VT_GUARDED_BY(mutex_) = false;
  bool isSinkFull_ VT_GUARDED_BY(mutex_) = false;
  CrawlCounts counts_ VT_GUARDED_BY(mutex_);
  std::exception_ptr failure_ VT_GUARDED_BY(mutex_);
};

}  // namespace vt
