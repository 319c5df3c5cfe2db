#include "metadata/engine/QueryContents.h"

#include "metadata/live/LiveAttribute.h"
#include "metadata/query/QuerySemantics.h"
#include "metadata/query/ValueTest.h"

namespace vt {

QueryContents contentsAskedBy(const query::Query& query, const query::AttributeSchema& schema) {
  QueryContents asked;
  for (const query::Term& term : query.terms()) {
    const std::string& name = attributeOf(term);
    if (name == query::kTextContent || name == query::kAnyAttributeOrText) {
      asked.asksForText = asked.asksForContents = true;
    } else if (name == query::kAnyAttribute || !liveAttributeNamed(name) ||
               maySomethingInFilesReplace(name)) {
      asked.asksForContents =
          asked.asksForContents || name == query::kAnyAttribute || schema.find(name) != nullptr;
    }
  }
  return asked;
}

}  // namespace vt
