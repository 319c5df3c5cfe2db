#include "metadata/query/QueryMatcher.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>
#include <optional>
#include <unordered_map>
#include <utility>
#include <variant>

#include "metadata/query/QueryOrder.h"
#include "metadata/query/QuerySemantics.h"
#include "metadata/query/ValueTest.h"
#include "metadata/query/WordBoundaries.h"

namespace vt::query {

namespace {

/// Where an instruction leads: to another one, or to the end with an answer.
using Target = std::uint32_t;
constexpr Target kAccept = std::numeric_limits<Target>::max();
constexpr Target kReject = kAccept - 1;

/// Asks an attribute.
struct AttributeQuestion {
  std::size_t slot;
  ValueTest test;
};

/// Asks all searchable attributes and, with `content`, the text.
struct AnywhereQuestion {
  ValueTest test;
  std::optional<TextMatcher> content;
  bool asksForContent = false;
};

/// Asks the text content; without a matcher, whether there is any.
struct ContentQuestion {
  std::optional<TextMatcher> matcher;
};

/// Nothing to ask: no item has what the term is about.
struct Never {};

using Question = std::variant<AttributeQuestion, AnywhereQuestion, ContentQuestion, Never>;

struct Instruction {
  std::uint32_t question;
  Target ifTrue;
  Target ifFalse;
};

// What asking costs, roughly in units of one comparison of a name: only the order matters. A name
// is at hand, a stat is one system call, other attributes may mean opening the file, and text means
// reading all of it.
constexpr std::uint64_t kNameCost = 1;
constexpr std::uint64_t kStatCost = 4;
constexpr std::uint64_t kExtendedCost = 64;
constexpr std::uint64_t kAnywhereCost = 1024;
constexpr std::uint64_t kContentCost = 1'000'000;

std::uint64_t costOf(std::string_view attribute) {
  constexpr std::string_view kNames[] = {"kMDItemFSName", "kMDItemDisplayName", "kMDItemPath"};
  constexpr std::string_view kStats[] = {"kMDItemFSSize",
                                         "kMDItemLogicalSize",
                                         "kMDItemPhysicalSize",
                                         "kMDItemFSCreationDate",
                                         "kMDItemFSContentChangeDate",
                                         "kMDItemContentCreationDate",
                                         "kMDItemContentModificationDate",
                                         "kMDItemAttributeChangeDate",
                                         "kMDItemLastUsedDate",
                                         "kMDItemFSOwnerUserID",
                                         "kMDItemFSOwnerGroupID",
                                         "kMDItemFSInvisible",
                                         "kMDItemContentType",
                                         "kMDItemContentTypeTree",
                                         "kMDItemKind",
                                         "_kMDItemGroupId"};
  if (attribute == kTextContent) return kContentCost;
  if (attribute == kAnyAttribute) return kAnywhereCost;
  if (attribute == kAnyAttributeOrText) return kAnywhereCost + kContentCost;
  if (std::find(std::begin(kNames), std::end(kNames), attribute) != std::end(kNames)) {
    return kNameCost;
  }
  if (std::find(std::begin(kStats), std::end(kStats), attribute) != std::end(kStats)) {
    return kStatCost;
  }
  return kExtendedCost;
}

}  // namespace

/// The tree as a chain of questions, each of which leads to the next by its answer. Walking it
/// needs no stack, and never asks what cannot change the answer.
struct QueryMatcher::Program {
  std::vector<std::string> attributes;
  std::vector<Question> questions;  // one for each term of the query
  std::vector<Instruction> instructions;
  Target entry = kReject;
};

namespace {

class Questioner {
 public:
  Questioner(const AttributeSchema& schema, const EvaluationContext& context,
             std::vector<std::string>& attributes)
      : schema_(schema), context_(context), attributes_(attributes) {}

  Question questionOf(const Term& term) {
    const std::string& name = attributeOf(term);
    if (name == kTextContent || name == kAnyAttribute || name == kAnyAttributeOrText) {
      // Text cannot be ordered, so this is no range.
      return aboutText(std::get<Comparison>(term));
    }
    const Attribute* attribute = schema_.find(name);
    if (attribute == nullptr) return Never{};
    return AttributeQuestion{
        slotOf(name),
        std::visit([&](const auto& t) { return testOf(t, *attribute, context_); }, term)};
  }

 private:
  Question aboutText(const Comparison& comparison) {
    Attribute anyText;  // of type text
    anyText.name = kAnyAttribute;
    ValueTest test = testOf(comparison, anyText, context_);
    std::optional<TextMatcher> content;
    if (std::holds_alternative<TextTest>(test)) {
      const auto* text = std::get_if<TextOperand>(&comparison.value);
      const auto* number = std::get_if<NumberOperand>(&comparison.value);
      content.emplace(text != nullptr ? text->pattern : number->literal, comparison.modifiers,
                      TextMatcher::Subject::kContent);
    }
    if (comparison.attribute == kTextContent) return ContentQuestion{std::move(content)};
    return AnywhereQuestion{std::move(test), std::move(content),
                            comparison.attribute == kAnyAttributeOrText};
  }

  std::size_t slotOf(const std::string& name) {
    const auto [found, isNew] = slots_.emplace(name, attributes_.size());
    if (isNew) attributes_.push_back(name);
    return found->second;
  }

  const AttributeSchema& schema_;
  const EvaluationContext& context_;
  std::vector<std::string>& attributes_;
  std::unordered_map<std::string, std::size_t> slots_;
};

/// Makes instructions from the last to the first, so that the target of each is known.
Target compile(const Query& query, std::vector<Instruction>& instructions) {
  struct Frame {
    std::uint32_t node;
    Target ifTrue;
    Target ifFalse;
    std::size_t childrenLeft;
  };
  const auto children =
      childrenByCost(query, [](const Term& term) { return costOf(attributeOf(term)); });
  std::vector<Frame> stack;
  const auto enter = [&](std::uint32_t node, Target ifTrue, Target ifFalse) {
    stack.push_back({node, ifTrue, ifFalse, children[node].size()});
  };
  Target entry = kReject;  // of the part that was made last
  enter(query.root(), kAccept, kReject);
  while (!stack.empty()) {
    Frame& frame = stack.back();
    const Node& node = query.nodes()[frame.node];
    const std::vector<std::uint32_t>& below = children[frame.node];
    const bool isFirstVisit = frame.childrenLeft == below.size();
    switch (node.kind) {
      case NodeKind::kTrue:
        entry = frame.ifTrue;
        break;
      case NodeKind::kFalse:
        entry = frame.ifFalse;
        break;
      case NodeKind::kTerm:
        if (isNegated(query.terms()[node.term])) std::swap(frame.ifTrue, frame.ifFalse);
        instructions.push_back({node.term, frame.ifTrue, frame.ifFalse});
        entry = static_cast<Target>(instructions.size() - 1);
        break;
      case NodeKind::kNot:
        if (isFirstVisit) {
          --frame.childrenLeft;
          enter(below[0], frame.ifFalse, frame.ifTrue);
          continue;
        }
        break;
      case NodeKind::kAnd:
      case NodeKind::kOr:
        if (frame.childrenLeft > 0) {
          const std::uint32_t child = below[--frame.childrenLeft];
          const bool isAnd = node.kind == NodeKind::kAnd;
          const Target ifTrue = isAnd && !isFirstVisit ? entry : frame.ifTrue;
          const Target ifFalse = !isAnd && !isFirstVisit ? entry : frame.ifFalse;
          enter(child, ifTrue, ifFalse);
          continue;
        }
        break;
    }
    stack.pop_back();
  }
  return entry;
}

/// The text of one item, read and divided at most once.
class Content {
 public:
  explicit Content(ItemAttributes& item) : item_(item) {}

  bool isThere() {
    if (!wasAsked_) text_ = item_.textContent();
    wasAsked_ = true;
    return text_ != nullptr;
  }

  bool matches(const std::optional<TextMatcher>& matcher) {
    if (!isThere() || !matcher) return isThere();
    if (!segmented_) segmented_ = segmentContent(*text_);
    return matcher->matches(*segmented_);
  }

 private:
  ItemAttributes& item_;
  bool wasAsked_ = false;
  const std::string* text_ = nullptr;
  std::optional<SegmentedText> segmented_;
};

bool answer(const Question& question, ItemAttributes& item, Content& content) {
  if (const auto* attribute = std::get_if<AttributeQuestion>(&question)) {
    const Value* value = item.valueOf(attribute->slot);
    return value != nullptr && passes(attribute->test, *value);
  }
  if (const auto* text = std::get_if<ContentQuestion>(&question)) {
    return content.matches(text->matcher);
  }
  if (const auto* anywhere = std::get_if<AnywhereQuestion>(&question)) {
    const auto passesTest = [&](const Value& value) { return passes(anywhere->test, value); };
    return item.anySearchableText(passesTest) ||
           (anywhere->asksForContent && content.matches(anywhere->content));
  }
  return false;
}

}  // namespace

QueryMatcher::QueryMatcher(const Query& query, const AttributeSchema& schema,
                           const EvaluationContext& context) {
  auto program = std::make_unique<Program>();
  Questioner questioner(schema, context, program->attributes);
  program->questions.reserve(query.terms().size());
  for (const Term& term : query.terms()) program->questions.push_back(questioner.questionOf(term));
  program->entry = compile(query, program->instructions);
  program_ = std::move(program);
}

QueryMatcher::QueryMatcher(QueryMatcher&&) noexcept = default;
QueryMatcher& QueryMatcher::operator=(QueryMatcher&&) noexcept = default;
QueryMatcher::~QueryMatcher() = default;

const std::vector<std::string>& QueryMatcher::attributes() const { return program_->attributes; }

bool QueryMatcher::needsTextContent() const {
  return std::any_of(program_->questions.begin(), program_->questions.end(), [](const Question& q) {
    const auto* anywhere = std::get_if<AnywhereQuestion>(&q);
    return std::holds_alternative<ContentQuestion>(q) ||
           (anywhere != nullptr && anywhere->asksForContent);
  });
}

bool QueryMatcher::matches(ItemAttributes& item) const {
  Content content(item);
  Target at = program_->entry;
  while (at != kAccept && at != kReject) {
    const Instruction& instruction = program_->instructions[at];
    const bool isTrue = answer(program_->questions[instruction.question], item, content);
    at = isTrue ? instruction.ifTrue : instruction.ifFalse;
  }
  return at == kAccept;
}

}  // namespace vt::query
