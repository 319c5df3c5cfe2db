#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/DirectoryRecord.h"
#include "platform/RuntimeBundles.h"

namespace vt {

/// The one bundle that the library loads at run time, OpenDirectory, over any source of records.
class RecordRuntimeBundles : public RuntimeBundles {
 public:
  explicit RecordRuntimeBundles(std::shared_ptr<const RecordSource> source)
      : source_(std::move(source)) {}

  /// True for kOpenDirectoryFrameworkPath, false for any other path.
  bool load(const std::string& path) override;
  /// kODSessionClassName and kODNodeClassName once the bundle is loaded.
  std::shared_ptr<RuntimeClass> classNamed(std::string_view name) override;

 private:
  std::shared_ptr<const RecordSource> source_;
  bool loaded_ = false;
};

}  // namespace vt
