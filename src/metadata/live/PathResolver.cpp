#include "metadata/live/PathResolver.h"

#include <fcntl.h>
#include <unistd.h>

#include <climits>
#include <utility>

namespace vt {
namespace {

constexpr int kMostLinks = 40;  // the kernel's own limit
constexpr int kNameOnly = O_PATH | O_NOFOLLOW | O_CLOEXEC;

std::optional<std::string> linkTarget(int link) {
  std::string target(PATH_MAX, '\0');
  const ssize_t size = readlinkat(link, "", target.data(), target.size());
  if (size <= 0) return std::nullopt;
  target.resize(static_cast<std::size_t>(size));
  return target;
}

/// Takes the first step off `path`: "a" of "a//b/"; "" when none is left.
std::string takeStep(std::string& path) {
  const std::size_t start = path.find_first_not_of('/');
  if (start == std::string::npos) {
    path.clear();
    return {};
  }
  const std::size_t end = path.find('/', start);
  std::string step = path.substr(start, end - start);
  path.erase(0, end);  // npos: all of it
  return step;
}

/// Whether each step of an absolute path is a name, so that adding a name gives such a path again.
bool isPlain(std::string_view path) {
  if (path == "/") return true;
  while (path.starts_with('/')) {
    path.remove_prefix(1);
    const std::string_view step = path.substr(0, path.find('/'));
    if (step.empty() || step == "." || step == "..") return false;
    path.remove_prefix(step.size());
  }
  return true;
}

}  // namespace

AclReading readAclOf(const ResolvedPath& found) {
  if (found.folder.isOpen()) return readAcl(found.folder.get(), found.name.c_str());
  return readAcl(found.file.get(), ".");  // it is a folder then
}

bool maySearchFolder(int folder, const FileStatus& status, const AccessJudge& judge) {
  // By ".", since a descriptor of O_PATH cannot be asked for extended attributes itself.
  return judge.allows(status.ownership, kMaySearch, [&] { return readAcl(folder, "."); });
}

std::optional<ResolvedPath> resolvePath(std::string_view path, LastLink lastLink,
                                        const AccessJudge& judge) {
  if (!path.starts_with('/') || path.find('\0') != std::string_view::npos) return std::nullopt;
  std::string rest(path);
  int links = 0;
  ResolvedPath at;
  const auto startOver = [&] {
    at.file = Descriptor(open("/", kNameOnly | O_DIRECTORY));
    at.folder.close();
    at.canonicalPath.clear();
    const std::optional<FileStatus> status = statusOf(at.file.get());
    if (status) at.status = *status;
    return status.has_value();
  };
  if (!startOver()) return std::nullopt;

  for (;;) {
    const bool endsInSlash = rest.ends_with('/');
    const std::string step = takeStep(rest);
    if (step.empty()) break;
    if (!at.status.isFolder() || !maySearchFolder(at.file.get(), at.status, judge)) {
      return std::nullopt;
    }
    if (step == ".") continue;
    Descriptor next(openat(at.file.get(), step.c_str(), kNameOnly));
    const std::optional<FileStatus> status = next.isOpen() ? statusOf(next.get()) : std::nullopt;
    if (!status) return std::nullopt;

    const bool isLast = rest.empty() && !endsInSlash;
    if (status->isLink() && !(isLast && lastLink == LastLink::kKeep)) {
      const std::optional<std::string> target = linkTarget(next.get());
      if (!target || ++links > kMostLinks) return std::nullopt;
      rest = *target + (endsInSlash && rest.empty() ? "/" : rest);
      if (rest.starts_with('/') && !startOver()) return std::nullopt;
      continue;
    }
    at.folder = std::move(at.file);
    at.file = std::move(next);
    at.status = *status;
    at.name = step;
    if (step == "..") {
      at.folder.close();
      const std::size_t slash = at.canonicalPath.rfind('/');
      at.canonicalPath.resize(slash == std::string::npos ? 0 : slash);
    } else {
      at.canonicalPath += '/';
      at.canonicalPath += step;
    }
  }
  if (path.ends_with('/') && !at.status.isFolder()) return std::nullopt;
  if (at.canonicalPath.empty()) at.canonicalPath = "/";
  while (path.size() > 1 && path.ends_with('/')) path.remove_suffix(1);
  at.shownPath = isPlain(path) ? std::string(path) : at.canonicalPath;
  return at;
}

}  // namespace vt
