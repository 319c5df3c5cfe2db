#include "metadata/engine/QueryContents.h"

#include "metadata/live/LiveAttribute.h"
#include "metadata/query/QuerySemantics.h"
#include "metadata/query/ValueTest.h"
#include "metadata/text/ContentQuery.h"

namespace vt {

QueryContents contentsAskedBy(const query::Query& query, const query::AttributeSchema& schema) {
  QueryContents asked;
  for (const query::Term& term : query.terms()) {
    const std::string& name = attributeOf(term);
    if (name == query::kTextContent || name == query::kAnyAttributeOrText) {
      asked.asksForText = asked.asksForContents = true;
      // Text cannot be ordered, so this is no range.
      const auto& comparison = std::get<query::Comparison>(term);
      const auto* text = std::get_if<query::TextOperand>(&comparison.value);
      const bool asksPresence = text != nullptr && text->isPresence();
      if (!asksPresence && !contentQueryOf(patternOf(comparison.value), comparison.modifiers)) {
        asked.canBeToldByTerms = false;
      }
    } else if (name == query::kAnyAttribute || !liveAttributeNamed(name) ||
               maySomethingInFilesReplace(name)) {
      asked.asksForContents =
          asked.asksForContents || name == query::kAnyAttribute || schema.find(name) != nullptr;
    }
  }
  return asked;
}

}  // namespace vt
