#pragma once

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "metadata/engine/IndexedFiles.h"
#include "metadata/engine/OpenIndex.h"
#include "metadata/live/Descriptor.h"
#include "metadata/live/FileStatus.h"
#include "metadata/live/FolderWalk.h"
#include "metadata/live/LiveFile.h"
#include "metadata/live/SearchScopes.h"
#include "metadata/rights/AclReader.h"
#include "metadata/store/FileWriter.h"
#include "metadata/store/Segment.h"
#include "metadata/store/SegmentBuilder.h"
#include "metadata/types/ContentTypes.h"
#include "support/TemporaryFolder.h"

namespace vt {

/// A segment of what a plain walk as the process's own user finds, to test the engine with.
class WalkedIndex final : private FolderVisitor {
 public:
  /// Walks below `root`, a canonical path.
  WalkedIndex(const std::string& root, const ContentTypes& types) : types_(types), built_(types) {
    addAncestors(root);
    const AccessJudge judge(Credentials(0, 0, {}));
    const SearchScopes scopes = findSearchScopes({root}, judge);
    if (scopes.usable.empty()) throw std::runtime_error("no folder " + root);
    FolderWalk(judge, *this).walk(scopes.usable[0].folder.get(), root);
    openSegment();
  }

  std::shared_ptr<const OpenIndex> index() const { return index_; }

 private:
  void addAncestors(const std::string& root) {
    const std::uint32_t open = built_.addClass({0, 0, S_IFDIR | 0755}, AclPresence::kNone, {});
    std::string path = "/";
    std::uint32_t folder = built_.addFolder(kNoFolder, "", open);
    for (std::size_t at = 1; at < root.size();) {
      const std::size_t end = std::min(root.find('/', at), root.size());
      const std::string name = root.substr(at, end - at);
      path = joinPath(path, name);
      folder = built_.addFolder(folder, name, open);
      at = end + 1;
    }
    built_.markRoot(folder);
    built_.finishFolder(folder, {}, /*isListed=*/true);
    folders_[path] = folder;
  }

  void visit(const WalkedEntry& entry) override {
    if (entry.folderPath != lastFolderPath_) {
      lastFolderPath_ = entry.folderPath;
      lastFolder_ = folders_.at(lastFolderPath_);
    }
    const std::optional<FileStatus> status = statusOf(entry.folder, entry.name);
    if (!status) return;
    std::vector<std::uint8_t> list;
    const AclPresence acl =
        status->isLink() ? AclPresence::kNone : readAclBytes(entry.folder, entry.name, list);
    SegmentEntry row{.name = entry.name,
                     .status = *status,
                     .type = typeOfEntry(types_, entry.name, entry.kind),
                     .accessClass = built_.addClass(status->ownership, acl, list),
                     .folder = lastFolder_};
    if (entry.kind == EntryKind::kFolder) {
      row.ownFolder = built_.addFolder(lastFolder_, row.name, row.accessClass);
      built_.finishFolder(row.ownFolder, {}, /*isListed=*/true);
      folders_[joinPath(lastFolderPath_, row.name)] = row.ownFolder;
    }
    if (!built_.addRow(row)) throw std::runtime_error("the segment is full");
  }
  bool entersFolder(std::string_view, std::string_view) override { return true; }

  void openSegment() {
    const TemporaryFolder place;
    const Descriptor folder(::open(place.path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    StoreCalls& calls = StoreCalls::system();
    const Descriptor file(calls.create(folder.get(), "segment"));
    FileWriter writer(calls, file.get(), "segment");
    if (!built_.write(writer, 1) || writer.sync()) throw std::runtime_error("no segment");
    const auto segment = Segment::open(folder.get(), "segment", "segment").value();
    auto open = std::make_shared<OpenIndex>();
    open->segment = segment->columns();
    open->types = typesOf(open->segment, types_).value();
    open->memory = segment;
    index_ = std::move(open);
  }

  const ContentTypes& types_;
  SegmentBuilder built_;
  std::unordered_map<std::string, std::uint32_t> folders_;  // by path
  std::string lastFolderPath_;
  std::uint32_t lastFolder_ = 0;
  std::shared_ptr<const OpenIndex> index_;
};

}  // namespace vt
