#pragma once

#include <memory>
#include <string>

#include "foundation/Date.h"
#include "foundation/Result.h"
#include "metadata/engine/IndexedContents.h"
#include "metadata/engine/OpenIndex.h"

namespace vt {

/// Where an index comes from, in newer and newer generations.
class IndexSource {
 public:
  virtual ~IndexSource() = default;

  /// Looks whether there is another generation, and opens it. Cheap when there is none. Called when
  /// the process may read what only the owner of the index may.
  virtual void refresh() = 0;

  /// What can be searched as of `now`; nullptr when nothing can.
  virtual std::shared_ptr<const OpenIndex> freshAt(Date now) = 0;

  /// Why nothing can, as the end of a sentence: "there is no index".
  virtual std::string whyNotAt(Date now) const = 0;

  /// What stands in the files of the index that freshAt() gave, as it is at this moment; else why
  /// that is not known, likewise. Called when the process may read what the owner of the index may.
  virtual Result<std::shared_ptr<const IndexedContents>, std::string> contentsOf(
      const OpenIndex& index) = 0;
};

}  // namespace vt
