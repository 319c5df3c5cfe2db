#include "metadata/store/SegmentVerifier.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "foundation/TextFolding.h"
#include "metadata/store/PathOrder.h"
#include "metadata/store/Segment.h"

namespace vt {

/// One reading of a segment; each check says what is wrong, or "".
class SegmentVerifier {
 public:
  explicit SegmentVerifier(const Segment& segment)
      : segment_(segment), columns_(segment.columns()) {}

  std::string findDamage() const {
    for (const auto check :
         {&SegmentVerifier::checksums, &SegmentVerifier::texts, &SegmentVerifier::folders,
          &SegmentVerifier::rows, &SegmentVerifier::ownFolders, &SegmentVerifier::entryCounts,
          &SegmentVerifier::allocations, &SegmentVerifier::folding, &SegmentVerifier::order}) {
      // In this order, since the later ones rely on what the earlier ones have found to hold.
      if (std::string damage = (this->*check)(); !damage.empty()) return damage;
    }
    return {};
  }

 private:
  std::string checksums() const {
    std::uint64_t end = sizeof(SegmentHead);
    for (std::size_t at = 0; at < kColumnCount; ++at) {
      const auto id = static_cast<ColumnId>(at);
      if (!segment_.isAsWritten(id)) return fmt::format("column {} is not as written", at);
      const ColumnPlace& place = segment_.placeOf(id);
      if (!isZero(end, place.offset)) return fmt::format("before column {} is something", at);
      end = place.offset + place.bytes;
    }
    return isZero(end, segment_.head_.fileBytes) ? "" : "behind the columns is something";
  }
  bool isZero(std::uint64_t first, std::uint64_t end) const {
    return std::ranges::all_of(segment_.file_.bytes().substr(first, end - first),
                               [](char byte) { return byte == 0; });
  }

  std::string texts() const {
    const TextColumn types =
        segment_.textsOf(ColumnId::kTypeIdentifiers, ColumnId::kTypeIdentifierOffsets);
    const bool areWhole = columns_.foldedNames.isWhole() && columns_.otherNames.isWhole() &&
                          columns_.folderNames.isWhole() && types.isWhole();
    return areWhole ? "" : "texts do not begin where they should";
  }

  std::string folders() const {
    for (std::uint32_t folder = 0; folder < columns_.folderCount(); ++folder) {
      const std::uint32_t parent = columns_.parents[folder];
      const bool isTheRoot = folder == 0;
      if (isTheRoot != columns_.folderNames[folder].empty() ||
          (isTheRoot ? parent != kNoFolder : parent >= folder) ||
          columns_.folderAccessClasses[folder] >= columns_.classes.size() ||
          columns_.areRoots[folder] > 1 || columns_.areListed[folder] > 1) {
        return fmt::format("folder {} makes no sense", folder);
      }
    }
    return {};
  }

  std::string rows() const {
    for (std::size_t row = 0; row < columns_.rowCount(); ++row) {
      if (columns_.folders[row] >= columns_.folderCount() ||
          columns_.accessClasses[row] >= columns_.classes.size() ||
          columns_.types[row] >= columns_.typeIdentifiers.size() || columns_.name(row).empty()) {
        return fmt::format("row {} makes no sense", row);
      }
    }
    return {};
  }

  std::string ownFolders() const {
    std::uint32_t lastRow = 0;
    for (std::size_t at = 0; at < columns_.foldersByRow.size(); ++at) {
      const std::uint32_t folder = columns_.foldersByRow[at];
      const std::uint32_t row =
          folder < columns_.folderCount() ? columns_.folderRows[folder] : kNoRow;
      if (row >= columns_.rowCount() || (at > 0 && row <= lastRow) ||
          columns_.folders[row] != columns_.parents[folder] ||
          columns_.name(row) != columns_.folderNames[folder] ||
          columns_.accessClasses[row] != columns_.folderAccessClasses[folder] ||
          columns_.ownFolderOf(row) != folder) {
        return fmt::format("folder {} and its row contradict each other", folder);
      }
      lastRow = row;
    }
    const auto areRows =
        std::ranges::count_if(columns_.folderRows, [](std::uint32_t row) { return row != kNoRow; });
    return static_cast<std::size_t>(areRows) == columns_.foldersByRow.size()
               ? ""
               : "some folders are missing from the order of rows";
  }

  std::string entryCounts() const {
    if (segment_.base()) return {};  // most entries are in the base
    std::vector<std::uint32_t> counts(columns_.folderCount(), 0);
    for (const std::uint32_t folder : columns_.folders) ++counts[folder];
    const auto wrong = std::ranges::mismatch(counts, columns_.entryCounts);
    if (wrong.in1 == counts.end()) return {};
    return fmt::format("folder {} has another number of entries", wrong.in1 - counts.begin());
  }

  std::string allocations() const {
    const auto& rows = columns_.oddlyAllocatedRows;
    std::size_t at = 0;
    for (std::size_t row = 0; row < columns_.rowCount(); ++row) {
      if (columns_.allocatedBlocks[row] != kNotInBlocks) continue;
      if (at == rows.size() || rows[at] != row) {
        return fmt::format("the allocated space of row {} is missing", row);
      }
      ++at;
    }
    return at == rows.size() ? "" : "there is allocated space of no row";
  }

  std::string folding() const {
    for (std::size_t row = 0; row < columns_.rowCount(); ++row) {
      const std::string_view other = columns_.otherNames[row];
      const std::string_view folded = columns_.foldedNames[row];
      if (foldText(columns_.name(row), Folding::kCaseAndMarks) != folded ||
          (!other.empty() && other == folded)) {
        return fmt::format("the name of row {} is not folded as names are", row);
      }
    }
    return {};
  }

  std::string order() const {
    const auto nameOf = [this](std::uint32_t folder) { return columns_.folderNames[folder]; };
    const PathOrder paths({columns_.parents.begin(), columns_.parents.end()}, nameOf);
    for (std::size_t row = 1; row < columns_.rowCount(); ++row) {
      const std::int64_t before = columns_.modified[row - 1];
      const std::int64_t here = columns_.modified[row];
      if (here > before ||
          (here == before &&
           paths.isBefore(columns_.folders[row], columns_.name(row), columns_.folders[row - 1],
                          columns_.name(row - 1), nameOf))) {
        return fmt::format("row {} is out of order", row);
      }
    }
    return {};
  }

  const Segment& segment_;
  const SegmentColumns& columns_;
};

std::optional<StoreError> verifySegment(const Segment& segment) {
  const std::string damage = SegmentVerifier(segment).findDamage();
  if (damage.empty()) return std::nullopt;
  return damageError(segment.shownPath(), damage);
}

}  // namespace vt
