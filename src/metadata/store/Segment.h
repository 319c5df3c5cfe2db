#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "foundation/Result.h"
#include "metadata/rights/AclReader.h"
#include "metadata/store/FolderStamp.h"
#include "metadata/store/MappedFile.h"
#include "metadata/store/SegmentColumns.h"
#include "metadata/store/SegmentFormat.h"
#include "metadata/store/SegmentIdentity.h"
#include "metadata/store/StoreError.h"

namespace vt {

/// A segment file that is mapped into memory, to be read by any number of threads.
///
/// It is a base, which stands for itself, or a delta: what has come and gone since a base was made.
/// The folders, access classes and types of a delta stand in the place of those of its base.
///
/// Opening checks the head, where each column lies, and the checksums of all that is not of rows:
/// folders, access classes and types. It reads nothing of the rows, nor of what folders are known
/// again by. What is damaged in these gives wrong answers at worst; verifySegment() finds it.
class Segment {
 public:
  /// Opens the file `name` of the open folder `folder`. `shownPath` is for errors. Takes time in
  /// proportion to folders and classes: a tenth of a millisecond for a million files.
  static Result<std::shared_ptr<const Segment>, StoreError> open(int folder,
                                                                 const std::string& name,
                                                                 std::string shownPath);

  const SegmentColumns& columns() const { return columns_; }

  std::uint64_t generation() const { return head_.generation; }
  SegmentIdentity identity() const { return {head_.fileBytes, head_.checksum}; }
  /// The segment that this one adds to and takes away from; nothing of a base.
  std::optional<SegmentIdentity> base() const {
    if (head_.baseBytes == 0) return std::nullopt;
    return SegmentIdentity{head_.baseBytes, head_.baseHeadChecksum};
  }
  const std::string& shownPath() const { return shownPath_; }

  /// Takes what was read of the file off the memory of this process; see MappedFile.
  void dropPages() const { file_.dropPages(); }

  /// Of a delta: which of its folders each folder of the base is; kNoFolder for one that went.
  std::span<const std::uint32_t> baseFolders() const {
    return numbersOf<std::uint32_t>(ColumnId::kBaseFolders);
  }
  /// Of a delta: the rows of the base that count no more, a bit for each, the lowest first.
  std::span<const std::uint64_t> deadRows() const {
    return numbersOf<std::uint64_t>(ColumnId::kDeadRows);
  }

  /// What the folder is known again by.
  FolderStamp stampOf(std::uint32_t folder) const;
  /// What was found out of the access control list of a class, and its bytes as the kernel has
  /// them.
  AclPresence aclPresenceOf(std::uint32_t accessClass) const {
    return static_cast<AclPresence>(
        numbersOf<std::uint8_t>(ColumnId::kClassAclPresences)[accessClass]);
  }
  std::span<const std::uint8_t> aclBytesOf(std::uint32_t accessClass) const;

 private:
  friend class SegmentVerifier;

  Segment(MappedFile file, std::string shownPath)
      : file_(std::move(file)), shownPath_(std::move(shownPath)) {}

  std::optional<StoreError> takeHead();
  bool placesAreSound() const;
  bool countsAreSound() const;
  void takeColumns();
  /// False when the classes make no sense.
  bool takeClasses();

  const ColumnPlace& placeOf(ColumnId id) const {
    return head_.columns[static_cast<std::size_t>(id)];
  }
  std::string_view bytesOf(ColumnId id) const {
    return file_.bytes().substr(placeOf(id).offset, placeOf(id).bytes);
  }
  bool isAsWritten(ColumnId id) const;
  template <class Number>
  std::span<const Number> numbersOf(ColumnId id) const {
    // Columns begin where any number may, and the mapping where a page does.
    const std::string_view bytes = bytesOf(id);
    return {reinterpret_cast<const Number*>(bytes.data()), bytes.size() / sizeof(Number)};
  }
  TextColumn textsOf(ColumnId texts, ColumnId offsets) const {
    return {bytesOf(texts), numbersOf<std::uint32_t>(offsets)};
  }

  MappedFile file_;
  std::string shownPath_;
  SegmentHead head_;  // copied, so that what was checked is what is used
  SegmentColumns columns_;
  ClassColumns::Lists lists_;
  std::vector<std::string_view> typeIdentifiers_;
};

}  // namespace vt
