#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "foundation/VTObject.h"

namespace vt {

/// Notes what observers are told, one line each: "will title", "did title".
class ChangeJournal {
 public:
  /// Notes changes of `key` of `object` from now on, while the journal lives.
  void observe(VTObject& object, std::string_view key) {
    observations_.push_back(object.addObserver(key, [this](std::string_view k, ChangePhase phase) {
      lines_.push_back((phase == ChangePhase::kWill ? "will " : "did ") + std::string(k));
    }));
  }

  const std::vector<std::string>& lines() const { return lines_; }

 private:
  std::vector<std::string> lines_;
  std::vector<Observation> observations_;  // last: they end before the lines go
};

}  // namespace vt
