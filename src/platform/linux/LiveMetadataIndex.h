#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "metadata/live/LiveFile.h"
#include "metadata/query/AttributeSchema.h"
#include "metadata/query/Query.h"
#include "metadata/rights/Credentials.h"
#include "metadata/types/ContentTypes.h"
#include "metadata/types/ResultGroups.h"
#include "platform/MetadataIndex.h"

namespace vt {

class Identity;

/// The metadata index without an index: each query walks the files below its scope.
///
/// Answers with the rights of the effective user id's own account, whatever groups the process has;
/// user 0 sees everything. Where the process may, it acts as user 0 while it looks, so that what
/// the account may read is found, no more and no less; otherwise it finds what the account and the
/// process may both read. An unknown account, or an identity that is not the wanted one, finds
/// nothing. One thread at a time.
class LiveMetadataIndex final : public MetadataIndex {
 public:
  /// The account of a user id with all its groups; nothing when there is none.
  using CredentialsProvider = std::function<std::optional<Credentials>(std::uint32_t uid)>;

  LiveMetadataIndex(std::shared_ptr<const ContentTypes> types,
                    std::shared_ptr<const query::AttributeSchema> schema,
                    std::shared_ptr<Identity> identity, CredentialsProvider credentialsOf);

  std::shared_ptr<MDQuery> MDQueryCreate(const std::string& queryString,
                                         const std::vector<std::string>& valueListAttributes,
                                         const std::vector<std::string>& sortingAttributes,
                                         MDQueryRejection* rejection = nullptr) override;
  void MDQuerySetSortComparator(MDQuery& query, MDQuerySortComparatorFunction comparator,
                                const void* context,
                                const std::optional<MDQueryDeclaredOrder>& declared) override;
  void MDQuerySetSearchScope(MDQuery& query, const std::vector<std::string>& directories,
                             std::uint32_t options) override;
  void MDQuerySetLongestWalk(MDQuery& query, std::chrono::milliseconds limit) override;
  /// Walks the scope; true also when nothing could be found. Executing again looks again.
  bool MDQueryExecute(MDQuery& query, std::uint32_t options) override;
  MDQueryNotes MDQueryCopyNotes(const MDQuery& query) override;
  /// Called after each folder.
  void setProgress(MDQueryProgress progress) override { progress_ = std::move(progress); }
  /// Does nothing: hits stay as they were found.
  void MDQueryDisableUpdates(MDQuery& query) override;
  std::int32_t MDQueryGetResultCount(const MDQuery& query) override;
  bool hitsAreFiles() const override { return true; }
  std::shared_ptr<MDItem> MDQueryGetResultAtIndex(MDQuery& query, std::int32_t index) override;
  std::optional<Value> MDQueryGetAttributeValueOfResultAtIndex(MDQuery& query,
                                                               std::string_view attribute,
                                                               std::int32_t index) override;
  std::shared_ptr<MDItem> MDItemCreate(const std::string& path) override;
  std::optional<Value> MDItemCopyAttribute(MDItem& item, std::string_view attribute) override;
  /// Of all that the table of attributes lists, what the file system and the name tell.
  std::vector<std::string> MDItemCopyAttributeNames(MDItem& item) override;
  Result<MDTypedQuery, MDTypedRejection> MDQueryStringFromTyped(const std::string& typed,
                                                                const MDTypedNames& names,
                                                                bool readsFiles) override;
  std::vector<std::string> MDSchemaCopyAllAttributes() override;
  std::optional<std::string> MDSchemaCopyDisplayNameForAttribute(
      std::string_view attribute) override;

  /// On whose behalf it answers now; nothing when nobody may be answered.
  std::optional<Credentials> callersCredentials() const;
  TypeTables tables() const { return {*types_, groups_}; }
  const query::AttributeSchema& schema() const { return *schema_; }

 private:
  std::shared_ptr<const ContentTypes> types_;
  ResultGroups groups_;
  std::shared_ptr<const query::AttributeSchema> schema_;
  std::shared_ptr<Identity> identity_;
  CredentialsProvider credentialsOf_;
  MDQueryProgress progress_;
};

}  // namespace vt
