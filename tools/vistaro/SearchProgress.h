#pragma once

#include "vistaro/ProgressLine.h"

namespace vt::tool {

/// Shows on a terminal how far the index has come with the searches that run while it lives, and
/// nothing anywhere else.
class SearchProgress {
 public:
  /// Shows nothing at all unless `wanted`.
  explicit SearchProgress(bool wanted);
  SearchProgress(const SearchProgress&) = delete;
  SearchProgress& operator=(const SearchProgress&) = delete;
  ~SearchProgress();

 private:
  bool isShown_;
  ProgressLine line_;
};

}  // namespace vt::tool
