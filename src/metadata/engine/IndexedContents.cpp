#include "metadata/engine/IndexedContents.h"

#include <algorithm>
#include <utility>

namespace vt {

Result<std::optional<IndexedContents>, StoreError> IndexedContents::of(
    std::shared_ptr<CatalogueReader> catalogue, const OpenIndex& index) {
  auto rows = catalogue->rowsOf(index.base, index.columns.base.rowCount());
  if (!rows) return rows.error();
  if (!*rows) return std::optional<IndexedContents>();
  // What is dead is neither found nor still to be looked into.
  index.columns.dead.forEach([&](std::size_t row) { (**rows)[row] = kWithoutContent; });
  if (index.delta) {
    const auto newer = catalogue->rowsOf(*index.delta, index.columns.delta.rowCount());
    if (!newer) return newer.error();
    if (!*newer) return std::optional<IndexedContents>();
    (*rows)->insert((*rows)->end(), (*newer)->begin(), (*newer)->end());
  }
  const Result<ContentNumber, StoreError> end = catalogue->end();
  if (!end) return end.error();
  Result<std::vector<std::string>, StoreError> names = catalogue->attributeNames();
  if (!names) return names.error();
  std::ranges::sort(*names);
  return std::optional(
      IndexedContents(std::move(catalogue), std::move(**rows), *end, std::move(*names)));
}

IndexedContents::IndexedContents(std::shared_ptr<CatalogueReader> catalogue,
                                 std::vector<ContentNumber> rows, ContentNumber end,
                                 std::vector<std::string> attributes)
    : catalogue_(std::move(catalogue)),
      rows_(std::move(rows)),
      end_(end),
      attributes_(std::move(attributes)),
      hasPending_(std::ranges::find(rows_, kPendingContent) != rows_.end()) {}

Bitmap IndexedContents::orNone(Result<Bitmap, StoreError> found) const {
  if (found) return std::move(found).value();
  if (!failure_) failure_ = found.error();
  return Bitmap(end_);
}

bool IndexedContents::knowsAttribute(std::string_view name) const {
  return std::ranges::binary_search(attributes_, name);
}

bool IndexedContents::tell(std::string_view attribute, std::size_t row, Value& value) const {
  return rows_[row] < end_ && tellOfContent(rows_[row], attribute, value);
}

std::vector<Value> IndexedContents::values(std::string_view attribute,
                                           std::span<const std::uint32_t> rows) const {
  // A look at each costs as much as passing over some hundred values.
  constexpr std::size_t kFewRows = 1000;
  std::vector<Value> told(rows.size());
  if (!knowsAttribute(attribute)) return told;
  if (rows.size() <= kFewRows) {
    for (std::size_t i = 0; i < rows.size(); ++i) tell(attribute, rows[i], told[i]);
    return told;
  }
  Bitmap wanted(end_);
  for (const std::uint32_t row : rows) {
    if (rows_[row] < end_) wanted.add(rows_[row]);
  }
  std::vector<std::pair<ContentNumber, Value>> found;
  const auto take = [&](ContentNumber content, Value value) {
    found.emplace_back(content, std::move(value));
  };
  if (StoreFailure failure = catalogue_->forEachValue(attribute, wanted, take)) {
    if (!failure_) failure_ = std::move(failure);
    return told;
  }
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const auto at = std::ranges::lower_bound(found, rows_[rows[i]], {},
                                             &std::pair<ContentNumber, Value>::first);
    if (at != found.end() && at->first == rows_[rows[i]]) told[i] = at->second;
  }
  return told;
}

bool IndexedContents::tellOfFile(const ContentIdentity& identity, const ContentVersion& version,
                                 std::string_view attribute, Value& value) const {
  if (!knowsAttribute(attribute)) return false;
  const Result<ContentNumber, StoreError> content = catalogue_->contentOf(identity, version);
  return content && tellOfContent(*content, attribute, value);
}

bool IndexedContents::tellOfContent(ContentNumber content, std::string_view attribute,
                                    Value& value) const {
  if (content == kWithoutContent || !knowsAttribute(attribute)) return false;
  Result<Value, StoreError> found = catalogue_->attribute(content, attribute);
  // What can't be read any more is not there: the next search says why.
  if (!found || found->isNull()) return false;
  value = std::move(found).value();
  return true;
}

}  // namespace vt
