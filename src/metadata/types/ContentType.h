#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace vt {

/// The place of a type in its table: small, so that a hit can carry it.
using ContentTypeId = std::uint16_t;

/// One type of content and all that the table says of it. Borrows from the table.
struct ContentType {
  std::string_view identifier;                   ///< "com.adobe.pdf"
  std::string_view description;                  ///< "PDF document"; "" when the table has none
  std::span<const std::string_view> extensions;  ///< lower case, no dot, the preferred one first
  std::span<const std::string_view> mimeTypes;   ///< the preferred one first; never a pattern
  std::span<const ContentTypeId> parents;        ///< what it conforms to, in the order of the table
  /// Itself and all that it conforms to, a type always before those that it conforms to.
  std::span<const ContentTypeId> tree;
};

}  // namespace vt
