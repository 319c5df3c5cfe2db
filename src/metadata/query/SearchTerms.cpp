#include "metadata/query/SearchTerms.h"

#include <algorithm>
#include <utility>

#include "foundation/UTF8.h"

namespace vt::query {
namespace {

bool isBlank(char32_t character) { return character <= 0x20; }  // the control characters too

/// Reads what was typed, from the front.
class TermReader {
 public:
  explicit TermReader(std::string_view typed) : typed_(typed) {}

  std::vector<SearchTerm> read() {
    while (at_ < typed_.size()) {
      if (typed_[at_] == '"') {
        takePhrase({}, at_);
      } else if (isBlank(peek().codePoint)) {
        at_ += peek().length;
      } else {
        takeWord();
      }
    }
    return std::move(terms_);
  }

 private:
  DecodedCodePoint peek() const { return decodeCodePoint(typed_.substr(at_)); }

  /// `begin` is where `name` does, which may have become longer than what was typed.
  void takePhrase(std::string name, std::size_t begin) {
    SearchTerm term{std::move(name), {}, /*isPhrase=*/true, ++at_};
    while (at_ < typed_.size() && typed_[at_] != '"') {
      const DecodedCodePoint character = peek();
      appendCodePoint(term.text, isBlank(character.codePoint) ? U' ' : character.codePoint);
      at_ += character.length;
    }
    if (at_ < typed_.size()) ++at_;
    // A phrase of blanks asks for nothing, and what stood before it then is a word.
    if (term.text.find_first_not_of(' ') != std::string::npos) {
      terms_.push_back(std::move(term));
    } else if (!term.name.empty()) {
      terms_.push_back({{}, term.name + ':', /*isPhrase=*/false, begin});
    }
  }

  void takeWord() {
    const std::size_t begin = at_;
    SearchTerm term{{}, {}, /*isPhrase=*/false, begin};
    while (at_ < typed_.size() && typed_[at_] != '"') {
      const DecodedCodePoint character = peek();
      if (isBlank(character.codePoint)) break;
      if (character.codePoint == ':' && term.name.empty() && !term.text.empty()) {
        at_ += character.length;
        if (at_ < typed_.size() && typed_[at_] == '"')
          return takePhrase(std::move(term.text), begin);
        term.name = std::exchange(term.text, {});
        term.offset = at_;
        continue;
      }
      appendCodePoint(term.text, character.codePoint);
      at_ += character.length;
    }
    if (term.text.empty()) {  // "name:" alone
      term.offset = begin;
      term.text = std::exchange(term.name, {}) + ':';
    }
    terms_.push_back(std::move(term));
  }

  std::string_view typed_;
  std::size_t at_ = 0;
  std::vector<SearchTerm> terms_;
};

}  // namespace

std::vector<std::string> SearchTerm::words() const {
  if (name.empty()) return {text};
  if (isPhrase) return {name + ':', text};
  return {name + ':' + text};
}

std::vector<SearchTerm> searchTermsIn(std::string_view typed) { return TermReader(typed).read(); }

}  // namespace vt::query
