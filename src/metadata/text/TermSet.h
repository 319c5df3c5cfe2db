#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/FunctionRef.h"

namespace vt {

/// Terms that were seen, of which it may forget any: it takes 12 MiB at most. What it says it has
/// is to the letter what was put in.
class TermSet {
 public:
  using Tell = FunctionRef<void(std::string_view term)>;

  /// Puts the term in, which is not empty. When it is none that it has, `isNew` hears of it; but of
  /// terms of up to 15 bytes only some insertions later, or by finish(), since they are looked for
  /// a dozen at a time: where each may be is fetched from memory meanwhile.
  void insert(std::string_view term, Tell isNew);
  /// Tells of what was not told yet.
  void finish(Tell isNew);

 private:
  /// A term of up to 15 bytes, its length in the last byte. All zero: nothing.
  struct ShortTerm {
    std::uint64_t first = 0;
    std::uint64_t last = 0;

    bool isNothing() const { return last == 0; }
    friend bool operator==(const ShortTerm&, const ShortTerm&) = default;
  };

  static ShortTerm packed(std::string_view term);
  // Whether they are new.
  bool insertShort(const ShortTerm& term);
  bool insertLong(std::string_view term);
  void grow();
  /// Where the places begin that a term may have.
  std::size_t placeOf(const ShortTerm& term) const;

  std::array<ShortTerm, 12> waiting_;
  std::size_t waitingCount_ = 0;
  // Each at one of some places from that of its hash on.
  std::vector<ShortTerm> short_;
  std::size_t shortCount_ = 0;
  std::vector<std::string> long_;  // each at the place of its hash
};

}  // namespace vt
