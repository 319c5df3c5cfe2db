#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "foundation/Dictionary.h"

namespace vt {

/// Folders that hold a program's or library's files in a fixed order: what they say of themselves.
///
/// A bundle is named by its own absolute path, without any root prefix. What was read once may be
/// answered from memory.
class Bundles {
 public:
  virtual ~Bundles() = default;

  /// `infoDictionary`
  /// What the bundle says of itself; empty when it says nothing that can be read. Nullptr when
  /// there is no bundle at `path`.
  virtual std::shared_ptr<Dictionary> infoDictionary(const std::string& path) = 0;

  /// `localizedStringForKey:value:table:`
  /// The text under `key` in the bundle's table of texts called `table`, in the first of the
  /// process's languages that has it; else `value`, as when there is no such bundle or table.
  virtual std::string localizedStringForKey(const std::string& path, std::string_view key,
                                            std::string_view value, std::string_view table) = 0;
};

}  // namespace vt
