#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "metadata/crawl/CrawlMemory.h"
#include "metadata/crawl/CrawlSink.h"
#include "metadata/crawl/TreeCrawl.h"
#include "metadata/types/ContentTypes.h"
#include "support/Places.h"
#include "support/ReadFile.h"

namespace vt {

inline const ContentTypes& shippedTypes() {
  static const ContentTypes types =
      ContentTypes::parse(readFile(resourcePath("types.tsv"))).value();
  return types;
}

/// Keeps all that a crawl finds, and remembers it for the next.
class CrawlRecord final : public CrawlSink, public CrawlMemory {
 public:
  struct Entry {
    ContentTypeId type = 0;
    FileStatus status;
    AclPresence acl = AclPresence::kNone;
    std::vector<std::uint8_t> aclBytes;
    CrawledFolderId folder = kNoCrawledFolder;
  };
  struct Folder {
    std::string path;
    FolderStamp stamp;
    bool isComplete = false;
    int timesFinished = 0;
    std::map<std::string, Entry> entries;
  };

  /// Called after each batch with the path of its folder.
  std::function<void(const std::string&)> atEach;
  std::size_t mostEntries = static_cast<std::size_t>(-1);
  Date seen = Date::max();

  CrawledFolderId addRoot(const std::string& path) {
    folders.push_back({path, {}, false, 0, {}});
    return static_cast<CrawledFolderId>(folders.size() - 1);
  }

  bool addEntries(CrawledFolderId id, std::span<CrawledEntry> entries) override {
    for (CrawledEntry& entry : entries) {
      if (entryCount++ >= mostEntries) return false;
      if (entry.status.isFolder()) entry.folder = addRoot(below(id, entry.name));
      const bool isNew =
          folders[id]
              .entries
              .emplace(entry.name, Entry{entry.type,
                                         entry.status,
                                         entry.acl,
                                         {entry.aclBytes.begin(), entry.aclBytes.end()},
                                         entry.folder})
              .second;
      if (!isNew) repeated.push_back(below(id, entry.name));
    }
    const std::string path = folders[id].path;
    if (atEach) atEach(path);
    return true;
  }

  void finishFolder(CrawledFolderId id, const FolderStamp& stamp, bool isComplete) override {
    folders[id].stamp = stamp;
    folders[id].isComplete = isComplete;
    ++folders[id].timesFinished;
  }

  CrawledFolderId folderAt(std::string_view path) const override {
    const auto found = std::ranges::find(folders, path, &Folder::path);
    return found == folders.end() ? kNoCrawledFolder
                                  : static_cast<CrawledFolderId>(found - folders.begin());
  }
  std::optional<FolderStamp> stampOf(CrawledFolderId id) const override {
    if (!folders[id].isComplete) return std::nullopt;
    return folders[id].stamp;
  }
  void entriesOf(CrawledFolderId id,
                 FunctionRef<void(const RememberedEntry&)> visit) const override {
    for (const auto& [name, entry] : folders[id].entries) {
      visit({name, entry.status.attributesChanged, entry.status.ownership, entry.acl,
             entry.aclBytes, entry.folder});
    }
  }
  Date seenUntil() const override { return seen; }

  /// All entries by path.
  std::map<std::string, Entry> byPath() const {
    std::map<std::string, Entry> all;
    for (const Folder& folder : folders) {
      for (const auto& [name, entry] : folder.entries) {
        all.emplace(folder.path + "/" + name, entry);
      }
    }
    return all;
  }
  std::vector<std::string> paths() const {
    std::vector<std::string> all;
    for (const auto& [path, entry] : byPath()) all.push_back(path);
    return all;
  }

  std::vector<Folder> folders;
  std::vector<std::string> repeated;
  std::size_t entryCount = 0;

 private:
  std::string below(CrawledFolderId id, std::string_view name) const {
    const std::string& path = folders[id].path;
    return (path == "/" ? "" : path) + "/" + std::string(name);
  }
};

/// Crawls below `path` into `record`.
inline TreeCrawl::End crawl(const std::string& path, CrawlRecord& record,
                            const CrawlMemory* memory = nullptr, std::size_t threads = 2) {
  TreeCrawl crawl(shippedTypes(), memory, record, threads);
  return crawl.run({{path, record.addRoot(path)}}, [](const CrawlCounts&) { return true; });
}

}  // namespace vt
