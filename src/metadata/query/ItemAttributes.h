#pragma once

#include <cstddef>
#include <string>

#include "foundation/FunctionRef.h"
#include "foundation/Value.h"

namespace vt::query {

/// One file as the matcher sees it: asked for what a query needs, when it needs it.
///
/// What is returned stays valid until the item is asked again for the same thing or goes away.
class ItemAttributes {
 public:
  virtual ~ItemAttributes() = default;

  /// The value of the attribute `QueryMatcher::attributes()[slot]`; nullptr when the item has none.
  /// Text, a number, a date (or seconds since 2001-01-01T00:00:00Z), a boolean, or an Array of
  /// these. Text should be UTF-8; file names may be any bytes.
  virtual const Value* valueOf(std::size_t slot) = 0;

  /// Hands each present value of an attribute that `*` looks at (Attribute::isSearchable) to
  /// `predicate`, arrays whole, until it answers true. Answers whether it did.
  virtual bool anySearchableText(FunctionRef<bool(const Value&)> predicate) = 0;

  /// The text in the file, UTF-8; nullptr when it has none. Asked for last, since it is dear.
  virtual const std::string* textContent() = 0;
};

}  // namespace vt::query
