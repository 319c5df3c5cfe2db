#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/Result.h"
#include "metadata/update/FileChanges.h"
#include "metadata/watch/ChangeCollector.h"
#include "metadata/watch/WatchScope.h"

namespace vt {

/// What has changed, and up to when that is known.
struct WatchBatch {
  FileChanges changes;
  /// Everything that happened before is in this batch or an earlier one, but for what is still
  /// being written.
  WatchInstant seenUntil;
};

/// What there is to tell of a watch.
struct WatchCounts {
  std::uint64_t watched = 0;    ///< folders, or file systems: see FileSystemWatch::unit()
  std::uint64_t unwatched = 0;  ///< folders that are not watched
  std::uint64_t waiting = 0;    ///< names that wait to be told of
  std::uint64_t overflows = 0;  ///< how often the kernel had more to tell than it keeps
};

/// Tells what changes below some folders, soon after it does.
///
/// What it tells covers every change that it could see: who looks at what is named, after it was
/// told, knows all. Folders are known by what they are, not by their paths: when one was moved
/// while what it told last was being looked at, it tells the same again under the new path.
///
/// It keeps nothing open that is watched, and never makes anybody wait. One thread at a time.
class FileSystemWatch {
 public:
  FileSystemWatch() = default;
  FileSystemWatch(const FileSystemWatch&) = delete;
  FileSystemWatch& operator=(const FileSystemWatch&) = delete;
  virtual ~FileSystemWatch() = default;

  /// "fanotify" or the like, and what it counts: "file systems" or "folders".
  virtual const char* name() const = 0;
  virtual const char* unit() const = 0;

  /// Watches `scope`, and nothing else any more; what was collected is forgotten. To be followed by
  /// a look at everything. Gives why it cannot; then nothing is watched.
  Result<bool, std::string> start(WatchScope scope, WatchInstant now);

  /// Gets ready to be read when something has happened. May be another after each call.
  virtual int descriptor() const = 0;

  /// Reads what has happened, so that the kernel need not keep it. Gives at once.
  void collect(WatchInstant now);

  /// From when on take() may have a batch; nothing while nothing has happened.
  std::optional<WatchInstant> due() const { return collector_.due(); }
  /// The next batch, once it is due; nothing before, and when all that was outside the scope. To be
  /// looked at by the next call of endLook().
  std::optional<WatchBatch> take(WatchInstant now);
  /// To be called around a look at all files, and after one at what take() has told: what moves
  /// between is told so that it is not missed. collect() may be called meanwhile.
  void beginLook() { isLooking_ = hasLooked_ = true; }
  void endLook() { isLooking_ = false; }

  /// Up to when everything was told, provided that nothing is due.
  WatchInstant seenUntil() const { return seenUntil_; }

  /// Folders from which on changes are not seen, none in another: these must be looked at from
  /// time to time.
  virtual std::vector<std::string> unwatched() const = 0;
  /// Why there are any, in words; "" when there are none.
  virtual std::string whyUnwatched() const = 0;
  /// Tries once more to watch those.
  virtual void watchUnwatched(WatchInstant now) = 0;

  virtual WatchCounts counts() const = 0;

  const WatchScope& scope() const { return scope_; }

 protected:
  virtual Result<bool, std::string> restart(WatchInstant now) = 0;
  /// Reads from the kernel; whether it has nothing more.
  virtual bool drain(WatchInstant now) = 0;
  /// Where the folder is now, all its places that are in the scope.
  virtual std::vector<std::string> pathsOf(WatchedFolder folder) = 0;
  /// No number of a folder is kept here any more.
  virtual void forgetFolders() {}

  /// A folder was renamed. `isUnsure` when changes in it may have been passed over meanwhile.
  void folderMoved(WatchedFolder from, std::string_view fromName, WatchedFolder to,
                   std::string_view toName, WatchInstant now, bool isUnsure = false);

  ChangeCollector& collector() { return collector_; }
  const ChangeCollector& collector() const { return collector_; }

 private:
  struct Move {
    WatchedFolder from;
    std::string fromName;
    WatchedFolder to;
    std::string toName;
  };

  void tellAgain(WatchInstant now);
  void addMoves(const std::vector<Move>& moves, FileChanges& changes);
  void add(const CollectedFolder& names, FileChanges& changes);

  ChangeCollector collector_;
  WatchScope scope_;
  WatchInstant seenUntil_;
  // What was told and is being looked at, or was until the kernel may have told of more.
  std::vector<CollectedFolder> told_;
  bool isLooking_ = false;
  bool hasLooked_ = false;  // since the kernel last had nothing more to tell
  bool haveFoldersMoved_ = false;
  std::vector<Move> moves_;  // of folders, that wait to be told
};

}  // namespace vt
