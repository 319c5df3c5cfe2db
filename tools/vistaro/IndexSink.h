#pragma once

#include <string>
#include <utility>
#include <vector>

#include "metadata/watch/ChangeSink.h"
#include "vistaro/IndexWriter.h"

namespace vt::tool {

/// Brings an index up to date with its indexer, which remembers what has not changed. Crawls are
/// told of, and nothing else: a line for each change would change the file that it goes to.
class IndexSink final : public ChangeSink {
 public:
  /// Borrows `writer`.
  explicit IndexSink(const IndexWriter& writer) : writer_(writer) {}

  /// Canonical paths, none in another.
  void setRoots(std::vector<std::string> roots) { roots_ = std::move(roots); }

  Result<bool, StoreError> crawl(Meanwhile goesOn) override;
  Result<bool, StoreError> apply(const FileChanges& changes, Meanwhile goesOn) override;
  Result<bool, StoreError> lookIntoFiles(Meanwhile goesOn) override;

 private:
  Result<bool, StoreError> publishNames(Meanwhile goesOn, bool isTold);

  const IndexWriter& writer_;
  std::vector<std::string> roots_;
  bool areContentsLeft_ = false;
  bool areContentsToBeTold_ = false;
};

}  // namespace vt::tool
