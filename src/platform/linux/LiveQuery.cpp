#include "platform/linux/LiveQuery.h"

#include "foundation/UTF8.h"
#include "metadata/live/LiveFile.h"

namespace vt {

LiveQuery::LiveQuery(query::Query parsedQuery, const std::vector<std::string>& valueListAttributes,
                     const std::vector<std::string>& sortingAttributes)
    : parsed(std::move(parsedQuery)),
      valueList(namedAttributes(valueListAttributes)),
      order{namedAttributes(sortingAttributes), nullptr, nullptr, std::nullopt} {
  for (const query::QueryWarning& warning : parsed.warnings()) {
    notes.unknownAttributes.push_back(warning.attribute);
  }
}

void LiveQuery::takeResult(LiveSearchResult result, const TypeTables& tables) {
  hits = std::move(result.hits);
  notes.unusableScopes = std::move(result.unusableScopes);
  const auto valueOfHit = [&](std::size_t index, const NamedAttribute& named, Value& value) {
    if (!named.attribute) return false;  // no file is looked into
    const LiveHit& hit = hits[index];
    const LiveFile file{hits.folderPath(hit.folder), hit.name, hit.type, &hit.status};
    return tellAttribute(*named.attribute, file, tables, value);
  };
  const auto wanted = order.orderOfHits(hits.size(), valueOfHit);
  if (wanted) hits.reorder(*wanted);
}

std::optional<Value> valueForCaller(LiveAttribute attribute, const LiveFile& file,
                                    const TypeTables& tables) {
  Value value;
  if (!tellAttribute(attribute, file, tables, value)) return std::nullopt;
  if (attribute == LiveAttribute::kName) value = displayText(file.name);
  return value;
}

}  // namespace vt
