#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "metadata/live/LiveAttribute.h"
#include "metadata/live/LiveHits.h"
#include "metadata/live/LiveSearch.h"
#include "metadata/query/Query.h"
#include "platform/MetadataIndex.h"
#include "platform/linux/HitOrder.h"

namespace vt {

/// A query of LiveMetadataIndex, and its hits once executed.
class LiveQuery final : public MDQuery {
 public:
  LiveQuery(query::Query parsedQuery, const std::vector<std::string>& valueListAttributes,
            const std::vector<std::string>& sortingAttributes);

  /// What hits are in the order that was asked for; `tables` tells the sorting attributes.
  void takeResult(LiveSearchResult result, const TypeTables& tables);

  query::Query parsed;
  std::vector<NamedAttribute> valueList;
  HitOrder order;
  std::vector<std::string> scopes;
  std::optional<std::chrono::milliseconds> longestWalk;
  LiveHits hits;
  MDQueryNotes notes;
};

/// One file of LiveMetadataIndex, as it was when it was found.
class LiveMDItem final : public MDItem {
 public:
  LiveMDItem(std::string itsFolderPath, std::string itsName, ContentTypeId itsType,
             const FileStatus& itsStatus)
      : folderPath(std::move(itsFolderPath)),
        name(std::move(itsName)),
        type(itsType),
        status(itsStatus) {}

  std::string folderPath;
  std::string name;  // bytes
  ContentTypeId type;
  FileStatus status;
};

/// A value as callers get it: the path to the byte, names with U+FFFD for what is not UTF-8.
std::optional<Value> valueForCaller(LiveAttribute attribute, const LiveFile& file,
                                    const TypeTables& tables);

}  // namespace vt
