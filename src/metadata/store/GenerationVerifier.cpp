#include "metadata/store/GenerationVerifier.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "metadata/store/GenerationColumns.h"
#include "metadata/store/IndexFolder.h"
#include "metadata/store/SegmentVerifier.h"

namespace vt {
namespace {

/// A look at base and delta together; each check says what is wrong, or "".
class Contradictions {
 public:
  explicit Contradictions(const IndexGeneration& generation)
      : base_(*generation.segment), delta_(*generation.delta), columns_(columnsOf(generation)) {}

  std::string find() const {
    for (const auto check : {&Contradictions::numbers, &Contradictions::classes,
                             &Contradictions::rows, &Contradictions::entryCounts}) {
      // In this order, since the later ones rely on what the earlier ones have found to hold.
      if (std::string damage = (this->*check)(); !damage.empty()) return damage;
    }
    return {};
  }

 private:
  std::string numbers() const {
    std::vector<bool> isTaken(delta_.columns().folderCount(), false);
    for (const std::uint32_t number : delta_.baseFolders()) {
      if (number == kNoFolder) continue;
      if (number >= isTaken.size() || isTaken[number]) return "folders of the base are mixed up";
      isTaken[number] = true;
    }
    return std::ranges::equal(columns_.dead.words(), delta_.deadRows())
               ? ""
               : "rows are dead that the base does not have";
  }

  std::string classes() const {
    const auto count = static_cast<std::uint32_t>(base_.columns().classes.size());
    for (std::uint32_t number = 0; number < count; ++number) {
      if (base_.columns().classes[number].ownership != delta_.columns().classes[number].ownership ||
          base_.aclPresenceOf(number) != delta_.aclPresenceOf(number) ||
          !std::ranges::equal(base_.aclBytesOf(number), delta_.aclBytesOf(number))) {
        return fmt::format("access class {} is another in the base", number);
      }
    }
    return {};
  }

  std::string rows() const {
    const SegmentColumns& base = columns_.base;
    std::vector<bool> isRow(base.folderCount(), false);
    for (const std::uint32_t folder : columns_.delta.foldersByRow) isRow[folder] = true;
    for (std::size_t row = 0; row < base.rowCount(); ++row) {
      if (columns_.dead.contains(row)) continue;
      if (base.folderNumbers[base.folders[row]] == kNoFolder) {
        return fmt::format("row {} of the base is in a folder that went", row);
      }
      const std::uint32_t own = base.ownFolderOf(row);
      if (own == kNoFolder) continue;
      if (isRow[own] || base.parents[own] != base.folderOf(row) ||
          base.folderNames[own] != base.name(row) ||
          base.folderAccessClasses[own] != base.accessClasses[row]) {
        return fmt::format("folder {} and row {} of the base contradict each other", own, row);
      }
      isRow[own] = true;
    }
    return {};
  }

  std::string entryCounts() const {
    const SegmentColumns& base = columns_.base;
    std::vector<std::uint32_t> counts(base.folderCount(), 0);
    for (std::size_t row = 0; row < base.rowCount(); ++row) {
      if (!columns_.dead.contains(row)) ++counts[base.folderOf(row)];
    }
    for (const std::uint32_t folder : columns_.delta.folders) ++counts[folder];
    const auto wrong = std::ranges::mismatch(counts, base.entryCounts);
    if (wrong.in1 == counts.end()) return {};
    return fmt::format("folder {} has another number of entries", wrong.in1 - counts.begin());
  }

  const Segment& base_;
  const Segment& delta_;
  GenerationColumns columns_;
};

}  // namespace

std::optional<StoreError> verifyGeneration(const IndexGeneration& generation) {
  std::optional<StoreError> damage = verifySegment(*generation.segment);
  if (damage || !generation.delta) return damage;
  damage = verifySegment(*generation.delta);
  if (damage) return damage;
  const std::string contradiction = Contradictions(generation).find();
  if (contradiction.empty()) return std::nullopt;
  return damageError(generation.delta->shownPath(), contradiction);
}

}  // namespace vt
