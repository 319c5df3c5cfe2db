#pragma once

#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/RecordRuntimeBundles.h"
#include "platform/memory/MemoryRecords.h"

namespace vt {

/// OpenDirectory over a table, which writes down each call and of which a test can take parts away.
class MemoryRuntimeBundles final : public RecordRuntimeBundles {
 public:
  explicit MemoryRuntimeBundles(std::shared_ptr<const MemoryRecords> records)
      : RecordRuntimeBundles(std::move(records)),
        calls_(std::make_shared<std::vector<std::string>>()) {}

  /// Takes away a bundle by its path or a class by its name.
  void takeAway(std::string name) { missing_.insert(std::move(name)); }

  /// The calls made so far, of the bundles and of all that came from them, in order, each with its
  /// arguments: "nodeWithSession 0x2201".
  const std::vector<std::string>& calls() const { return *calls_; }

  bool load(const std::string& path) override;
  std::shared_ptr<RuntimeClass> classNamed(std::string_view name) override;

 private:
  std::set<std::string, std::less<>> missing_;
  std::shared_ptr<std::vector<std::string>> calls_;  // shared with what was handed out
};

}  // namespace vt
