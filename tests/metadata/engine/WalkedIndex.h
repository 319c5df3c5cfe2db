#pragma once

#include <sys/stat.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <numeric>
#include <stdexcept>
#include <string>
#include <tuple>
#include <unordered_map>
#include <utility>
#include <vector>

#include "foundation/TextFolding.h"
#include "metadata/engine/IndexedFiles.h"
#include "metadata/engine/OpenIndex.h"
#include "metadata/live/FileStatus.h"
#include "metadata/live/FolderWalk.h"
#include "metadata/live/LiveFile.h"
#include "metadata/live/SearchScopes.h"
#include "metadata/rights/AclReader.h"
#include "metadata/types/ContentTypes.h"

namespace vt {

/// The columns of a segment in memory, made by a plain walk as the process's own user: what the
/// engine is tested with, whatever the format of segments is.
class WalkedIndex final : private FolderVisitor {
 public:
  /// Walks below `root`, a canonical path.
  WalkedIndex(const std::string& root, const ContentTypes& types) : types_(types) {
    addAncestors(root);
    const AccessJudge judge(Credentials(0, 0, {}));
    const SearchScopes scopes = findSearchScopes({root}, judge);
    if (scopes.usable.empty()) throw std::runtime_error("no folder " + root);
    FolderWalk(judge, *this).walk(scopes.usable[0].folder.get(), root);
    takeColumns();
  }

  std::shared_ptr<const OpenIndex> index() const { return index_; }

 private:
  struct Texts {
    std::string text;
    std::vector<std::uint32_t> offsets;

    void add(std::string_view one) {
      offsets.push_back(static_cast<std::uint32_t>(text.size()));
      text += one;
      text += '\0';
    }
    TextColumn column() {
      offsets.push_back(static_cast<std::uint32_t>(text.size()));
      return {text, offsets};
    }
  };
  struct Row {
    std::string name;
    FileStatus status;
    std::uint32_t folder;
    std::uint32_t accessClass;
    std::uint16_t type;
    std::uint32_t ownFolder;
  };
  struct Columns {
    Texts foldedNames, otherNames, folderNames;
    std::vector<std::int64_t> modified, created, attributesChanged, accessed;
    std::vector<std::uint64_t> sizes, allocated;
    std::vector<std::uint16_t> types;
    std::vector<std::uint32_t> folders, accessClasses, ownFolders;
    std::vector<std::uint32_t> parents, folderAccessClasses, entryCounts;
    std::vector<std::uint8_t> areRoots, areListed;
    std::vector<AccessClass> classes;
    std::vector<std::string_view> typeIdentifiers;
  };

  void addAncestors(const std::string& root) {
    std::string path = "/";
    addFolder(kNoFolder, "", classOf({0, 0, S_IFDIR | 0755}, {true, {}}), path);
    for (std::size_t at = 1; at < root.size();) {
      const std::size_t end = std::min(root.find('/', at), root.size());
      const std::uint32_t parent = folders_.at(path);
      const std::string name = root.substr(at, end - at);
      path = joinPath(path, name);
      addFolder(parent, name, 0, path);
      at = end + 1;
    }
    columns_->areRoots.back() = 1;
  }

  void addFolder(std::uint32_t parent, const std::string& name, std::uint32_t accessClass,
                 const std::string& path) {
    folders_[path] = static_cast<std::uint32_t>(columns_->parents.size());
    columns_->folderNames.add(name);
    columns_->parents.push_back(parent);
    columns_->folderAccessClasses.push_back(accessClass);
    columns_->entryCounts.push_back(0);
    columns_->areRoots.push_back(0);
    columns_->areListed.push_back(1);
  }

  std::uint32_t classOf(const FileOwnership& ownership, const AclReading& acl) {
    const auto add = [&] {
      columns_->classes.push_back({ownership, acl});
      return static_cast<std::uint32_t>(columns_->classes.size() - 1);
    };
    if (acl.list) return add();
    const std::tuple key(ownership.uid, ownership.gid, ownership.mode, acl.isKnown);
    const auto known = classes_.find(key);
    return known != classes_.end() ? known->second : classes_.emplace(key, add()).first->second;
  }

  std::uint16_t typeNumberOf(ContentTypeId type) {
    const auto [known, isNew] =
        typeNumbers_.try_emplace(type, static_cast<std::uint16_t>(typeNumbers_.size()));
    if (isNew) columns_->typeIdentifiers.emplace_back(types_[type].identifier);
    return known->second;
  }

  void visit(const WalkedEntry& entry) override {
    if (entry.folderPath != lastFolderPath_) {
      lastFolderPath_ = entry.folderPath;
      lastFolder_ = folders_.at(lastFolderPath_);
    }
    const std::optional<FileStatus> status = statusOf(entry.folder, entry.name);
    if (!status) return;
    const AclReading acl =
        status->isLink() ? AclReading{true, {}} : readAcl(entry.folder, entry.name);
    Row row{entry.name,
            *status,
            lastFolder_,
            classOf(status->ownership, acl),
            typeNumberOf(typeOfEntry(types_, entry.name, entry.kind)),
            kNoFolder};
    ++columns_->entryCounts[lastFolder_];
    if (entry.kind == EntryKind::kFolder) {
      row.ownFolder = static_cast<std::uint32_t>(columns_->parents.size());
      addFolder(lastFolder_, row.name, row.accessClass, joinPath(lastFolderPath_, row.name));
    }
    rows_.push_back(std::move(row));
  }
  bool entersFolder(std::string_view, std::string_view) override { return true; }

  void takeColumns() {
    std::vector<std::string> paths(columns_->parents.size());
    for (auto& [path, folder] : folders_) paths[folder] = path;
    std::ranges::sort(rows_, [&](const Row& a, const Row& b) {
      if (a.status.modified != b.status.modified) return a.status.modified > b.status.modified;
      return joinPath(paths[a.folder], a.name) < joinPath(paths[b.folder], b.name);
    });
    Columns& c = *columns_;
    for (const Row& row : rows_) {
      const std::string folded = foldText(row.name, Folding::kCaseAndMarks);
      c.foldedNames.add(folded);
      c.otherNames.add(folded == row.name ? std::string_view() : row.name);
      c.modified.push_back(row.status.modified.time_since_epoch().count());
      c.created.push_back(row.status.created ? row.status.created->time_since_epoch().count()
                                             : kNoDate);
      c.attributesChanged.push_back(row.status.attributesChanged.time_since_epoch().count());
      c.accessed.push_back(row.status.accessed.time_since_epoch().count());
      c.sizes.push_back(row.status.sizeInBytes);
      c.allocated.push_back(row.status.allocatedBytes);
      c.types.push_back(row.type);
      c.folders.push_back(row.folder);
      c.accessClasses.push_back(row.accessClass);
      c.ownFolders.push_back(row.ownFolder);
    }
    auto open = std::make_shared<OpenIndex>();
    open->segment = {c.foldedNames.column(),
                     c.otherNames.column(),
                     c.modified,
                     c.created,
                     c.attributesChanged,
                     c.accessed,
                     c.sizes,
                     c.allocated,
                     c.types,
                     c.folders,
                     c.accessClasses,
                     c.ownFolders,
                     c.folderNames.column(),
                     c.parents,
                     c.folderAccessClasses,
                     c.entryCounts,
                     c.areRoots,
                     c.areListed,
                     c.classes,
                     c.typeIdentifiers};
    open->types = typesOf(open->segment, types_).value();
    open->memory = columns_;
    index_ = std::move(open);
    rows_.clear();
  }

  const ContentTypes& types_;
  std::shared_ptr<Columns> columns_ = std::make_shared<Columns>();
  std::vector<Row> rows_;
  std::unordered_map<std::string, std::uint32_t> folders_;  // by path
  std::map<std::tuple<std::uint32_t, std::uint32_t, std::uint32_t, bool>, std::uint32_t> classes_;
  std::map<ContentTypeId, std::uint16_t> typeNumbers_;
  std::string lastFolderPath_;
  std::uint32_t lastFolder_ = 0;
  std::shared_ptr<const OpenIndex> index_;
};

}  // namespace vt
