#include "metadata/crawl/FileSystems.h"

#include <linux/magic.h>
#include <sys/vfs.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

namespace vt {
namespace {

// Not in our headers.
constexpr std::uint32_t kMqueueMagic = 0x19800202;
constexpr std::uint32_t kRpcPipeMagic = 0x67596969;
constexpr std::uint32_t kFuseControlMagic = 0x65735543;
constexpr std::uint32_t kConfigMagic = 0x62656570;

// An automount point that nothing is mounted on yet is one too: looking into it would mount.
constexpr auto kPseudo = std::to_array<std::uint32_t>(
    {PROC_SUPER_MAGIC,    SYSFS_MAGIC,         DEVPTS_SUPER_MAGIC, CGROUP_SUPER_MAGIC,
     CGROUP2_SUPER_MAGIC, SECURITYFS_MAGIC,    DEBUGFS_MAGIC,      TRACEFS_MAGIC,
     PSTOREFS_MAGIC,      BPF_FS_MAGIC,        SELINUX_MAGIC,      SMACK_MAGIC,
     EFIVARFS_MAGIC,      BINFMTFS_MAGIC,      NSFS_MAGIC,         HUGETLBFS_MAGIC,
     kMqueueMagic,        kRpcPipeMagic,       kFuseControlMagic,  kConfigMagic,
     AUTOFS_SUPER_MAGIC,  BINDERFS_SUPER_MAGIC});

/// Whether the kernel lists the device as a devtmpfs, whose number is that of any tmpfs.
bool isDeviceFileSystem(std::uint64_t device) {
  std::ifstream mounts("/proc/self/mountinfo");
  for (std::string line; std::getline(mounts, line);) {
    // 28 1 0:6 / /dev rw,relatime shared:2 - devtmpfs udev rw
    unsigned major = 0;
    unsigned minor = 0;
    if (std::sscanf(line.c_str(), "%*u %*u %u:%u", &major, &minor) != 2) continue;
    const std::uint64_t listed = static_cast<std::uint64_t>(major) << 32 | minor;
    if (listed == device && line.find(" - devtmpfs ") != std::string::npos) return true;
  }
  return false;
}

}  // namespace

bool FileSystems::holdsFiles(std::uint64_t device, int folder) {
  if (const auto known = holdsFiles_.find(device); known != holdsFiles_.end()) return known->second;
  struct statfs system{};
  if (fstatfs(folder, &system) != 0) return false;
  const auto type = static_cast<std::uint32_t>(system.f_type);
  const bool isPseudo = std::ranges::find(kPseudo, type) != kPseudo.end() ||
                        (type == TMPFS_MAGIC && isDeviceFileSystem(device));
  return holdsFiles_[device] = !isPseudo;
}

}  // namespace vt
