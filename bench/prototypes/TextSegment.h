#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "foundation/FunctionRef.h"
#include "metadata/store/MappedFile.h"
#include "metadata/text/ContentQuery.h"
#include "metadata/text/PatternTerms.h"
#include "metadata/text/Vocabulary.h"
#include "prototypes/DocumentSet.h"

namespace vt {

// What a text index of immutable files would be, as far as it takes to measure one against FTS5: a
// dictionary of the terms, in order, sixteen to a block and each without what it has in common with
// the one before; for each term the set of its documents; and apart from these, since only phrases
// ask for them, its places in each. All of one file, in that order, and mapped. It has no check
// sums, trusts its bytes, and is not changed: an index would have several, and merge them.

/// Gathers the terms of documents and writes the file.
class TextSegmentBuilder {
 public:
  /// Numbers ascend.
  void add(std::uint32_t document, std::string_view text);
  /// Writes all, and has it on the disk.
  void write(const std::string& path) const;

 private:
  struct Postings {
    std::string_view term;
    std::string whole;  // of a compound that is too long for its term
    std::vector<std::uint32_t> documents;
    std::string places;               // of all documents but the last
    std::vector<std::uint32_t> last;  // places in the last one
  };
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view term) const {
      return std::hash<std::string_view>()(term);
    }
  };
  static void endDocument(const Postings& postings, std::string& places);

  std::unordered_map<std::string, Postings, Hash, std::equal_to<>> terms_;
};

/// Answers what TextIndex::documents() does.
class TextSegment {
 public:
  /// Of documents below `end`.
  TextSegment(const std::string& folder, const std::string& name, std::size_t end);

  std::size_t sizeInBytes() const { return file_.bytes().size(); }
  std::size_t sizeOfPlaces() const { return places_.size(); }

  DocumentBits documents(const ContentQuery& question) const;

 private:
  /// A term with what the file has of it.
  struct Entry {
    KnownTerm term;
    std::string_view documents;
    std::string_view places;
  };
  /// A document, and a place in it.
  using Place = std::pair<std::uint32_t, std::uint32_t>;

  /// Visits what begins with the prefix, in order, until `visit` answers false.
  void forEach(std::string_view prefix, FunctionRef<bool(const Entry& entry)> visit) const;
  void findPattern(const std::vector<query::PatternWord>& words, DocumentBits& found) const;
  void findPhrase(const TermPhrase& phrase, DocumentBits& found) const;
  /// Of the places of the entry in the documents of `wanted`, those in `open`, or all for nullptr:
  /// adds the places that are `length` behind.
  void follow(const Entry& entry, const DocumentBits* wanted, const std::vector<Place>* open,
              std::size_t length, std::vector<Place>& next) const;
  /// The documents that have all terms of a phrase, in whatever order.
  DocumentBits documentsWithAll(const TermPhrase& phrase) const;

  MappedFile file_;
  std::size_t end_;
  std::string_view blocks_;  // where each block begins in the dictionary, 4 bytes each
  std::string_view dictionary_;
  std::string_view documents_;
  std::string_view places_;
};

}  // namespace vt
