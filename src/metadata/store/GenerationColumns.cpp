#include "metadata/store/GenerationColumns.h"

#include "metadata/store/IndexFolder.h"

namespace vt {
namespace {

/// Whether any folder of the base is elsewhere or is called otherwise by now.
bool hasMovedFolders(const SegmentColumns& before, const SegmentColumns& now,
                     std::span<const std::uint32_t> numbers) {
  for (std::uint32_t folder = 1; folder < before.folderCount(); ++folder) {
    const std::uint32_t number = numbers[folder];
    if (number >= now.folderCount()) continue;  // it went, and its rows with it
    const std::uint32_t parent = before.parents[folder];
    if (parent >= before.folderCount() || numbers[parent] != now.parents[number] ||
        before.folderNames[folder] != now.folderNames[number]) {
      return true;
    }
  }
  return false;
}

}  // namespace

GenerationColumns columnsOf(const IndexGeneration& generation) {
  const SegmentColumns& base = generation.segment->columns();
  GenerationColumns columns{base, {}, Bitmap(base.rowCount())};
  if (!generation.delta) return columns;
  const Segment& delta = *generation.delta;
  columns.delta = delta.columns();
  columns.dead = Bitmap(base.rowCount(), delta.deadRows());
  columns.deadCount = columns.dead.count();
  columns.hasMovedFolders = hasMovedFolders(base, columns.delta, delta.baseFolders());
  const SegmentColumns& now = columns.delta;
  columns.base.folderNumbers = delta.baseFolders();
  columns.base.folderNames = now.folderNames;
  columns.base.parents = now.parents;
  columns.base.folderAccessClasses = now.folderAccessClasses;
  columns.base.entryCounts = now.entryCounts;
  columns.base.areRoots = now.areRoots;
  columns.base.areListed = now.areListed;
  columns.base.classes = now.classes;
  columns.base.typeIdentifiers = now.typeIdentifiers;
  return columns;
}

}  // namespace vt
