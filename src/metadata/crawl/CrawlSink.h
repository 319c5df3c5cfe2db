#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "metadata/live/FileStatus.h"
#include "metadata/rights/AclReader.h"
#include "metadata/store/FolderStamp.h"
#include "metadata/types/ContentType.h"

namespace vt {

/// How a crawl and its sink call a folder: a number that the sink chose.
using CrawledFolderId = std::uint32_t;
inline constexpr CrawledFolderId kNoCrawledFolder = 0xFFFFFFFF;

/// One entry of a folder as a crawl found it. Borrows name and list for the call.
struct CrawledEntry {
  std::string_view name;  ///< bytes
  ContentTypeId type = 0;
  FileStatus status;
  AclPresence acl = AclPresence::kNone;
  std::span<const std::uint8_t> aclBytes;     ///< as the file system gives them
  CrawledFolderId folder = kNoCrawledFolder;  ///< of a folder: what the sink calls it from now on
  CrawledFolderId before = kNoCrawledFolder;  ///< what an earlier crawl called it, if it did
  bool isUnchanged = false;  ///< an earlier crawl found it there, and its inode as it is now
};

/// Takes what a crawl finds. Called by one thread at a time, though not always by the same.
class CrawlSink {
 public:
  virtual ~CrawlSink() = default;

  /// Takes entries of `folder`, some or all of them; names each folder among them. False when no
  /// more can be taken; the crawl then ends.
  virtual bool addEntries(CrawledFolderId folder, std::span<CrawledEntry> entries) = 0;

  /// Called once for each folder, after its last entries. `stamp` is of before it was listed;
  /// `isComplete` says whether all entries were seen: not so of a folder that vanished, moved,
  /// could not be listed or is not to be walked into.
  virtual void finishFolder(CrawledFolderId folder, const FolderStamp& stamp, bool isComplete) = 0;
};

}  // namespace vt
