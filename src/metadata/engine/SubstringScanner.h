#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vt {

/// The instructions that a scanner may use, each wider than the one before.
enum class VectorInstructions { kNone, kSSE2, kAVX2 };

/// Those that this processor has, kNone first.
std::vector<VectorInstructions> availableVectorInstructions();

/// Finds a text in another that is large, by comparing its two rarest bytes at 16 or 32 places at
/// once. Where texts are file names few places pass that, and only those are compared whole.
///
/// For texts of names: a needle of n bytes costs n times the length of the searched text at worst,
/// so it should be no longer than a name.
class SubstringScanner {
 public:
  /// `needle` must not be empty.
  explicit SubstringScanner(std::string needle)
      : SubstringScanner(std::move(needle), availableVectorInstructions().back()) {}
  /// With instructions that this processor must have.
  SubstringScanner(std::string needle, VectorInstructions instructions);

  const std::string& needle() const { return needle_; }

  /// The offset of the first occurrence that starts at `from` or after; npos when there is none.
  /// No byte outside of `text` is read.
  std::size_t find(std::string_view text, std::size_t from) const;

 private:
  std::string needle_;
  VectorInstructions instructions_;
  std::size_t rarest_ = 0;  // offset of the needle's rarest byte by ordinary names
  std::size_t second_ = 0;  // and of the next, the same in a needle of one byte
};

}  // namespace vt
