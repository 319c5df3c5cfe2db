#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/Array.h"
#include "foundation/Dictionary.h"

namespace vt {

/// What people call the attributes of files: the two tables that startup builds. Empty until then.
class AttributeNames {
 public:
  AttributeNames() = default;

  /// Asks the metadata index and the metadata bundle. A process that acts as user 0 asks the index
  /// as `startupUserId` when that is set. Logs how many attributes there are.
  static AttributeNames load(const std::optional<Value>& startupUserId);

  /// The name of `attribute` for people; nil when it has none.
  std::optional<std::string> displayNameFor(std::string_view attribute) const;

  /// The names of the attributes that go by `shortName`, case ignored, as texts in the order of the
  /// index: the array itself. Nullptr when there is none.
  std::shared_ptr<Array> attributesFor(std::string_view shortName) const;

  /// All short names and the arrays of their attributes, in the order in which they came.
  const Dictionary& attributesByShortName() const { return *attributesByShortName_; }

 private:
  void addShortNames(const std::string& attribute);
  void addShortName(std::string_view shortName, const std::string& attribute);

  std::shared_ptr<Dictionary> displayNames_ = Dictionary::make();
  std::shared_ptr<Dictionary> attributesByShortName_ = Dictionary::make();
};

}  // namespace vt
