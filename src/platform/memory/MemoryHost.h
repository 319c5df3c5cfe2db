#pragma once

#include <string>
#include <utility>
#include <vector>

#include "platform/Host.h"

namespace vt {

/// A host with given names.
class MemoryHost final : public Host {
 public:
  /// The first of `names` is the host's name; with none it has no name.
  explicit MemoryHost(std::vector<std::string> names) : names_(std::move(names)) {}

  std::optional<std::string> name() const override {
    return names_.empty() ? std::nullopt : std::optional<std::string>(names_.front());
  }
  std::vector<std::string> names() const override { return names_; }

 private:
  std::vector<std::string> names_;
};

}  // namespace vt
