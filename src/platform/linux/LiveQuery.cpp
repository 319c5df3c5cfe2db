#include "platform/linux/LiveQuery.h"

#include <algorithm>
#include <numeric>

#include "foundation/UTF8.h"
#include "metadata/live/LiveFile.h"
#include "platform/Attributes.h"

namespace vt {
namespace {

// What callers look at of a result; the order of the rest is not worth a check.
constexpr std::size_t kMostVisitedHits = 10'000;

/// The values of the sorting attributes of one hit, and pointers to them as comparators want them.
struct SortValues {
  std::vector<Value> values;
  std::vector<const Value*> pointers;
};

SortValues sortValuesOf(const LiveHits& hits, const LiveHit& hit,
                        const std::vector<NamedAttribute>& sorting, const TypeTables& tables) {
  SortValues result;
  result.values.resize(sorting.size());
  const LiveFile file{hits.folderPath(hit.folder), hit.name, hit.type, &hit.status};
  for (std::size_t i = 0; i < sorting.size(); ++i) {
    const bool isTold = sorting[i].attribute &&
                        tellAttribute(*sorting[i].attribute, file, tables, result.values[i]);
    // Elements stay where they are when the struct moves, since a vector hands over its storage.
    result.pointers.push_back(isTold ? &result.values[i] : nullptr);
  }
  return result;
}

}  // namespace

std::vector<NamedAttribute> namedAttributes(const std::vector<std::string>& names) {
  std::vector<NamedAttribute> attributes;
  attributes.reserve(names.size());
  for (const std::string& name : names) attributes.push_back({name, liveAttributeNamed(name)});
  return attributes;
}

LiveQuery::LiveQuery(query::Query parsedQuery, const std::vector<std::string>& valueListAttributes,
                     const std::vector<std::string>& sortingAttributes)
    : parsed(std::move(parsedQuery)),
      valueList(namedAttributes(valueListAttributes)),
      sorting(namedAttributes(sortingAttributes)) {
  for (const query::QueryWarning& warning : parsed.warnings()) {
    notes.unknownAttributes.push_back(warning.attribute);
  }
}

void LiveQuery::takeResult(LiveSearchResult result, const TypeTables& tables) {
  hits = std::move(result.hits);
  notes.unusableScopes = std::move(result.unusableScopes);
  // A search gives the newest first, which is the order when none is asked for.
  if (comparator != nullptr && !isOrderedAsDeclared(tables)) sortByComparator(tables);
}

bool LiveQuery::isOrderedAsDeclared(const TypeTables& tables) const {
  if (!declared || !declared->descending || sorting.size() != 1 ||
      liveAttributeNamed(declared->attribute) != LiveAttribute::kModificationDate) {
    return false;
  }
  const std::size_t visited = std::min(hits.size(), kMostVisitedHits);
  if (visited == 0) return true;
  SortValues before = sortValuesOf(hits, hits[0], sorting, tables);
  for (std::size_t i = 1; i < visited; ++i) {
    SortValues after = sortValuesOf(hits, hits[i], sorting, tables);
    // Only a negative answer means anything: two absent values give 1 either way round.
    if (comparator(after.pointers.data(), before.pointers.data(), comparatorContext) < 0) {
      return false;
    }
    before = std::move(after);
  }
  return true;
}

void LiveQuery::sortByComparator(const TypeTables& tables) {
  std::vector<SortValues> values;
  values.reserve(hits.size());
  for (std::size_t i = 0; i < hits.size(); ++i) {
    values.push_back(sortValuesOf(hits, hits[i], sorting, tables));
  }
  std::vector<std::size_t> order(hits.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::ranges::stable_sort(order, [&](std::size_t a, std::size_t b) {
    return comparator(values[a].pointers.data(), values[b].pointers.data(), comparatorContext) < 0;
  });
  hits.reorder(order);
}

std::optional<Value> valueForCaller(LiveAttribute attribute, const LiveFile& file,
                                    const TypeTables& tables) {
  Value value;
  if (!tellAttribute(attribute, file, tables, value)) return std::nullopt;
  if (attribute == LiveAttribute::kName) value = displayText(file.name);
  return value;
}

}  // namespace vt
