#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "metadata/engine/IndexedFiles.h"
#include "metadata/live/LiveAttribute.h"
#include "metadata/query/AttributeSchema.h"
#include "metadata/query/ItemAttributes.h"
#include "metadata/query/QueryMatcher.h"

namespace vt {

/// A row of an index, as a query asks of it. Moved from row to row; it has no text content.
class RowItem final : public query::ItemAttributes {
 public:
  /// Borrows `files`.
  RowItem(const query::QueryMatcher& matcher, const query::AttributeSchema& schema,
          const IndexedFiles& files);

  void moveTo(std::size_t row) { row_ = row; }

  const Value* valueOf(std::size_t slot) override;
  bool anySearchableText(FunctionRef<bool(const Value&)> predicate) override;
  const std::string* textContent() override { return nullptr; }

 private:
  const IndexedFiles& files_;
  std::vector<std::optional<LiveAttribute>> attributes_;  // by slot
  std::vector<LiveAttribute> searchable_;                 // what `*` looks at
  std::vector<Value> values_;                             // by slot
  Value searchedValue_;
  std::size_t row_ = 0;
};

}  // namespace vt
