#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "foundation/FunctionRef.h"
#include "metadata/extract/Extractors.h"
#include "metadata/indexing/Indexer.h"
#include "metadata/update/IndexUpdater.h"
#include "vistaro/IndexOptions.h"

namespace vt::tool {

/// The right to write an index, and what that takes.
class IndexWriter {
 public:
  /// Throws CommandError when another process writes, or the index can't be made.
  IndexWriter(const IndexOptions& options, const std::string& indexFolder);

  const IndexFolder& folder() const { return folder_; }
  const IndexLock& lock() const { return lock_; }
  bool looksIntoFiles() const { return extractors_.has_value(); }

  /// The folders that are to be indexed now, whether they are there or not. Reads the settings anew
  /// when none were named; throws CommandError when these can't be read.
  std::vector<std::string> wishedFolders() const;
  /// Those that are there, without links on the way; hands why one is not to `tell`.
  static std::vector<std::string> presentFolders(const std::vector<std::string>& wished,
                                                 FunctionRef<void(const std::string&)> tell);

  /// Crawls, publishes and looks into files as an Indexer does, and shows on a terminal how far it
  /// has come.
  Result<std::optional<IndexingReport>, StoreError> run(const std::vector<std::string>& roots,
                                                        Indexer::Progress progress) const;

  /// What changes are made with to the index that run() has published. Borrows `runner`, which
  /// merges.
  IndexUpdater updater(BackgroundRunner& runner) const {
    IndexUpdater::Options options;
    options.runner = &runner;
    return IndexUpdater(folder_, lock_, *types_, extractors_ ? &*extractors_ : nullptr, options);
  }
  /// Looks into files as that updater does, and shows the same.
  static Result<ContentCounts, StoreError> lookIntoFiles(IndexUpdater& updater,
                                                         Indexer::Progress progress);

  /// Prints what a run came to.
  static void tell(const IndexingReport& report);
  /// Prints why files were not looked into, or all anew. True when they were not.
  static bool tellOfTrouble(const IndexingReport& report);
  /// Prints how files were looked into, unless there was none.
  static void tellOfContents(const ContentCounts& contents, std::chrono::duration<double> time);

 private:
  IndexFolder folder_;
  IndexLock lock_;
  std::shared_ptr<const ContentTypes> types_;
  std::optional<Extractors> extractors_;
  std::vector<std::string> named_;
};

/// What is printed when there is no folder to index.
inline constexpr const char* kNothingToIndex =
    "there is nothing to index: name a folder, or let one be searched with `vistaro folders add`";

}  // namespace vt::tool
