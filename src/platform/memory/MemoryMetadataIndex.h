#pragma once

#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "foundation/Dictionary.h"
#include "platform/MetadataIndex.h"

namespace vt {

class Identity;

/// An index over a table: every query that it takes finds every hit of the table, in the order of
/// the comparator handed in, and it writes down each call.
///
/// Query text and scope are noted and otherwise ignored. What a search does with an index is tested
/// with this one; what an index finds, with the real ones.
class MemoryMetadataIndex final : public MetadataIndex {
 public:
  /// With an `identity` the queries find nothing while that does not act as wanted.
  explicit MemoryMetadataIndex(std::shared_ptr<const Identity> identity = nullptr)
      : identity_(std::move(identity)), calls_(std::make_shared<std::vector<std::string>>()) {}

  /// Appends a hit that has these attributes and no others.
  void addHit(std::initializer_list<std::pair<std::string_view, Value>> attributes) {
    addHit(Dictionary::make(attributes));
  }
  void addHit(std::shared_ptr<const Dictionary> attributes);

  /// Appends an attribute to those that files can have. Without any there is none.
  void addAttribute(std::string name, std::optional<std::string> displayName) {
    attributes_.emplace_back(std::move(name), std::move(displayName));
  }

  /// Rejects every query from now on; none any more.
  void rejectQueries(MDQueryRejection rejection) { rejection_ = std::move(rejection); }
  void acceptQueries() { rejection_.reset(); }
  /// Fails every execution from now on.
  void failExecutions() { failsExecutions_ = true; }
  /// What every query executed from now on has to say.
  void setNotes(MDQueryNotes notes) { notes_ = std::move(notes); }
  /// Calls `action` within each execution, before it finds anything. It may throw.
  void whenExecuting(std::function<void()> action) { whenExecuting_ = std::move(action); }

  /// The calls made so far, in order, each with its arguments: "MDQueryExecute 1"; "release" when a
  /// query is let go.
  const std::vector<std::string>& calls() const { return *calls_; }
  /// Stops writing down calls, for those who measure.
  void stopRecording() { records_ = false; }
  /// The scope of the query that was scoped last.
  const std::vector<std::string>& lastScope() const { return lastScope_; }

  void prepare() override;
  std::shared_ptr<MDQuery> MDQueryCreate(const std::string& queryString,
                                         const std::vector<std::string>& valueListAttributes,
                                         const std::vector<std::string>& sortingAttributes,
                                         MDQueryRejection* rejection) override;
  void MDQuerySetSortComparator(MDQuery& query, MDQuerySortComparatorFunction comparator,
                                const void* context,
                                const std::optional<MDQueryDeclaredOrder>& declared) override;
  void MDQuerySetSearchScope(MDQuery& query, const std::vector<std::string>& directories,
                             std::uint32_t options) override;
  bool MDQueryExecute(MDQuery& query, std::uint32_t options) override;
  /// Not written down, since it is no call of the query's own course.
  MDQueryNotes MDQueryCopyNotes(const MDQuery& /*query*/) override { return notes_; }
  void MDQueryDisableUpdates(MDQuery& query) override;
  std::int32_t MDQueryGetResultCount(const MDQuery& query) override;
  std::shared_ptr<MDItem> MDQueryGetResultAtIndex(MDQuery& query, std::int32_t index) override;
  std::optional<Value> MDQueryGetAttributeValueOfResultAtIndex(MDQuery& query,
                                                               std::string_view attribute,
                                                               std::int32_t index) override;
  /// The first hit whose kMDItemPath is `path`.
  std::shared_ptr<MDItem> MDItemCreate(const std::string& path) override;
  std::optional<Value> MDItemCopyAttribute(MDItem& item, std::string_view attribute) override;
  /// In the order in which the hit was given them.
  std::vector<std::string> MDItemCopyAttributeNames(MDItem& item) override;
  std::shared_ptr<Dictionary> MDItemCopyAttributes(MDItem& item,
                                                   const std::vector<std::string>& names) override;
  std::vector<std::string> MDSchemaCopyAllAttributes() override;
  std::optional<std::string> MDSchemaCopyDisplayNameForAttribute(
      std::string_view attribute) override;

 private:
  class Item;
  class Query;

  // Formats here, so that nothing is formatted once the recording is stopped.
  template <class... Arguments>
  void record(std::string_view format, const Arguments&... arguments);

  std::shared_ptr<const Identity> identity_;
  std::vector<std::shared_ptr<Item>> hits_;
  std::vector<std::pair<std::string, std::optional<std::string>>> attributes_;
  std::optional<MDQueryRejection> rejection_;
  MDQueryNotes notes_;
  std::function<void()> whenExecuting_;
  bool failsExecutions_ = false;
  bool records_ = true;
  std::vector<std::string> lastScope_;
  std::shared_ptr<std::vector<std::string>> calls_;  // shared with the queries, which may live on
};

}  // namespace vt
