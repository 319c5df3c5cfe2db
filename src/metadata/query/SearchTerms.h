#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vt::query {

/// One of the things that somebody asks for in a search field.
struct SearchTerm {
  std::string name;        ///< what stands before a colon, as in "author:smith"; mostly empty
  std::string text;        ///< never blank
  bool isPhrase = false;   ///< stood in double quotes
  std::size_t offset = 0;  ///< of the first byte of `text`, in what was typed

  /// The words that it stands for when its name means nothing.
  std::vector<std::string> words() const;
};

/// What was typed, in parts: words, phrases in double quotes, and either of them after a name and a
/// colon. A quote that is not closed reaches to the end. Control characters part words like
/// blanks, and bytes that are not UTF-8 become U+FFFD.
std::vector<SearchTerm> searchTermsIn(std::string_view typed);

}  // namespace vt::query
