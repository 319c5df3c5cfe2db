#pragma once

#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

#include "metadata/store/FileWriter.h"
#include "metadata/store/SegmentFormat.h"

namespace vt {

/// The segment with `change` made to its bytes and its head, and all checksums put right again: as
/// a wrong writer would have it. The bytes must have room for a head.
template <class Change>
std::string resealed(std::string bytes, Change change) {
  SegmentHead head;
  std::memcpy(&head, bytes.data(), sizeof head);
  change(bytes, head);
  for (ColumnPlace& place : head.columns) {
    if (place.offset > bytes.size() || place.bytes > bytes.size() - place.offset) continue;
    place.checksum = checksumOf(std::string_view(bytes).substr(place.offset, place.bytes));
  }
  const auto view = [&] {
    return std::string_view(reinterpret_cast<const char*>(&head), sizeof head);
  };
  head.checksum = checksumOf(view().substr(0, offsetof(SegmentHead, checksum)));
  return bytes.replace(0, sizeof head, view());
}

}  // namespace vt
