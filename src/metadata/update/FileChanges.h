#pragma once

#include <string>
#include <vector>

namespace vt {

/// What may have changed in the file system since an index was last brought up to date.
///
/// All paths are absolute and canonical: no link among the folders on the way, no "." or "..", no
/// "/" at the end. They are bytes, not necessarily UTF-8. The order does not matter, a path may
/// come more than once and below another one, and it may name what does not exist any more or never
/// did, or what lies outside the indexed folders: such a path is of no consequence. A path counts
/// as it was then or as it is now: when a folder was renamed, what changed in it may be named by
/// either. Where a name that another folder took meanwhile makes that ambiguous, it belongs among
/// the trees.
///
/// These are places to look at, not statements: what is there is found by looking. So it is always
/// right to name too much, and wrong to name too little. The folder that a named entry is in is
/// looked at too, so it need not be named when entries come and go. Of a file with several names
/// one is enough.
struct FileChanges {
  /// Entries whose status may have changed, that came, or that went: each is asked for its status.
  /// A folder that came is crawled from there on, one that went goes with everything below it; of
  /// one that is known, its own status alone is taken. Renaming takes two: the old path and the new
  /// one.
  std::vector<std::string> entries;

  /// Folders to be listed again: their entries are compared with what is known, and new folders
  /// among them are crawled from there on. A folder below that is known stays as it is known.
  std::vector<std::string> folders;

  /// Folders from which on everything is to be crawled anew, as when events were lost.
  std::vector<std::string> trees;

  bool empty() const { return entries.empty() && folders.empty() && trees.empty(); }
};

}  // namespace vt
