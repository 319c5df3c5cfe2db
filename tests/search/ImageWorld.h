#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "images/PngEncoder.h"
#include "search/SearchWorld.h"
#include "search/VTSearchResult.h"
#include "support/ReadFile.h"

namespace vt {

/// A world with empty cache folders and files to make pictures of.
class ImageWorld : public SearchWorld {
 public:
  ImageWorld() { std::filesystem::create_directories(thumbnails); }

  /// A new file, last modified `age` seconds ago, of which there are a thumbnail and an icon.
  std::string addFile(const std::string& name, int age = 100) const {
    std::string path = folder / name;
    writeFile(path, "content");
    setAge(path, age);
    images->addThumbnail(path);
    images->addIcon(path);
    return path;
  }

  static void setAge(const std::string& path, int seconds) {
    setModified(path, now() - std::chrono::seconds(seconds));
  }
  static void setModified(const std::string& path, std::filesystem::file_time_type time) {
    std::filesystem::last_write_time(path, time);
  }
  static std::filesystem::file_time_type now() {
    return std::filesystem::file_time_type::clock::now();
  }

  static std::shared_ptr<VTSearchResult> groupOf(const std::vector<std::string>& paths,
                                                 std::shared_ptr<VTUser> user = nullptr) {
    auto records = VTSearchResult::Records::make();
    for (const std::string& path : paths) {
      records->append(Dictionary::make({{"kMDItemPath", path}}));
    }
    return VTSearchResult::initWithGroupKind(nullptr, records, nullptr, {}, std::move(user));
  }

  /// Where the thumbnail of `path` belongs.
  std::string thumbnailOf(const std::string& path, bool smallVersion = false) const {
    return thumbnails + "/" +
           (smallVersion ? VTSearchResult::smallThumbnailFileNameForFile(path)
                         : VTSearchResult::thumbnailFileNameForFile(path));
  }

  std::string cache = folder / "Library/Caches/Vistaro";
  std::string thumbnails = cache + "/Thumbnails";
};

}  // namespace vt
