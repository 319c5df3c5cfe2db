#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "metadata/live/LiveFile.h"
#include "metadata/live/LiveHits.h"
#include "metadata/query/AttributeSchema.h"
#include "metadata/query/QueryMatcher.h"
#include "metadata/rights/Credentials.h"

namespace vt {

/// What a search found, and what it could not look at.
struct LiveSearchResult {
  LiveHits hits;  ///< sorted newest first
  /// Scope folders, as they were given, that are relative, missing, no folders, not to be reached
  /// by the account, or not to be listed by the process.
  std::vector<std::string> unusableScopes;
  bool wasGivenUp = false;  ///< it took longer than it may: the hits are not all
};

/// Answers one query by walking the files at the moment it is asked.
///
/// Finds what lies in the scope folders at any depth, not the folders themselves. A link is an item
/// of its own and not followed. Each file is found once, however the scopes repeat or nest. What
/// the account may not read, or not reach, is never found, whatever the process itself may do; so
/// no hit, no count and no match of text tells of it.
class LiveSearch {
 public:
  /// Is told after each folder how many folders, and entries in them, were looked at so far,
  /// whoever may read them.
  using Progress = std::function<void(std::uint64_t folders, std::uint64_t entries)>;

  /// Borrows everything but `progress`, which may be empty and must not throw. A search that takes
  /// longer than `limit` is given up, between two entries; without one none is.
  LiveSearch(const query::QueryMatcher& matcher, const query::AttributeSchema& schema,
             const TypeTables& tables, Progress progress = {},
             std::optional<std::chrono::milliseconds> limit = {})
      : matcher_(matcher),
        schema_(schema),
        tables_(tables),
        progress_(std::move(progress)),
        limit_(limit) {}

  /// `scopes` are absolute paths, which may lead through links. Costs a walk of all that is below
  /// them.
  LiveSearchResult run(const std::vector<std::string>& scopes, const Credentials& who) const;

 private:
  const query::QueryMatcher& matcher_;
  const query::AttributeSchema& schema_;
  TypeTables tables_;
  Progress progress_;
  std::optional<std::chrono::milliseconds> limit_;
};

}  // namespace vt
