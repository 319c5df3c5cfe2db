#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "foundation/FunctionRef.h"
#include "foundation/Result.h"
#include "metadata/live/Descriptor.h"
#include "metadata/store/FileWriter.h"
#include "metadata/store/Manifest.h"
#include "metadata/store/Segment.h"
#include "metadata/store/StoreCalls.h"
#include "metadata/store/StoreError.h"

namespace vt {

class SegmentBuilder;

/// The right to write into an index, for as long as it lives and the process does.
class IndexLock {
 public:
  explicit IndexLock(Descriptor file) : file_(std::move(file)) {}

 private:
  Descriptor file_;
};

/// A generation of an index, open for searching. Stays good when newer ones come.
struct IndexGeneration {
  Manifest manifest;
  std::shared_ptr<const Segment> segment;  ///< the base
  /// What has come and gone since; nullptr when nothing has.
  std::shared_ptr<const Segment> delta;
};

/// The folder that holds an index: the manifest of its newest generation and what that consists of.
///
/// Since an index names everything that its owner could see, nobody else may look into the folder
/// or write there. Open it anew for each look: it may have been put in the place of an older one.
class IndexFolder {
 public:
  static constexpr const char* kManifestName = "manifest";
  static constexpr const char* kLockName = "lock";
  static constexpr const char* kAsideName = "merged.tmp";

  /// Opens the folder at `path`. kMissing when there is none; kNotOurs when it belongs to another
  /// user than this process acts for, or its mode lets others in.
  static Result<IndexFolder, StoreError> open(const std::string& path,
                                              StoreCalls& calls = StoreCalls::system());
  /// The same, making the folder with mode 0700, and those above with 0755, where they are missing.
  static Result<IndexFolder, StoreError> make(const std::string& path,
                                              StoreCalls& calls = StoreCalls::system());

  /// The manifest of the newest generation. kMissing before the first.
  Result<Manifest, StoreError> manifest() const;
  /// Opens the newest generation; also while another process publishes the next. Segments that
  /// `known` has, unless it is nullptr, are not opened again.
  Result<IndexGeneration, StoreError> current(const IndexGeneration* known = nullptr) const;

  const std::string& path() const { return path_; }
  /// The open folder; stays this object's.
  int descriptor() const { return folder_.get(); }

  /// Takes the right to write, without waiting. kLocked, with the number of the process that has
  /// it, when another has it; also when this process has it already.
  Result<IndexLock, StoreError> lock() const;

  /// Writes a segment to `file`, of this generation. Gives what tells it from all others.
  using WriteSegment =
      FunctionRef<Result<SegmentIdentity, StoreError>(FileWriter& file, std::uint64_t generation)>;
  /// Is told of a segment that is about to come into force.
  using Announce = FunctionRef<void(const SegmentIdentity& segment)>;

  /// Writes a segment as the next generation and puts it in the place of the one before,
  /// whole or not at all, whatever befalls this process or the machine; removes what earlier
  /// generations and killed processes left. The segments of `next` are kept, and the written one
  /// comes after them; its generation is of no account. Gives the manifest.
  ///
  /// An error leaves the old generation in force and nothing of the new one, with one exception:
  /// when at the very end the folder can't be synced, the new one is in force, though a loss of
  /// power may bring the old one back, which is why both are then kept.
  Result<Manifest, StoreError> publishSegment(
      const IndexLock& lock, Manifest next, WriteSegment write,
      Announce announce = [](const SegmentIdentity&) {}) const;

  /// The same of what was built, which is then all that the index consists of. `announce` is also
  /// told which entry that was added each row is: what is known of rows can then be said before
  /// anybody searches them.
  using AnnounceRows =
      FunctionRef<void(const SegmentIdentity& segment, std::span<const std::uint32_t> rows)>;
  Result<Manifest, StoreError> publish(
      const IndexLock& lock, const SegmentBuilder& built, Manifest crawl,
      AnnounceRows announce = [](const auto&, auto) {}) const;

  /// Writes a segment aside, synced, under a name that no manifest has: whoever holds the lock may
  /// publish meanwhile. What was there before goes. An error leaves nothing there.
  Result<SegmentIdentity, StoreError> writeAside(std::uint64_t generation,
                                                 WriteSegment write) const;
  /// Opens what was written aside. kMissing when nothing was.
  Result<std::shared_ptr<const Segment>, StoreError> openAside() const;
  /// Removes what was written aside and is not wanted, or whoever wrote it was killed.
  void removeAside(const IndexLock& lock) const;
  /// Publishes what was written aside, which `aside` tells, as the base of the next generation, as
  /// publishSegment() does: alone, or with what `delta` writes unless it is nullptr. The segments
  /// of `next` are of no account. `announce` is told of the last one.
  Result<Manifest, StoreError> publishAside(const IndexLock& lock, Manifest next,
                                            const SegmentIdentity& aside, const WriteSegment* delta,
                                            Announce announce) const;

  /// Says of the generation in force, whose manifest `vouched` is but for the moment that is
  /// vouched for, that it is good until then.
  std::optional<StoreError> vouch(const IndexLock& lock, const Manifest& vouched) const;

 private:
  IndexFolder(std::string path, Descriptor folder, StoreCalls& calls)
      : path_(std::move(path)), folder_(std::move(folder)), calls_(&calls) {}

  Result<std::shared_ptr<const Segment>, StoreError> openSegment(
      const SegmentRecord& record, const IndexGeneration* known) const;
  std::string shown(const std::string& name) const { return path_ + "/" + name; }
  /// Removes what killed writers left, and gives `next` a generation that no name was ever of. What
  /// the folder held before.
  Result<std::vector<std::string>, StoreError> beginPublication(Manifest& next) const;
  /// Puts the manifest in force and removes what it does not name of `before`.
  Result<Manifest, StoreError> putInForce(Manifest next,
                                          const std::vector<std::string>& before) const;
  std::optional<StoreError> replaceManifest(const std::string& text) const;
  Result<SegmentIdentity, StoreError> writeSegment(const std::string& name,
                                                   std::uint64_t generation,
                                                   WriteSegment write) const;
  template <class Write>
  std::optional<StoreError> writeBeside(const std::string& name, Write write) const;
  template <class Write>
  std::optional<StoreError> writeNew(const std::string& name, Write write) const;
  std::optional<StoreError> syncFolder() const;
  Result<std::vector<std::string>, StoreError> names() const;
  void removeAllBut(const Manifest& manifest, const std::vector<std::string>& names) const;

  std::string path_;
  Descriptor folder_;
  StoreCalls* calls_;
};

}  // namespace vt
