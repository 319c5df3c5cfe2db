#include "search/RecordSorting.h"

#include <algorithm>
#include <array>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "util/ICU.h"

namespace vt {
namespace {

/// Makes keys whose bytes order as the texts do in the process's language, case ignored.
class CollationKeys {
 public:
  CollationKeys() {
    const char* language = icu().uloc_getDefault();
    std::array<char, ULOC_FULLNAME_CAPACITY> variant{};
    UErrorCode status = U_ZERO_ERROR;
    icu().uloc_getVariant(language, variant.data(), static_cast<std::int32_t>(variant.size()),
                          &status);
    // The C locale comes as a POSIX variant that orders by code point; people expect words.
    const bool isC = std::string_view(variant.data()) == "POSIX";
    status = U_ZERO_ERROR;
    collator_.reset(icu().ucol_open(isC ? "" : language, &status));
    if (U_FAILURE(status)) {
      collator_.reset();
    } else {
      icu().ucol_setStrength(collator_.get(), UCOL_SECONDARY);
    }
  }

  /// The text itself when the collation data is missing.
  std::string keyFor(const std::string& text) {
    if (!collator_) return text;
    const std::span<const UChar> wide = widened(text);
    std::int32_t length = writeKey(wide);
    if (static_cast<std::size_t>(length) > key_.size()) {
      key_.resize(static_cast<std::size_t>(length));
      length = writeKey(wide);
    }
    return {key_.begin(), key_.begin() + length};
  }

 private:
  struct Close {
    void operator()(UCollator* collator) const { icu().ucol_close(collator); }
  };

  /// As UTF-16, until the next call; what is not UTF-8 is replaced.
  std::span<const UChar> widened(const std::string& text) {
    constexpr UChar32 kReplacement = 0xFFFD;
    wide_.resize(std::max(wide_.size(), text.size()));  // it has no more units than bytes
    std::int32_t length = 0;
    UErrorCode status = U_ZERO_ERROR;
    icu().u_strFromUTF8WithSub(wide_.data(), static_cast<std::int32_t>(wide_.size()), &length,
                               text.data(), static_cast<std::int32_t>(text.size()), kReplacement,
                               nullptr, &status);
    return std::span(wide_).first(U_SUCCESS(status) ? static_cast<std::size_t>(length) : 0);
  }

  /// How long the key is, which is cut where the buffer ends.
  std::int32_t writeKey(std::span<const UChar> text) {
    return icu().ucol_getSortKey(collator_.get(), text.data(),
                                 static_cast<std::int32_t>(text.size()), key_.data(),
                                 static_cast<std::int32_t>(key_.size()));
  }

  std::unique_ptr<UCollator, Close> collator_;
  std::vector<UChar> wide_;
  std::vector<std::uint8_t> key_ = std::vector<std::uint8_t>(256);
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
