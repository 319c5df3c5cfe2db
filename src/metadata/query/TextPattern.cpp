#include "metadata/query/TextPattern.h"

#include <algorithm>
#include <string>
#include <utility>

#include "foundation/UTF8.h"

namespace vt::query {

namespace {

using Kind = PatternCharacter::Kind;
using Positions = std::vector<std::uint8_t>;  // one flag for each position of a text

void appendComposed(std::string& literal, std::vector<PatternCharacter>& characters) {
  for (const char32_t c : composedText(literal)) characters.push_back({Kind::kLiteral, c});
  literal.clear();
}

}  // namespace

std::vector<PatternCharacter> patternCharacters(std::string_view pattern) {
  std::vector<PatternCharacter> characters;
  std::string literal;
  for (std::size_t at = 0; at < pattern.size(); ++at) {
    if (pattern[at] == '\\' && at + 1 < pattern.size()) {
      literal += pattern[++at];
    } else if (pattern[at] == '*' || pattern[at] == '?') {
      appendComposed(literal, characters);
      characters.push_back({pattern[at] == '*' ? Kind::kAnyRun : Kind::kAnyCharacter, 0});
    } else {
      literal += pattern[at];
    }
  }
  appendComposed(literal, characters);
  return characters;
}

TextPattern::TextPattern(const std::vector<PatternCharacter>& characters, Folding folding,
                         Extent extent)
    : extent_(extent) {
  auto first = characters.begin();
  auto last = characters.end();
  const auto isRun = [](const PatternCharacter& c) { return c.kind == Kind::kAnyRun; };
  for (; first != last && isRun(*first); ++first) isOpenAtStart_ = true;
  for (; first != last && isRun(*(last - 1)); --last) isOpenAtEnd_ = true;
  if (first == last) isOpenAtEnd_ = isOpenAtStart_;

  std::string literal;
  const auto endLiteral = [&] {
    if (!literal.empty()) elements_.emplace_back(LiteralFinder(std::exchange(literal, {})));
  };
  for (; first != last; ++first) {
    if (first->kind == Kind::kLiteral) {
      appendFolded(first->literal, folding, literal);
      continue;
    }
    endLiteral();
    if (first->kind == Kind::kAnyCharacter) {
      elements_.emplace_back(AnyCharacter{});
    } else if (elements_.empty()) {
      isOpenAtStart_ = true;  // only marks that fold to nothing stood before it
    } else if (!std::holds_alternative<AnyRun>(elements_.back())) {
      elements_.emplace_back(AnyRun{});
    }
  }
  endLiteral();
}

bool TextPattern::needsSegments() const {
  if (extent_ != Extent::kWholeValue) return true;
  return elements_.size() > 1 ||
         (elements_.size() == 1 && !std::holds_alternative<LiteralFinder>(elements_[0]));
}

bool TextPattern::matches(std::string_view units) const {
  if (elements_.empty()) return isOpenAtStart_ || units.empty();
  const auto& literal = std::get<LiteralFinder>(elements_[0]);
  if (isOpenAtStart_ && isOpenAtEnd_) return literal.isIn(units);
  if (isOpenAtStart_) return units.ends_with(literal.needle());
  if (isOpenAtEnd_) return units.starts_with(literal.needle());
  return units == literal.needle();
}

bool TextPattern::matches(const SegmentedText& text) const {
  if (!needsSegments()) return matches(std::string_view(text.units));
  if (elements_.empty()) return isOpenAtStart_;  // no word was asked for, so none is found
  if (elements_.size() == 1) {
    if (const auto* literal = std::get_if<LiteralFinder>(elements_.data())) {
      return findsLiteral(*literal, text);
    }
  }
  return runThrough(text);
}

bool TextPattern::findsLiteral(const LiteralFinder& literal, const SegmentedText& text) const {
  const std::size_t length = literal.needle().size();
  return literal.forEach(text.units, [&](std::size_t at) {
    return (isOpenAtStart_ || (text.properties[at] & position::kBoundary) != 0) &&
           (isOpenAtEnd_ || (text.properties[at + length] & position::kBoundary) != 0);
  });
}

/// Keeps the set of all positions that the elements so far can end at, as a flag for each position,
/// and moves it on element by element.
bool TextPattern::runThrough(const SegmentedText& text) const {
  const std::size_t end = text.units.size();
  const auto has = [&](std::size_t at, std::uint8_t property) {
    return (text.properties[at] & property) != 0;
  };
  const bool staysInWords = extent_ == Extent::kContentWords;
  // Whether a wildcard may take the character at a position.
  const auto isPassable = [&](std::size_t at) {
    return at < end && !(staysInWords && has(at, position::kSeparator));
  };

  Positions reached(end + 1, 0);
  if (isOpenAtStart_) {
    std::fill(reached.begin(), reached.end(), std::uint8_t{1});
  } else if (extent_ == Extent::kWholeValue) {
    reached[0] = 1;
  } else {
    for (std::size_t at = 0; at <= end; ++at) reached[at] = has(at, position::kBoundary) ? 1 : 0;
  }

  Positions next(end + 1, 0);
  for (const Element& element : elements_) {
    std::fill(next.begin(), next.end(), std::uint8_t{0});
    if (const auto* literal = std::get_if<LiteralFinder>(&element)) {
      const std::size_t length = literal->needle().size();
      literal->forEach(text.units, [&](std::size_t at) {
        next[at + length] = reached[at];
        return false;
      });
    } else if (std::holds_alternative<AnyCharacter>(element)) {
      bool wasReached = false;
      for (std::size_t at = 0; at <= end; ++at) {
        if (!has(at, position::kCharacter)) continue;
        next[at] = wasReached ? 1 : 0;
        wasReached = reached[at] != 0 && isPassable(at);
      }
    } else {
      bool isReaching = false;
      for (std::size_t at = 0; at <= end; ++at) {
        isReaching = isReaching || reached[at] != 0;
        next[at] = isReaching ? 1 : 0;
        isReaching = isReaching && isPassable(at);
      }
    }
    reached.swap(next);
  }

  if (isOpenAtEnd_) return std::find(reached.begin(), reached.end(), 1) != reached.end();
  if (extent_ == Extent::kWholeValue) return reached[end] != 0;
  for (std::size_t at = 0; at <= end; ++at) {
    if (reached[at] != 0 && has(at, position::kBoundary)) return true;
  }
  return false;
}

}  // namespace vt::query
