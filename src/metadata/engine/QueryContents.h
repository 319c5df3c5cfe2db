#pragma once

#include "metadata/query/AttributeSchema.h"
#include "metadata/query/Query.h"

namespace vt {

/// What a query asks of the contents of files.
struct QueryContents {
  bool asksForText = false;
  /// Names and statuses do not tell all that it asks for: text or attributes that stand in files.
  bool asksForContents = false;
};

QueryContents contentsAskedBy(const query::Query& query, const query::AttributeSchema& schema);

}  // namespace vt
