#include "metadata/watch/FanotifyEvents.h"

#include <fcntl.h>
#include <sys/fanotify.h>

#include <cstddef>
#include <cstring>

namespace vt {
namespace {

constexpr std::size_t kFileSystemBytes = sizeof(fanotify_event_info_fid::fsid);
constexpr std::size_t kHandleHeadBytes = offsetof(file_handle, f_handle);

template <class Record>
bool readRecord(std::span<const char> bytes, Record& record) {
  if (bytes.size() < sizeof record) return false;
  std::memcpy(&record, bytes.data(), sizeof record);
  return true;
}

/// Reads what stands behind the head of an information record: file system, handle, name.
std::optional<FanotifyName> readName(std::span<const char> bytes) {
  if (bytes.size() < kFileSystemBytes + kHandleHeadBytes) return std::nullopt;
  std::uint32_t handleBytes = 0;
  std::memcpy(&handleBytes, bytes.data() + kFileSystemBytes, sizeof handleBytes);
  const std::size_t folderBytes = kFileSystemBytes + kHandleHeadBytes + handleBytes;
  if (handleBytes > MAX_HANDLE_SZ || bytes.size() <= folderBytes) return std::nullopt;
  const std::string_view name(bytes.data() + folderBytes, bytes.size() - folderBytes);
  const std::size_t end = name.find('\0');
  if (end == std::string_view::npos) return std::nullopt;
  return FanotifyName{{bytes.data(), folderBytes}, name.substr(0, end)};
}

bool readInformation(std::span<const char> bytes, FanotifyEvent& event) {
  while (!bytes.empty()) {
    fanotify_event_info_header head{};
    if (!readRecord(bytes, head) || head.len < sizeof head || head.len > bytes.size()) return false;
    const bool isNew = head.info_type == FAN_EVENT_INFO_TYPE_NEW_DFID_NAME;
    if (isNew || head.info_type == FAN_EVENT_INFO_TYPE_DFID_NAME ||
        head.info_type == FAN_EVENT_INFO_TYPE_OLD_DFID_NAME) {
      std::optional<FanotifyName> name = readName(bytes.first(head.len).subspan(sizeof head));
      if (!name) return false;
      (isNew ? event.newName : event.name) = name;
    }
    bytes = bytes.subspan(head.len);
  }
  return true;
}

}  // namespace

bool readFanotifyEvents(std::span<const char> bytes,
                        FunctionRef<void(const FanotifyEvent&)> visit) {
  while (!bytes.empty()) {
    fanotify_event_metadata head{};
    if (!readRecord(bytes, head) || head.vers != FANOTIFY_METADATA_VERSION ||
        head.metadata_len < sizeof head || head.event_len < head.metadata_len ||
        head.event_len > bytes.size()) {
      return false;
    }
    FanotifyEvent event;
    event.mask = head.mask;
    if (!readInformation(bytes.first(head.event_len).subspan(head.metadata_len), event)) {
      return false;
    }
    visit(event);
    bytes = bytes.subspan(head.event_len);
  }
  return true;
}

FanotifyFolder partsOf(std::string_view folder) {
  return {folder.substr(0, kFileSystemBytes), folder.substr(kFileSystemBytes)};
}

}  // namespace vt
