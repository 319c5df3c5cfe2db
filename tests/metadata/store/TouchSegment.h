#pragma once

#include <cstddef>
#include <cstdint>
#include <numeric>
#include <string_view>

#include "metadata/store/RowsByFolder.h"
#include "metadata/store/Segment.h"

namespace vt {

/// Reads all that a segment can be asked for, whatever it holds; gives a sum of it, so that no
/// compiler leaves the reading out.
inline std::uint64_t touch(const Segment& segment) {
  const SegmentColumns& columns = segment.columns();
  std::uint64_t sum = 0;
  const auto addText = [&](std::string_view text) {
    for (const char byte : text) sum += static_cast<unsigned char>(byte);
  };
  const auto addDate = [&](Date date) {
    sum += static_cast<std::uint64_t>(date.time_since_epoch().count());
  };
  for (std::size_t row = 0; row < columns.rowCount(); ++row) {
    addText(columns.name(row));
    addText(columns.foldedNames[row]);
    addDate(columns.modifiedOf(row));
    addDate(columns.createdOf(row).value_or(Date()));
    addDate(columns.attributesChangedOf(row));
    addDate(columns.accessedOf(row));
    addText(columns.typeIdentifiers[columns.typeOf(row)]);
    addText(columns.folderNames[columns.folderOf(row)]);
    sum += columns.sizes[row] + columns.allocatedBytesOf(row) + columns.ownFolderOf(row) +
           columns.classes[columns.classOf(row)].ownership.uid;
  }
  for (std::uint32_t folder = 0; folder < columns.folderCount(); ++folder) {
    addText(columns.folderNames[folder]);
    sum += columns.parents[folder] + columns.entryCounts[folder] + columns.areRoots[folder] +
           columns.areListed[folder] + segment.stampOf(folder).inode;
    if (!columns.classes.empty()) sum += columns.classOfFolder(folder);
  }
  for (std::uint32_t number = 0; number < columns.classes.size(); ++number) {
    for (const std::uint8_t byte : segment.aclBytesOf(number)) sum += byte;
    sum += static_cast<std::uint64_t>(segment.aclPresenceOf(number));
  }
  if (columns.folderCount() > 0) {
    const RowsByFolder rows(columns);
    for (std::uint32_t folder = 0; folder < columns.folderCount(); ++folder) {
      sum = std::accumulate(rows[folder].begin(), rows[folder].end(), sum);
    }
  }
  for (std::size_t offset = 0; offset < columns.foldedNames.text().size(); offset += 7) {
    sum += columns.foldedNames.numberAt(offset, 0);
  }
  return sum;
}

}  // namespace vt
