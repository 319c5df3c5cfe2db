#pragma once

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "metadata/engine/OpenIndex.h"
#include "metadata/indexing/Indexer.h"
#include "metadata/store/IndexFolder.h"
#include "metadata/types/ContentTypes.h"
#include "support/TemporaryFolder.h"

namespace vt {

/// An index in a folder of its own, as the process's own user makes it.
class IndexedTree {
 public:
  explicit IndexedTree(const ContentTypes& types, const Extractors* extractors = nullptr)
      : types_(types),
        extractors_(extractors),
        folder_(make(place_.path() / "index")),
        lock_(folder_.lock().value()) {}
  /// The same with the tree below `root`, a canonical path, indexed.
  IndexedTree(const std::string& root, const ContentTypes& types,
              const Extractors* extractors = nullptr)
      : IndexedTree(types, extractors) {
    run({root});
  }

  /// Publishes the next generation.
  IndexingReport run(const std::vector<std::string>& roots) {
    auto report =
        Indexer(folder_, lock_, types_, extractors_).run(roots, [](const IndexingProgress&) {
          return true;
        });
    if (!report) throw std::runtime_error(report.error().reason);
    return std::move(report).value().value();
  }

  std::string path() const { return place_.path() / "index"; }
  const IndexFolder& folder() const { return folder_; }
  const IndexLock& lock() const { return lock_; }
  IndexGeneration generation() const { return folder_.current().value(); }
  std::shared_ptr<const OpenIndex> index() const { return openIndex(generation(), types_); }

 private:
  static IndexFolder make(const std::string& path) {
    Result<IndexFolder, StoreError> folder = IndexFolder::make(path);
    if (!folder) throw std::runtime_error(folder.error().reason);
    return std::move(folder).value();
  }

  const ContentTypes& types_;
  const Extractors* extractors_;
  TemporaryFolder place_;
  IndexFolder folder_;
  IndexLock lock_;
};

}  // namespace vt
