#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "directory/VTUser.h"
#include "foundation/Array.h"
#include "foundation/Dictionary.h"
#include "platform/Platform.h"
#include "platform/linux/PosixFiles.h"
#include "platform/memory/MemoryDirectoryServices.h"
#include "platform/memory/MemoryIdentity.h"
#include "platform/memory/MemoryImages.h"
#include "platform/memory/MemoryMetadataIndex.h"
#include "platform/memory/MemoryProcess.h"
#include "platform/memory/MemoryRecords.h"
#include "platform/memory/MemoryResources.h"
#include "platform/memory/MemoryTasks.h"
#include "support/TemporaryFolder.h"

namespace vt {

/// A world for searches: everything in memory but the files, which are real and lie in a temporary
/// folder, as the settings do.
///
/// It has the users ann (501, group 20) and root (0, 0), and the kinds Documents (public.text, sort
/// order 2), Images (public.image, 1, shown as thumbnails), Movies (public.movie, 2) and the
/// fallback Other (9).
class SearchWorld {
 public:
  explicit SearchWorld(std::string_view kinds = kKinds,
                       MemoryIdentity::Rules rules = MemoryIdentity::Rules::kLenient)
      : identity(std::make_shared<MemoryIdentity>(rules)),
        index(std::make_shared<MemoryMetadataIndex>(identity)) {
    std::filesystem::create_directories(folder.path() / "Library/Application Support");
    records->add(userRecord("ann", "501", "20", "Ann Lee"));
    records->add(userRecord("root", "0", "0", "System Administrator"));
    auto resources = std::make_shared<MemoryResources>();
    resources->add("ContentTypeGroups", "plist", std::string(kinds));
    scope_ = std::make_unique<PlatformScope>(std::make_shared<Platform>(Platform::Services{
        .files = std::make_shared<PosixFiles>(),
        .identity = identity,
        .directoryServices = std::make_shared<MemoryDirectoryServices>(records),
        .runtimeBundles = nullptr,
        .metadataIndex = index,
        .resources = resources,
        .host = nullptr,
        .process = process,
        .tasks = tasks,
        .images = images,
        .rootPrefix = folder.path().string(),
    }));
  }

  static constexpr std::string_view kKinds = R"(<plist version="1.0"><dict>
    <key>Other</key><dict><key>default</key><true/><key>sortorder</key><integer>9</integer></dict>
    <key>Documents</key><dict><key>types</key><array><string>public.text</string></array>
      <key>sortorder</key><integer>2</integer></dict>
    <key>Movies</key><dict><key>types</key><array><string>public.movie</string></array>
      <key>sortorder</key><integer>2</integer></dict>
    <key>Images</key><dict><key>types</key><array><string>public.image</string></array>
      <key>sortorder</key><integer>1</integer><key>defaultView</key><integer>1</integer></dict>
    </dict></plist>)";

  static constexpr std::string_view kKindsWithoutFallback = R"(<plist version="1.0"><dict>
    <key>Images</key><dict><key>types</key><array><string>public.image</string></array></dict>
    </dict></plist>)";

  std::shared_ptr<VTUser> ann() const { return VTUser::userWithName("ann"); }
  std::shared_ptr<VTUser> root() const { return VTUser::userWithName("root"); }

  /// Appends a hit with every attribute. Its type tree is `type` and public.item, its name is the
  /// end of its path, and a larger `modified` (in seconds) is newer.
  void addHit(const std::string& path, int modified, std::string_view type = "public.text") {
    index->addHit(hit(path, modified, Array::make({type, "public.item"})));
  }

  static std::shared_ptr<Dictionary> hit(const std::string& path, int modified,
                                         std::shared_ptr<Array> tree) {
    return Dictionary::make({
        {"kMDItemPath", path},
        {"kMDItemDisplayName", path.substr(path.rfind('/') + 1)},
        {"kMDItemContentModificationDate", Date{std::chrono::seconds{modified}}},
        {"kMDItemContentTypeTree", std::move(tree)},
        {"kMDItemFSSize", 12},
        {"kMDItemLastUsedDate", Date{std::chrono::seconds{modified + 5}}},
    });
  }

  TemporaryFolder folder;
  std::shared_ptr<MemoryRecords> records = std::make_shared<MemoryRecords>();
  std::shared_ptr<MemoryProcess> process = std::make_shared<MemoryProcess>();
  std::shared_ptr<MemoryImages> images = std::make_shared<MemoryImages>();
  std::shared_ptr<MemoryTasks> tasks = std::make_shared<MemoryTasks>();
  std::shared_ptr<MemoryIdentity> identity;
  std::shared_ptr<MemoryMetadataIndex> index;

 private:
  std::unique_ptr<PlatformScope> scope_;
};

}  // namespace vt
