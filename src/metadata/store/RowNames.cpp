#include "metadata/store/RowNames.h"

#include <cstddef>
#include <string>

#include "foundation/TextFolding.h"
#include "foundation/UTF8.h"
#include "metadata/store/SegmentFormat.h"

namespace vt {
namespace {

/// Folds text after text into the same memory.
class NameFolder {
 public:
  std::string_view fold(std::string_view name) {
    if (isAscii(name)) {
      folded_.resize(name.size());
      foldAscii(name, Folding::kCaseAndMarks, folded_.data());
    } else {
      folded_ = foldText(name, Folding::kCaseAndMarks);
    }
    return folded_;
  }

 private:
  std::string folded_;
};

// No word of a bitmap holds rows of both halves.
constexpr std::uint32_t kRowsOfAWord = 64;

}  // namespace

RowNames::RowNames(const RowTable& rows, const NameArena& names)
    : rows_(rows),
      names_(names),
      half_(rows.count / 2 / kRowsOfAWord * kRowsOfAWord),
      differs_(rows.count) {}

RowNames::Bytes RowNames::measure(std::uint32_t first, std::uint32_t last) {
  Bytes bytes;
  NameFolder folder;
  for (std::uint32_t row = first; row < last; ++row) {
    const std::string_view name = (*this)[row];
    const std::string_view folded = folder.fold(name);
    bytes.folded += folded.size() + 1;
    bytes.other += 1;
    if (folded == name) continue;
    bytes.other += name.size();
    differs_.add(row);
  }
  return bytes;
}

std::uint64_t RowNames::bytesFrom(std::uint64_t offset) const {
  const std::uint64_t offsets = (std::uint64_t{rows_.count} + 1) * sizeof(std::uint32_t);
  std::uint64_t end = offset;
  for (const std::uint64_t bytes : {firstBytes_.folded + secondBytes_.folded, offsets,
                                    firstBytes_.other + secondBytes_.other, offsets}) {
    end = alignedForColumn(end) + bytes;
  }
  return alignedForColumn(end) - offset;
}

void RowNames::write(SegmentWriter& writer, const std::vector<std::uint32_t>& order,
                     std::uint64_t mostBytes) const {
  NameFolder folder;
  std::size_t at = 0;
  // Names were added in another order, so each is far from the one before it.
  const auto prefetchAfter = [&](std::size_t place) {
    constexpr std::size_t kNamesAhead = 16;
    if (place + kNamesAhead >= order.size()) return;
    __builtin_prefetch((*this)[order[place + kNamesAhead]].data());
  };
  writer.texts(ColumnId::kFoldedNames, ColumnId::kFoldedNameOffsets, order, mostBytes,
               [&](std::uint32_t row) {
                 prefetchAfter(at++);
                 return differs_.contains(row) ? folder.fold((*this)[row]) : (*this)[row];
               });
  at = 0;
  writer.texts(ColumnId::kOtherNames, ColumnId::kOtherNameOffsets, order, mostBytes,
               [&](std::uint32_t row) {
                 prefetchAfter(at++);
                 return differs_.contains(row) ? (*this)[row] : std::string_view();
               });
}

}  // namespace vt
