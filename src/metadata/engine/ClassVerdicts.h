#pragma once

#include <cstdint>
#include <vector>

#include "metadata/rights/AccessJudge.h"
#include "metadata/store/SegmentColumns.h"

namespace vt {

/// What an account may do with the files of each access class of a segment. Each class is judged
/// once, however many files are of it.
class ClassVerdicts {
 public:
  ClassVerdicts(const SegmentColumns& segment, const AccessJudge& judge);

  bool mayRead(std::uint32_t accessClass) const { return (verdicts_[accessClass] & kMayRead) != 0; }
  bool maySearch(std::uint32_t accessClass) const {
    return (verdicts_[accessClass] & kMaySearch) != 0;
  }

 private:
  std::vector<Permissions> verdicts_;
};

}  // namespace vt
