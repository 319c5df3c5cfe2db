#include "metadata/store/MergedSegment.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "metadata/store/PathOrder.h"

namespace vt {
namespace {

constexpr std::uint64_t kMostTextBytes = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint32_t kUnused = std::numeric_limits<std::uint32_t>::max();
constexpr auto kItself = [](auto number) { return number; };

}  // namespace

MergedSegment::MergedSegment(const IndexGeneration& generation)
    : tables_(*generation.delta), columns_(columnsOf(generation)) {
  mergeRows();
  sortTies();
  renumberClasses();
}

void MergedSegment::mergeRows() {
  const auto baseRows = static_cast<std::uint32_t>(columns_.base.rowCount());
  const auto newerRows = static_cast<std::uint32_t>(columns_.delta.rowCount());
  order_.reserve(columns_.entryCount());
  std::uint32_t newer = 0;
  for (std::uint32_t row = 0; row < baseRows; ++row) {
    if (columns_.dead.contains(row)) continue;
    while (newer < newerRows && columns_.delta.modified[newer] > columns_.base.modified[row]) {
      order_.push_back(baseRows + newer++);
    }
    order_.push_back(row);
  }
  while (newer < newerRows) order_.push_back(baseRows + newer++);
}

void MergedSegment::sortTies() {
  const SegmentColumns& folders = columns_.base;
  const auto nameOf = [&](std::uint32_t folder) { return folders.folderNames[folder]; };
  const PathOrder paths({folders.parents.begin(), folders.parents.end()}, nameOf);
  const auto isBefore = [&](std::uint32_t a, std::uint32_t b) {
    const Row left = at(a);
    const Row right = at(b);
    return paths.isBefore(left.segment.folderOf(left.row), left.segment.name(left.row),
                          right.segment.folderOf(right.row), right.segment.name(right.row), nameOf);
  };
  const auto modifiedOf = [&](std::uint32_t row) {
    const Row one = at(row);
    return one.segment.modified[one.row];
  };
  for (auto first = order_.begin(); first != order_.end();) {
    const std::int64_t modified = modifiedOf(*first);
    auto last = first + 1;
    while (last != order_.end() && modifiedOf(*last) == modified) ++last;
    if (last - first > 1 && !std::is_sorted(first, last, isBefore)) {
      std::sort(first, last, isBefore);
    }
    first = last;
  }
}

void MergedSegment::renumberClasses() {
  classNumbers_.assign(columns_.base.classes.size(), kUnused);
  const auto use = [&](std::uint32_t accessClass) {
    std::uint32_t& number = classNumbers_[accessClass];
    if (number != kUnused) return;
    number = static_cast<std::uint32_t>(usedClasses_.size());
    usedClasses_.push_back(accessClass);
  };
  for (std::uint32_t folder = 0; folder < columns_.base.folderCount(); ++folder) {
    use(columns_.base.classOfFolder(folder));
  }
  for (const std::uint32_t row : order_) {
    const Row one = at(row);
    use(one.segment.classOf(one.row));
  }
}

Result<SegmentIdentity, StoreError> MergedSegment::write(FileWriter& file,
                                                         std::uint64_t generation) const {
  SegmentHead head;
  head.generation = generation;
  head.rowCount = static_cast<std::uint32_t>(order_.size());
  head.folderCount = columns_.base.folderCount();
  head.classCount = static_cast<std::uint32_t>(usedClasses_.size());
  head.typeCount = static_cast<std::uint32_t>(columns_.base.typeIdentifiers.size());
  SegmentWriter writer(file, head);
  writeRows(writer);
  writeOddAllocations(writer);
  writeFolders(writer);
  writeClasses(writer);
  writer.texts(ColumnId::kTypeIdentifiers, ColumnId::kTypeIdentifierOffsets,
               columns_.base.typeIdentifiers, kMostTextBytes, kItself);
  writer.column(ColumnId::kBaseFolders, [](FileWriter&) {});
  writer.column(ColumnId::kDeadRows, [](FileWriter&) {});
  const SegmentHead& written = writer.finish();
  if (file.error()) return *file.error();
  return SegmentIdentity{written.fileBytes, written.checksum};
}

void MergedSegment::writeRows(SegmentWriter& writer) const {
  const auto texts = [&](ColumnId text, ColumnId offsets, TextColumn SegmentColumns::* column) {
    writer.texts(text, offsets, order_, kMostTextBytes, [&](std::uint32_t row) {
      const Row one = at(row);
      return (one.segment.*column)[one.row];
    });
  };
  texts(ColumnId::kFoldedNames, ColumnId::kFoldedNameOffsets, &SegmentColumns::foldedNames);
  texts(ColumnId::kOtherNames, ColumnId::kOtherNameOffsets, &SegmentColumns::otherNames);
  const auto numbers = [&]<class Number>(ColumnId id,
                                         std::span<const Number> SegmentColumns::* column) {
    writer.numbers<Number>(id, order_, [&](std::uint32_t row) {
      const Row one = at(row);
      return (one.segment.*column)[one.row];
    });
  };
  numbers(ColumnId::kModified, &SegmentColumns::modified);
  numbers(ColumnId::kCreated, &SegmentColumns::created);
  numbers(ColumnId::kAttributesChanged, &SegmentColumns::attributesChanged);
  numbers(ColumnId::kAccessed, &SegmentColumns::accessed);
  numbers(ColumnId::kSizes, &SegmentColumns::sizes);
  numbers(ColumnId::kAllocatedBlocks, &SegmentColumns::allocatedBlocks);
  numbers(ColumnId::kTypes, &SegmentColumns::types);
  writer.numbers<std::uint32_t>(ColumnId::kFolders, order_, [&](std::uint32_t row) {
    const Row one = at(row);
    return one.segment.folderOf(one.row);
  });
  writer.numbers<std::uint32_t>(ColumnId::kAccessClasses, order_, [&](std::uint32_t row) {
    const Row one = at(row);
    return classNumbers_[one.segment.classOf(one.row)];
  });
}

void MergedSegment::writeOddAllocations(SegmentWriter& writer) const {
  std::vector<std::uint32_t> rows;
  std::vector<std::uint64_t> allocations;
  for (std::uint32_t place = 0; place < order_.size(); ++place) {
    const Row one = at(order_[place]);
    if (one.segment.allocatedBlocks[one.row] != kNotInBlocks) continue;
    rows.push_back(place);
    allocations.push_back(one.segment.allocatedBytesOf(one.row));
  }
  writer.numbers<std::uint32_t>(ColumnId::kOddlyAllocatedRows, rows, kItself);
  writer.numbers<std::uint64_t>(ColumnId::kOddAllocations, allocations, kItself);
}

template <class Number>
void MergedSegment::copy(SegmentWriter& writer, ColumnId id, std::span<const Number> column) const {
  writer.numbers<Number>(id, column, kItself);
}

void MergedSegment::writeFolders(SegmentWriter& writer) const {
  const SegmentColumns& folders = columns_.base;
  std::vector<std::uint32_t> numbers(folders.folderCount());
  std::vector<std::uint32_t> rows(folders.folderCount(), kNoRow);
  for (std::uint32_t folder = 0; folder < numbers.size(); ++folder) numbers[folder] = folder;
  std::vector<std::uint32_t> byRow;
  for (std::uint32_t place = 0; place < order_.size(); ++place) {
    const Row one = at(order_[place]);
    const std::uint32_t own = one.segment.ownFolderOf(one.row);
    if (own == kNoFolder) continue;
    rows[own] = place;
    byRow.push_back(own);
  }
  writer.texts(ColumnId::kFolderNames, ColumnId::kFolderNameOffsets, numbers, kMostTextBytes,
               [&](std::uint32_t folder) { return folders.folderNames[folder]; });
  copy(writer, ColumnId::kParents, folders.parents);
  writer.numbers<std::uint32_t>(ColumnId::kFolderAccessClasses, numbers, [&](std::uint32_t folder) {
    return classNumbers_[folders.classOfFolder(folder)];
  });
  copy(writer, ColumnId::kEntryCounts, folders.entryCounts);
  copy(writer, ColumnId::kAreRoots, folders.areRoots);
  copy(writer, ColumnId::kAreListed, folders.areListed);
  writer.numbers<std::uint32_t>(ColumnId::kFolderRows, rows, kItself);
  const auto stamps = [&]<class Number>(ColumnId id, Number FolderStamp::* field) {
    writer.numbers<Number>(id, numbers,
                           [&](std::uint32_t folder) { return tables_.stampOf(folder).*field; });
  };
  stamps(ColumnId::kFolderDevices, &FolderStamp::device);
  stamps(ColumnId::kFolderInodes, &FolderStamp::inode);
  stamps(ColumnId::kFolderModified, &FolderStamp::modified);
  stamps(ColumnId::kFolderAttributesChanged, &FolderStamp::attributesChanged);
  writer.numbers<std::uint32_t>(ColumnId::kFoldersByRow, byRow, kItself);
}

void MergedSegment::writeClasses(SegmentWriter& writer) const {
  const auto column = [&](ColumnId id, std::uint32_t FileOwnership::* field) {
    writer.numbers<std::uint32_t>(id, usedClasses_, [&](std::uint32_t number) {
      return columns_.base.classes[number].ownership.*field;
    });
  };
  column(ColumnId::kClassUids, &FileOwnership::uid);
  column(ColumnId::kClassGids, &FileOwnership::gid);
  column(ColumnId::kClassModes, &FileOwnership::mode);
  writer.numbers<std::uint8_t>(ColumnId::kClassAclPresences, usedClasses_,
                               [&](std::uint32_t number) { return tables_.aclPresenceOf(number); });
  writer.blobs(ColumnId::kClassAcls, ColumnId::kClassAclOffsets, usedClasses_, kMostTextBytes,
               [&](std::uint32_t number) {
                 const auto bytes = tables_.aclBytesOf(number);
                 return std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size());
               });
}

}  // namespace vt
