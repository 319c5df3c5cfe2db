#pragma once

#include <memory>
#include <set>
#include <string>

#include "platform/RecordRuntimeBundles.h"
#include "platform/memory/MemoryRecords.h"

namespace vt {

/// OpenDirectory over a table, of which a test can take parts away.
class MemoryRuntimeBundles final : public RecordRuntimeBundles {
 public:
  explicit MemoryRuntimeBundles(std::shared_ptr<const MemoryRecords> records)
      : RecordRuntimeBundles(std::move(records)) {}

  /// Takes away a bundle by its path or a class by its name.
  void takeAway(std::string name) { missing_.insert(std::move(name)); }

  bool load(const std::string& path) override {
    return !missing_.contains(path) && RecordRuntimeBundles::load(path);
  }
  std::shared_ptr<RuntimeClass> classNamed(std::string_view name) override {
    return missing_.contains(name) ? nullptr : RecordRuntimeBundles::classNamed(name);
  }

 private:
  std::set<std::string, std::less<>> missing_;
};

}  // namespace vt
