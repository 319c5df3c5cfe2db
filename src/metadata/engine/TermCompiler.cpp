#include "metadata/engine/TermCompiler.h"

#include <array>
#include <optional>
#include <utility>
#include <variant>
#include <vector>

#include "metadata/engine/NameStep.h"
#include "metadata/engine/NumberBounds.h"
#include "metadata/engine/RowItem.h"
#include "metadata/query/QueryMatcher.h"
#include "metadata/query/QuerySemantics.h"
#include "metadata/text/ContentQuery.h"

namespace vt {
namespace {

using query::DateTest;
using query::NumberTest;
using query::PresenceTest;
using query::Term;
using query::TextTest;
using query::ValueTest;

// Nanoseconds for a row: a look-up in a small table, one in two, a comparison of a wide column, and
// putting a question to a row, which makes values for it.
constexpr std::uint64_t kTableCost = 1;
constexpr std::uint64_t kNumberCost = 2;
constexpr std::uint64_t kFirstByteCost = 6;
constexpr std::uint64_t kAskingCost = 200;

/// A term that is put to each row by itself.
class AskingStep final : public TermStep {
 public:
  AskingStep(query::QueryMatcher matcher, const query::AttributeSchema& schema,
             const IndexedFiles& files, std::size_t firstRow)
      : matcher_(std::move(matcher)), schema_(schema), files_(files), firstRow_(firstRow) {}

  void narrow(RowSet& rows) const override {
    RowItem item(matcher_, schema_, files_);
    rows.keepIf([&](std::size_t row) {
      item.moveTo(firstRow_ + row);
      return matcher_.matches(item);
    });
  }
  std::uint64_t cost() const override { return kAskingCost; }
  bool asksEachRow() const override { return true; }

 private:
  query::QueryMatcher matcher_;
  const query::AttributeSchema& schema_;
  const IndexedFiles& files_;
  std::size_t firstRow_;
};

/// The term with `==` in the place of `!=`.
Term positive(const Term& term) {
  Term result = term;
  if (isNegated(term)) std::get<query::Comparison>(result).operation = query::Operator::kEqual;
  return result;
}

/// The query that is this term alone.
query::Query queryOf(Term term) {
  query::Node node;
  node.kind = query::NodeKind::kTerm;
  return {{}, {node}, {std::move(term)}, 0, {}};
}

/// The first row whose modification is before `date`, or not after it; rows are newest first.
template <class IsBeyond>
std::size_t firstRowWhere(const SegmentColumns& segment, IsBeyond isBeyond) {
  std::size_t first = 0;
  std::size_t count = segment.rowCount();
  while (count > 0) {
    const std::size_t half = count / 2;
    if (isBeyond(segment.modifiedOf(first + half))) {
      count = half;
    } else {
      first += half + 1;
      count -= half + 1;
    }
  }
  return first;
}

}  // namespace

TermCompiler::Step TermCompiler::everyRow() const {
  return std::make_unique<RangeStep>(0, segment_.rowCount());
}

TermCompiler::Step TermCompiler::noRow() const { return std::make_unique<RangeStep>(0, 0); }

TermCompiler::Step TermCompiler::stepOf(const Term& term) const {
  Term asked = positive(term);
  const std::string& name = attributeOf(asked);
  // Text cannot be ordered, so these are no ranges.
  if (name == query::kTextContent) return textStep(term, std::get<query::Comparison>(asked));
  if (name == query::kAnyAttribute || name == query::kAnyAttributeOrText) {
    return anywhereStep(term, std::get<query::Comparison>(asked));
  }
  const query::Attribute* const attribute = schema_.find(name);
  if (attribute == nullptr) return noRow();
  ValueTest test =
      std::visit([&](const auto& t) { return testOf(t, *attribute, context_); }, asked);
  const std::optional<LiveAttribute> live = liveAttributeNamed(name);
  if (!live) return attributeStep(term, name, std::move(test));
  Step step = fastStepOf(*live, asked, test);
  if (!step) step = askingStep(asked);
  return maySomethingInFilesReplace(name)
             ? fileFirstStep(term, name, std::move(test), std::move(step))
             : std::move(step);
}

TermCompiler::Step TermCompiler::fileFirstStep(const Term& term, const std::string& name,
                                               ValueTest test, Step otherwise) const {
  if (contents_ == nullptr || !contents_->knowsAttribute(name)) return otherwise;
  Step told = contentStep(term, name + " at all", [name](const IndexedContents& contents) {
    return contents.withAttribute(name, [](const Value&) { return true; });
  });
  return std::make_unique<FileFirstStep>(attributeStep(term, name, std::move(test)),
                                         std::move(told), std::move(otherwise));
}

TermCompiler::Step TermCompiler::askingStep(Term term) const {
  return std::make_unique<AskingStep>(
      query::QueryMatcher(queryOf(std::move(term)), schema_, context_), schema_, files_, firstRow_);
}

TermCompiler::Step TermCompiler::contentStep(const Term& term, std::string_view attribute,
                                             ContentStep::Find find) const {
  SharedFind& found = finds_[{&term, std::string(attribute)}];
  if (!found) found = std::make_shared<std::optional<Bitmap>>();
  return std::make_unique<ContentStep>(*contents_, firstRow_, std::move(find), found);
}

TermCompiler::Step TermCompiler::attributeStep(const Term& term, const std::string& name,
                                               ValueTest test) const {
  if (contents_ == nullptr || !contents_->knowsAttribute(name)) return noRow();
  return contentStep(term, name, [name, test = std::move(test)](const IndexedContents& contents) {
    return contents.withAttribute(name, [&](const Value& value) { return passes(test, value); });
  });
}

TermCompiler::Step TermCompiler::textStep(const Term& term,
                                          const query::Comparison& comparison) const {
  if (contents_ == nullptr) return noRow();
  const auto* const text = std::get_if<query::TextOperand>(&comparison.value);
  if (text != nullptr && text->isPresence()) {
    return contentStep(term, query::kTextContent,
                       [](const IndexedContents& contents) { return contents.withText(); });
  }
  ContentQuery question = contentQueryOf(patternOf(comparison.value), comparison.modifiers);
  if (question.all.empty()) return noRow();
  return contentStep(term, query::kTextContent,
                     [question = std::move(question)](const IndexedContents& contents) {
                       return contents.withWords(question);
                     });
}

TermCompiler::Step TermCompiler::anywhereStep(const Term& term,
                                              const query::Comparison& comparison) const {
  std::vector<Step> steps;
  steps.push_back(askingStep(comparison));
  if (contents_ != nullptr) {
    for (const query::Attribute& attribute : schema_.attributes()) {
      if (attribute.isSearchable && !liveAttributeNamed(attribute.name) &&
          contents_->knowsAttribute(attribute.name)) {
        steps.push_back(
            attributeStep(term, attribute.name, testOf(comparison, attribute, context_)));
      }
    }
    if (comparison.attribute == query::kAnyAttributeOrText)
      steps.push_back(textStep(term, comparison));
  }
  if (steps.size() == 1) return std::move(steps.front());
  return std::make_unique<AnyStep>(std::move(steps));
}

TermCompiler::Step TermCompiler::fastStepOf(LiveAttribute attribute, const Term& term,
                                            const ValueTest& test) const {
  switch (attribute) {
    case LiveAttribute::kName:
      return nameStep(term, test);
    case LiveAttribute::kIsInvisible: {
      const std::array<bool, 2> passing = {passes(test, Value(/*boolean=*/false)),
                                           passes(test, Value(/*boolean=*/true))};
      return stepThatTests(kFirstByteCost, [this, passing](std::size_t row) {
        return passing[segment_.name(row).starts_with('.') ? 1 : 0];
      });
    }
    case LiveAttribute::kContentType:
    case LiveAttribute::kContentTypeTree:
    case LiveAttribute::kKindDescription:
    case LiveAttribute::kGroupNumber:
      return typeStep(attribute, test);
    case LiveAttribute::kOwnerUser:
    case LiveAttribute::kOwnerGroup:
      return classStep(attribute, test);
    case LiveAttribute::kModificationDate:
    case LiveAttribute::kCreationDate:
    case LiveAttribute::kAttributeChangeDate:
    case LiveAttribute::kLastUsedDate:
      return dateStep(attribute, test);
    case LiveAttribute::kSize:
    case LiveAttribute::kPhysicalSize:
      return sizeStep(attribute, test);
    case LiveAttribute::kPath:
    case LiveAttribute::kEntryCount:
      break;
  }
  return nullptr;
}

TermCompiler::Step TermCompiler::nameStep(const Term& term, const ValueTest& test) const {
  if (std::holds_alternative<PresenceTest>(test)) return everyRow();
  const auto* comparison = std::get_if<query::Comparison>(&term);
  if (comparison == nullptr || !std::holds_alternative<TextTest>(test)) return nullptr;
  return std::make_unique<NameStep>(segment_, patternOf(comparison->value), comparison->modifiers);
}

TermCompiler::Step TermCompiler::typeStep(LiveAttribute attribute, const ValueTest& test) const {
  std::vector<std::uint8_t> passing;
  for (const ContentTypeId type : types_) {
    Value value;
    passing.push_back(tellAttribute(attribute, {{}, {}, type, nullptr}, tables_, value) &&
                      passes(test, value));
  }
  return stepThatTests(kTableCost, [this, passing = std::move(passing)](std::size_t row) {
    return passing[segment_.typeOf(row)] != 0;
  });
}

TermCompiler::Step TermCompiler::classStep(LiveAttribute attribute, const ValueTest& test) const {
  std::vector<std::uint8_t> passing;
  for (std::uint32_t number = 0; number < segment_.classes.size(); ++number) {
    FileStatus status;
    status.ownership = segment_.classes[number].ownership;
    Value value;
    passing.push_back(tellAttribute(attribute, {{}, {}, 0, &status}, tables_, value) &&
                      passes(test, value));
  }
  return stepThatTests(kTableCost, [this, passing = std::move(passing)](std::size_t row) {
    return passing[segment_.classOf(row)] != 0;
  });
}

TermCompiler::Step TermCompiler::dateStep(LiveAttribute attribute, const ValueTest& test) const {
  const bool asksPresence = std::holds_alternative<PresenceTest>(test);
  if (asksPresence && attribute != LiveAttribute::kCreationDate) return everyRow();
  const auto* date = std::get_if<DateTest>(&test);
  if (date == nullptr && !asksPresence) return nullptr;
  const DateTest any;
  const Date first = date == nullptr ? any.first : date->first;
  const Date last = date == nullptr ? any.last : date->last;
  const auto isWithin = [first, last](Date asked) { return asked >= first && asked <= last; };
  switch (attribute) {
    case LiveAttribute::kModificationDate:
      return std::make_unique<RangeStep>(
          firstRowWhere(segment_, [&](Date modified) { return modified <= last; }),
          firstRowWhere(segment_, [&](Date modified) { return modified < first; }));
    case LiveAttribute::kCreationDate:
      return stepThatTests(kNumberCost, [this, isWithin](std::size_t row) {
        const std::optional<Date> created = segment_.createdOf(row);
        return created && isWithin(*created);
      });
    case LiveAttribute::kAttributeChangeDate:
      return stepThatTests(kNumberCost, [this, isWithin](std::size_t row) {
        return isWithin(segment_.attributesChangedOf(row));
      });
    case LiveAttribute::kLastUsedDate:
      return stepThatTests(kNumberCost, [this, isWithin](std::size_t row) {
        return isWithin(segment_.accessedOf(row));
      });
    default:
      return nullptr;
  }
}

TermCompiler::Step TermCompiler::sizeStep(LiveAttribute attribute, const ValueTest& test) const {
  if (std::holds_alternative<PresenceTest>(test)) return everyRow();
  const auto* number = std::get_if<NumberTest>(&test);
  if (number == nullptr) return nullptr;
  const std::optional<NumberBounds> bounds = boundsOf(*number);
  if (!bounds) return noRow();
  if (attribute == LiveAttribute::kSize) {
    return stepThatTests(kNumberCost, [this, bounds = *bounds](std::size_t row) {
      return bounds.contain(segment_.sizes[row]);
    });
  }
  return stepThatTests(kNumberCost, [this, bounds = *bounds](std::size_t row) {
    return bounds.contain(segment_.allocatedBytesOf(row));
  });
}

}  // namespace vt
