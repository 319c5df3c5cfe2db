#include "metadata/store/WatcherRecord.h"

#include <fcntl.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <type_traits>
#include <utility>

#include "foundation/Dictionary.h"
#include "foundation/PropertyList.h"
#include "foundation/UTF8.h"
#include "foundation/XMLPropertyListWriter.h"
#include "metadata/live/Descriptor.h"

namespace vt {
namespace {

constexpr const char* kName = "/watcher";
constexpr std::size_t kMostBytes = std::size_t{1} << 16;
// A block of most file systems: records of about the same size take the same room.
constexpr std::size_t kRoom = 4096;

/// The fields that are texts and numbers, each with its key.
template <class Record, class Visit>
void forEachField(Record& record, Visit visit) {
  visit("generation", record.generation);
  visit("boot", record.seenUntil.boot);
  visit("process", record.process);
  visit("watch", record.watch);
  visit("why", record.why);
  visit("unit", record.unit);
  visit("watched", record.watched);
  visit("unwatched", record.unwatched);
  visit("whyUnwatched", record.whyUnwatched);
  visit("waiting", record.waiting);
  visit("overflows", record.overflows);
  visit("lastBatchSize", record.lastBatchSize);
  visit("lastBatchSeconds", record.lastBatchSeconds);
  visit("failure", record.failure);
  visit("contentFailure", record.contentFailure);
  visit("isMerging", record.isMerging);
  visit("mergeFailure", record.mergeFailure);
}

struct Reader {
  const Dictionary& from;
  bool isWhole = true;

  void operator()(const char* key, std::string& field) {
    const Value* const value = from.find(key);
    const auto* const text = value == nullptr ? nullptr : value->get<std::string>();
    isWhole = isWhole && text != nullptr;
    if (text != nullptr) field = *text;
  }
  template <class Number>
  void operator()(const char* key, Number& field) {
    const Value* const value = from.find(key);
    isWhole = isWhole && value != nullptr && value->isNumber();
    if (value == nullptr) return;
    if constexpr (std::is_same_v<Number, double>) {
      field = value->doubleValue();
    } else if constexpr (std::is_signed_v<Number>) {
      field = value->integerValue();
    } else {
      field = value->unsignedIntegerValue();
    }
  }
};

Result<std::string, StoreError> readText(const std::string& path) {
  const Descriptor file(
      ::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  if (!file.isOpen()) return systemError(errno, "open", path);
  std::string text(kMostBytes, '\0');
  const ssize_t count = ::read(file.get(), text.data(), text.size());
  if (count < 0) return systemError(errno, "read", path);
  text.resize(static_cast<std::size_t>(count));
  return text;
}

/// Writes a file whose room is taken again, so that a full disk has it.
std::optional<StoreError> overwrite(const std::string& path, std::string_view text) {
  const Descriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600));
  if (!file.isOpen()) return systemError(errno, "make", path);
  const ssize_t count = ::pwrite(file.get(), text.data(), text.size(), 0);
  if (count < 0) return systemError(errno, "write", path);
  if (static_cast<std::size_t>(count) != text.size()) return systemError(ENOSPC, "write", path);
  if (::ftruncate(file.get(), static_cast<off_t>(text.size())) != 0) {
    return systemError(errno, "write", path);
  }
  return std::nullopt;
}

}  // namespace

BootInstant BootInstant::now() {
  BootInstant instant;
  const Result<std::string, StoreError> boot = readText("/proc/sys/kernel/random/boot_id");
  timespec time{};
  if (!boot || ::clock_gettime(CLOCK_BOOTTIME, &time) != 0) return instant;
  instant.boot = boot->substr(0, boot->find('\n'));
  instant.since =
      std::chrono::seconds(time.tv_sec) + std::chrono::microseconds(time.tv_nsec / 1000);
  return instant;
}

std::string printWatcherRecord(const WatcherRecord& record) {
  const std::shared_ptr<Dictionary> fields = Dictionary::make();
  forEachField(record, [&](const char* key, const auto& field) {
    if constexpr (std::is_convertible_v<decltype(field), std::string_view>) {
      // Paths are bytes, of which a property list does not hold all.
      std::string text = displayText(field);
      std::ranges::replace_if(text, [](char c) { return c >= 0 && c < ' '; }, ' ');
      fields->set(key, std::move(text));
    } else {
      fields->set(key, field);
    }
  });
  fields->set("seenUntil", static_cast<std::int64_t>(record.seenUntil.since.count()));
  if (record.lastBatch) {
    const std::int64_t lastBatch = record.lastBatch->time_since_epoch().count();
    fields->set("lastBatch", lastBatch);
  }
  const Result<std::string, PropertyListError> text = writeXMLPropertyList(fields);
  return text ? *text : std::string();
}

Result<WatcherRecord, StoreError> parseWatcherRecord(std::string_view text,
                                                     std::string_view shownPath) {
  const Result<Value, PropertyListError> root = readPropertyList(text);
  const std::shared_ptr<Dictionary> fields = root ? root->dictionary() : nullptr;
  if (!fields) return damageError(shownPath, "it is no dictionary");
  WatcherRecord record;
  Reader read{*fields};
  forEachField(record, [&](const char* key, auto& field) { read(key, field); });
  std::int64_t seenUntil = 0;
  read("seenUntil", seenUntil);
  record.seenUntil.since = std::chrono::microseconds(seenUntil);
  if (fields->contains("lastBatch")) {
    std::int64_t lastBatch = 0;
    read("lastBatch", lastBatch);
    record.lastBatch = Date{std::chrono::microseconds(lastBatch)};
  }
  if (!read.isWhole) return damageError(shownPath, "something is missing");
  return record;
}

Result<WatcherRecord, StoreError> readWatcherRecord(const std::string& folder) {
  const Result<std::string, StoreError> text = readText(folder + kName);
  if (!text) return text.error();
  return parseWatcherRecord(*text, folder + kName);
}

std::optional<StoreError> writeWatcherRecord(const std::string& folder,
                                             const WatcherRecord& record) {
  const std::string path = folder + kName;
  const std::string beside = path + ".tmp";
  std::string text = printWatcherRecord(record);
  text.resize((text.size() + kRoom - 1) / kRoom * kRoom, '\n');
  if (std::optional<StoreError> error = overwrite(beside, text)) return error;
  if (::renameat2(AT_FDCWD, beside.c_str(), AT_FDCWD, path.c_str(), RENAME_EXCHANGE) == 0) {
    return std::nullopt;
  }
  if (std::rename(beside.c_str(), path.c_str()) != 0) return systemError(errno, "replace", path);
  // The room of the next one, while there is some; else that one says so.
  static_cast<void>(overwrite(beside, text));
  return std::nullopt;
}

}  // namespace vt
