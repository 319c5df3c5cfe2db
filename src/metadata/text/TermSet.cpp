#include "metadata/text/TermSet.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <utility>

namespace vt {
namespace {

// Most words of most languages are shorter, and are then compared without a look elsewhere.
constexpr std::size_t kLongestShort = 15;

constexpr std::size_t kFewestPlaces = std::size_t{1} << 15;
constexpr std::size_t kMostPlaces = std::size_t{1} << 19;  // 8 MiB
// So many places are looked at for a term. A file of terms that all want the same ones is then
// slow, since they are forgotten, but no slower than one of terms that are all new.
constexpr std::size_t kPlacesOfTerm = 32;

// Long terms are seldom seen again: numbers, names with digits, what was encoded as letters.
constexpr std::size_t kPlacesOfLong = std::size_t{1} << 13;

}  // namespace

TermSet::ShortTerm TermSet::packed(std::string_view term) {
  ShortTerm result;
  char bytes[sizeof result] = {};
  std::memcpy(bytes, term.data(), term.size());
  bytes[kLongestShort] = static_cast<char>(term.size());
  std::memcpy(&result, bytes, sizeof result);
  return result;
}

void TermSet::insert(std::string_view term, Tell isNew) {
  if (term.size() > kLongestShort) {
    if (insertLong(term)) isNew(term);
    return;
  }
  if (waitingCount_ == waiting_.size()) finish(isNew);
  const ShortTerm& added = waiting_[waitingCount_++] = packed(term);
  if (!short_.empty()) __builtin_prefetch(&short_[placeOf(added)]);
}

void TermSet::finish(Tell isNew) {
  for (std::size_t i = 0; i < waitingCount_; ++i) {
    if (!insertShort(waiting_[i])) continue;
    char bytes[sizeof(ShortTerm)];
    std::memcpy(bytes, &waiting_[i], sizeof bytes);
    isNew({bytes, static_cast<std::size_t>(bytes[kLongestShort])});
  }
  waitingCount_ = 0;
}

std::size_t TermSet::placeOf(const ShortTerm& term) const {
  // Multiplication carries what differs upwards, rotation what is above back down.
  constexpr std::uint64_t kOdd = 0x9E37'79B9'7F4A'7C15;  // 2^64 by the golden ratio
  std::uint64_t hash = term.first * kOdd;
  hash = ((hash << 32 | hash >> 32) ^ term.last) * kOdd;
  return (hash >> 32) & (short_.size() - 1);
}

bool TermSet::insertShort(const ShortTerm& term) {
  if (3 * shortCount_ >= 2 * short_.size() && short_.size() < kMostPlaces) grow();
  const std::size_t first = placeOf(term);
  for (std::size_t i = 0; i < kPlacesOfTerm; ++i) {
    ShortTerm& place = short_[(first + i) & (short_.size() - 1)];
    if (place == term) return false;
    if (place.isNothing()) {
      place = term;
      ++shortCount_;
      return true;
    }
  }
  short_[first] = term;
  return true;
}

bool TermSet::insertLong(std::string_view term) {
  if (long_.empty()) long_.resize(kPlacesOfLong);
  std::string& place = long_[std::hash<std::string_view>()(term) % kPlacesOfLong];
  if (place == term) return false;
  place = term;
  return true;
}

void TermSet::grow() {
  const std::vector<ShortTerm> before =
      std::exchange(short_, std::vector<ShortTerm>(std::max(kFewestPlaces, 2 * short_.size())));
  shortCount_ = 0;
  for (const ShortTerm& term : before) {
    if (!term.isNothing()) insertShort(term);
  }
}

}  // namespace vt
