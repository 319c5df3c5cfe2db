#include "prototypes/TextSegment.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <utility>

#include "metadata/query/WordBoundaries.h"
#include "metadata/text/ContentTerms.h"

namespace vt {
namespace {

constexpr std::size_t kTermsOfABlock = 16;

void appendNumber(std::uint64_t number, std::string& bytes) {
  for (; number >= 0x80; number >>= 7) bytes += static_cast<char>(number | 0x80);
  bytes += static_cast<char>(number);
}

std::uint64_t takeNumber(std::string_view& bytes) {
  std::uint64_t number = 0;
  for (int shift = 0;; shift += 7) {
    const auto byte = static_cast<unsigned char>(bytes.front());
    bytes.remove_prefix(1);
    number |= static_cast<std::uint64_t>(byte & 0x7F) << shift;
    if (byte < 0x80) return number;
  }
}

std::string_view take(std::string_view& bytes, std::size_t count) {
  const std::string_view taken = bytes.substr(0, count);
  bytes.remove_prefix(count);
  return taken;
}

std::size_t commonLength(std::string_view one, std::string_view other) {
  return static_cast<std::size_t>(std::ranges::mismatch(one, other).in1 - one.begin());
}

void writeAll(int file, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(file, bytes.data(), bytes.size());
    if (written < 0) throw std::runtime_error("cannot write");
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
}

/// What the file begins with: how long each of its parts is.
using Lengths = std::array<std::uint64_t, 4>;

MappedFile mapped(const std::string& folder, const std::string& name) {
  const int open = ::open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
  Result<MappedFile, StoreError> file = MappedFile::open(open, name, name);
  ::close(open);
  if (!file) throw std::runtime_error(file.error().reason);
  return std::move(file).value();
}

}  // namespace

void TextSegmentBuilder::add(std::uint32_t document, std::string_view text) {
  std::uint32_t place = 0;
  forEachTerm(query::segmentContent(text), [&](const ContentTerm& term) {
    if (term.isAtNewPlace) ++place;
    auto at = terms_.find(term.term);
    const bool isNew = at == terms_.end();
    if (isNew) at = terms_.try_emplace(std::string(term.term)).first;
    Postings& postings = at->second;
    if (isNew) {
      postings.term = at->first;
      if (term.kind() == TermKind::kCompound && term.text.size() > kLongestTermText) {
        postings.whole = term.text;
      }
    }
    if (isNew || postings.documents.back() != document) {
      endDocument(postings, postings.places);
      postings.last.clear();
      postings.documents.push_back(document);
    }
    postings.last.push_back(place);
    return true;
  });
}

void TextSegmentBuilder::endDocument(const Postings& postings, std::string& places) {
  if (postings.last.empty()) return;
  std::string bytes;
  std::uint32_t before = 0;
  for (const std::uint32_t place : postings.last) {
    appendNumber(place - std::exchange(before, place), bytes);
  }
  // So that a document is passed over without a look at its places.
  appendNumber(bytes.size(), places);
  places += bytes;
}

void TextSegmentBuilder::write(const std::string& path) const {
  std::vector<const Postings*> sorted;
  sorted.reserve(terms_.size());
  for (const auto& [term, postings] : terms_) sorted.push_back(&postings);
  std::ranges::sort(sorted, {}, &Postings::term);

  std::string blocks;
  std::string dictionary;
  std::string documents;
  std::string places;
  std::string_view before;
  for (std::size_t i = 0; i < sorted.size(); ++i) {
    const Postings& postings = *sorted[i];
    if (i % kTermsOfABlock == 0) {
      const auto offset = static_cast<std::uint32_t>(dictionary.size());
      blocks.append(reinterpret_cast<const char*>(&offset), sizeof offset);
      appendNumber(documents.size(), dictionary);
      appendNumber(places.size(), dictionary);
      before = {};
    }
    const std::size_t common = commonLength(before, postings.term);
    before = postings.term;
    appendNumber(common, dictionary);
    appendNumber(before.size() - common, dictionary);
    dictionary += before.substr(common);
    appendNumber(postings.whole.size(), dictionary);
    dictionary += postings.whole;
    const std::size_t firstDocument = documents.size();
    appendDocuments(postings.documents, documents);
    appendNumber(documents.size() - firstDocument, dictionary);
    const std::size_t firstPlace = places.size();
    places += postings.places;
    endDocument(postings, places);
    appendNumber(places.size() - firstPlace, dictionary);
  }

  const int file = ::open(path.c_str(), O_CREAT | O_WRONLY | O_TRUNC | O_CLOEXEC, 0600);
  if (file < 0) throw std::runtime_error("cannot make " + path);
  const Lengths lengths = {blocks.size(), dictionary.size(), documents.size(), places.size()};
  writeAll(file, {reinterpret_cast<const char*>(lengths.data()), sizeof lengths});
  for (const std::string* part : {&blocks, &dictionary, &documents, &places}) {
    writeAll(file, *part);
  }
  ::fsync(file);
  ::close(file);
}

TextSegment::TextSegment(const std::string& folder, const std::string& name, std::size_t end)
    : file_(mapped(folder, name)), end_(end) {
  std::string_view bytes = file_.bytes();
  Lengths lengths;
  std::memcpy(lengths.data(), take(bytes, sizeof lengths).data(), sizeof lengths);
  blocks_ = take(bytes, lengths[0]);
  dictionary_ = take(bytes, lengths[1]);
  documents_ = take(bytes, lengths[2]);
  places_ = take(bytes, lengths[3]);
}

void TextSegment::forEach(std::string_view prefix,
                          FunctionRef<bool(const Entry& entry)> visit) const {
  const auto dictionaryFrom = [&](std::size_t block) {
    std::uint32_t offset;
    std::memcpy(&offset, blocks_.data() + block * sizeof offset, sizeof offset);
    return dictionary_.substr(offset);
  };
  const auto firstTermOf = [&](std::size_t block) {
    std::string_view bytes = dictionaryFrom(block);
    for (int skipped = 0; skipped < 3; ++skipped) takeNumber(bytes);
    const std::size_t length = takeNumber(bytes);
    return take(bytes, length);
  };
  // The last block that begins before the prefix may have what begins with it.
  std::size_t first = 0;
  std::size_t count = blocks_.size() / sizeof(std::uint32_t);
  const std::size_t blocks = count;
  while (count > 0) {
    const std::size_t half = count / 2;
    if (firstTermOf(first + half) < prefix) {
      first += half + 1;
      count -= half + 1;
    } else {
      count = half;
    }
  }
  if (first > 0) --first;
  std::string term;
  for (std::size_t block = first; block < blocks; ++block) {
    std::string_view bytes = dictionaryFrom(block);
    std::size_t document = takeNumber(bytes);
    std::size_t place = takeNumber(bytes);
    term.clear();
    for (std::size_t i = 0; i < kTermsOfABlock && !bytes.empty(); ++i) {
      term.resize(takeNumber(bytes));
      const std::size_t rest = takeNumber(bytes);
      term += take(bytes, rest);
      const std::size_t wholeLength = takeNumber(bytes);
      const std::string_view whole = take(bytes, wholeLength);
      const std::size_t documentBytes = takeNumber(bytes);
      const std::size_t placeBytes = takeNumber(bytes);
      if (term.starts_with(prefix)) {
        const std::string_view text = std::string_view(term).substr(1);
        const bool goesOn = visit({{term, whole.empty() ? text : whole},
                                   documents_.substr(document, documentBytes),
                                   places_.substr(place, placeBytes)});
        if (!goesOn) return;
      } else if (term > prefix) {
        return;
      }
      document += documentBytes;
      place += placeBytes;
    }
  }
}

void TextSegment::follow(const Entry& entry, const DocumentBits* wanted,
                         const std::vector<Place>* open, std::size_t length,
                         std::vector<Place>& next) const {
  DocumentBits documents(end_);
  documents.add(entry.documents);
  std::string_view bytes = entry.places;
  documents.forEach([&](std::uint32_t document) {
    const std::size_t bytesOfDocument = takeNumber(bytes);
    std::string_view places = take(bytes, bytesOfDocument);
    if (wanted != nullptr && !wanted->contains(document)) return;
    std::uint32_t place = 0;
    while (!places.empty()) {
      place += static_cast<std::uint32_t>(takeNumber(places));
      if (open != nullptr && !std::ranges::binary_search(*open, Place(document, place))) continue;
      next.emplace_back(document, place + static_cast<std::uint32_t>(length));
    }
  });
}

DocumentBits TextSegment::documentsWithAll(const TermPhrase& phrase) const {
  std::optional<DocumentBits> all;
  for (std::size_t i = 0; i < phrase.terms.size(); ++i) {
    const bool isPrefix = phrase.endsInPrefix && i + 1 == phrase.terms.size();
    DocumentBits found(end_);
    forEach(phrase.terms[i], [&](const Entry& entry) {
      if (isPrefix || entry.term.term == phrase.terms[i]) found.add(entry.documents);
      return isPrefix;
    });
    if (all) {
      all->keepOnly(found);
    } else {
      all = std::move(found);
    }
  }
  return *std::move(all);
}

void TextSegment::findPhrase(const TermPhrase& phrase, DocumentBits& found) const {
  const DocumentBits wanted = documentsWithAll(phrase);
  if (phrase.terms.size() == 1) {
    found.add(wanted);
    return;
  }
  if (wanted.count() == 0) return;
  std::vector<Place> open;
  for (std::size_t i = 0; i < phrase.terms.size(); ++i) {
    const bool isPrefix = phrase.endsInPrefix && i + 1 == phrase.terms.size();
    std::vector<Place> next;
    forEach(phrase.terms[i], [&](const Entry& entry) {
      if (!isPrefix && entry.term.term != phrase.terms[i]) return false;
      follow(entry, &wanted, i > 0 ? &open : nullptr, 1, next);
      return isPrefix;
    });
    std::ranges::sort(next);
    open = std::move(next);
  }
  for (const auto& [document, place] : open) found.add(document);
}

void TextSegment::findPattern(const std::vector<query::PatternWord>& words,
                              DocumentBits& found) const {
  std::vector<Place> open;
  for (std::size_t i = 0; i < words.size(); ++i) {
    const PatternTerms pattern(words[i], {.isFirst = i == 0, .isLast = i + 1 == words.size()});
    std::vector<Place> next;
    for (const std::string& prefix : pattern.prefixes()) {
      forEach(prefix, [&](const Entry& entry) {
        if (!pattern.matches(entry.term)) return true;
        if (words.size() == 1) {
          found.add(entry.documents);
        } else {
          follow(entry, nullptr, i > 0 ? &open : nullptr, PatternTerms::lengthOf(entry.term), next);
        }
        return true;
      });
    }
    std::ranges::sort(next);
    open = std::move(next);
  }
  for (const auto& [document, place] : open) found.add(document);
}

DocumentBits TextSegment::documents(const ContentQuery& question) const {
  DocumentBits result(end_);
  for (std::size_t i = 0; i < question.all.size(); ++i) {
    const ContentElement& element = question.all[i];
    DocumentBits found(end_);
    if (!element.pattern.empty()) findPattern(element.pattern, found);
    for (const TermPhrase& phrase : element.phrases) findPhrase(phrase, found);
    if (i == 0) {
      result = std::move(found);
    } else {
      result.keepOnly(found);
    }
  }
  return result;
}

}  // namespace vt
