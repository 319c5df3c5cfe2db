#include "metadata/catalogue/CatalogueWriter.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "metadata/catalogue/AttributeBytes.h"
#include "metadata/catalogue/CatalogueFile.h"
#include "metadata/database/SQLite.h"
#include "metadata/extract/ExtendedAttributes.h"

namespace vt {
namespace {

// Fewer are not worth reading all files again.
constexpr std::int64_t kManyForgotten = 20'000;

/// All bits of a number, since the database knows signed ones alone.
std::int64_t bitsOf(std::uint64_t number) { return static_cast<std::int64_t>(number); }

// Base and delta that are in force, and those that readers may still have open.
constexpr std::size_t kMostSegmentsKept = 4;

/// What rows are kept under: the number of a generation may come again once an index was removed.
std::int64_t rowsKeyOf(const SegmentIdentity& segment) { return bitsOf(segment.headChecksum); }

/// The record that the statement is at.
ContentRecord recordIn(const Statement& found) {
  ContentRecord record;
  record.number = static_cast<ContentNumber>(found.number(0));
  record.identity = {static_cast<std::uint64_t>(found.number(1)),
                     static_cast<std::uint64_t>(found.number(2))};
  record.version = {found.number(3), static_cast<std::uint64_t>(found.number(4)), found.number(9)};
  record.extractor = found.bytes(5);
  record.extractorVersion = static_cast<std::uint32_t>(found.number(6));
  record.hasText = found.number(7) != 0;
  if (!found.isNull(8)) {
    record.failure.emplace();
    record.failure->kind = static_cast<ExtractionFailure::Kind>(found.number(8));
  }
  return record;
}

}  // namespace

Result<std::unique_ptr<CatalogueWriter>, StoreError> CatalogueWriter::open(
    const std::string& indexFolder) {
  Result<Database, StoreError> opened = openCatalogueForWriting(indexFolder);
  if (!opened) return opened.error();
  auto database = std::make_unique<Database>(std::move(opened).value());
  Result<TextIndex, StoreError> text = TextIndex::of(*database);
  if (!text) return text.error();
  Statements statements;
  StoreFailure refusal = database->prepareAll({
      {&statements.all,
       "SELECT number, device, inode, modified, size, extractor, extractor_version, has_text, "
       "failure, attributes_changed FROM content"},
      {&statements.forget, "DELETE FROM content WHERE number = ?"},
      {&statements.forgetAttributes, "DELETE FROM attribute WHERE content = ?"},
      {&statements.findFile, "SELECT number FROM content WHERE device = ? AND inode = ?"},
      {&statements.findDevice, "SELECT device FROM content WHERE number = ?"},
      {&statements.findRecord,
       "SELECT number, device, inode, modified, size, extractor, extractor_version, has_text, "
       "failure, attributes_changed FROM content WHERE device = ? AND inode = ?"},
      {&statements.add,
       "INSERT INTO content(device, inode, modified, size, extractor, extractor_version, has_text, "
       "failure, reason, path, attributes_changed) VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"},
      {&statements.addName, "INSERT INTO attribute_name(name) VALUES(?)"},
      {&statements.findName, "SELECT id FROM attribute_name WHERE name = ?"},
      {&statements.addAttribute, "INSERT INTO attribute(name, content, value) VALUES(?, ?, ?)"},
      {&statements.setRows, "INSERT OR REPLACE INTO segment_rows(segment, contents) VALUES(?, ?)"},
      {&statements.forgetRows, "DELETE FROM segment_rows WHERE segment NOT IN (?, ?, ?, ?)"},
      {&statements.setAttributesChanged,
       "UPDATE content SET attributes_changed = ? WHERE number = ?"},
      {&statements.forgetAttribute,
       "DELETE FROM attribute WHERE content = ? "
       "AND name = (SELECT id FROM attribute_name WHERE name = ?)"},
      {&statements.isSeen, "SELECT 1 FROM attributes_seen WHERE segment = ?"},
      {&statements.forgetSeen, "DELETE FROM attributes_seen"},
      {&statements.setSeen, "INSERT INTO attributes_seen(segment) VALUES(?)"},
  });
  if (refusal) return *std::move(refusal);
  return std::unique_ptr<CatalogueWriter>(
      new CatalogueWriter(std::move(database), std::move(text).value(), std::move(statements)));
}

CatalogueWriter::CatalogueWriter(std::unique_ptr<Database> database, TextIndex text,
                                 Statements statements)
    : database_(std::move(database)), text_(std::move(text)), statements_(std::move(statements)) {}

CatalogueWriter::~CatalogueWriter() = default;

StoreFailure CatalogueWriter::begin() {
  if (transaction_) return std::nullopt;
  transaction_ = std::make_unique<Transaction>(*database_);
  return transaction_->error();
}

StoreFailure CatalogueWriter::commit() {
  if (!transaction_) return std::nullopt;
  StoreFailure failure = text_.finishAdding();
  if (!failure) failure = transaction_->commit();
  transaction_.reset();
  return failure;
}

StoreFailure CatalogueWriter::forEach(FunctionRef<void(const ContentRecord&)> visit) {
  Statement& all = statements_.all.restart();
  while (all.next()) visit(recordIn(all));
  return all.finish();
}

Result<std::optional<ContentRecord>, StoreError> CatalogueWriter::find(
    const ContentIdentity& identity) {
  Statement& find = statements_.findRecord.restart();
  find.bind(1, bitsOf(identity.device)).bind(2, bitsOf(identity.inode));
  std::optional<ContentRecord> found;
  if (find.next()) found = recordIn(find);
  if (StoreFailure failure = find.finish()) return *std::move(failure);
  return found;
}

StoreFailure CatalogueWriter::forgetOne(ContentNumber number) {
  if (StoreFailure failure =
          statements_.forgetAttributes.restart().bind(1, std::int64_t{number}).run()) {
    return failure;
  }
  return statements_.forget.restart().bind(1, std::int64_t{number}).run();
}

StoreFailure CatalogueWriter::forgetFile(const ContentIdentity& identity) {
  Statement& find = statements_.findFile.restart();
  find.bind(1, bitsOf(identity.device)).bind(2, bitsOf(identity.inode));
  const bool isKnown = find.next();
  const auto number = static_cast<ContentNumber>(isKnown ? find.number(0) : 0);
  StoreFailure failure = find.finish();
  return failure || !isKnown ? failure : forgetOne(number);
}

Result<ContentNumber, StoreError> CatalogueWriter::add(ContentRecord record,
                                                       const Extraction& extraction) {
  if (StoreFailure failure = begin()) return *std::move(failure);
  if (StoreFailure failure = forgetFile(record.identity)) return *std::move(failure);
  Statement& add = statements_.add.restart();
  add.bind(1, bitsOf(record.identity.device))
      .bind(2, bitsOf(record.identity.inode))
      .bind(3, record.version.modified)
      .bind(4, bitsOf(record.version.sizeInBytes))
      .bind(5, record.extractor)
      .bind(6, std::int64_t{record.extractorVersion})
      .bind(7, std::int64_t{extraction.text ? 1 : 0})
      .bind(11, record.version.attributesChanged);
  if (record.failure) {
    add.bind(8, static_cast<std::int64_t>(record.failure->kind))
        .bind(9, record.failure->reason)
        .bindBytes(10, record.path);
  }
  if (StoreFailure failure = add.run()) return *std::move(failure);
  const std::int64_t given = sqlite().sqlite3_last_insert_rowid(database_->handle());
  if (given >= kPendingContent) {
    return StoreError{StoreError::Kind::kTooLarge,
                      database_->path() + " has no more numbers for contents"};
  }
  const auto number = static_cast<ContentNumber>(given);
  if (extraction.text) {
    if (StoreFailure failure = text_.add(number, *extraction.text)) return *std::move(failure);
  }
  if (StoreFailure failure = addAttributes(number, extraction.attributes)) {
    return *std::move(failure);
  }
  return number;
}

StoreFailure CatalogueWriter::addAttributes(ContentNumber number,
                                            const std::map<std::string, Value>& attributes) {
  for (const auto& [name, value] : attributes) {
    const std::string bytes = attributeBytes(value);
    if (bytes.empty()) continue;
    const Result<std::int64_t, StoreError> id = idOfName(name);
    if (!id) return id.error();
    if (StoreFailure failure = statements_.addAttribute.restart()
                                   .bind(1, *id)
                                   .bind(2, std::int64_t{number})
                                   .bindBytes(3, bytes)
                                   .run()) {
      return failure;
    }
  }
  return std::nullopt;
}

Result<std::int64_t, StoreError> CatalogueWriter::idOfName(const std::string& name) {
  if (const auto known = idsByName_.find(name); known != idsByName_.end()) return known->second;
  Statement& find = statements_.findName.restart().bind(1, name);
  const bool isKnown = find.next();
  std::int64_t id = isKnown ? find.number(0) : 0;
  if (StoreFailure failure = find.finish()) return *std::move(failure);
  if (!isKnown) {
    if (StoreFailure refused = statements_.addName.restart().bind(1, name).run()) {
      return *std::move(refused);
    }
    id = sqlite().sqlite3_last_insert_rowid(database_->handle());
  }
  idsByName_.emplace(name, id);
  return id;
}

StoreFailure CatalogueWriter::setExtendedAttributes(
    ContentNumber number, std::int64_t attributesChanged,
    const std::map<std::string, Value>& attributes) {
  if (StoreFailure failure = begin()) return failure;
  Statement& set = statements_.setAttributesChanged.restart();
  if (StoreFailure failure = set.bind(1, attributesChanged).bind(2, std::int64_t{number}).run()) {
    return failure;
  }
  for (const std::string_view name : extendedAttributeNames()) {
    Statement& forget = statements_.forgetAttribute.restart();
    if (StoreFailure failure = forget.bind(1, std::int64_t{number}).bind(2, name).run()) {
      return failure;
    }
  }
  return addAttributes(number, attributes);
}

Result<bool, StoreError> CatalogueWriter::hasSeenAttributesOf(
    std::span<const SegmentIdentity> segments) {
  bool areSeen = !segments.empty();
  for (const SegmentIdentity& segment : segments) {
    Statement& asked = statements_.isSeen.restart();
    areSeen = asked.bind(1, rowsKeyOf(segment)).next() && areSeen;
    if (StoreFailure failure = asked.finish()) return *std::move(failure);
  }
  return areSeen;
}

StoreFailure CatalogueWriter::setSeenAttributesOf(std::span<const SegmentIdentity> segments) {
  if (StoreFailure failure = begin()) return failure;
  if (StoreFailure failure = statements_.forgetSeen.restart().run()) return failure;
  for (const SegmentIdentity& segment : segments) {
    if (StoreFailure failure = statements_.setSeen.restart().bind(1, rowsKeyOf(segment)).run()) {
      return failure;
    }
  }
  return std::nullopt;
}

StoreFailure CatalogueWriter::remove(std::span<const ContentNumber> numbers) {
  if (numbers.empty()) return std::nullopt;
  if (StoreFailure failure = begin()) return failure;
  for (const ContentNumber number : numbers) {
    if (StoreFailure failure = forgetOne(number)) return failure;
  }
  return std::nullopt;
}

StoreFailure CatalogueWriter::remove(std::span<const ContentNumber> numbers,
                                     FunctionRef<bool(std::uint64_t device)> isThere) {
  std::vector<ContentNumber> removed;
  for (const ContentNumber number : numbers) {
    Statement& asked = statements_.findDevice.restart().bind(1, std::int64_t{number});
    if (asked.next() && isThere(static_cast<std::uint64_t>(asked.number(0)))) {
      removed.push_back(number);
    }
    if (StoreFailure failure = asked.finish()) return failure;
  }
  return remove(removed);
}

StoreFailure CatalogueWriter::setRows(const SegmentIdentity& segment,
                                      std::span<const ContentNumber> contents) {
  if (StoreFailure failure = begin()) return failure;
  const std::int64_t key = rowsKeyOf(segment);
  const std::string_view bytes(reinterpret_cast<const char*>(contents.data()),
                               contents.size_bytes());
  return statements_.setRows.restart().bind(1, key).bindBytes(2, bytes).run();
}

StoreFailure CatalogueWriter::keepRowsOf(std::span<const SegmentIdentity> segments) {
  if (segments.empty()) return std::nullopt;
  if (StoreFailure failure = begin()) return failure;
  Statement& forget = statements_.forgetRows.restart();
  for (std::size_t at = 0; at < kMostSegmentsKept; ++at) {
    forget.bind(static_cast<int>(at + 1), rowsKeyOf(segments[std::min(at, segments.size() - 1)]));
  }
  return forget.run();
}

Result<bool, StoreError> CatalogueWriter::isMostlyForgotten() {
  const auto given = database_->number("SELECT seq FROM sqlite_sequence WHERE name = 'content'");
  if (!given) return given.error();
  const auto kept = database_->number("SELECT count(*) FROM content");
  if (!kept) return kept.error();
  const std::int64_t forgotten = *given - *kept;
  return forgotten > *kept && forgotten > kManyForgotten;
}

StoreFailure CatalogueWriter::checkText() {
  if (StoreFailure failure = commit()) return failure;
  return text_.check();
}

StoreFailure CatalogueWriter::mergeText() {
  if (StoreFailure failure = commit()) return failure;
  return text_.mergeAll();
}

}  // namespace vt
