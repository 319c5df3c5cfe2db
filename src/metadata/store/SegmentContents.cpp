#include "metadata/store/SegmentContents.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "metadata/store/NewestFirst.h"
#include "metadata/store/PathOrder.h"
#include "metadata/store/TwoThreads.h"

namespace vt {
namespace {

using Folder = std::uint32_t;

constexpr auto kItself = [](auto number) { return number; };

/// Where each of the rows of `listed`, ascending, stands in `order`, with what is listed with it:
/// in that order.
template <class Listed>
std::vector<std::pair<std::uint32_t, Listed>> placesOf(
    const std::vector<std::pair<std::uint32_t, Listed>>& listed,
    const std::vector<std::uint32_t>& order) {
  Bitmap rows(order.size());
  for (const auto& [row, what] : listed) rows.add(row);
  std::vector<std::pair<std::uint32_t, Listed>> places;
  places.reserve(listed.size());
  for (std::uint32_t place = 0; place < order.size() && places.size() < listed.size(); ++place) {
    if (!rows.contains(order[place])) continue;
    const auto found = std::ranges::lower_bound(listed, order[place], {},
                                                &std::pair<std::uint32_t, Listed>::first);
    places.emplace_back(place, found->second);
  }
  return places;
}

}  // namespace

SegmentContents::SegmentContents(const SegmentBuilder& built)
    : built_(built),
      isLarge_(built.rows_->count >= kLeastRowsForTwoThreads),
      names_(*built.rows_, built.names_) {
  {
    NewestFirst newest(built.rows_->modified, built.rows_->count);
    doBoth(
        isLarge_,
        [&] {
          newest.sortFirstHalf();
          names_.measureFirstHalf();
        },
        [&] {
          newest.sortSecondHalf();
          names_.measureSecondHalf();
        });
    order_ = newest.rows();
  }
  sortTies();
}

void SegmentContents::sortTies() {
  std::optional<PathOrder> paths;  // made for the first rows that need it
  for (std::size_t first = 0; first < order_.size();) {
    const std::int64_t modified = built_.rows_->modified[order_[first]];
    std::size_t last = first + 1;
    while (last < order_.size() && built_.rows_->modified[order_[last]] == modified) ++last;
    if (last - first > 1) {
      if (!paths) {
        std::vector<std::uint32_t> parents;
        parents.reserve(built_.folders_.size());
        for (const auto& folder : built_.folders_) parents.push_back(folder.parent);
        paths.emplace(std::move(parents), [this](Folder folder) {
          return built_.names_[built_.folders_[folder].name];
        });
      }
      sortTies(first, last, *paths);
    }
    first = last;
  }
}

void SegmentContents::sortTies(std::size_t first, std::size_t last, const PathOrder& order) {
  const auto folderName = [this](Folder folder) {
    return built_.names_[built_.folders_[folder].name];
  };
  const auto begin = order_.begin();
  std::stable_sort(begin + static_cast<std::ptrdiff_t>(first),
                   begin + static_cast<std::ptrdiff_t>(last),
                   [&](std::uint32_t a, std::uint32_t b) {
                     return order.isBefore(built_.rows_->folders[a], names_[a],
                                           built_.rows_->folders[b], names_[b], folderName);
                   });
}

Result<SegmentIdentity, StoreError> SegmentContents::write(FileWriter& file,
                                                           std::uint64_t generation,
                                                           std::uint64_t mostTextBytes) {
  SegmentHead head;
  head.generation = generation;
  head.rowCount = static_cast<std::uint32_t>(order_.size());
  head.folderCount = static_cast<std::uint32_t>(built_.folders_.size());
  head.classCount = static_cast<std::uint32_t>(built_.classes_.size());
  head.typeCount = static_cast<std::uint32_t>(built_.usedTypes_.size());
  head.baseBytes = built_.base_.bytes;
  head.baseHeadChecksum = built_.base_.headChecksum;
  SegmentWriter writer(file, head);
  FileWriter part = file.leaveOut(names_.bytesFrom(file.position()));
  SegmentWriter names(part);
  doBoth(
      isLarge_,
      [&] {
        names_.write(names, order_, mostTextBytes);
        part.align(kColumnAlignment);
        part.flush();
      },
      [&] {
        writeNumbers(writer);
        if (isLarge_) file.startSync();  // while the names take longer
        writeOddAllocations(writer);
        writeFolders(writer, mostTextBytes);
        writeClasses(writer, mostTextBytes);
        writeTypes(writer, mostTextBytes);
        writer.numbers<std::uint32_t>(ColumnId::kBaseFolders, built_.baseFolders_, kItself);
        writer.numbers<std::uint64_t>(ColumnId::kDeadRows, built_.deadRows_, kItself);
      });
  file.take(part);
  writer.takeColumns(names, ColumnId::kFoldedNames, ColumnId::kModified);
  const SegmentHead& written = writer.finish();
  if (file.error()) return *file.error();
  return SegmentIdentity{written.fileBytes, written.checksum};
}

template <class Number>
void SegmentContents::writeNumbers(SegmentWriter& writer, ColumnId id,
                                   PieceColumn<Number>& column) const {
  writer.numbers<Number>(id, order_, [&](std::uint32_t row) { return column[row]; });
  if (built_.isReleased_) column.release();
}

void SegmentContents::writeNumbers(SegmentWriter& writer) const {
  RowTable& rows = *built_.rows_;
  writeNumbers(writer, ColumnId::kModified, rows.modified);
  writeNumbers(writer, ColumnId::kCreated, rows.created);
  writeNumbers(writer, ColumnId::kAttributesChanged, rows.attributesChanged);
  writeNumbers(writer, ColumnId::kAccessed, rows.accessed);
  writeNumbers(writer, ColumnId::kSizes, rows.sizes);
  writeNumbers(writer, ColumnId::kAllocatedBlocks, rows.allocatedBlocks);
  writeNumbers(writer, ColumnId::kTypes, rows.types);
  writeNumbers(writer, ColumnId::kFolders, rows.folders);
  writeNumbers(writer, ColumnId::kAccessClasses, rows.accessClasses);
}

void SegmentContents::writeOddAllocations(SegmentWriter& writer) const {
  const auto odd = placesOf(built_.rows_->oddAllocations, order_);
  writer.numbers<std::uint32_t>(ColumnId::kOddlyAllocatedRows, odd,
                                [](const auto& row) { return row.first; });
  writer.numbers<std::uint64_t>(ColumnId::kOddAllocations, odd,
                                [](const auto& row) { return row.second; });
}

void SegmentContents::writeFolders(SegmentWriter& writer, std::uint64_t mostTextBytes) const {
  using Built = SegmentBuilder::Folder;
  const std::vector<Built>& folders = built_.folders_;
  writer.texts(ColumnId::kFolderNames, ColumnId::kFolderNameOffsets, folders, mostTextBytes,
               [&](const Built& folder) { return built_.names_[folder.name]; });
  const auto column = [&]<class Number>(ColumnId id, Number Built::* field) {
    writer.numbers<Number>(id, folders, [&](const Built& folder) { return folder.*field; });
  };
  column(ColumnId::kParents, &Built::parent);
  column(ColumnId::kFolderAccessClasses, &Built::accessClass);
  column(ColumnId::kEntryCounts, &Built::entryCount);
  column(ColumnId::kAreRoots, &Built::isRoot);
  column(ColumnId::kAreListed, &Built::isListed);
  const auto byRow = placesOf(built_.rows_->ownFolders, order_);
  std::vector<std::uint32_t> rows(folders.size(), kNoRow);
  for (const auto& [place, folder] : byRow) rows[folder] = place;
  writer.numbers<std::uint32_t>(ColumnId::kFolderRows, rows, kItself);
  const auto stamps = [&]<class Number>(ColumnId id, Number FolderStamp::* field) {
    writer.numbers<Number>(id, folders, [&](const Built& folder) { return folder.stamp.*field; });
  };
  stamps(ColumnId::kFolderDevices, &FolderStamp::device);
  stamps(ColumnId::kFolderInodes, &FolderStamp::inode);
  stamps(ColumnId::kFolderModified, &FolderStamp::modified);
  stamps(ColumnId::kFolderAttributesChanged, &FolderStamp::attributesChanged);
  writer.numbers<std::uint32_t>(ColumnId::kFoldersByRow, byRow,
                                [](const auto& row) { return row.second; });
}

void SegmentContents::writeClasses(SegmentWriter& writer, std::uint64_t mostTextBytes) const {
  using Class = AccessClassTable::Class;
  std::vector<Class> classes;
  classes.reserve(built_.classes_.size());
  for (std::size_t at = 0; at < built_.classes_.size(); ++at) {
    classes.push_back(built_.classes_[at]);
  }
  const auto column = [&](ColumnId id, std::uint32_t FileOwnership::* field) {
    writer.numbers<std::uint32_t>(id, classes,
                                  [&](const Class& one) { return one.ownership.*field; });
  };
  column(ColumnId::kClassUids, &FileOwnership::uid);
  column(ColumnId::kClassGids, &FileOwnership::gid);
  column(ColumnId::kClassModes, &FileOwnership::mode);
  writer.numbers<std::uint8_t>(ColumnId::kClassAclPresences, classes,
                               [](const Class& one) { return one.acl; });
  writer.blobs(ColumnId::kClassAcls, ColumnId::kClassAclOffsets, classes, mostTextBytes,
               [](const Class& one) { return one.aclBytes; });
}

void SegmentContents::writeTypes(SegmentWriter& writer, std::uint64_t mostTextBytes) const {
  writer.texts(ColumnId::kTypeIdentifiers, ColumnId::kTypeIdentifierOffsets, built_.usedTypes_,
               mostTextBytes, [&](ContentTypeId type) -> std::string_view {
                 return built_.types_[type].identifier;
               });
}

}  // namespace vt
