#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace vt {

/// How a watch calls a folder: a number that stays with the folder when it is moved.
using WatchedFolder = std::uint32_t;

/// The clock by which events are gathered.
using WatchClock = std::chrono::steady_clock;
using WatchInstant = WatchClock::time_point;

/// What may have changed in one folder, each name once.
struct CollectedFolder {
  WatchedFolder folder = 0;
  bool isToBeListed = false;         ///< too many names to tell them: all are meant
  std::vector<std::string> entries;  ///< names; "" is the folder itself
  std::vector<std::string> trees;    ///< the same, with all that is below
};

/// What may have changed since somebody last asked.
struct CollectedChanges {
  bool isEverything = false;  ///< all that is watched; then no folder is named
  std::vector<CollectedFolder> folders;
  std::vector<std::string> trees;  ///< paths
};

/// When and how what was collected is handed on.
struct CollectionLimits {
  std::chrono::milliseconds quiet{50};      ///< without an event, then nothing is waited for
  std::chrono::milliseconds longest{500};   ///< from the first event, however many follow
  std::chrono::milliseconds writing{1000};  ///< from a write to a file that is not closed
  std::size_t names = 4096;                 ///< of one folder; more and it is to be listed
  std::size_t allNames = 200'000;           ///< more and everything is meant
};

/// Gathers what a watch is told of until there is a batch: repeated events are one, a storm in a
/// folder becomes the folder, and a file that is being written is told of once a second.
///
/// Knows folders by number, so that the paths are those of the moment when they are asked for.
class ChangeCollector {
 public:
  explicit ChangeCollector(const CollectionLimits& limits = {}) : limits_(limits) {}

  /// An entry came, went or has changed; "" is the folder itself.
  void addEntry(WatchedFolder folder, std::string_view name, WatchInstant now);
  /// A file was written to, and may well be again before it is closed.
  void addWritten(WatchedFolder folder, std::string_view name, WatchInstant now);
  /// A folder came or went, or nobody knows what is in it; "" is `folder` itself.
  void addTree(WatchedFolder folder, std::string_view name, WatchInstant now);
  /// The same of a folder by its path, such as that of a mount.
  void addTreeAt(std::string path, WatchInstant now);
  /// Nobody knows what has changed.
  void addEverything(WatchInstant now);

  /// Whether addTree() was told of it since the last take().
  bool isTree(WatchedFolder folder, std::string_view name) const;

  /// Names that wait to be taken.
  std::size_t size() const { return names_ + written_.size() + trees_.size(); }
  bool isEmpty() const { return !first_ && written_.empty(); }
  /// From when on there is something to take; nothing while nothing waits.
  std::optional<WatchInstant> due() const;
  /// Hands over what waits, but for files that were first written to less than a second ago.
  CollectedChanges take(WatchInstant now);

 private:
  struct Names {
    bool isToBeListed = false;
    std::unordered_set<std::string> entries;
    std::unordered_set<std::string> trees;
  };
  struct File {
    WatchedFolder folder;
    std::string name;
    bool operator==(const File&) const = default;
  };
  struct FileHash {
    std::size_t operator()(const File& file) const {
      return std::hash<std::string>()(file.name) * 31 + file.folder;
    }
  };

  void touch(WatchInstant now);
  void insertEntry(WatchedFolder folder, std::string name);
  void bound(Names& names);
  void takeWritten(WatchInstant now);

  CollectionLimits limits_;
  std::optional<WatchInstant> first_;  // event that waits to be taken
  WatchInstant last_;
  bool isEverything_ = false;
  std::size_t names_ = 0;
  std::unordered_map<WatchedFolder, Names> folders_;
  std::vector<std::string> trees_;
  std::unordered_set<File, FileHash> written_;
  // In the order of their times; what is not in written_ any more is of no account.
  std::deque<std::pair<WatchInstant, File>> writtenSince_;
};

}  // namespace vt
