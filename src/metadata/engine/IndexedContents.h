#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/FunctionRef.h"
#include "foundation/Result.h"
#include "foundation/Value.h"
#include "metadata/catalogue/CatalogueReader.h"
#include "metadata/engine/OpenIndex.h"
#include "metadata/store/Bitmap.h"
#include "metadata/text/ContentQuery.h"

namespace vt {

/// What is in the files of an index, by row: rows of the delta come after those of the base. One
/// thread at a time.
class IndexedContents {
 public:
  /// What the catalogue says at this moment; nothing when it says nothing of one of the segments.
  static Result<std::optional<IndexedContents>, StoreError> of(
      std::shared_ptr<CatalogueReader> catalogue, const OpenIndex& index);

  /// Whether the row is of a file that is still to be looked into.
  bool isPending(std::size_t row) const { return rows_[row] == kPendingContent; }
  bool hasPending() const { return hasPending_; }

  /// Whether the row has one of the contents, which one of the functions below gave.
  bool isIn(const Bitmap& contents, std::size_t row) const {
    return rows_[row] < end_ && contents.contains(rows_[row]);
  }

  // What fails gives none; failure() then says why.
  Bitmap withText() const { return orNone(catalogue_->withText(end_)); }
  Bitmap withWords(const ContentQuery& question) const {
    return orNone(catalogue_->withWords(question, end_));
  }
  Bitmap withAttribute(std::string_view name, FunctionRef<bool(const Value&)> passes) const {
    return orNone(catalogue_->withAttribute(name, end_, passes));
  }
  /// Whether any file has, or had, the attribute.
  bool knowsAttribute(std::string_view name) const;

  /// The value of an attribute of the row; false when it has none.
  bool tell(std::string_view attribute, std::size_t row, Value& value) const;

  /// The values of an attribute of many rows, null for those that have none.
  std::vector<Value> values(std::string_view attribute, std::span<const std::uint32_t> rows) const;

  /// The value of an attribute that stands in a file, whether or not a row is of it; false when it
  /// has none, or has changed since it was looked into.
  bool tellOfFile(const ContentIdentity& identity, const ContentVersion& version,
                  std::string_view attribute, Value& value) const;

  /// Ends the look at one moment of the catalogue: what is asked from now on, it tells as it is
  /// then.
  void lookAway() const { catalogue_->lookAway(); }

  /// What went wrong first, before that.
  const std::optional<StoreError>& failure() const { return failure_; }

 private:
  IndexedContents(std::shared_ptr<CatalogueReader> catalogue, std::vector<ContentNumber> rows,
                  ContentNumber end, std::vector<std::string> attributes);
  Bitmap orNone(Result<Bitmap, StoreError> found) const;
  bool tellOfContent(ContentNumber content, std::string_view attribute, Value& value) const;

  std::shared_ptr<CatalogueReader> catalogue_;
  std::vector<ContentNumber> rows_;
  ContentNumber end_;                    // above all contents
  std::vector<std::string> attributes_;  // ascending
  bool hasPending_;
  mutable std::optional<StoreError> failure_;  // which is no part of what there is in files
};

}  // namespace vt
