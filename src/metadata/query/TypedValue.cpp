#include "metadata/query/TypedValue.h"

#include <fmt/format.h>

#include <array>
#include <charconv>
#include <cmath>
#include <utility>

#include "metadata/query/PlainWords.h"
#include "metadata/query/TypedDate.h"

namespace vt::query {
namespace {

/// The bounds of a value that can be ordered, as they stand in a query.
struct Span {
  std::string begin;  ///< the least that belongs to it
  std::string end;    ///< the least that does not any more; none when the two are one number
};

struct Unit {
  std::string_view name;
  double factor;
};
constexpr std::array kUnits = std::to_array<Unit>({{"kb", 1e3},
                                                   {"k", 1e3},
                                                   {"mb", 1e6},
                                                   {"m", 1e6},
                                                   {"gb", 1e9},
                                                   {"g", 1e9},
                                                   {"tb", 1e12},
                                                   {"t", 1e12},
                                                   {"kib", 1024.0},
                                                   {"mib", 1024.0 * 1024},
                                                   {"gib", 1024.0 * 1024 * 1024},
                                                   {"b", 1}});

std::string lowerCase(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return lower;
}

bool isSize(const Attribute& attribute) { return attribute.name.ends_with("Size"); }

std::optional<Span> numberSpan(const Attribute& attribute, std::string_view typed) {
  double number = 0;
  const char* const last = typed.data() + typed.size();
  const auto [stop, error] = std::from_chars(typed.data(), last, number, std::chars_format::fixed);
  if (error != std::errc() || !std::isfinite(number)) return std::nullopt;
  if (stop == last) return Span{fmt::format("{}", number), {}};
  if (!isSize(attribute)) return std::nullopt;
  const std::string name = lowerCase(std::string_view(stop, static_cast<std::size_t>(last - stop)));
  for (const Unit& unit : kUnits) {
    if (unit.name != name) continue;
    // What would be shown as this number, which was rounded to its last digit.
    const std::string_view digits(typed.data(), static_cast<std::size_t>(stop - typed.data()));
    const std::size_t point = digits.find('.');
    const auto places = point == std::string_view::npos ? 0 : digits.size() - point - 1;
    const double half = unit.factor / std::pow(10, static_cast<double>(places)) / 2;
    const double bytes = number * unit.factor;
    return Span{fmt::format("{:.0f}", std::ceil(bytes - half)),
                fmt::format("{:.0f}", std::ceil(bytes + half))};
  }
  return std::nullopt;
}

// Above "1mb" means above that very number, though "1mb" alone means about as much.
std::optional<Span> exactSpan(const Attribute& attribute, std::string_view typed) {
  std::optional<Span> span = numberSpan(attribute, typed);
  if (!span || span->end.empty()) return span;
  double begin = 0;
  double end = 0;
  std::from_chars(span->begin.data(), span->begin.data() + span->begin.size(), begin);
  std::from_chars(span->end.data(), span->end.data() + span->end.size(), end);
  return Span{fmt::format("{:.0f}", (begin + end) / 2), {}};
}

std::optional<Span> spanOf(const Attribute& attribute, std::string_view typed, bool exact) {
  if (attribute.type == AttributeType::kDate) {
    std::optional<TypedPeriod> period = periodNamed(typed);
    if (!period) return std::nullopt;
    return Span{std::move(period->begin), std::move(period->end)};
  }
  return exact ? exactSpan(attribute, typed) : numberSpan(attribute, typed);
}

std::string comparison(const Attribute& attribute, std::string_view op, std::string_view value) {
  return fmt::format("{} {} {}", attribute.name, op, value);
}

std::string both(const std::string& first, const std::string& second) {
  return fmt::format("({} && {})", first, second);
}

std::string from(const Attribute& attribute, const Span& span) {
  return comparison(attribute, ">=", span.begin);
}

std::string until(const Attribute& attribute, const Span& span) {
  return span.end.empty() ? comparison(attribute, "<=", span.begin)
                          : comparison(attribute, "<", span.end);
}

std::optional<std::string> ordered(const Attribute& attribute, std::string_view typed) {
  if (const std::size_t dots = typed.find(".."); dots != std::string_view::npos) {
    const std::string_view low = typed.substr(0, dots);
    const std::string_view high = typed.substr(dots + 2);
    const auto first = spanOf(attribute, low, /*exact=*/true);
    const auto last = spanOf(attribute, high, /*exact=*/true);
    if ((!first && !low.empty()) || (!last && !high.empty())) return std::nullopt;
    if (first && last) return both(from(attribute, *first), until(attribute, *last));
    if (first) return from(attribute, *first);
    if (last) return until(attribute, *last);
    return std::nullopt;
  }
  for (const std::string_view op : {">=", "<=", ">", "<"}) {
    if (!typed.starts_with(op)) continue;
    const auto span = spanOf(attribute, typed.substr(op.size()), /*exact=*/true);
    if (!span) return std::nullopt;
    if (op == ">=") return from(attribute, *span);
    if (op == "<=") return until(attribute, *span);
    if (op == "<") return comparison(attribute, "<", span->begin);
    return span->end.empty() ? comparison(attribute, ">", span->begin)
                             : comparison(attribute, ">=", span->end);
  }
  const auto span = spanOf(attribute, typed, /*exact=*/false);
  if (!span) return std::nullopt;
  if (span->end.empty()) return comparison(attribute, "==", span->begin);
  return both(from(attribute, *span), until(attribute, *span));
}

std::optional<std::string> truth(const Attribute& attribute, std::string_view typed) {
  const std::string word = lowerCase(typed);
  for (const std::string_view yes : {"yes", "true", "1", "ja"}) {
    if (word == yes) return comparison(attribute, "==", "1");
  }
  for (const std::string_view no : {"no", "false", "0", "nein"}) {
    if (word == no) return comparison(attribute, "==", "0");
  }
  return std::nullopt;
}

}  // namespace

std::optional<std::string> conditionForValue(const Attribute& attribute, std::string_view typed) {
  switch (attribute.type) {
    case AttributeType::kString:
      if (typed == "*") return comparison(attribute, "==", "\"*\"");
      return comparison(attribute, "==", fmt::format("\"*{}*\"cd", escapedPattern(typed)));
    case AttributeType::kBoolean:
      return truth(attribute, typed);
    case AttributeType::kNumber:
    case AttributeType::kDate:
      return ordered(attribute, typed);
  }
  return std::nullopt;
}

}  // namespace vt::query
