#include "worker/Sandbox.h"

#include <fcntl.h>
#include <grp.h>
#include <linux/landlock.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "worker/WorkerProtocol.h"

namespace vt::worker {
namespace {

// "nobody" of every Linux: it owns no file by convention.
constexpr uid_t kNobody = 65534;

// Those of all processes of the account count, of which nobody knows how many there are. Many more
// than a decoder starts, and too few to hurt the machine.
constexpr rlim_t kThreads = 4096;

constexpr const char* kReadableFolders[] = {
    "/usr/lib",
    "/lib",
    "/lib64",
    "/usr/share/fonts",
    "/usr/local/share/fonts",
    "/usr/share/fontconfig",
    "/usr/share/poppler",
    "/etc/fonts",
    "/var/cache/fontconfig",
    "/usr/share/xml/fontconfig",
    VT_WORKER_MODULES,
};
constexpr const char* kReadableFiles[] = {"/etc/ld.so.cache", "/dev/null", "/dev/urandom"};

#ifndef LANDLOCK_ACCESS_FS_REFER
#define LANDLOCK_ACCESS_FS_REFER (1ULL << 13)
#endif
#ifndef LANDLOCK_ACCESS_FS_TRUNCATE
#define LANDLOCK_ACCESS_FS_TRUNCATE (1ULL << 14)
#endif

/// Every access that version `abi` of Landlock can forbid, of those known here.
std::uint64_t accessesOf(int abi) {
  std::uint64_t accesses = (LANDLOCK_ACCESS_FS_MAKE_SYM << 1) - 1;
  if (abi >= 2) accesses |= LANDLOCK_ACCESS_FS_REFER;
  if (abi >= 3) accesses |= LANDLOCK_ACCESS_FS_TRUNCATE;
  return accesses;
}

bool allow(int rules, const char* path, std::uint64_t accesses) {
  const int place = ::open(path, O_PATH | O_CLOEXEC);
  if (place < 0) return true;  // what is not there needs no leave
  const landlock_path_beneath_attr beneath{accesses, place};
  const bool allowed =
      ::syscall(SYS_landlock_add_rule, rules, LANDLOCK_RULE_PATH_BENEATH, &beneath, 0) == 0;
  ::close(place);
  return allowed;
}

bool limit(__rlimit_resource resource, rlim_t most) {
  const rlimit both{most, most};
  return ::setrlimit(resource, &both) == 0;
}

}  // namespace

bool dropRoot() {
  if (::geteuid() != 0 && ::getuid() != 0) return true;
  return ::setgroups(0, nullptr) == 0 && ::setresgid(kNobody, kNobody, kNobody) == 0 &&
         ::setresuid(kNobody, kNobody, kNobody) == 0 && ::setuid(0) != 0;
}

bool raiseLandlock() {
  const long abi =
      ::syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
  if (abi < 1) return false;
  landlock_ruleset_attr attributes{};
  attributes.handled_access_fs = accessesOf(static_cast<int>(abi));
  const int rules =
      static_cast<int>(::syscall(SYS_landlock_create_ruleset, &attributes, sizeof attributes, 0));
  if (rules < 0) return false;
  bool stands = true;
  for (const char* folder : kReadableFolders) {
    stands =
        stands && allow(rules, folder, LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_READ_DIR);
  }
  for (const char* file : kReadableFiles) {
    stands = stands && allow(rules, file, LANDLOCK_ACCESS_FS_READ_FILE);
  }
  stands = stands && ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           ::syscall(SYS_landlock_restrict_self, rules, 0) == 0;
  ::close(rules);
  return stands;
}

bool limitResources() {
#ifndef __SANITIZE_ADDRESS__  // which reserves terabytes of address space
  if (!limit(RLIMIT_AS, kAddressSpace)) return false;
#endif
  return limit(RLIMIT_CPU, kProcessorSeconds) && limit(RLIMIT_FSIZE, 0) &&
         limit(RLIMIT_NOFILE, 64) && limit(RLIMIT_NPROC, kThreads) && limit(RLIMIT_CORE, 0);
}

}  // namespace vt::worker
