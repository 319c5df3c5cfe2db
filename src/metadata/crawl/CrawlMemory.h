#pragma once

#include <string_view>

#include "foundation/FunctionRef.h"
#include "metadata/crawl/CrawlSink.h"

namespace vt {

/// One entry of a folder as an earlier crawl found it. Borrows from the memory that it came from.
struct RememberedEntry {
  std::string_view name;  ///< bytes
  Date attributesChanged;
  FileOwnership ownership;
  AclPresence acl = AclPresence::kUnknown;
  std::span<const std::uint8_t> aclBytes;
  CrawledFolderId folder = kNoCrawledFolder;  ///< of a folder: what the earlier crawl called it
};

/// What an earlier crawl found, asked by several threads at once.
class CrawlMemory {
 public:
  virtual ~CrawlMemory() = default;

  /// What the earlier crawl called the folder at an absolute path, if it came to it.
  virtual CrawledFolderId folderAt(std::string_view path) const = 0;

  /// The stamp of a folder whose entries are all remembered; nothing when some may be missing.
  virtual std::optional<FolderStamp> stampOf(CrawledFolderId folder) const = 0;

  /// Hands each remembered entry of a folder to `visit`.
  virtual void entriesOf(CrawledFolderId folder,
                         FunctionRef<void(const RememberedEntry&)> visit) const = 0;

  /// What changed before this instant, by the clock of the file system, the earlier crawl has seen.
  virtual Date seenUntil() const = 0;
};

}  // namespace vt
