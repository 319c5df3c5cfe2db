#include "metadata/catalogue/CatalogueReader.h"

#include <cstring>
#include <utility>

#include "metadata/catalogue/AttributeBytes.h"
#include "metadata/catalogue/CatalogueFile.h"
#include "metadata/database/PageChecksums.h"

namespace vt {
namespace {

/// Adds the numbers that the statement gives in its first column where they are of the set.
StoreFailure addAll(Statement& asked, Bitmap& set) {
  while (asked.next()) {
    const std::int64_t number = asked.number(0);
    if (number >= 0 && static_cast<std::uint64_t>(number) < set.size()) {
      set.add(static_cast<std::size_t>(number));
    }
  }
  return asked.finish();
}

}  // namespace

Result<std::unique_ptr<CatalogueReader>, StoreError> CatalogueReader::open(
    const std::string& indexFolder) {
  Result<Database, StoreError> opened = openCatalogueForReading(indexFolder);
  if (!opened) return opened.error();
  auto database = std::make_unique<Database>(std::move(opened).value());
  Result<TextIndex, StoreError> text = TextIndex::of(*database);
  if (!text) return text.error();
  Statements statements;
  StoreFailure refusal = database->prepareAll({
      {&statements.rows, "SELECT contents FROM segment_rows WHERE segment = ?"},
      {&statements.all, "SELECT number FROM content"},
      {&statements.withText, "SELECT number FROM content WHERE has_text"},
      {&statements.withAttribute,
       "SELECT content, value FROM attribute "
       "WHERE name = (SELECT id FROM attribute_name WHERE name = ?) ORDER BY content"},
      {&statements.attribute,
       "SELECT value FROM attribute "
       "WHERE name = (SELECT id FROM attribute_name WHERE name = ?) AND content = ?"},
      {&statements.contentOf,
       "SELECT number FROM content WHERE device = ? AND inode = ? AND modified = ? AND size = ?"},
      {&statements.names, "SELECT name FROM attribute_name ORDER BY name"},
      {&statements.failures,
       "SELECT number, extractor, extractor_version, failure, reason, path FROM content "
       "WHERE failure IS NOT NULL ORDER BY number DESC LIMIT ?"},
  });
  if (refusal) return *std::move(refusal);
  return std::unique_ptr<CatalogueReader>(
      new CatalogueReader(std::move(database), std::move(text).value(), std::move(statements)));
}

CatalogueReader::CatalogueReader(std::unique_ptr<Database> database, TextIndex text,
                                 Statements statements)
    : database_(std::move(database)), text_(std::move(text)), statements_(std::move(statements)) {}

CatalogueReader::~CatalogueReader() = default;

StoreFailure CatalogueReader::lookAnew() {
  moment_.reset();
  moment_ = std::make_unique<Transaction>(*database_, /*isForWriting=*/false);
  if (moment_->error()) return moment_->error();
  // A transaction begins to see with its first look.
  const auto looked = database_->number("SELECT count(*) FROM attribute_name");
  return looked ? StoreFailure() : StoreFailure(looked.error());
}

Result<std::int64_t, StoreError> CatalogueReader::version() const {
  return database_->number("PRAGMA data_version");
}

Result<std::optional<std::vector<ContentNumber>>, StoreError> CatalogueReader::rowsOf(
    const SegmentIdentity& segment, std::size_t rowCount) {
  Statement& asked = statements_.rows.restart();
  asked.bind(1, static_cast<std::int64_t>(segment.headChecksum));
  std::optional<std::vector<ContentNumber>> rows;
  if (asked.next()) {
    const std::string_view bytes = asked.bytes(0);
    if (bytes.size() == rowCount * sizeof(ContentNumber)) {
      rows.emplace(rowCount);
      if (rowCount > 0) std::memcpy(rows->data(), bytes.data(), bytes.size());
    }
  }
  if (StoreFailure failure = asked.finish()) return *std::move(failure);
  return rows;
}

Result<ContentNumber, StoreError> CatalogueReader::end() {
  const auto last = database_->number("SELECT seq FROM sqlite_sequence WHERE name = 'content'");
  if (!last) return last.error();
  if (*last < 0 || *last >= kPendingContent) {
    return damageError(database_->path(), "its numbers are too large");
  }
  return static_cast<ContentNumber>(*last) + 1;
}

Result<Bitmap, StoreError> CatalogueReader::all(ContentNumber end) {
  Bitmap found(end);
  if (StoreFailure failure = addAll(statements_.all.restart(), found)) return *std::move(failure);
  return found;
}

Result<Bitmap, StoreError> CatalogueReader::withText(ContentNumber end) {
  Bitmap found(end);
  if (StoreFailure failure = addAll(statements_.withText.restart(), found)) {
    return *std::move(failure);
  }
  return found;
}

Result<Bitmap, StoreError> CatalogueReader::withWords(const ContentQuery& question,
                                                      ContentNumber end) {
  return text_.documents(question, end);
}

Result<Bitmap, StoreError> CatalogueReader::withAttribute(std::string_view name, ContentNumber end,
                                                          FunctionRef<bool(const Value&)> passes) {
  Bitmap found(end);
  Statement& asked = statements_.withAttribute.restart().bind(1, name);
  while (asked.next()) {
    const std::int64_t number = asked.number(0);
    if (number < 0 || static_cast<std::uint64_t>(number) >= found.size()) continue;
    const Value value = attributeValue(asked.bytes(1));
    if (!value.isNull() && passes(value)) found.add(static_cast<std::size_t>(number));
  }
  if (StoreFailure failure = asked.finish()) return *std::move(failure);
  return found;
}

Result<ContentNumber, StoreError> CatalogueReader::contentOf(const ContentIdentity& identity,
                                                             const ContentVersion& version) {
  Statement& asked = statements_.contentOf.restart();
  asked.bind(1, static_cast<std::int64_t>(identity.device))
      .bind(2, static_cast<std::int64_t>(identity.inode))
      .bind(3, version.modified)
      .bind(4, static_cast<std::int64_t>(version.sizeInBytes));
  const ContentNumber number =
      asked.next() ? static_cast<ContentNumber>(asked.number(0)) : kWithoutContent;
  if (StoreFailure failure = asked.finish()) return *std::move(failure);
  return number;
}

StoreFailure CatalogueReader::forEachValue(
    std::string_view name, const Bitmap& contents,
    FunctionRef<void(ContentNumber content, Value value)> visit) {
  Statement& asked = statements_.withAttribute.restart().bind(1, name);
  while (asked.next()) {
    const std::int64_t number = asked.number(0);
    if (number < 0 || static_cast<std::uint64_t>(number) >= contents.size() ||
        !contents.contains(static_cast<std::size_t>(number))) {
      continue;
    }
    Value value = attributeValue(asked.bytes(1));
    if (!value.isNull()) visit(static_cast<ContentNumber>(number), std::move(value));
  }
  return asked.finish();
}

Result<Value, StoreError> CatalogueReader::attribute(ContentNumber content, std::string_view name) {
  Statement& asked = statements_.attribute.restart().bind(1, name);
  asked.bind(2, std::int64_t{content});
  Value value;
  if (asked.next()) value = attributeValue(asked.bytes(0));
  if (StoreFailure failure = asked.finish()) return *std::move(failure);
  return value;
}

Result<std::vector<std::string>, StoreError> CatalogueReader::attributeNames() {
  std::vector<std::string> names;
  Statement& asked = statements_.names.restart();
  while (asked.next()) names.emplace_back(asked.bytes(0));
  if (StoreFailure failure = asked.finish()) return *std::move(failure);
  return names;
}

Result<CatalogueCounts, StoreError> CatalogueReader::counts() {
  CatalogueCounts counts;
  const std::pair<std::uint64_t*, std::string_view> asked[] = {
      {&counts.contents, "SELECT count(*) FROM content"},
      {&counts.withText, "SELECT count(*) FROM content WHERE has_text"},
      {&counts.failures, "SELECT count(*) FROM content WHERE failure IS NOT NULL"},
      {&counts.attributes, "SELECT count(*) FROM attribute"},
      {&counts.bytes, "SELECT page_count * page_size FROM pragma_page_count(), pragma_page_size()"},
  };
  for (const auto& [count, words] : asked) {
    const Result<std::int64_t, StoreError> number = database_->number(words);
    if (!number) return number.error();
    *count = static_cast<std::uint64_t>(*number);
  }
  return counts;
}

Result<std::vector<ContentRecord>, StoreError> CatalogueReader::failures(std::size_t most) {
  std::vector<ContentRecord> found;
  Statement& asked = statements_.failures.restart();
  asked.bind(1, static_cast<std::int64_t>(most));
  while (asked.next()) {
    ContentRecord record;
    record.number = static_cast<ContentNumber>(asked.number(0));
    record.extractor = asked.bytes(1);
    record.extractorVersion = static_cast<std::uint32_t>(asked.number(2));
    record.failure = ExtractionFailure{static_cast<ExtractionFailure::Kind>(asked.number(3)),
                                       std::string(asked.bytes(4))};
    record.path = asked.bytes(5);
    found.push_back(std::move(record));
  }
  if (StoreFailure failure = asked.finish()) return *std::move(failure);
  return found;
}

StoreFailure CatalogueReader::check() {
  if (StoreFailure failure = checkPages(database_->path())) return failure;
  Result<Statement, StoreError> asked = database_->prepare("PRAGMA integrity_check(1)");
  if (!asked) return asked.error();
  if (!asked->next()) return asked->finish();
  if (asked->bytes(0) != "ok") return damageError(database_->path(), asked->bytes(0));
  const auto lost = database_->number(
      "SELECT count(*) FROM attribute WHERE content NOT IN (SELECT number FROM content)");
  if (!lost) return lost.error();
  if (*lost > 0) return damageError(database_->path(), "it has attributes of no content");
  return std::nullopt;
}

}  // namespace vt
