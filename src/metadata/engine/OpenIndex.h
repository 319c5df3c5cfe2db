#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "metadata/store/GenerationColumns.h"
#include "metadata/store/IndexFolder.h"
#include "metadata/store/SegmentIdentity.h"
#include "metadata/types/ContentTypes.h"

namespace vt {

/// A generation that is ready to be searched, and its types by this process's table.
///
/// Rows of the base are numbered from 0, those of the delta go on from there.
struct OpenIndex {
  explicit OpenIndex(GenerationColumns theColumns) : columns(std::move(theColumns)) {}

  GenerationColumns columns;
  SegmentIdentity base;
  std::optional<SegmentIdentity> delta;
  std::vector<ContentTypeId> types;  ///< by the segments' own numbers

  IndexGeneration memory;  ///< what the columns are borrowed from

  /// What folders, classes and types are told by; its rows are those of the base.
  const SegmentColumns& folders() const { return columns.base; }
};

/// The generation, ready to be searched; nullptr when it knows a type that the table lacks.
std::shared_ptr<const OpenIndex> openIndex(IndexGeneration generation, const ContentTypes& types);

}  // namespace vt
