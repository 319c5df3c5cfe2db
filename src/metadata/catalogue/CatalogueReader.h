#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/FunctionRef.h"
#include "foundation/Result.h"
#include "foundation/Value.h"
#include "metadata/catalogue/ContentRecord.h"
#include "metadata/database/Database.h"
#include "metadata/store/Bitmap.h"
#include "metadata/store/SegmentIdentity.h"
#include "metadata/text/TextIndex.h"

namespace vt {

/// How much a catalogue holds.
struct CatalogueCounts {
  std::uint64_t contents = 0;  ///< that were looked into, failures among them
  std::uint64_t withText = 0;
  std::uint64_t failures = 0;
  std::uint64_t attributes = 0;  ///< values, of all contents
  std::uint64_t bytes = 0;       ///< of the file
};

/// What searches ask a catalogue. One thread at a time.
class CatalogueReader {
 public:
  static Result<std::unique_ptr<CatalogueReader>, StoreError> open(const std::string& indexFolder);
  CatalogueReader(const CatalogueReader&) = delete;
  CatalogueReader& operator=(const CatalogueReader&) = delete;
  ~CatalogueReader();

  const std::string& path() const { return database_->path(); }

  /// Looks at the catalogue as it is at this moment from now on. To be ended soon: the log of what
  /// is written meanwhile grows.
  StoreFailure lookAnew();
  /// Looks at it as it is whenever it is asked.
  void lookAway() { moment_.reset(); }
  /// Another number once somebody has written.
  Result<std::int64_t, StoreError> version() const;

  /// Which content each row of a segment has; nothing when that was not said, or of another number
  /// of rows. Costs a copy of 4 bytes for each.
  Result<std::optional<std::vector<ContentNumber>>, StoreError> rowsOf(
      const SegmentIdentity& segment, std::size_t rowCount);

  /// A number above those of all contents.
  Result<ContentNumber, StoreError> end();

  // Of contents below `end`.
  Result<Bitmap, StoreError> all(ContentNumber end);
  Result<Bitmap, StoreError> withText(ContentNumber end);
  Result<Bitmap, StoreError> withWords(const ContentQuery& question, ContentNumber end);
  /// Those with a value of the attribute that passes.
  Result<Bitmap, StoreError> withAttribute(std::string_view name, ContentNumber end,
                                           FunctionRef<bool(const Value&)> passes);

  /// The content of a file, as long as it holds the same bytes; kWithoutContent when nothing is
  /// known of that.
  Result<ContentNumber, StoreError> contentOf(const ContentIdentity& identity,
                                              const ContentVersion& version);

  /// Hands out the values of an attribute that some of the contents have, in the order of their
  /// numbers. Costs a look at all values of the attribute.
  StoreFailure forEachValue(std::string_view name, const Bitmap& contents,
                            FunctionRef<void(ContentNumber content, Value value)> visit);

  /// The value of an attribute; null when the content has none.
  Result<Value, StoreError> attribute(ContentNumber content, std::string_view name);
  /// The names of all attributes that any content has, or had.
  Result<std::vector<std::string>, StoreError> attributeNames();

  Result<CatalogueCounts, StoreError> counts();
  /// Those that failed, the newest first, at most `most` of them.
  Result<std::vector<ContentRecord>, StoreError> failures(std::size_t most);

  /// Reads all of it, which takes long, and looks for what contradicts itself.
  StoreFailure check();

 private:
  struct Statements {
    Statement rows;
    Statement all;
    Statement withText;
    Statement withAttribute;
    Statement attribute;
    Statement contentOf;
    Statement names;
    Statement failures;
  };

  CatalogueReader(std::unique_ptr<Database> database, TextIndex text, Statements statements);

  std::unique_ptr<Database> database_;
  TextIndex text_;
  Statements statements_;
  std::unique_ptr<Transaction> moment_;
};

}  // namespace vt
