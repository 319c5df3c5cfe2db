#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "metadata/store/IndexFolder.h"
#include "metadata/types/ContentTypes.h"
#include "platform/linux/CatalogueSource.h"
#include "platform/linux/IndexSource.h"

namespace vt {

/// The index in a folder, as an indexer leaves it there in newer and newer generations.
///
/// When the newest one can't be opened, the one before goes on being searched while it is fresh.
/// Fresh is what was crawled shortly ago, and what whoever watches the files vouches for.
class FolderIndexSource final : public IndexSource {
 public:
  /// `folder` need not be there. What was indexed with types that `types` lacks can't be searched.
  FolderIndexSource(std::string folder, std::shared_ptr<const ContentTypes> types)
      : path_(std::move(folder)), types_(std::move(types)), catalogue_(path_) {}

  void refresh() override;
  std::shared_ptr<const OpenIndex> freshAt(Date now) override;
  std::string whyNotAt(Date now) const override;
  Result<std::shared_ptr<const IndexedContents>, std::string> contentsOf(
      const OpenIndex& index) override {
    return catalogue_.contentsOf(index);
  }

 private:
  void take(IndexGeneration generation);
  bool isVouchedFor() const;

  std::string path_;
  std::shared_ptr<const ContentTypes> types_;
  CatalogueSource catalogue_;
  std::optional<Manifest> manifest_;  // of what is open
  std::shared_ptr<const OpenIndex> open_;
  std::string failure_;  // why the newest generation is not open; "" when it is
};

}  // namespace vt
