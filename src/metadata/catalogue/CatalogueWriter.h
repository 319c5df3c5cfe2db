#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>

#include "foundation/FunctionRef.h"
#include "foundation/Result.h"
#include "metadata/catalogue/ContentRecord.h"
#include "metadata/database/Database.h"
#include "metadata/store/SegmentIdentity.h"
#include "metadata/text/TextIndex.h"

namespace vt {

/// What the indexer does to a catalogue. There is one at a time: it holds the lock of the index.
///
/// Changes count once they are committed, all since the last commit or none. After an error nothing
/// more can be done but to drop it; what was not committed is then undone.
class CatalogueWriter {
 public:
  static Result<std::unique_ptr<CatalogueWriter>, StoreError> open(const std::string& indexFolder);
  CatalogueWriter(const CatalogueWriter&) = delete;
  CatalogueWriter& operator=(const CatalogueWriter&) = delete;
  ~CatalogueWriter();

  /// Hands out all records, without reasons and paths of failures.
  StoreFailure forEach(FunctionRef<void(const ContentRecord&)> visit);

  /// Keeps what was found in a file: text, attributes and `record`, whose number and hasText are
  /// given here; or its failure. What was known of the file goes. Gives the number.
  Result<ContentNumber, StoreError> add(ContentRecord record, const Extraction& extraction);

  /// Keeps in the place of the extended attributes that are known of a content those that are
  /// given, see extendedAttributesOf(), and as of when they are. The number stays.
  StoreFailure setExtendedAttributes(ContentNumber number, std::int64_t attributesChanged,
                                     const std::map<std::string, Value>& attributes);

  /// Whether the extended attributes of all files of the segments were looked at; false without
  /// segments.
  Result<bool, StoreError> hasSeenAttributesOf(std::span<const SegmentIdentity> segments);
  /// Says so of these segments alone.
  StoreFailure setSeenAttributesOf(std::span<const SegmentIdentity> segments);

  /// Forgets contents whose files are gone.
  StoreFailure remove(std::span<const ContentNumber> numbers);

  /// The same of those of them whose file system, a device number, `isThere`: others may come back.
  StoreFailure remove(std::span<const ContentNumber> numbers,
                      FunctionRef<bool(std::uint64_t device)> isThere);

  /// What is known of a file, without reason and path of a failure; nothing when nobody looked.
  Result<std::optional<ContentRecord>, StoreError> find(const ContentIdentity& identity);

  /// Says which content each row of a segment has.
  StoreFailure setRows(const SegmentIdentity& segment, std::span<const ContentNumber> contents);
  /// Forgets what was said of the rows of all segments but these, which are those of the index and
  /// what readers may still have open: four at most.
  StoreFailure keepRowsOf(std::span<const SegmentIdentity> segments);

  StoreFailure commit();

  /// Whether most documents of the text index are of contents that are forgotten: it takes them up
  /// for nothing, and only making the catalogue anew takes them out.
  Result<bool, StoreError> isMostlyForgotten();

  /// Looks through the text index for contradictions. Commits.
  StoreFailure checkText();
  /// See TextIndex::mergeAll(). Commits.
  StoreFailure mergeText();

 private:
  struct Statements {
    Statement all;
    Statement forget;
    Statement forgetAttributes;
    Statement findFile;
    Statement findDevice;
    Statement findRecord;
    Statement add;
    Statement addName;
    Statement findName;
    Statement addAttribute;
    Statement setRows;
    Statement forgetRows;
    Statement setAttributesChanged;
    Statement forgetAttribute;
    Statement isSeen;
    Statement forgetSeen;
    Statement setSeen;
  };

  CatalogueWriter(std::unique_ptr<Database> database, TextIndex text, Statements statements);

  /// Begins a transaction unless one is under way.
  StoreFailure begin();
  StoreFailure forgetOne(ContentNumber number);
  StoreFailure forgetFile(const ContentIdentity& identity);
  StoreFailure addAttributes(ContentNumber number, const std::map<std::string, Value>& attributes);
  Result<std::int64_t, StoreError> idOfName(const std::string& name);

  std::unique_ptr<Database> database_;
  TextIndex text_;
  Statements statements_;
  std::unordered_map<std::string, std::int64_t> idsByName_;
  std::unique_ptr<Transaction> transaction_;
};

}  // namespace vt
