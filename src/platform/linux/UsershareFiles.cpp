#include "platform/linux/UsershareFiles.h"

#include <errno.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <system_error>

#include "platform/linux/FileDescriptor.h"

namespace vt {
namespace {

constexpr std::string_view kUsershare = "user's share";
constexpr std::size_t kLongestFile = 10240;
// Characters that no share's name may hold.
constexpr std::string_view kForbidden = "%<>*?|/\\+=;:\",";

std::string systemText(int number) { return std::generic_category().message(number); }

/// The names in the folder, sorted; an error when it cannot be read.
Result<std::vector<std::string>, std::error_code> namesIn(const std::string& folder) {
  std::vector<std::string> names;
  std::error_code error;
  std::filesystem::directory_iterator entry(folder, error);
  for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
    std::string name = entry->path().filename().string();
    // Samba's own way of calling a file that it is still writing.
    if (!name.starts_with(":tmp")) names.push_back(std::move(name));
  }
  if (error) return error;
  std::ranges::sort(names);
  return names;
}

struct OwnedText {
  std::string text;
  uid_t owner = 0;
};

Result<OwnedText, ConfigurationError> readRegularFile(const std::string& path) {
  // Not blocking, or opening a FIFO would wait for somebody to write into it.
  const FileDescriptor file(
      ::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (!file) {
    const int reason = errno;
    if (reason == ELOOP) return ConfigurationError{"its file is no regular file"};
    return ConfigurationError{fmt::format("its file cannot be read: {}", systemText(reason))};
  }
  struct stat status{};
  if (::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
    return ConfigurationError{"its file is no regular file"};
  }
  OwnedText result{std::string(kLongestFile + 1, '\0'), status.st_uid};
  std::size_t length = 0;
  while (length < result.text.size()) {
    const ssize_t count =
        ::read(file.get(), result.text.data() + length, result.text.size() - length);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return ConfigurationError{systemText(errno)};
    if (count == 0) break;
    length += static_cast<std::size_t>(count);
  }
  if (length > kLongestFile) return ConfigurationError{"its file is too long"};
  result.text.resize(length);
  return result;
}

/// Why the folder at `path` may not be shared by `owner`.
std::optional<std::string> refusal(const std::string& path, uid_t owner, bool ownOnly) {
  if (!path.starts_with('/')) return "its path is not absolute";
  struct stat status{};
  if (::stat(path.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
    return fmt::format("{} is no folder", path);
  }
  if (ownOnly && owner != 0 && status.st_uid != owner) {
    return fmt::format("{} does not belong to the user who shares it", path);
  }
  return std::nullopt;
}

}  // namespace

Result<SharedFolder, ConfigurationError> parseUsershareFile(std::string_view fileName,
                                                            std::string_view text) {
  const auto next = [&text] { return trimmed(cutLine(text)); };
  const std::string_view version = next();
  if (version != "#VERSION 1" && version != "#VERSION 2") {
    return ConfigurationError{"its file has no version that is known"};
  }
  SharedFolder share{std::string(fileName), {}};
  // The order is fixed. A file of version 1 ends after the third of these.
  for (const std::string_view key :
       {"path=", "comment=", "usershare_acl=", "guest_ok=", "sharename="}) {
    const bool mayBeMissing = key == "guest_ok=" || key == "sharename=";
    if (mayBeMissing && text.empty()) break;
    const std::string_view line = next();
    if (!line.starts_with(key)) {
      return ConfigurationError{fmt::format("its file has another line in place of \"{}\"", key)};
    }
    const std::string_view value = line.substr(key.size());
    if (key == "path=") share.path = value;
    if (key == "sharename=") {
      if (sambaName(value) != sambaName(fileName)) {
        return ConfigurationError{"its file is named otherwise"};
      }
      share.name = value;
    }
  }
  if (share.name.find_first_of(kForbidden) != std::string::npos) {
    return ConfigurationError{"its name holds a forbidden character"};
  }
  return share;
}

namespace {

Result<SharedFolder, ConfigurationError> readUsershare(const std::string& path,
                                                       const std::string& fileName,
                                                       const SambaConfiguration& configuration) {
  const Result<OwnedText, ConfigurationError> file = readRegularFile(path);
  if (!file) return file.error();
  Result<SharedFolder, ConfigurationError> share = parseUsershareFile(fileName, file->text);
  if (!share) return share;
  if (configuration.sectionNames.contains(sambaName(share->name))) {
    return ConfigurationError{"the configuration has a share of that name"};
  }
  if (auto why = refusal(share->path, file->owner, configuration.userSharesOwnOnly)) {
    return ConfigurationError{std::move(*why)};
  }
  return share;
}

}  // namespace

SharedFolders readUsershareFiles(const std::string& folder,
                                 const SambaConfiguration& configuration) {
  SharedFolders shares;
  struct stat status{};
  if (::stat(folder.c_str(), &status) != 0) return shares;
  if (status.st_uid != 0 || (status.st_mode & S_ISVTX) == 0 || (status.st_mode & S_IWOTH) != 0) {
    shares.notes.push_back(
        fmt::format("users' shares are left out: {} is not root's, not sticky or writable by "
                    "everybody",
                    folder));
    return shares;
  }
  const Result<std::vector<std::string>, std::error_code> names = namesIn(folder);
  if (!names) {
    shares.notes.push_back(fmt::format("users' shares are left out: {} cannot be read: {}", folder,
                                       names.error().message()));
    return shares;
  }
  for (const std::string& name : *names) {
    const Result<SharedFolder, ConfigurationError> share =
        readUsershare(fmt::format("{}/{}", folder, name), name, configuration);
    if (!share) {
      shares.addNote(kUsershare, name, share.error().text);
    } else if (shares.folders.size() >= configuration.usershareLimit) {
      shares.addNote(kUsershare, name, "users have declared more shares than they may");
    } else {
      shares.add(kUsershare, share->name, share->path);
    }
  }
  return shares;
}

}  // namespace vt
