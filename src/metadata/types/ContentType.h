#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "foundation/Value.h"

namespace vt {

/// The place of a type in its table: small, so that a hit can carry it.
using ContentTypeId = std::uint16_t;

/// One type of content and all that the table says of it.
struct ContentType {
  std::string identifier;               ///< "com.adobe.pdf"
  std::string description;              ///< "PDF document"; "" when the table has none
  std::vector<std::string> extensions;  ///< lower case, without the dot, the preferred one first
  std::vector<std::string> mimeTypes;   ///< the preferred one first; never a pattern
  std::vector<ContentTypeId> parents;   ///< what it conforms to, in the order of the table
  /// Itself and all that it conforms to, a type always before those that it conforms to.
  std::vector<ContentTypeId> tree;
  /// The identifiers of `tree`, the one array that all items of the type share.
  std::shared_ptr<Array> treeIdentifiers;
};

}  // namespace vt
