#include "metadata/store/IndexFolder.h"

#include <dirent.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "metadata/store/FileWriter.h"
#include "metadata/store/SegmentBuilder.h"

namespace vt {
namespace {

constexpr std::string_view kSegmentPrefix = "segment-";
constexpr std::string_view kTemporarySuffix = ".tmp";

// A manifest has as many lines as folders were asked to be indexed, and some.
constexpr std::size_t kMostManifestBytes = std::size_t{16} << 20;

// Each further look means that a whole generation was written during the one before.
constexpr int kLooks = 5;

std::string segmentName(std::uint64_t generation) {
  return fmt::format("{}{}", kSegmentPrefix, generation);
}

/// The generation that a segment's or half-written segment's file is of; nothing for other files.
std::optional<std::uint64_t> generationOf(std::string_view name) {
  if (!name.starts_with(kSegmentPrefix)) return std::nullopt;
  name.remove_prefix(kSegmentPrefix.size());
  if (name.ends_with(kTemporarySuffix)) name.remove_suffix(kTemporarySuffix.size());
  std::uint64_t generation = 0;
  const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), generation);
  if (error != std::errc() || end != name.data() + name.size()) return std::nullopt;
  return generation;
}

/// Why `delta` can't be searched together with `base`.
std::optional<StoreError> whyNotTogether(const Segment& base, const Segment& delta) {
  const auto damage = [&](std::string_view how) { return damageError(delta.shownPath(), how); };
  if (delta.base() != base.identity()) return damage("it belongs to another segment");
  const SegmentColumns& before = base.columns();
  const SegmentColumns& after = delta.columns();
  constexpr std::size_t kBits = 64;
  if (delta.baseFolders().size() != before.folderCount() ||
      delta.deadRows().size() != (before.rowCount() + kBits - 1) / kBits) {
    return damage("it is for another number of rows or folders");
  }
  // Numbers of classes and types mean the same in both, and the delta has more of them.
  if (after.classes.size() < before.classes.size() ||
      !std::ranges::equal(before.typeIdentifiers,
                          after.typeIdentifiers.first(std::min(before.typeIdentifiers.size(),
                                                               after.typeIdentifiers.size())))) {
    return damage("it has other access classes or types");
  }
  return std::nullopt;
}

std::optional<StoreError> refusal(const std::string& path, int folder) {
  struct stat status{};
  if (::fstat(folder, &status) != 0) return systemError(errno, "open", path);
  if (status.st_uid != ::geteuid()) {
    return StoreError{StoreError::Kind::kNotOurs,
                      fmt::format("{} belongs to user {}, and this process acts for user {}", path,
                                  status.st_uid, ::geteuid())};
  }
  if ((status.st_mode & 0077U) != 0) {
    return StoreError{StoreError::Kind::kNotOurs,
                      fmt::format("{} has mode {:04o}, which lets others in; it must have 0700",
                                  path, status.st_mode & 07777U)};
  }
  return std::nullopt;
}

/// The whole of a small file. What is longer than any manifest gives nothing but its beginning.
Result<std::string, StoreError> readSmall(int folder, const char* name,
                                          const std::string& shownPath) {
  const Descriptor file(
      ::openat(folder, name, O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  if (!file.isOpen()) return systemError(errno, "open", shownPath);
  std::string text;
  char buffer[4096];
  while (text.size() <= kMostManifestBytes) {
    const ssize_t count = ::read(file.get(), buffer, sizeof buffer);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return systemError(errno, "read", shownPath);
    if (count == 0) break;
    text.append(buffer, static_cast<std::size_t>(count));
  }
  return text;
}

}  // namespace

Result<IndexFolder, StoreError> IndexFolder::open(const std::string& path, StoreCalls& calls) {
  Descriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder.isOpen()) {
    const int number = errno;
    StoreError error = systemError(number, "open", path);
    if (number == EACCES) error.kind = StoreError::Kind::kNotOurs;
    return error;
  }
  if (std::optional<StoreError> error = refusal(path, folder.get())) return *std::move(error);
  return IndexFolder(path, std::move(folder), calls);
}

Result<IndexFolder, StoreError> IndexFolder::make(const std::string& path, StoreCalls& calls) {
  std::error_code error;
  const std::filesystem::path above = std::filesystem::path(path).parent_path();
  if (!above.empty()) std::filesystem::create_directories(above, error);
  if (error) return systemError(error.value(), "make", above.native());
  if (::mkdir(path.c_str(), 0700) != 0 && errno != EEXIST) {
    return systemError(errno, "make", path);
  }
  return open(path, calls);
}

Result<Manifest, StoreError> IndexFolder::manifest() const {
  Result<std::string, StoreError> text =
      readSmall(folder_.get(), kManifestName, shown(kManifestName));
  if (!text) return text.error();
  return parseManifest(*text, shown(kManifestName));
}

Result<std::shared_ptr<const Segment>, StoreError> IndexFolder::openSegment(
    const SegmentRecord& record, const IndexGeneration* known) const {
  if (known != nullptr) {
    for (const std::shared_ptr<const Segment>& open : {known->segment, known->delta}) {
      if (open && open->identity() == record.identity) return open;
    }
  }
  auto segment = Segment::open(folder_.get(), record.file, shown(record.file));
  if (segment && (*segment)->identity() != record.identity) {
    return damageError(shown(record.file), "it is not the one that belongs to the manifest");
  }
  return segment;
}

Result<IndexGeneration, StoreError> IndexFolder::current(const IndexGeneration* known) const {
  std::optional<StoreError> error;
  std::optional<std::uint64_t> missing;
  for (int look = 0; look < kLooks; ++look) {
    Result<Manifest, StoreError> manifest = this->manifest();
    if (!manifest) return manifest.error();
    const std::vector<SegmentRecord>& records = manifest->segments;
    if (records.empty() || records.size() > 2 ||
        std::ranges::any_of(
            records, [](const SegmentRecord& record) { return !generationOf(record.file); })) {
      return damageError(shown(kManifestName), "it names no segments that belong together");
    }
    auto base = openSegment(records[0], known);
    auto delta = base && records.size() == 2 ? openSegment(records[1], known) : base;
    if (base && delta) {
      if ((*base)->base()) return damageError((*base)->shownPath(), "it is no base");
      if (*delta == *base) {
        return IndexGeneration{std::move(manifest).value(), std::move(base).value(), nullptr};
      }
      if (std::optional<StoreError> damage = whyNotTogether(**base, **delta)) {
        return *std::move(damage);
      }
      return IndexGeneration{std::move(manifest).value(), std::move(base).value(),
                             std::move(delta).value()};
    }
    error = base ? delta.error() : base.error();
    // It may have gone because a newer generation came; then the manifest is another.
    if (error->kind != StoreError::Kind::kMissing || missing == manifest->generation) break;
    missing = manifest->generation;
  }
  return *std::move(error);
}

Result<IndexLock, StoreError> IndexFolder::lock() const {
  const std::string path = shown(kLockName);
  // Never removed, or two processes could hold locks on two files of this name.
  Descriptor file(
      ::openat(folder_.get(), kLockName, O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600));
  if (!file.isOpen()) return systemError(errno, "open", path);
  if (::flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK) return systemError(errno, "lock", path);
    const Result<std::string, StoreError> text = readSmall(folder_.get(), kLockName, path);
    const std::string number = text ? text->substr(0, text->find('\n')) : "";
    const std::string holder = number.empty() ? "another process" : "process " + number;
    return StoreError{StoreError::Kind::kLocked, fmt::format("{} is writing to {}", holder, path_)};
  }
  // For whoever comes second. The lock itself needs no text, so a full disk is no matter here.
  const std::string text = fmt::format("{}\n", ::getpid());
  if (::ftruncate(file.get(), 0) == 0) calls_->write(file.get(), text.data(), text.size(), 0);
  return IndexLock(std::move(file));
}

Result<Manifest, StoreError> IndexFolder::publish(const IndexLock& lock,
                                                  const SegmentBuilder& built, Manifest crawl,
                                                  AnnounceRows announce) const {
  std::vector<std::uint32_t> order;
  crawl.segments.clear();
  removeAside(lock);  // a merge of what this takes the place of
  return publishSegment(
      lock, std::move(crawl),
      [&](FileWriter& file, std::uint64_t generation) {
        return built.write(file, generation, &order);
      },
      [&](const SegmentIdentity& segment) { announce(segment, order); });
}

Result<Manifest, StoreError> IndexFolder::publishSegment(const IndexLock& /*lock*/, Manifest next,
                                                         WriteSegment write,
                                                         Announce announce) const {
  const Result<std::vector<std::string>, StoreError> before = beginPublication(next);
  if (!before) return before.error();
  const std::string name = segmentName(next.generation);
  const Result<SegmentIdentity, StoreError> identity = writeSegment(name, next.generation, write);
  if (!identity) return identity.error();
  announce(*identity);
  next.segments.push_back({name, *identity});
  return putInForce(std::move(next), *before);
}

Result<SegmentIdentity, StoreError> IndexFolder::writeAside(std::uint64_t generation,
                                                            WriteSegment write) const {
  SegmentIdentity identity;
  std::optional<StoreError> error = writeNew(kAsideName, [&](FileWriter& file) {
    const Result<SegmentIdentity, StoreError> written = write(file, generation);
    if (written) identity = *written;
  });
  if (error) return *std::move(error);
  return identity;
}

Result<std::shared_ptr<const Segment>, StoreError> IndexFolder::openAside() const {
  return Segment::open(folder_.get(), kAsideName, shown(kAsideName));
}

void IndexFolder::removeAside(const IndexLock& /*lock*/) const {
  calls_->unlink(folder_.get(), kAsideName);
}

Result<Manifest, StoreError> IndexFolder::publishAside(const IndexLock& /*lock*/, Manifest next,
                                                       const SegmentIdentity& aside,
                                                       const WriteSegment* delta,
                                                       Announce announce) const {
  const Result<std::vector<std::string>, StoreError> before = beginPublication(next);
  if (!before) return before.error();
  const std::string base = segmentName(next.generation);
  next.segments = {{base, aside}};
  if (calls_->rename(folder_.get(), kAsideName, base.c_str()) != 0) {
    return systemError(errno, "replace", shown(base));
  }
  std::optional<StoreError> error;
  if (delta == nullptr) {
    error = syncFolder();
  } else {
    ++next.generation;
    const std::string name = segmentName(next.generation);
    const Result<SegmentIdentity, StoreError> identity =
        writeSegment(name, next.generation, *delta);
    if (identity) {
      next.segments.push_back({name, *identity});
    } else {
      error = identity.error();
    }
  }
  if (error) {
    calls_->unlink(folder_.get(), base.c_str());
    return *std::move(error);
  }
  announce(next.segments.back().identity);
  return putInForce(std::move(next), *before);
}

Result<std::vector<std::string>, StoreError> IndexFolder::beginPublication(Manifest& next) const {
  Result<std::vector<std::string>, StoreError> before = names();
  if (!before) return before;
  const Result<Manifest, StoreError> old = manifest();
  if (old || old.error().kind == StoreError::Kind::kMissing) {
    removeAllBut(old ? *old : Manifest(), *before);  // first, for their space
  } else if (old.error().kind != StoreError::Kind::kDamaged &&
             old.error().kind != StoreError::Kind::kOtherKind) {
    return old.error();
  }
  next.generation = (old ? old->generation : 0) + 1;
  for (const std::string& name : *before) {
    next.generation = std::max(next.generation, generationOf(name).value_or(0) + 1);
  }
  return before;
}

Result<Manifest, StoreError> IndexFolder::putInForce(Manifest next,
                                                     const std::vector<std::string>& before) const {
  if (std::optional<StoreError> error = replaceManifest(printManifest(next))) {
    for (const SegmentRecord& segment : next.segments) {
      const bool isOld = std::ranges::find(before, segment.file) != before.end();
      if (!isOld) calls_->unlink(folder_.get(), segment.file.c_str());
    }
    return *std::move(error);
  }
  if (std::optional<StoreError> error = syncFolder()) return *std::move(error);
  removeAllBut(next, before);
  return next;
}

std::optional<StoreError> IndexFolder::vouch(const IndexLock& /*lock*/,
                                             const Manifest& vouched) const {
  if (std::optional<StoreError> error = replaceManifest(printManifest(vouched))) return error;
  return syncFolder();
}

Result<SegmentIdentity, StoreError> IndexFolder::writeSegment(const std::string& name,
                                                              std::uint64_t generation,
                                                              WriteSegment write) const {
  SegmentIdentity identity;
  std::optional<StoreError> error = writeBeside(name, [&](FileWriter& file) {
    const Result<SegmentIdentity, StoreError> written = write(file, generation);
    if (written) identity = *written;
  });
  if (error) return *std::move(error);
  // The name must have reached the disk before a manifest does that speaks of it.
  error = syncFolder();
  if (error) {
    calls_->unlink(folder_.get(), name.c_str());
    return *std::move(error);
  }
  return identity;
}

std::optional<StoreError> IndexFolder::replaceManifest(const std::string& text) const {
  return writeBeside(kManifestName, [&](FileWriter& file) { file.append(text); });
}

template <class Write>
std::optional<StoreError> IndexFolder::writeBeside(const std::string& name, Write write) const {
  const std::string beside = name + std::string(kTemporarySuffix);
  std::optional<StoreError> error = writeNew(beside, write);
  if (!error && calls_->rename(folder_.get(), beside.c_str(), name.c_str()) != 0) {
    error = systemError(errno, "replace", shown(name));
    calls_->unlink(folder_.get(), beside.c_str());
  }
  return error;
}

template <class Write>
std::optional<StoreError> IndexFolder::writeNew(const std::string& name, Write write) const {
  // Of a process that was killed: who holds the lock is the only one to write.
  calls_->unlink(folder_.get(), name.c_str());
  const Descriptor file(calls_->create(folder_.get(), name.c_str()));
  if (!file.isOpen()) return systemError(errno, "make", shown(name));
  FileWriter writer(*calls_, file.get(), shown(name));
  write(writer);
  std::optional<StoreError> error = writer.sync();
  if (error) calls_->unlink(folder_.get(), name.c_str());
  return error;
}

std::optional<StoreError> IndexFolder::syncFolder() const {
  // EINVAL: a file system that has nothing to sync in a folder.
  if (calls_->sync(folder_.get()) == 0 || errno == EINVAL) return std::nullopt;
  return systemError(errno, "write", path_);
}

Result<std::vector<std::string>, StoreError> IndexFolder::names() const {
  // Another descriptor, since listing moves the place in it.
  Descriptor copy(::openat(folder_.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  DIR* const listing = copy.isOpen() ? ::fdopendir(copy.get()) : nullptr;
  if (listing == nullptr) return systemError(errno, "list", path_);
  copy.release();
  std::vector<std::string> found;
  errno = 0;
  while (const dirent* const entry = ::readdir(listing)) found.emplace_back(entry->d_name);
  const int number = errno;
  ::closedir(listing);
  if (number != 0) return systemError(number, "list", path_);
  return found;
}

void IndexFolder::removeAllBut(const Manifest& manifest,
                               const std::vector<std::string>& names) const {
  for (const std::string& name : names) {
    const bool isUsed =
        std::ranges::find(manifest.segments, name, &SegmentRecord::file) != manifest.segments.end();
    // What fails now goes after the next publication.
    if (!isUsed && generationOf(name)) calls_->unlink(folder_.get(), name.c_str());
  }
}

}  // namespace vt
