#pragma once

#include <cstdint>
#include <span>
#include <unordered_map>
#include <vector>

#include "metadata/catalogue/CatalogueWriter.h"
#include "metadata/catalogue/ContentRecord.h"
#include "metadata/crawl/FolderOpener.h"
#include "metadata/indexing/ContentIndexer.h"
#include "metadata/store/SegmentColumns.h"

namespace vt {

/// Looks at the extended attributes of files of a segment whose content need not be looked into:
/// nobody looks into such files, or only their inode has changed. Few files have any.
class AttributesLook {
 public:
  /// Borrows all for its life. `contents` has that of each row of the segment, as the catalogue was
  /// told; it is kept up to date.
  AttributesLook(CatalogueWriter& catalogue, const SegmentColumns& segment,
                 std::vector<ContentNumber>& contents)
      : catalogue_(catalogue), segment_(segment), contents_(contents) {}

  /// Looks at the files of the rows, folder by folder. Takes a microsecond for one without
  /// attributes. False when `progress`, which is told of nothing, ended it.
  Result<bool, StoreError> run(std::span<const std::uint32_t> rows,
                               ContentIndexer::Progress progress);

 private:
  StoreFailure lookAt(int folder, std::uint32_t row, bool mayListByName);
  StoreFailure keep(int file, const FileStatus& status, std::uint32_t row);

  CatalogueWriter& catalogue_;
  const SegmentColumns& segment_;
  std::vector<ContentNumber>& contents_;
  FolderOpener opener_;
  // Files that had no content before: they may have several names.
  std::unordered_map<ContentIdentity, ContentNumber, ContentIdentityHash> added_;
};

}  // namespace vt
