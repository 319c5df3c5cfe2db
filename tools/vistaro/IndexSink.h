#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "metadata/update/IndexUpdater.h"
#include "metadata/watch/ChangeSink.h"
#include "platform/linux/ForkedRunner.h"
#include "vistaro/IndexWriter.h"

namespace vt::tool {

/// Brings an index up to date: by a crawl, or by updates of what has changed. Crawls are told of,
/// and nothing else: a line for each change would change the file that it goes to.
class IndexSink final : public ChangeSink {
 public:
  /// Borrows `writer`.
  explicit IndexSink(const IndexWriter& writer)
      : writer_(writer), updater_(writer.updater(runner_)) {}

  /// Canonical paths, none in another.
  void setRoots(std::vector<std::string> roots) { roots_ = std::move(roots); }

  Result<bool, StoreError> crawl(Meanwhile goesOn) override;
  Result<Applied, StoreError> apply(const FileChanges& changes, Meanwhile goesOn) override;
  Result<bool, StoreError> lookIntoFiles(Meanwhile goesOn) override;

  /// Goes on with a merge that runs beside; to be called now and then.
  void tendMerge() { static_cast<void>(updater_.tendMerge()); }
  bool isMerging() const { return updater_.isMerging(); }
  /// Why base and delta could not be merged when that was tried last; nothing when they could.
  const std::optional<StoreError>& mergeError() const { return updater_.mergeError(); }

 private:
  /// Files that were looked into since the last crawl.
  struct ContentsOfCrawl {
    bool areToBeTold = false;
    ContentCounts counts;
    std::chrono::duration<double> time{};
    std::optional<StoreError> errorOfCrawl;  // why it could not go on to look into files
  };

  const IndexWriter& writer_;
  ForkedRunner runner_;
  IndexUpdater updater_;
  std::vector<std::string> roots_;
  ContentsOfCrawl contents_;
};

}  // namespace vt::tool
