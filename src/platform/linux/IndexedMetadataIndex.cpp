#include "platform/linux/IndexedMetadataIndex.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <map>
#include <utility>

#include "foundation/UTF8.h"
#include "metadata/catalogue/ContentRecord.h"
#include "metadata/engine/IndexHits.h"
#include "metadata/engine/QueryContents.h"
#include "metadata/live/SearchScopes.h"
#include "platform/Identity.h"
#include "platform/linux/IndexedQuery.h"
#include "platform/linux/PrivilegedMoment.h"

namespace vt {
namespace {

// Queries come back from callers as what this index handed out.
IndexedQuery& ours(MDQuery& query) { return static_cast<IndexedQuery&>(query); }
const IndexedQuery& ours(const MDQuery& query) { return static_cast<const IndexedQuery&>(query); }

/// Whether a catalogue may have values of the attribute.
bool mayStandInFiles(const NamedAttribute& named, const query::AttributeSchema& schema) {
  return (!named.attribute || maySomethingInFilesReplace(named.name)) &&
         schema.find(named.name) != nullptr;
}

/// A value as callers get it: names with U+FFFD for what is not UTF-8.
std::optional<Value> valueOf(const IndexHits& hits, std::size_t row, LiveAttribute attribute) {
  std::optional<Value> value(std::in_place);
  if (attribute == LiveAttribute::kName) {
    *value = displayText(hits.files().name(row));
  } else if (!hits.files().tell(attribute, row, *value)) {
    return std::nullopt;
  }
  return value;
}

}  // namespace

IndexedMetadataIndex::IndexedMetadataIndex(std::shared_ptr<LiveMetadataIndex> live,
                                           std::shared_ptr<Identity> identity,
                                           std::shared_ptr<IndexSource> source)
    : live_(std::move(live)), identity_(std::move(identity)), source_(std::move(source)) {}

void IndexedMetadataIndex::prepare() {
  const PrivilegedMoment moment(*identity_);
  source_->refresh();
}

std::shared_ptr<MDQuery> IndexedMetadataIndex::MDQueryCreate(
    const std::string& queryString, const std::vector<std::string>& valueListAttributes,
    const std::vector<std::string>& sortingAttributes, MDQueryRejection* rejection) {
  auto live = std::static_pointer_cast<LiveQuery>(
      live_->MDQueryCreate(queryString, valueListAttributes, sortingAttributes, rejection));
  return live ? std::make_shared<IndexedQuery>(std::move(live)) : nullptr;
}

void IndexedMetadataIndex::MDQuerySetSortComparator(
    MDQuery& query, MDQuerySortComparatorFunction comparator, const void* context,
    const std::optional<MDQueryDeclaredOrder>& declared) {
  live_->MDQuerySetSortComparator(*ours(query).live, comparator, context, declared);
}

void IndexedMetadataIndex::MDQuerySetSearchScope(MDQuery& query,
                                                 const std::vector<std::string>& directories,
                                                 std::uint32_t options) {
  live_->MDQuerySetSearchScope(*ours(query).live, directories, options);
}

void IndexedMetadataIndex::MDQuerySetLongestWalk(MDQuery& query, std::chrono::milliseconds limit) {
  live_->MDQuerySetLongestWalk(*ours(query).live, limit);
}

bool IndexedMetadataIndex::MDQueryExecute(MDQuery& query, std::uint32_t options) {
  IndexedQuery& asked = ours(query);
  asked.hits = nullptr;
  std::optional<std::string> refusal;
  // An unknown account is the live index's to refuse.
  if (const std::optional<Credentials> who = live_->callersCredentials()) {
    refusal = answerFromIndex(asked, AccessJudge(*who), options);
    if (!refusal) return true;
  }
  const bool wasRun = live_->MDQueryExecute(*asked.live, options);
  asked.notes = live_->MDQueryCopyNotes(*asked.live);
  if (refusal) asked.notes.walkedBecause = *std::move(refusal);
  return wasRun;
}

std::optional<std::string> IndexedMetadataIndex::answerFromIndex(IndexedQuery& query,
                                                                 const AccessJudge& judge,
                                                                 std::uint32_t options) {
  const LiveQuery& live = *query.live;
  const Date now = std::chrono::floor<Date::duration>(std::chrono::system_clock::now());
  const PrivilegedMoment moment(*identity_);
  source_->refresh();
  std::shared_ptr<const OpenIndex> index = source_->freshAt(now);
  if (!index) return source_->whyNotAt(now);
  const query::EvaluationContext context{now, query::Calendar()};
  const QueryContents asked = contentsAskedBy(live.parsed, live_->schema());
  SearchScopes scopes = findSearchScopes(live.scopes, judge);
  std::vector<IndexedScope> indexed;
  for (SearchScope& scope : scopes.usable) {
    const auto folder = indexedFolderAt(index->folders(), scope.canonicalPath);
    if (!folder) return "the index does not hold " + scope.given;
    indexed.push_back({*folder, std::move(scope.path), std::move(scope.canonicalPath)});
  }

  const bool sortsByContents =
      live.order.comparator != nullptr &&
      std::ranges::any_of(live.order.sorting, [&](const NamedAttribute& sorting) {
        return mayStandInFiles(sorting, live_->schema());
      });
  std::shared_ptr<const IndexedContents> contents;
  if (asked.asksForContents || sortsByContents) {
    auto found = source_->contentsOf(*index);
    if (!found && asked.asksForText) return found.error();
    if (found) contents = *found;
  }

  std::vector<IndexHits::Step> steps;
  const bool countsSteps = (options & kMDQueryCountsSteps) != 0;
  auto hits = std::make_shared<IndexHits>(std::move(index), contents, live_->tables(),
                                          std::move(indexed), judge, live.parsed, live_->schema(),
                                          context, countsSteps ? &steps : nullptr);
  std::map<std::string_view, std::vector<Value>> columns;  // by sorting attribute
  for (const NamedAttribute& sorting : live.order.sorting) {
    if (sortsByContents && contents && mayStandInFiles(sorting, live_->schema())) {
      columns.emplace(sorting.name, contents->values(sorting.name, hits->rows()));
    }
  }
  const auto valueOfHit = [&](std::size_t at, const NamedAttribute& sorting, Value& value) {
    hits->prefetchDateAndTypeAfter(at);
    if (const auto column = columns.find(sorting.name); column != columns.end()) {
      value = column->second[at];
      if (!value.isNull()) return true;
    }
    // As a walk has it, which counts entries only for who asks that of an item.
    return sorting.attribute && *sorting.attribute != LiveAttribute::kEntryCount &&
           hits->files().tell(*sorting.attribute, hits->rowAt(at), value);
  };
  const auto wanted = live.order.orderOfHits(hits->size(), valueOfHit);
  if (wanted) hits->reorder(*wanted);
  if (contents) {
    contents->lookAway();
    if (contents->failure()) return contents->failure()->reason;
  }
  query.hits = std::move(hits);
  query.notes = live.notes;
  query.notes.hasNoAccount = false;
  query.notes.unusableScopes = std::move(scopes.unusable);
  query.notes.filesNotLookedInto = query.hits->pendingCount();
  query.notes.steps.clear();
  for (IndexHits::Step& step : steps) {
    query.notes.steps.push_back({std::move(step.text), step.asked, step.left});
  }
  return std::nullopt;
}

MDQueryNotes IndexedMetadataIndex::MDQueryCopyNotes(const MDQuery& query) {
  return ours(query).notes;
}

void IndexedMetadataIndex::MDQueryDisableUpdates(MDQuery& /*query*/) {}

std::int32_t IndexedMetadataIndex::MDQueryGetResultCount(const MDQuery& query) {
  if (!ours(query).hits) return live_->MDQueryGetResultCount(*ours(query).live);
  constexpr std::size_t kMost = std::numeric_limits<std::int32_t>::max();
  return static_cast<std::int32_t>(std::min(ours(query).hits->size(), kMost));
}

std::shared_ptr<MDItem> IndexedMetadataIndex::MDQueryGetResultAtIndex(MDQuery& query,
                                                                      std::int32_t index) {
  const std::shared_ptr<IndexHits>& hits = ours(query).hits;
  if (!hits) return live_->MDQueryGetResultAtIndex(*ours(query).live, index);
  const auto at = static_cast<std::size_t>(index);
  hits->prefetchAfter(at);
  return std::make_shared<IndexedMDItem>(hits, hits->rowAt(at));
}

std::optional<Value> IndexedMetadataIndex::MDQueryGetAttributeValueOfResultAtIndex(
    MDQuery& query, std::string_view attribute, std::int32_t index) {
  const IndexedQuery& asked = ours(query);
  if (!asked.hits) {
    return live_->MDQueryGetAttributeValueOfResultAtIndex(*asked.live, attribute, index);
  }
  const std::vector<NamedAttribute>& list = asked.live->valueList;
  const auto named = std::ranges::find(list, attribute, &NamedAttribute::name);
  if (named == list.end()) return std::nullopt;
  const std::size_t row = asked.hits->rowAt(static_cast<std::size_t>(index));
  return valueOfRow(*asked.hits, row, *named);
}

std::optional<Value> IndexedMetadataIndex::valueOfRow(IndexHits& hits, std::size_t row,
                                                      const NamedAttribute& named) {
  std::optional<Value> value;
  if (mayStandInFiles(named, live_->schema())) value = valueInFile(hits, row, named.name);
  if (!value && named.attribute) value = valueOf(hits, row, *named.attribute);
  return value;
}

std::optional<Value> IndexedMetadataIndex::valueInFile(IndexHits& hits, std::size_t row,
                                                       std::string_view attribute) {
  const PrivilegedMoment moment(*identity_);
  if (hits.contents() == nullptr) {
    const auto contents = source_->contentsOf(hits.index());
    if (!contents) return std::nullopt;
    (*contents)->lookAway();
    hits.setContents(*contents);
  }
  std::optional<Value> value(std::in_place);
  return hits.contents()->tell(attribute, row, *value) ? value : std::nullopt;
}

std::optional<Value> IndexedMetadataIndex::valueInFile(const LiveMDItem& file,
                                                       std::string_view attribute) {
  if (!file.status.isRegularFile()) return std::nullopt;
  const Date now = std::chrono::floor<Date::duration>(std::chrono::system_clock::now());
  const PrivilegedMoment moment(*identity_);
  const std::shared_ptr<const OpenIndex> index = source_->freshAt(now);
  if (!index) return std::nullopt;
  const auto contents = source_->contentsOf(*index);
  if (!contents) return std::nullopt;
  std::optional<Value> value(std::in_place);
  const bool isTold =
      (*contents)->tellOfFile(identityOf(file.status), versionOf(file.status), attribute, *value);
  (*contents)->lookAway();
  return isTold ? value : std::nullopt;
}

std::shared_ptr<MDItem> IndexedMetadataIndex::MDItemCreate(const std::string& path) {
  std::shared_ptr<MDItem> item = live_->MDItemCreate(path);
  if (item) prepare();
  return item;
}

std::optional<Value> IndexedMetadataIndex::MDItemCopyAttribute(MDItem& item,
                                                               std::string_view attribute) {
  // An item of either index may come: one that was made of a path is the live index's.
  const NamedAttribute named{std::string(attribute), liveAttributeNamed(attribute)};
  if (const auto* const indexed = dynamic_cast<const IndexedMDItem*>(&item)) {
    return valueOfRow(*indexed->hits, indexed->row, named);
  }
  std::optional<Value> value;
  if (mayStandInFiles(named, live_->schema())) {
    value = valueInFile(static_cast<const LiveMDItem&>(item), attribute);
  }
  return value ? value : live_->MDItemCopyAttribute(item, attribute);
}

std::vector<std::string> IndexedMetadataIndex::MDItemCopyAttributeNames(MDItem& item) {
  std::vector<std::string> names;
  for (std::string& name : live_->MDSchemaCopyAllAttributes()) {
    if (MDItemCopyAttribute(item, name)) names.push_back(std::move(name));
  }
  return names;
}

Result<MDTypedQuery, MDTypedRejection> IndexedMetadataIndex::MDQueryStringFromTyped(
    const std::string& typed, const MDTypedNames& names, bool readsFiles) {
  return live_->MDQueryStringFromTyped(typed, names, readsFiles || holdsText());
}

bool IndexedMetadataIndex::holdsText() {
  const Date now = std::chrono::floor<Date::duration>(std::chrono::system_clock::now());
  const PrivilegedMoment moment(*identity_);
  source_->refresh();
  const std::shared_ptr<const OpenIndex> index = source_->freshAt(now);
  return index && source_->contentsOf(*index);
}

std::vector<std::string> IndexedMetadataIndex::MDSchemaCopyAllAttributes() {
  return live_->MDSchemaCopyAllAttributes();
}

std::optional<std::string> IndexedMetadataIndex::MDSchemaCopyDisplayNameForAttribute(
    std::string_view attribute) {
  return live_->MDSchemaCopyDisplayNameForAttribute(attribute);
}

}  // namespace vt
