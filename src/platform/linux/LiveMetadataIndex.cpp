#include "platform/linux/LiveMetadataIndex.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <utility>

#include "metadata/live/EntryCount.h"
#include "metadata/live/LiveFile.h"
#include "metadata/live/LiveSearch.h"
#include "metadata/live/PathResolver.h"
#include "metadata/query/QueryMatcher.h"
#include "metadata/query/QueryParser.h"
#include "metadata/query/TypedQuery.h"
#include "platform/Identity.h"
#include "platform/linux/LiveQuery.h"
#include "platform/linux/PrivilegedMoment.h"

namespace vt {
namespace {

// Queries and items come back from callers as what this index handed out.
LiveQuery& ours(MDQuery& query) { return static_cast<LiveQuery&>(query); }
const LiveQuery& ours(const MDQuery& query) { return static_cast<const LiveQuery&>(query); }
LiveMDItem& ours(MDItem& item) { return static_cast<LiveMDItem&>(item); }

std::string kindOf(query::TypedQueryError::Kind kind) {
  using Kind = query::TypedQueryError::Kind;
  switch (kind) {
    case Kind::kNothing:
      return "nothing";
    case Kind::kNumber:
      return "number";
    case Kind::kDate:
      return "date";
    case Kind::kBoolean:
      return "truth";
    case Kind::kTooLong:
      break;
  }
  return "length";
}

Date now() {
  return std::chrono::time_point_cast<Date::duration>(std::chrono::system_clock::now());
}

}  // namespace

LiveMetadataIndex::LiveMetadataIndex(std::shared_ptr<const ContentTypes> types,
                                     std::shared_ptr<const query::AttributeSchema> schema,
                                     std::shared_ptr<Identity> identity,
                                     CredentialsProvider credentialsOf)
    : types_(std::move(types)),
      groups_(*types_),
      schema_(std::move(schema)),
      identity_(std::move(identity)),
      credentialsOf_(std::move(credentialsOf)) {}

std::optional<Credentials> LiveMetadataIndex::callersCredentials() const {
  if (!identity_->actsAsWanted()) return std::nullopt;
  const std::uint32_t uid = identity_->geteuid();
  if (uid == 0) return Credentials(0, 0, {});
  // Who somebody is does not hang on what he may read.
  const PrivilegedMoment moment(*identity_);
  return credentialsOf_(uid);
}

std::shared_ptr<MDQuery> LiveMetadataIndex::MDQueryCreate(
    const std::string& queryString, const std::vector<std::string>& valueListAttributes,
    const std::vector<std::string>& sortingAttributes, MDQueryRejection* rejection) {
  Result<query::Query, query::QueryError> parsed = query::parseQuery(queryString, *schema_);
  if (!parsed) {
    if (rejection != nullptr)
      *rejection = {parsed.error().offset, parsed.error().expected,
                    describeQueryError(parsed.error())};
    return nullptr;
  }
  return std::make_shared<LiveQuery>(std::move(parsed).value(), valueListAttributes,
                                     sortingAttributes);
}

void LiveMetadataIndex::MDQuerySetSortComparator(
    MDQuery& query, MDQuerySortComparatorFunction comparator, const void* context,
    const std::optional<MDQueryDeclaredOrder>& declared) {
  HitOrder& order = ours(query).order;
  order.comparator = comparator;
  order.comparatorContext = context;
  order.declared = declared;
}

void LiveMetadataIndex::MDQuerySetSearchScope(MDQuery& query,
                                              const std::vector<std::string>& directories,
                                              std::uint32_t /*options*/) {
  ours(query).scopes = directories;
}

void LiveMetadataIndex::MDQuerySetLongestWalk(MDQuery& query, std::chrono::milliseconds limit) {
  ours(query).longestWalk = limit;
}

bool LiveMetadataIndex::MDQueryExecute(MDQuery& query, std::uint32_t options) {
  const TypeTables tables{*types_, groups_};
  LiveSearchResult result;
  std::vector<MDQueryStep> steps;
  const std::optional<Credentials> who = callersCredentials();
  ours(query).notes.hasNoAccount = !who;
  if (who) {
    const query::QueryMatcher matcher(ours(query).parsed, *schema_, {now(), query::Calendar()});
    const PrivilegedMoment moment(*identity_);
    std::uint64_t lookedAt = 0;
    const auto progress = [&](std::uint64_t folders, std::uint64_t entries) {
      lookedAt = entries;
      if (progress_) progress_(folders, entries);
    };
    result = LiveSearch(matcher, *schema_, tables, progress, ours(query).longestWalk)
                 .run(ours(query).scopes, *who);
    if ((options & kMDQueryCountsSteps) != 0) {
      steps = {{"readable, and as the query asks", lookedAt, result.hits.size()}};
    }
  }
  ours(query).notes.steps = std::move(steps);
  ours(query).notes.walkWasGivenUp = result.wasGivenUp;
  if (result.wasGivenUp) result.hits = {};
  ours(query).takeResult(std::move(result), tables);
  return !ours(query).notes.walkWasGivenUp;
}

MDQueryNotes LiveMetadataIndex::MDQueryCopyNotes(const MDQuery& query) { return ours(query).notes; }

void LiveMetadataIndex::MDQueryDisableUpdates(MDQuery& /*query*/) {}

std::int32_t LiveMetadataIndex::MDQueryGetResultCount(const MDQuery& query) {
  constexpr std::size_t kMost = std::numeric_limits<std::int32_t>::max();
  return static_cast<std::int32_t>(std::min(ours(query).hits.size(), kMost));
}

std::shared_ptr<MDItem> LiveMetadataIndex::MDQueryGetResultAtIndex(MDQuery& query,
                                                                   std::int32_t index) {
  const LiveHits& hits = ours(query).hits;
  const LiveHit& hit = hits[static_cast<std::size_t>(index)];
  return std::make_shared<LiveMDItem>(hits.folderPath(hit.folder), hit.name, hit.type, hit.status);
}

std::optional<Value> LiveMetadataIndex::MDQueryGetAttributeValueOfResultAtIndex(
    MDQuery& query, std::string_view attribute, std::int32_t index) {
  const std::vector<NamedAttribute>& list = ours(query).valueList;
  const auto named = std::ranges::find(list, attribute, &NamedAttribute::name);
  if (named == list.end() || !named->attribute) return std::nullopt;
  if (*named->attribute == LiveAttribute::kEntryCount) {
    return MDItemCopyAttribute(*MDQueryGetResultAtIndex(query, index), attribute);
  }
  const LiveHits& hits = ours(query).hits;
  const LiveHit& hit = hits[static_cast<std::size_t>(index)];
  const LiveFile file{hits.folderPath(hit.folder), hit.name, hit.type, &hit.status};
  return valueForCaller(*named->attribute, file, {*types_, groups_});
}

std::shared_ptr<MDItem> LiveMetadataIndex::MDItemCreate(const std::string& path) {
  const std::optional<Credentials> who = callersCredentials();
  if (!who) return nullptr;
  const AccessJudge judge(*who);
  const PrivilegedMoment moment(*identity_);
  const std::optional<ResolvedPath> found = resolvePath(path, LastLink::kKeep, judge);
  if (!found ||
      !judge.allows(found->status.ownership, kMayRead, [&] { return readAclOf(*found); })) {
    return nullptr;
  }
  const std::size_t slash = found->shownPath.rfind('/');
  std::string folderPath = found->shownPath.substr(0, std::max<std::size_t>(slash, 1));
  std::string name = found->shownPath.substr(slash + 1);
  const ContentTypeId type = typeOfEntry(*types_, name, entryKindOf(found->status));
  return std::make_shared<LiveMDItem>(std::move(folderPath), std::move(name), type, found->status);
}

std::optional<Value> LiveMetadataIndex::MDItemCopyAttribute(MDItem& item,
                                                            std::string_view attribute) {
  const std::optional<LiveAttribute> live = liveAttributeNamed(attribute);
  if (!live) return std::nullopt;
  const LiveMDItem& asked = ours(item);
  if (*live != LiveAttribute::kEntryCount) {
    const LiveFile file{asked.folderPath, asked.name, asked.type, &asked.status};
    return valueForCaller(*live, file, {*types_, groups_});
  }
  const std::optional<Credentials> who = callersCredentials();
  if (!who || !asked.status.isFolder()) return std::nullopt;
  const AccessJudge judge(*who);
  const PrivilegedMoment moment(*identity_);
  const std::optional<ResolvedPath> found =
      resolvePath(joinPath(asked.folderPath, asked.name), LastLink::kKeep, judge);
  if (!found) return std::nullopt;
  const std::optional<std::uint64_t> entries = countEntries(found->file.get(), ".", judge);
  return entries ? std::optional<Value>(*entries) : std::nullopt;
}

std::vector<std::string> LiveMetadataIndex::MDItemCopyAttributeNames(MDItem& item) {
  std::vector<std::string> names;
  for (const query::Attribute& attribute : schema_->attributes()) {
    if (MDItemCopyAttribute(item, attribute.name)) names.push_back(attribute.name);
  }
  return names;
}

Result<MDTypedQuery, MDTypedRejection> LiveMetadataIndex::MDQueryStringFromTyped(
    const std::string& typed, const MDTypedNames& names, bool readsFiles) {
  const query::WordsIn in = readsFiles ? query::WordsIn::kNamesAndText : query::WordsIn::kNames;
  auto query = query::queryFromTyped(typed, *schema_, {names.attributes, names.typesOfKind}, in);
  if (query) return MDTypedQuery{*std::move(query), readsFiles || query::looksLikeQuery(typed)};
  const query::TypedQueryError& error = query.error();
  return MDTypedRejection{kindOf(error.kind), error.offset, error.text};
}

std::vector<std::string> LiveMetadataIndex::MDSchemaCopyAllAttributes() {
  std::vector<std::string> names;
  names.reserve(schema_->attributes().size());
  for (const query::Attribute& attribute : schema_->attributes()) names.push_back(attribute.name);
  return names;
}

std::optional<std::string> LiveMetadataIndex::MDSchemaCopyDisplayNameForAttribute(
    std::string_view attribute) {
  const query::Attribute* known = schema_->find(attribute);
  if (!known || known->displayName.empty()) return std::nullopt;
  return known->displayName;
}

}  // namespace vt
