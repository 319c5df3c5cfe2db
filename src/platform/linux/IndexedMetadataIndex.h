#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/MetadataIndex.h"
#include "platform/linux/IndexSource.h"
#include "platform/linux/LiveMetadataIndex.h"

namespace vt {

class AccessJudge;
class Identity;
class IndexHits;
class IndexedQuery;
class LiveMDItem;
struct NamedAttribute;

/// The metadata index as the indexer left it in a folder, for what that covers, and the live index
/// for the rest: both give the same answers, the one in milliseconds.
///
/// A query is answered from the index when that is fresh, holds every folder of the scope and, if
/// the query asks for text, has looked into files; else they are walked and the notes say why.
/// Single items are those of the live index, with what the catalogue of a fresh index says of the
/// same bytes. One thread at a time.
class IndexedMetadataIndex final : public MetadataIndex {
 public:
  IndexedMetadataIndex(std::shared_ptr<LiveMetadataIndex> live, std::shared_ptr<Identity> identity,
                       std::shared_ptr<IndexSource> source);

  /// Opens the newest generation, which only the owner of the index folder may.
  void prepare() override;

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
  /// True also when nothing could be found. Executing again looks again.
  bool MDQueryExecute(MDQuery& query, std::uint32_t options) override;
  MDQueryNotes MDQueryCopyNotes(const MDQuery& query) override;
  /// Only walks report.
  void setProgress(MDQueryProgress progress) override { live_->setProgress(std::move(progress)); }
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
  std::vector<std::string> MDItemCopyAttributeNames(MDItem& item) override;
  Result<MDTypedQuery, MDTypedRejection> MDQueryStringFromTyped(const std::string& typed,
                                                                const MDTypedNames& names,
                                                                bool readsFiles) override;
  std::vector<std::string> MDSchemaCopyAllAttributes() override;
  std::optional<std::string> MDSchemaCopyDisplayNameForAttribute(
      std::string_view attribute) override;

 private:
  /// Answers from the index; the reason why not when it can't. The account must be known.
  std::optional<std::string> answerFromIndex(IndexedQuery& query, const AccessJudge& judge,
                                             std::uint32_t options);
  /// Whether the text of files is in the index, beside their names and what their status tells.
  bool holdsText();
  std::optional<Value> valueOfRow(IndexHits& hits, std::size_t row, const NamedAttribute& named);
  /// The value of an attribute that stands in the file of the row, as the catalogue has it.
  std::optional<Value> valueInFile(IndexHits& hits, std::size_t row, std::string_view attribute);
  /// The same of a file that somebody named.
  std::optional<Value> valueInFile(const LiveMDItem& file, std::string_view attribute);

  std::shared_ptr<LiveMetadataIndex> live_;
  std::shared_ptr<Identity> identity_;
  std::shared_ptr<IndexSource> source_;
};

}  // namespace vt
