#pragma once

#include <memory>
#include <string>
#include <unordered_map>

#include "foundation/Dictionary.h"
#include "foundation/ObjectArray.h"

namespace vt {

class VTSearchKind;

/// The kinds of one table and the content types that each claims. Filled once, then only read.
class KindRegistry {
 public:
  /// The registry of the resource "ContentTypeGroups.plist" of the installed platform, read on the
  /// first call; without kinds when the resource is missing or its root is not a dictionary.
  static std::shared_ptr<KindRegistry> shared();

  /// The kinds of `groups`, title to entry, in the order of its keys. A type that two entries list
  /// belongs to the later; of several default entries the last is the default.
  explicit KindRegistry(const Dictionary& groups);

  /// The array itself.
  const std::shared_ptr<ObjectArray<VTSearchKind>>& allKinds() const { return allKinds_; }
  /// Nullptr when no entry is marked.
  std::shared_ptr<VTSearchKind> defaultKind() const { return defaultKind_; }
  /// The kind that lists the content type `identifier`, exactly; nullptr when none does.
  std::shared_ptr<VTSearchKind> kindForType(const std::string& identifier) const;

 private:
  void add(const std::string& title, const Dictionary& entry);

  std::shared_ptr<ObjectArray<VTSearchKind>> allKinds_ = ObjectArray<VTSearchKind>::make();
  std::unordered_map<std::string, std::shared_ptr<VTSearchKind>> kindsByType_;
  std::shared_ptr<VTSearchKind> defaultKind_;
};

}  // namespace vt
