#include "metadata/types/ResultGroups.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace vt {
namespace {

struct Rule {
  std::string_view type;
  std::optional<std::int64_t> number;
  std::string_view unless = {};  // a type that keeps an item out of the group
};

// The first rule that holds decides, so the order is the rule book: a macro document is executable
// but has content, vCards and calendars are text as well, audio before the movies it conforms to.
// A group without a number still takes its items from the rules after it.
constexpr auto kRules = std::to_array<Rule>({
    {"public.folder", 9},
    {"public.volume", 9},
    {"com.apple.application", 8},
    {"public.executable", 8, "public.content"},
    {"com.apple.systempreference.prefpane", 3},
    {"public.email-message", 1},
    {"com.microsoft.outlook.msg", 1},
    {"org.ietf.mbox", 1},
    {"public.contact", 2},
    {"public.calendar-event", std::nullopt},
    {"public.to-do-item", std::nullopt},
    {"public.font", 4},
    {"public.stored-url", 5},
    {"public.bookmark", 5},
    {"com.apple.internet-location", 5},
    {"public.url", 5},
    {"com.adobe.pdf", 11},
    {"public.presentation", 12},
    {"public.spreadsheet", std::nullopt},
    {"public.delimited-values-text", std::nullopt},
    {"public.image", 13},
    {"public.audio", 10},
    {"public.playlist", 10},
    {"public.3d-content", std::nullopt},
    {"public.movie", 7},
    {"public.audiovisual-content", 7},
});

/// A rule by the numbers of a table; nothing where the table lacks the type, so that nothing
/// conforms to it.
struct NumberedRule {
  std::optional<ContentTypeId> type;
  std::optional<std::int64_t> number;
  std::optional<ContentTypeId> unless;
};

std::array<NumberedRule, kRules.size()> rulesFor(const ContentTypes& types) {
  std::array<NumberedRule, kRules.size()> rules;
  for (std::size_t i = 0; i < kRules.size(); ++i) {
    rules[i] = {types.find(kRules[i].type), kRules[i].number, types.find(kRules[i].unless)};
  }
  return rules;
}

}  // namespace

ResultGroups::ResultGroups(const ContentTypes& types) {
  const auto rules = rulesFor(types);
  numbers_.reserve(types.size());
  for (std::size_t id = 0; id < types.size(); ++id) {
    const auto conforms = [&](std::optional<ContentTypeId> ancestor) {
      return ancestor && types.conforms(static_cast<ContentTypeId>(id), *ancestor);
    };
    const auto decides = std::ranges::find_if(rules, [&](const NumberedRule& rule) {
      return conforms(rule.type) && !conforms(rule.unless);
    });
    numbers_.push_back(decides == rules.end() ? std::nullopt : decides->number);
  }
}

}  // namespace vt
