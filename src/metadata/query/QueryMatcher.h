#pragma once

#include <memory>
#include <string>
#include <vector>

#include "metadata/query/AttributeSchema.h"
#include "metadata/query/ItemAttributes.h"
#include "metadata/query/Query.h"

namespace vt::query {

/// A query made ready to be asked of many items: times resolved, texts folded, the cheap questions
/// put before the dear ones. Immutable, so any number of threads may ask one matcher.
class QueryMatcher {
 public:
  /// Copies what it needs of its arguments. `schema` should be the one that the query was parsed
  /// with.
  QueryMatcher(const Query& query, const AttributeSchema& schema, const EvaluationContext& context);
  QueryMatcher(QueryMatcher&&) noexcept;
  QueryMatcher& operator=(QueryMatcher&&) noexcept;
  ~QueryMatcher();

  /// The attributes that it asks items for, each once; the index is the slot. Text content, `*` and
  /// attributes that the schema does not know are not among them.
  const std::vector<std::string>& attributes() const;

  /// Whether it may ask for ItemAttributes::textContent().
  bool needsTextContent() const;

  /// Whether the item satisfies the query. Time is linear in the values that are looked at.
  bool matches(ItemAttributes& item) const;

 private:
  struct Program;
  std::unique_ptr<const Program> program_;
};

}  // namespace vt::query
