#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vt {

/// Terms that were seen, of which it may forget any: it takes 12 MiB at most. What it says it has
/// is to the letter what was put in.
class TermSet {
 public:
  /// Whether the term, which is not empty, is none that it has. It then has it.
  bool insert(std::string_view term);

 private:
  /// A term of up to 15 bytes, its length in the last byte. All zero: nothing.
  struct ShortTerm {
    std::uint64_t first = 0;
    std::uint64_t last = 0;

    bool isNothing() const { return last == 0; }
    friend bool operator==(const ShortTerm&, const ShortTerm&) = default;
  };

  static ShortTerm shortTerm(std::string_view term);
  bool insertShort(const ShortTerm& term);
  bool insertLong(std::string_view term);
  void grow();
  /// Where the places begin that a term may have.
  std::size_t placeOf(const ShortTerm& term) const;

  // Each at one of some places from that of its hash on.
  std::vector<ShortTerm> short_;
  std::size_t shortCount_ = 0;
  std::vector<std::string> long_;  // each at the place of its hash
};

}  // namespace vt
