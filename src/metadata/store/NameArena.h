#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

namespace vt {

/// Names one behind the other in large pieces of memory, which never move: growing needs no room
/// for the old ones beside the new.
class NameArena {
 public:
  /// Longer than any file system's names; lengths have 16 bits.
  static constexpr std::size_t kLongestName = 4095;

  struct Place {
    std::uint32_t start = 0;
    std::uint32_t length = 0;
  };

  /// Whether one more name finds a place.
  bool hasRoom() const { return pieces_.size() < kMostPieces || hasRoomInLast(kLongestName); }

  /// `name` must be no longer than kLongestName, and there must be room.
  Place add(std::string_view name) {
    if (!hasRoomInLast(name.size())) {
      pieces_.push_back(std::make_unique_for_overwrite<char[]>(kPieceBytes));
      used_ = 0;
    }
    const std::size_t start = (pieces_.size() - 1) * kPieceBytes + used_;
    std::memcpy(pieces_.back().get() + used_, name.data(), name.size());
    used_ += name.size();
    return {static_cast<std::uint32_t>(start), static_cast<std::uint32_t>(name.size())};
  }

  std::string_view operator[](Place place) const {
    return {pieces_[place.start / kPieceBytes].get() + place.start % kPieceBytes, place.length};
  }

 private:
  static constexpr std::size_t kPieceBytes = std::size_t{1} << 20;
  static constexpr std::size_t kMostPieces = (std::size_t{1} << 32) / kPieceBytes;

  bool hasRoomInLast(std::size_t bytes) const {
    return !pieces_.empty() && kPieceBytes - used_ >= bytes;
  }

  std::vector<std::unique_ptr<char[]>> pieces_;
  std::size_t used_ = 0;  // of the last piece
};

}  // namespace vt
