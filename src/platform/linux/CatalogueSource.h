#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "foundation/Result.h"
#include "metadata/catalogue/CatalogueReader.h"
#include "metadata/engine/IndexedContents.h"
#include "metadata/engine/OpenIndex.h"
#include "metadata/live/FileStatus.h"

namespace vt {

/// The catalogue in the folder of an index, opened when somebody asks of contents and kept open.
class CatalogueSource {
 public:
  /// The folder need not be there.
  explicit CatalogueSource(std::string indexFolder) : folder_(std::move(indexFolder)) {}

  /// What stands in the files of the index at this moment; else why that is not known, as the end
  /// of a sentence. Cheap while nobody has written.
  Result<std::shared_ptr<const IndexedContents>, std::string> contentsOf(const OpenIndex& index);

 private:
  StoreFailure open();
  StoreFailure take(const OpenIndex& index);

  std::string folder_;
  std::shared_ptr<CatalogueReader> reader_;
  FileStatus file_;  // that reader_ has open
  // What was taken of the reader, when that was of this version, for these segments.
  std::shared_ptr<const IndexedContents> contents_;
  std::int64_t version_ = 0;
  SegmentIdentity base_;
  std::optional<SegmentIdentity> delta_;
};

}  // namespace vt
