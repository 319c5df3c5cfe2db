#include "search/RecordSorting.h"

#include <unicode/coll.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <string>
#include <vector>

namespace vt {
namespace {

/// Makes keys whose bytes order as the texts do in the process's language, case ignored.
class CollationKeys {
 public:
  CollationKeys() {
    const icu::Locale& language = icu::Locale::getDefault();
    // The C locale comes as a POSIX variant that orders by code point; people expect words.
    const bool isC = std::string_view(language.getVariant()) == "POSIX";
    UErrorCode status = U_ZERO_ERROR;
    collator_.reset(icu::Collator::createInstance(isC ? icu::Locale::getRoot() : language, status));
    if (U_FAILURE(status)) {
      collator_.reset();
    } else {
      collator_->setStrength(icu::Collator::SECONDARY);
    }
  }

  /// The text itself when the collation data is missing.
  std::string keyFor(const std::string& text) {
    if (!collator_) return text;
    const icu::UnicodeString wide = icu::UnicodeString::fromUTF8(text);
    std::int32_t length = collator_->getSortKey(wide, buffer_.data(), capacity());
    if (length > capacity()) {
      buffer_.resize(static_cast<std::size_t>(length));
      length = collator_->getSortKey(wide, buffer_.data(), capacity());
    }
    return {buffer_.begin(), buffer_.begin() + length};
  }

 private:
  std::int32_t capacity() const { return static_cast<std::int32_t>(buffer_.size()); }

  std::unique_ptr<icu::Collator> collator_;
  std::vector<std::uint8_t> buffer_ = std::vector<std::uint8_t>(256);
};

struct Row {
  std::shared_ptr<Dictionary> record;
  const Value* value;
  std::string collationKey;
};

int compare(const Row& a, const Row& b, bool byCollation) {
  if (!a.value || !b.value) return (a.value ? 1 : 0) - (b.value ? 1 : 0);
  if (byCollation && a.value->kind() == ValueKind::kString &&
      b.value->kind() == ValueKind::kString) {
    return a.collationKey.compare(b.collationKey);
  }
  return compareNaturally(*a.value, *b.value);
}

}  // namespace

std::shared_ptr<ObjectArray<Dictionary>> sortedRecords(const ObjectArray<Dictionary>& records,
                                                       std::string_view attribute,
                                                       bool descending) {
  std::vector<Row> rows;
  rows.reserve(records.size());
  for (const auto& record : records) rows.push_back({record, record->find(attribute), {}});

  const bool byCollation =
      !rows.empty() && rows.front().value && rows.front().value->kind() == ValueKind::kString;
  if (byCollation) {
    CollationKeys keys;
    for (Row& row : rows) {
      if (!row.value) continue;
      if (const auto* text = row.value->get<std::string>()) row.collationKey = keys.keyFor(*text);
    }
  }
  std::ranges::stable_sort(rows, [byCollation, descending](const Row& a, const Row& b) {
    const int order = compare(a, b, byCollation);
    return descending ? order > 0 : order < 0;
  });

  auto sorted = ObjectArray<Dictionary>::make();
  sorted->elements().reserve(rows.size());
  for (Row& row : rows) sorted->append(std::move(row.record));
  return sorted;
}

}  // namespace vt
