#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "metadata/live/FileStatus.h"
#include "metadata/types/ContentType.h"

namespace vt {

/// A file that a search found, as it was when it was found.
struct LiveHit {
  std::uint32_t folder = 0;  ///< of LiveHits::folderPath()
  ContentTypeId type = 0;
  std::string name;  ///< bytes
  FileStatus status;
};

/// What a search found.
class LiveHits {
 public:
  std::size_t size() const { return hits_.size(); }
  const LiveHit& operator[](std::size_t index) const { return hits_[index]; }
  const std::string& folderPath(std::uint32_t folder) const { return folderPaths_[folder]; }
  /// The absolute path, bytes.
  std::string pathOf(const LiveHit& hit) const;

  void add(std::string_view folderPath, std::string_view name, ContentTypeId type,
           const FileStatus& status);

  /// Newest modification first; of equal ones by the bytes of the path, so that the order is the
  /// same each time.
  void sortNewestFirst();
  /// Puts the hits in the order of `order`, which holds each index once.
  void reorder(const std::vector<std::size_t>& order);

 private:
  bool precedesInPath(const LiveHit& a, const LiveHit& b) const;

  std::vector<LiveHit> hits_;
  std::vector<std::string> folderPaths_;
};

}  // namespace vt
