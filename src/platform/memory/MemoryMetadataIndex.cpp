#include "platform/memory/MemoryMetadataIndex.h"

#include <fmt/format.h>

#include <algorithm>

#include "platform/Attributes.h"
#include "platform/Identity.h"

namespace vt {

class MemoryMetadataIndex::Item final : public MDItem {
 public:
  explicit Item(std::shared_ptr<const Dictionary> attributes)
      : attributes_(std::move(attributes)) {}

  const Dictionary& attributes() const { return *attributes_; }
  const Value* find(std::string_view attribute) const { return attributes_->find(attribute); }
  std::optional<Value> get(std::string_view attribute) const { return attributes_->get(attribute); }

 private:
  std::shared_ptr<const Dictionary> attributes_;
};

class MemoryMetadataIndex::Query final : public MDQuery {
 public:
  Query(std::vector<std::string> valueListAttributes, std::vector<std::string> sortingAttributes,
        std::shared_ptr<std::vector<std::string>> calls)
      : valueListAttributes_(std::move(valueListAttributes)),
        sortingAttributes_(std::move(sortingAttributes)),
        calls_(std::move(calls)) {}
  Query(const Query&) = delete;
  Query& operator=(const Query&) = delete;
  ~Query() override {
    if (calls_) calls_->emplace_back("release");
  }

  void setComparator(MDQuerySortComparatorFunction comparator, const void* context) {
    comparator_ = comparator;
    context_ = context;
  }

  void find(std::vector<std::shared_ptr<Item>> hits) {
    results_ = std::move(hits);
    if (comparator_) sort();
  }

  const std::vector<std::shared_ptr<Item>>& results() const { return results_; }

  bool listsValuesOf(std::string_view attribute) const {
    return std::ranges::find(valueListAttributes_, attribute) != valueListAttributes_.end();
  }

 private:
  struct Row {
    std::vector<const Value*> values;  // one per sorting attribute
    std::shared_ptr<Item> item;
  };

  void sort() {
    std::vector<Row> rows;
    rows.reserve(results_.size());
    for (std::shared_ptr<Item>& item : results_) {
      std::vector<const Value*> values;
      values.reserve(sortingAttributes_.size());
      for (const std::string& attribute : sortingAttributes_) {
        values.push_back(item->find(attribute));
      }
      rows.push_back({std::move(values), std::move(item)});
    }
    std::ranges::stable_sort(rows, [this](const Row& a, const Row& b) {
      return comparator_(a.values.data(), b.values.data(), context_) < 0;
    });
    std::ranges::transform(rows, results_.begin(), [](Row& row) { return std::move(row.item); });
  }

  std::vector<std::string> valueListAttributes_;
  std::vector<std::string> sortingAttributes_;
  std::shared_ptr<std::vector<std::string>> calls_;  // nullptr: nothing is written down
  MDQuerySortComparatorFunction comparator_ = nullptr;
  const void* context_ = nullptr;
  std::vector<std::shared_ptr<Item>> results_;
};

template <class... Arguments>
void MemoryMetadataIndex::record(std::string_view format, const Arguments&... arguments) {
  if (records_) calls_->push_back(fmt::vformat(format, fmt::make_format_args(arguments...)));
}

void MemoryMetadataIndex::addHit(std::shared_ptr<const Dictionary> attributes) {
  hits_.push_back(std::make_shared<Item>(std::move(attributes)));
}

void MemoryMetadataIndex::prepare() { record("prepare"); }

std::shared_ptr<MDQuery> MemoryMetadataIndex::MDQueryCreate(
    const std::string& queryString, const std::vector<std::string>& valueListAttributes,
    const std::vector<std::string>& sortingAttributes, MDQueryRejection* rejection) {
  record("MDQueryCreate {} {} {}", queryString, fmt::join(valueListAttributes, ","),
         fmt::join(sortingAttributes, ","));
  if (rejection_) {
    if (rejection) *rejection = *rejection_;
    return nullptr;
  }
  return std::make_shared<Query>(valueListAttributes, sortingAttributes,
                                 records_ ? calls_ : nullptr);
}

void MemoryMetadataIndex::MDQuerySetSortComparator(
    MDQuery& query, MDQuerySortComparatorFunction comparator, const void* context,
    const std::optional<MDQueryDeclaredOrder>& declared) {
  record("MDQuerySetSortComparator {} {}", declared ? declared->attribute : "undeclared",
         declared && declared->descending ? "descending" : "ascending");
  static_cast<Query&>(query).setComparator(comparator, context);
}

void MemoryMetadataIndex::MDQuerySetSearchScope(MDQuery&,
                                                const std::vector<std::string>& directories,
                                                std::uint32_t options) {
  record("MDQuerySetSearchScope {} {}", fmt::join(directories, ","), options);
  lastScope_ = directories;
}

bool MemoryMetadataIndex::MDQueryExecute(MDQuery& query, std::uint32_t options) {
  record("MDQueryExecute {}", options);
  if (whenExecuting_) whenExecuting_();
  if (failsExecutions_) return false;
  const bool answers = !identity_ || identity_->actsAsWanted();
  static_cast<Query&>(query).find(answers ? hits_ : std::vector<std::shared_ptr<Item>>{});
  return true;
}

void MemoryMetadataIndex::MDQueryDisableUpdates(MDQuery&) { record("MDQueryDisableUpdates"); }

std::int32_t MemoryMetadataIndex::MDQueryGetResultCount(const MDQuery& query) {
  record("MDQueryGetResultCount");
  return static_cast<std::int32_t>(static_cast<const Query&>(query).results().size());
}

std::shared_ptr<MDItem> MemoryMetadataIndex::MDQueryGetResultAtIndex(MDQuery& query,
                                                                     std::int32_t index) {
  record("MDQueryGetResultAtIndex {}", index);
  return static_cast<Query&>(query).results().at(static_cast<std::size_t>(index));
}

std::optional<Value> MemoryMetadataIndex::MDQueryGetAttributeValueOfResultAtIndex(
    MDQuery& query, std::string_view attribute, std::int32_t index) {
  record("MDQueryGetAttributeValueOfResultAtIndex {} {}", attribute, index);
  const auto& executed = static_cast<Query&>(query);
  if (!executed.listsValuesOf(attribute)) return std::nullopt;
  return executed.results().at(static_cast<std::size_t>(index))->get(attribute);
}

std::shared_ptr<MDItem> MemoryMetadataIndex::MDItemCreate(const std::string& path) {
  record("MDItemCreate {}", path);
  const auto found = std::ranges::find_if(hits_, [&](const std::shared_ptr<Item>& item) {
    const Value* value = item->find(kMDItemPath);
    return value && *value == Value(path);
  });
  return found == hits_.end() ? nullptr : *found;
}

std::optional<Value> MemoryMetadataIndex::MDItemCopyAttribute(MDItem& item,
                                                              std::string_view attribute) {
  record("MDItemCopyAttribute {}", attribute);
  return static_cast<Item&>(item).get(attribute);
}

std::vector<std::string> MemoryMetadataIndex::MDItemCopyAttributeNames(MDItem& item) {
  record("MDItemCopyAttributeNames");
  std::vector<std::string> names;
  for (const auto& [name, value] : static_cast<Item&>(item).attributes()) {
    names.push_back(name.str());
  }
  return names;
}

std::shared_ptr<Dictionary> MemoryMetadataIndex::MDItemCopyAttributes(
    MDItem& item, const std::vector<std::string>& names) {
  record("MDItemCopyAttributes {}", fmt::join(names, ","));
  auto values = Dictionary::make();
  for (const std::string& name : names) {
    if (const Value* value = static_cast<Item&>(item).find(name)) values->set(name, *value);
  }
  return values;
}

std::vector<std::string> MemoryMetadataIndex::MDSchemaCopyAllAttributes() {
  record("MDSchemaCopyAllAttributes");
  std::vector<std::string> names;
  names.reserve(attributes_.size());
  for (const auto& [name, displayName] : attributes_) names.push_back(name);
  return names;
}

std::optional<std::string> MemoryMetadataIndex::MDSchemaCopyDisplayNameForAttribute(
    std::string_view attribute) {
  record("MDSchemaCopyDisplayNameForAttribute {}", attribute);
  const auto found = std::ranges::find_if(
      attributes_, [&](const auto& known) { return known.first == attribute; });
  return found == attributes_.end() ? std::nullopt : found->second;
}

}  // namespace vt
