#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "metadata/live/FolderWalk.h"
#include "metadata/live/LiveFile.h"
#include "metadata/query/AttributeSchema.h"
#include "metadata/query/ItemAttributes.h"
#include "metadata/query/QueryMatcher.h"
#include "metadata/rights/AccessJudge.h"

namespace vt {

/// The entry that a walk is at, as a query asks of it. Made once for a search and moved from entry
/// to entry; nothing is asked of the file system before somebody wants to know it, and each thing
/// once for an entry.
class LiveItem final : public query::ItemAttributes {
 public:
  /// Borrows all but what it reckons from the schema and the matcher's attributes.
  LiveItem(const query::QueryMatcher& matcher, const query::AttributeSchema& schema,
           const TypeTables& tables, const AccessJudge& judge);

  /// Goes on to another entry, which must stay good until the next.
  void moveTo(const WalkedEntry& entry);

  const Value* valueOf(std::size_t slot) override;
  bool anySearchableText(FunctionRef<bool(const Value&)> predicate) override;
  const std::string* textContent() override;

  ContentTypeId type();
  /// Nothing when the file is gone.
  const std::optional<FileStatus>& status();
  /// Whether the judged account may read the entry.
  bool isReadable();

 private:
  bool tell(LiveAttribute attribute, Value& value);

  const TypeTables tables_;
  const AccessJudge& judge_;
  std::optional<ContentTypeId> textType_;
  std::vector<std::optional<LiveAttribute>> attributes_;  // by slot
  std::vector<LiveAttribute> searchable_;                 // what `*` looks at
  std::vector<Value> values_;                             // by slot
  Value searchedValue_;

  // Of the current entry, each filled when first asked for.
  const WalkedEntry* entry_ = nullptr;
  std::optional<ContentTypeId> type_;
  std::optional<FileStatus> status_;
  bool isStatusAsked_ = false;
  std::optional<bool> isReadable_;
  std::optional<std::string> text_;
  bool isTextAsked_ = false;
};

}  // namespace vt
