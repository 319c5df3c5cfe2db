// The rule by which a hit is shown to a user: decided from owner, group and permission bits of the
// file and of every directory above it.

#include <cxxabi.h>

#include <cstdlib>
#include <exception>
#include <memory>
#include <typeinfo>

#include "directory/VTUser.h"
#include "foundation/NSLog.h"
#include "foundation/UTF8.h"
#include "platform/Files.h"
#include "platform/Platform.h"

namespace vt {
namespace {

// To search counts as to read.
constexpr std::uint32_t kOthersMayReadOrSearch = 0005;
constexpr std::uint32_t kGroupMayReadOrSearch = 0050;

std::string nameOf(const std::exception& exception) {
  const char* mangled = typeid(exception).name();
  const std::unique_ptr<char, decltype(&std::free)> name(
      abi::__cxa_demangle(mangled, nullptr, nullptr, nullptr), std::free);
  return name ? name.get() : mangled;
}

/// Counted as the platform's texts are, in UTF-16 units, of which an astral character has two.
bool isLongerThanOneCharacter(const std::string& path) {
  if (path.empty()) return false;
  const DecodedCodePoint first = decodeCodePoint(path);
  return path.size() > first.length || first.codePoint > 0xFFFF;
}

/// "/a/b" for "/a/b/c" and "/a/b/c/"; "/" for "/a"; "" for "a".
std::string withoutLastComponent(const std::string& path) {
  std::size_t end = path.find_last_not_of('/');
  if (end == path.npos) return path.empty() ? "" : "/";
  end = path.find_last_of('/', end);
  if (end == path.npos) return "";
  end = path.find_last_not_of('/', end);
  return end == path.npos ? "/" : path.substr(0, end + 1);
}

}  // namespace

bool VTUser::statusAllowsAccess(const std::string& path) const {
  const std::optional<FileRights> status = Platform::current().files().status(path);
  if (!status) return false;
  if (status->ownerId == uid_) return true;
  if ((status->permissions & kOthersMayReadOrSearch) != 0) return true;
  const std::int32_t* group = groups();
  if (!group) return false;
  if ((status->permissions & kGroupMayReadOrSearch) == 0) return false;
  for (; *group >= 0; ++group) {
    if (static_cast<std::uint64_t>(*group) == status->groupId) return true;
  }
  return false;
}

bool VTUser::accessAllowedToFileIntern(const std::string& path) const {
  if (uid_ == 0) return true;
  try {
    return statusAllowsAccess(path);
  } catch (const std::exception& exception) {
    NSLog("User.accessAllowedToFileIntern: Caught for path %@ - %@: %@", path, nameOf(exception),
          exception.what());
    return false;
  }
}

bool VTUser::accessAllowedToPath(const std::string& path) const {
  bool allowed = false;
  for (std::string current = path; isLongerThanOneCharacter(current);
       current = withoutLastComponent(current)) {
    allowed = accessAllowedToFileIntern(current);
    if (!allowed) return false;
  }
  return allowed;
}

}  // namespace vt
