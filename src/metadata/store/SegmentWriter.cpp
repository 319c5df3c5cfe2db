#include "metadata/store/SegmentWriter.h"

#include <cstddef>
#include <string>

namespace vt {
namespace {

std::string_view bytesOf(const SegmentHead& head) {
  return {reinterpret_cast<const char*>(&head), sizeof head};
}

}  // namespace

SegmentWriter::SegmentWriter(FileWriter& file, const SegmentHead& head) : file_(file), head_(head) {
  // What was not written to its end has no head, so that nothing takes it for a segment.
  file_.append(std::string(sizeof(SegmentHead), '\0'));
}

void SegmentWriter::begin(ColumnId id) {
  file_.align(kColumnAlignment);
  head_.columns[static_cast<std::size_t>(id)].offset = file_.position();
  file_.beginChecksum();
}

void SegmentWriter::end(ColumnId id) {
  ColumnPlace& place = head_.columns[static_cast<std::size_t>(id)];
  place.bytes = file_.position() - place.offset;
  place.checksum = file_.endChecksum();
}

void SegmentWriter::refuseMoreThan(std::uint64_t mostBytes, std::uint64_t bytes) {
  if (bytes <= mostBytes) return;
  file_.fail({StoreError::Kind::kTooLarge, "longer names together than one index can hold"});
}

void SegmentWriter::takeColumns(const SegmentWriter& part, ColumnId first, ColumnId end) {
  for (auto at = static_cast<std::size_t>(first); at < static_cast<std::size_t>(end); ++at) {
    head_.columns[at] = part.head_.columns[at];
  }
}

const SegmentHead& SegmentWriter::finish() {
  file_.align(kColumnAlignment);
  head_.fileBytes = file_.position();
  head_.checksum = checksumOf(bytesOf(head_).substr(0, offsetof(SegmentHead, checksum)));
  file_.writeAt(0, bytesOf(head_));
  return head_;
}

}  // namespace vt
