#include "metadata/store/SegmentContents.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

#include "foundation/TextFolding.h"
#include "foundation/UTF8.h"
#include "metadata/store/PathOrder.h"

namespace vt {
namespace {

using Folder = std::uint32_t;

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

constexpr auto kItself = [](auto number) { return number; };

}  // namespace

SegmentContents::SegmentContents(const SegmentBuilder& built) : built_(built) { sortRows(); }

void SegmentContents::sortRows() {
  struct Key {
    std::int64_t modified;
    std::uint32_t row;
  };
  const auto count = static_cast<std::uint32_t>(built_.rows_.size());
  std::vector<Key> keys;
  keys.reserve(count);
  for (std::uint32_t row = 0; row < count; ++row) keys.push_back({built_.rows_[row].modified, row});
  // The number last, so that the same entries in the same order give the same file.
  std::ranges::sort(keys, [](const Key& a, const Key& b) {
    return a.modified != b.modified ? a.modified > b.modified : a.row < b.row;
  });
  order_.reserve(count);
  for (const Key& key : keys) order_.push_back(key.row);

  std::optional<PathOrder> paths;  // made for the first rows that need it
  for (std::size_t first = 0; first < count;) {
    std::size_t last = first + 1;
    while (last < count && keys[last].modified == keys[first].modified) ++last;
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
                     const BuiltRow& left = built_.rows_[a];
                     const BuiltRow& right = built_.rows_[b];
                     return order.isBefore(left.folder, built_.names_[left.name()], right.folder,
                                           built_.names_[right.name()], folderName);
                   });
}

Result<SegmentIdentity, StoreError> SegmentContents::write(FileWriter& file,
                                                           std::uint64_t generation,
                                                           std::uint64_t mostTextBytes) const {
  SegmentHead head;
  head.generation = generation;
  head.rowCount = static_cast<std::uint32_t>(order_.size());
  head.folderCount = static_cast<std::uint32_t>(built_.folders_.size());
  head.classCount = static_cast<std::uint32_t>(built_.classes_.size());
  head.typeCount = static_cast<std::uint32_t>(built_.usedTypes_.size());
  head.baseBytes = built_.base_.bytes;
  head.baseHeadChecksum = built_.base_.headChecksum;
  SegmentWriter writer(file, head);
  writeRows(writer, mostTextBytes);
  writeOddAllocations(writer);
  writeFolders(writer, mostTextBytes);
  writeFoldersByRow(writer);
  writeClasses(writer, mostTextBytes);
  writeTypes(writer, mostTextBytes);
  writer.numbers<std::uint32_t>(ColumnId::kBaseFolders, built_.baseFolders_, kItself);
  writer.numbers<std::uint64_t>(ColumnId::kDeadRows, built_.deadRows_, kItself);
  const SegmentHead& written = writer.finish();
  if (file.error()) return *file.error();
  return SegmentIdentity{written.fileBytes, written.checksum};
}

void SegmentContents::prefetchAfter(std::size_t at, bool withName) const {
  constexpr std::size_t kNamesAhead = 12;
  constexpr std::size_t kRowsAhead = 24;  // which tell where their names are
  if (at + kRowsAhead >= order_.size()) return;
  __builtin_prefetch(&built_.rows_[order_[at + kRowsAhead]]);
  if (withName) {
    __builtin_prefetch(built_.names_[built_.rows_[order_[at + kNamesAhead]].name()].data());
  }
}

void SegmentContents::writeRows(SegmentWriter& writer, std::uint64_t mostTextBytes) const {
  std::vector<bool> differs;
  differs.reserve(order_.size());
  NameFolder folder;
  writer.texts(ColumnId::kFoldedNames, ColumnId::kFoldedNameOffsets, order_, mostTextBytes,
               [&](std::uint32_t row) {
                 prefetchAfter(differs.size(), /*withName=*/true);
                 const std::string_view name = built_.names_[built_.rows_[row].name()];
                 const std::string_view folded = folder.fold(name);
                 differs.push_back(folded != name);
                 return folded;
               });
  std::size_t at = 0;
  writer.texts(ColumnId::kOtherNames, ColumnId::kOtherNameOffsets, order_, mostTextBytes,
               [&](std::uint32_t row) {
                 return differs[at++] ? built_.names_[built_.rows_[row].name()]
                                      : std::string_view();
               });
  const auto column = [&]<class Number>(ColumnId id, Number BuiltRow::* field) {
    at = 0;
    writer.numbers<Number>(id, order_, [&](std::uint32_t row) {
      prefetchAfter(at++, /*withName=*/false);
      return built_.rows_[row].*field;
    });
  };
  column(ColumnId::kModified, &BuiltRow::modified);
  column(ColumnId::kCreated, &BuiltRow::created);
  column(ColumnId::kAttributesChanged, &BuiltRow::attributesChanged);
  column(ColumnId::kAccessed, &BuiltRow::accessed);
  column(ColumnId::kSizes, &BuiltRow::sizeInBytes);
  column(ColumnId::kAllocatedBlocks, &BuiltRow::allocatedBlocks);
  column(ColumnId::kTypes, &BuiltRow::type);
  column(ColumnId::kFolders, &BuiltRow::folder);
  column(ColumnId::kAccessClasses, &BuiltRow::accessClass);
}

void SegmentContents::writeOddAllocations(SegmentWriter& writer) const {
  std::vector<std::uint32_t> rows;
  std::vector<std::uint64_t> allocations;
  for (std::uint32_t at = 0; at < order_.size(); ++at) {
    prefetchAfter(at, /*withName=*/false);
    const std::uint32_t row = order_[at];
    if (built_.rows_[row].allocatedBlocks != kNotInBlocks) continue;
    const auto odd = std::ranges::lower_bound(built_.oddAllocations_, row, {},
                                              &std::pair<std::uint32_t, std::uint64_t>::first);
    rows.push_back(at);
    allocations.push_back(odd->second);
  }
  writer.numbers<std::uint32_t>(ColumnId::kOddlyAllocatedRows, rows, kItself);
  writer.numbers<std::uint64_t>(ColumnId::kOddAllocations, allocations, kItself);
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
  std::vector<std::uint32_t> rows(folders.size(), kNoRow);
  for (std::uint32_t at = 0; at < order_.size(); ++at) {
    prefetchAfter(at, /*withName=*/false);
    const Folder own = built_.rows_[order_[at]].ownFolder;
    if (own != kNoFolder) rows[own] = at;
  }
  writer.numbers<std::uint32_t>(ColumnId::kFolderRows, rows, kItself);
  const auto stamps = [&]<class Number>(ColumnId id, Number FolderStamp::* field) {
    writer.numbers<Number>(id, folders, [&](const Built& folder) { return folder.stamp.*field; });
  };
  stamps(ColumnId::kFolderDevices, &FolderStamp::device);
  stamps(ColumnId::kFolderInodes, &FolderStamp::inode);
  stamps(ColumnId::kFolderModified, &FolderStamp::modified);
  stamps(ColumnId::kFolderAttributesChanged, &FolderStamp::attributesChanged);
}

void SegmentContents::writeFoldersByRow(SegmentWriter& writer) const {
  writer.column(ColumnId::kFoldersByRow, [&](FileWriter& file) {
    for (std::size_t at = 0; at < order_.size(); ++at) {
      prefetchAfter(at, /*withName=*/false);
      const Folder own = built_.rows_[order_[at]].ownFolder;
      if (own != kNoFolder) file.appendNumber(own);
    }
  });
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
