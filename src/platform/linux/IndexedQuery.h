#pragma once

#include <cstddef>
#include <memory>

#include "metadata/engine/IndexHits.h"
#include "platform/MetadataIndex.h"
#include "platform/linux/LiveQuery.h"

namespace vt {

/// A query of IndexedMetadataIndex: one of the live index, and what the index found in its place.
class IndexedQuery final : public MDQuery {
 public:
  explicit IndexedQuery(std::shared_ptr<LiveQuery> itsLive) : live(std::move(itsLive)) {}

  std::shared_ptr<LiveQuery> live;
  std::shared_ptr<IndexHits> hits;  // nullptr when the live index has answered, or nobody
  MDQueryNotes notes;
};

/// A hit of the index. Holds on to all hits, and so to what tells its values.
class IndexedMDItem final : public MDItem {
 public:
  IndexedMDItem(std::shared_ptr<IndexHits> itsHits, std::size_t itsRow)
      : hits(std::move(itsHits)), row(itsRow) {}

  std::shared_ptr<IndexHits> hits;
  std::size_t row;
};

}  // namespace vt
