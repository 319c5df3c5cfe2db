#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>

#include "foundation/Dictionary.h"
#include "foundation/Key.h"
#include "platform/MetadataIndex.h"

namespace vt {

/// Makes the records of an executed query's hits, see VTSearchResult. Holds on to the query and its
/// index: a record can be made at any time, and says what was true when the query was executed.
class HitRecords {
 public:
  HitRecords(std::shared_ptr<MetadataIndex> index, std::shared_ptr<MDQuery> query);

  /// The record of the hit at `position`, which has a path. Never nullptr.
  std::shared_ptr<Dictionary> recordAt(std::int32_t position) const;

  /// The same where its path and type tree are known.
  std::shared_ptr<Dictionary> recordAt(std::int32_t position, Value path,
                                       const std::optional<Value>& tree) const;

  /// The hit's path; nothing when it has none, or an empty one.
  std::optional<Value> pathAt(std::int32_t position) const;
  std::optional<Value> treeAt(std::int32_t position) const;

 private:
  const std::shared_ptr<MetadataIndex> index_;
  const std::shared_ptr<MDQuery> query_;
  // Made once, so that a key costs a record no more than a counter.
  const Key pathKey_;
  const std::array<Key, 5> keys_;
};

}  // namespace vt
