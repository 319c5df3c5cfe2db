// Runs a program as if on a machine that lacks what a sandbox is built of:
//
//   without_walls [namespaces] [landlock] [seccomp] -- PROGRAM [ARGUMENT…]
//
// The names are those of what is lacking, for the program and whatever it starts.

#include <errno.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/sched.h>
#include <linux/seccomp.h>
#include <stddef.h>
#include <stdio.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdint>
#include <vector>

namespace {

constexpr std::uint32_t kNamespaces = CLONE_NEWNS | CLONE_NEWCGROUP | CLONE_NEWUTS | CLONE_NEWIPC |
                                      CLONE_NEWUSER | CLONE_NEWPID | CLONE_NEWNET;

/// A list of refusals, put in force as a whole.
class Refusals {
 public:
  void add(std::uint32_t call, std::uint32_t error) {
    load(offsetof(seccomp_data, nr));
    append(BPF_JMP | BPF_JEQ | BPF_K, call, 0, 1);
    append(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | error);
  }
  /// Only where the first argument compares with `value`, by BPF_JSET or BPF_JEQ.
  void addWhere(std::uint32_t call, int comparison, std::uint32_t value, std::uint32_t error) {
    load(offsetof(seccomp_data, nr));
    append(BPF_JMP | BPF_JEQ | BPF_K, call, 0, 3);
    load(offsetof(seccomp_data, args));
    append(BPF_JMP | comparison | BPF_K, value, 0, 1);
    append(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | error);
  }
  bool putInForce() {
    append(BPF_RET | BPF_K, SECCOMP_RET_ALLOW);
    sock_fprog program{static_cast<unsigned short>(rules_.size()), rules_.data()};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
  }

 private:
  void load(std::uint32_t offset) { append(BPF_LD | BPF_W | BPF_ABS, offset); }
  void append(int code, std::uint32_t value, std::uint8_t ifTrue = 0, std::uint8_t ifFalse = 0) {
    rules_.push_back({static_cast<std::uint16_t>(code), ifTrue, ifFalse, value});
  }

  std::vector<sock_filter> rules_;
};

/// False for a name of no wall.
bool refuse(const char* wall, Refusals& refusals) {
  if (strcmp(wall, "namespaces") == 0) {
    refusals.add(SYS_clone3, ENOSYS);  // whose flags cannot be looked at; clone() is taken instead
    refusals.addWhere(SYS_clone, BPF_JSET, kNamespaces, EPERM);
    refusals.addWhere(SYS_unshare, BPF_JSET, kNamespaces, EPERM);
  } else if (strcmp(wall, "landlock") == 0) {
    refusals.add(SYS_landlock_create_ruleset, ENOSYS);
  } else if (strcmp(wall, "seccomp") == 0) {
    refusals.add(SYS_seccomp, ENOSYS);
    refusals.addWhere(SYS_prctl, BPF_JEQ, PR_SET_SECCOMP, EINVAL);
  } else {
    return false;
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  Refusals refusals;
  int next = 1;
  for (; next < argc && strcmp(argv[next], "--") != 0; ++next) {
    if (!refuse(argv[next], refusals)) return 125;
  }
  if (next + 1 >= argc || !refusals.putInForce()) return 125;
  execvp(argv[next + 1], argv + next + 1);
  perror(argv[next + 1]);
  return 127;
}
