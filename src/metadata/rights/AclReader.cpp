#include "metadata/rights/AclReader.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/syscall.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <utility>
#include <vector>

namespace vt {
namespace {

constexpr const char* kAttribute = "system.posix_acl_access";

// Room for 63 entries; longer lists are read again into a buffer of the largest size there is.
constexpr std::size_t kUsualBytes = 4 + 63 * 8;
constexpr std::size_t kMostBytes = 65536;

#ifdef __NR_getxattrat
constexpr long kGetxattrat = __NR_getxattrat;
#else
constexpr long kGetxattrat = 464;  // one number on every architecture; newer than our headers
#endif

struct XattrArguments {
  std::uint64_t value;
  std::uint32_t size;
  std::uint32_t flags;
};

ssize_t getByName(int folder, const char* name, std::span<std::uint8_t> bytes) {
  XattrArguments arguments{reinterpret_cast<std::uintptr_t>(bytes.data()),
                           static_cast<std::uint32_t>(bytes.size()), 0};
  const long size = syscall(kGetxattrat, folder, name, AT_SYMLINK_NOFOLLOW, kAttribute, &arguments,
                            sizeof arguments);
  // A filter on system calls may say EPERM to what it does not know.
  if (size >= 0 || (errno != ENOSYS && errno != EPERM)) return size;
  const std::string path = fmt::format("/proc/self/fd/{}/{}", folder, name);
  return lgetxattr(path.c_str(), kAttribute, bytes.data(), bytes.size());
}

template <class Get>
AclReading read(Get get) {
  std::array<std::uint8_t, kUsualBytes> usual;
  std::vector<std::uint8_t> large;
  std::span<std::uint8_t> bytes = usual;
  ssize_t size = get(bytes);
  if (size < 0 && errno == ERANGE) {
    large.resize(kMostBytes);
    bytes = large;
    size = get(bytes);
  }
  if (size < 0) return {errno == ENODATA || errno == EOPNOTSUPP, std::nullopt};
  auto list = AccessControlList::parse(bytes.first(static_cast<std::size_t>(size)));
  if (!list) return {false, std::nullopt};
  return {true, std::move(list).value()};
}

}  // namespace

AclReading readAcl(int descriptor) {
  return read([&](std::span<std::uint8_t> bytes) {
    return fgetxattr(descriptor, kAttribute, bytes.data(), bytes.size());
  });
}

AclReading readAcl(int folder, const char* name) {
  return read([&](std::span<std::uint8_t> bytes) { return getByName(folder, name, bytes); });
}

AclPresence readAclBytes(int folder, const char* name, std::vector<std::uint8_t>& bytes) {
  bytes.resize(kUsualBytes);
  ssize_t size = getByName(folder, name, bytes);
  if (size < 0 && errno == ERANGE) {
    bytes.resize(kMostBytes);
    size = getByName(folder, name, bytes);
  }
  const int error = errno;
  bytes.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
  if (size >= 0) return AclPresence::kPresent;
  if (error == ENODATA) return AclPresence::kNone;
  return error == EOPNOTSUPP ? AclPresence::kNotKept : AclPresence::kUnknown;
}

}  // namespace vt
