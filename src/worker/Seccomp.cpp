#include <errno.h>
#include <fcntl.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <seccomp.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <utility>
#include <vector>

#include "worker/DecoderFilter.h"
#include "worker/Sandbox.h"

namespace vt::worker {
namespace {

/// A list of system calls, put in force as a whole.
class Filter {
 public:
  Filter() : context_(::seccomp_init(SCMP_ACT_KILL_PROCESS)) {}
  Filter(const Filter&) = delete;
  Filter& operator=(const Filter&) = delete;
  ~Filter() {
    if (context_) ::seccomp_release(context_);
  }

  void allow(std::initializer_list<int> calls) {
    for (const int call : calls) add(SCMP_ACT_ALLOW, call, {});
  }
  void allowWhere(int call, const scmp_arg_cmp& condition) {
    add(SCMP_ACT_ALLOW, call, {condition});
  }
  /// Makes the calls fail as ones that the kernel does not have or does not grant.
  void fail(int error, std::initializer_list<int> calls) {
    for (const int call : calls) add(SCMP_ACT_ERRNO(static_cast<unsigned>(error)), call, {});
  }
  void failWhere(int error, int call, const scmp_arg_cmp& condition) {
    add(SCMP_ACT_ERRNO(static_cast<unsigned>(error)), call, {condition});
  }

  bool putInForce() { return context_ && isGood_ && ::seccomp_load(context_) == 0; }

  /// As the kernel takes it; empty when it can't be had.
  std::vector<sock_filter> program() {
    const int file = ::memfd_create("filter", MFD_CLOEXEC);
    std::vector<sock_filter> program;
    if (file >= 0 && context_ && isGood_ && ::seccomp_export_bpf(context_, file) == 0) {
      const off_t size = ::lseek(file, 0, SEEK_END);
      program.resize(static_cast<std::size_t>(size) / sizeof(sock_filter));
      if (::pread(file, program.data(), static_cast<std::size_t>(size), 0) != size) program.clear();
    }
    ::close(file);
    return program;
  }

 private:
  void add(std::uint32_t action, int call, std::initializer_list<scmp_arg_cmp> conditions) {
    isGood_ =
        isGood_ && context_ &&
        ::seccomp_rule_add_array(context_, action, call, static_cast<unsigned>(conditions.size()),
                                 conditions.begin()) == 0;
  }

  scmp_filter_ctx context_;
  bool isGood_ = true;
};

// Stands for the number of the process that the list will be in force for. No process has it.
constexpr std::uint32_t kOwnNumber = 0x7E57'1D0F;

bool comparesWithOwnNumber(const sock_filter& instruction) {
  return instruction.code == (BPF_JMP | BPF_JEQ | BPF_K) && instruction.k == kOwnNumber;
}

scmp_arg_cmp masked(unsigned argument, scmp_datum_t mask, scmp_datum_t value) {
  return {argument, SCMP_CMP_MASKED_EQ, mask, value};
}

void allowDecoding(Filter& filter) {
  filter.allow({
      // memory
      SCMP_SYS(brk),
      SCMP_SYS(mmap),
      SCMP_SYS(munmap),
      SCMP_SYS(mremap),
      SCMP_SYS(mprotect),
      SCMP_SYS(madvise),
      SCMP_SYS(membarrier),
      // open files
      SCMP_SYS(read),
      SCMP_SYS(readv),
      SCMP_SYS(pread64),
      SCMP_SYS(write),
      SCMP_SYS(writev),
      SCMP_SYS(lseek),
      SCMP_SYS(close),
      SCMP_SYS(fstat),
      SCMP_SYS(dup),
      SCMP_SYS(pipe2),
      SCMP_SYS(eventfd2),
      SCMP_SYS(poll),
      SCMP_SYS(ppoll),
      SCMP_SYS(getdents64),
      SCMP_SYS(fadvise64),
      // names of files: whether one may be seen is for the other walls to say
      SCMP_SYS(newfstatat),
      SCMP_SYS(stat),
      SCMP_SYS(lstat),
      SCMP_SYS(statx),
      SCMP_SYS(access),
      SCMP_SYS(faccessat),
      SCMP_SYS(faccessat2),
      SCMP_SYS(readlink),
      SCMP_SYS(readlinkat),
      SCMP_SYS(getcwd),
      SCMP_SYS(statfs),
      SCMP_SYS(fstatfs),
      // threads
      SCMP_SYS(futex),
      SCMP_SYS(set_robust_list),
      SCMP_SYS(rseq),
      SCMP_SYS(set_tid_address),
      SCMP_SYS(sched_getaffinity),
      SCMP_SYS(sched_yield),
      SCMP_SYS(exit),
      SCMP_SYS(exit_group),
      // signals to itself
      SCMP_SYS(rt_sigaction),
      SCMP_SYS(rt_sigprocmask),
      SCMP_SYS(rt_sigreturn),
      SCMP_SYS(sigaltstack),
      SCMP_SYS(restart_syscall),
      // about itself and the time
      SCMP_SYS(getpid),
      SCMP_SYS(gettid),
      SCMP_SYS(getuid),
      SCMP_SYS(geteuid),
      SCMP_SYS(getgid),
      SCMP_SYS(getegid),
      SCMP_SYS(getppid),
      SCMP_SYS(uname),
      SCMP_SYS(sysinfo),
      SCMP_SYS(getrusage),
      SCMP_SYS(getrandom),
      SCMP_SYS(clock_gettime),
      SCMP_SYS(clock_getres),
      SCMP_SYS(clock_nanosleep),
      SCMP_SYS(nanosleep),
      SCMP_SYS(gettimeofday),
      SCMP_SYS(time),
      SCMP_SYS(times),
      SCMP_SYS(getcpu),
      SCMP_SYS(umask),
  });
  // Never for writing, which libraries try for files of their own.
  for (const auto& [call, flags] : {std::pair{SCMP_SYS(open), 1U}, {SCMP_SYS(openat), 2U}}) {
    const scmp_datum_t making = O_CREAT | O_TRUNC;
    filter.allowWhere(call, masked(flags, O_ACCMODE | making, O_RDONLY));
    filter.failWhere(EACCES, call, masked(flags, O_ACCMODE, O_WRONLY));
    filter.failWhere(EACCES, call, masked(flags, O_ACCMODE, O_RDWR));
    filter.failWhere(EACCES, call, masked(flags, O_CREAT, O_CREAT));
    filter.failWhere(EACCES, call, masked(flags, O_TRUNC, O_TRUNC));
  }
  filter.allowWhere(SCMP_SYS(clone), masked(0, CLONE_THREAD, CLONE_THREAD));
  for (const int command : {F_GETFD, F_SETFD, F_GETFL, F_SETFL, F_DUPFD, F_DUPFD_CLOEXEC}) {
    filter.allowWhere(SCMP_SYS(fcntl), {1, SCMP_CMP_EQ, static_cast<scmp_datum_t>(command), 0});
  }
  filter.allowWhere(SCMP_SYS(prctl), {0, SCMP_CMP_EQ, PR_SET_NAME, 0});
  // glibc then takes clone(), whose flags can be looked at.
  filter.fail(ENOSYS, {SCMP_SYS(clone3)});
  filter.fail(ENOTTY, {SCMP_SYS(ioctl)});
  filter.fail(ENOTSOCK, {SCMP_SYS(getpeername)});  // before it logs, GLib asks who reads it
  // Libraries try these and do without.
  filter.fail(EPERM, {SCMP_SYS(sched_setscheduler), SCMP_SYS(sched_setaffinity),
                      SCMP_SYS(sched_getscheduler), SCMP_SYS(sched_getparam), SCMP_SYS(setpriority),
                      SCMP_SYS(memfd_create), SCMP_SYS(mlock), SCMP_SYS(get_mempolicy),
                      SCMP_SYS(set_mempolicy), SCMP_SYS(mbind)});
}

}  // namespace

std::optional<DecoderFilter> DecoderFilter::make() {
  Filter filter;
  allowDecoding(filter);
  // abort() ends the process itself by it. The worker and its caller are to be seen, and may be of
  // the same account.
  filter.allowWhere(SCMP_SYS(tgkill), {0, SCMP_CMP_EQ, kOwnNumber, 0});
  // What it may ask of its limits: nothing but what they are.
  filter.allowWhere(SCMP_SYS(prlimit64), {2, SCMP_CMP_EQ, 0, 0});
  // The next file comes through it.
  filter.allowWhere(SCMP_SYS(recvmsg), {0, SCMP_CMP_EQ, kChildSocket, 0});
  std::vector<sock_filter> program = filter.program();
  if (std::ranges::count_if(program, comparesWithOwnNumber) != 1) return std::nullopt;
  return DecoderFilter(std::move(program));
}

bool DecoderFilter::putInForce() const {
  std::vector<sock_filter> program = program_;
  std::ranges::find_if(program, comparesWithOwnNumber)->k = static_cast<std::uint32_t>(::getpid());
  const sock_fprog all{static_cast<unsigned short>(program.size()), program.data()};
  return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
         ::syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, 0, &all) == 0;
}

bool raiseSeccompForWorker() {
  Filter filter;
  allowDecoding(filter);
  filter.allow({SCMP_SYS(fork), SCMP_SYS(wait4), SCMP_SYS(waitid), SCMP_SYS(pidfd_open),
                SCMP_SYS(kill), SCMP_SYS(tgkill), SCMP_SYS(recvmsg), SCMP_SYS(sendmsg),
                SCMP_SYS(recvfrom), SCMP_SYS(sendto), SCMP_SYS(prlimit64), SCMP_SYS(setrlimit),
                SCMP_SYS(seccomp), SCMP_SYS(dup2)});
  // Two ends that lead to each other alone.
  filter.allowWhere(SCMP_SYS(socketpair), {0, SCMP_CMP_EQ, AF_UNIX, 0});
  // fork() of glibc; a new namespace is no process that decodes.
  const scmp_datum_t others = ~static_cast<scmp_datum_t>(0xff | CLONE_CHILD_CLEARTID |
                                                         CLONE_CHILD_SETTID | CLONE_PARENT_SETTID);
  filter.allowWhere(SCMP_SYS(clone), masked(0, others & 0xffffffffU, 0));
  // libseccomp asks for these before it loads the decoder's list.
  filter.allowWhere(SCMP_SYS(prctl), {0, SCMP_CMP_EQ, PR_SET_NO_NEW_PRIVS, 0});
  filter.allowWhere(SCMP_SYS(prctl), {0, SCMP_CMP_EQ, PR_GET_SECCOMP, 0});
  filter.allowWhere(SCMP_SYS(prctl), {0, SCMP_CMP_EQ, PR_SET_PDEATHSIG, 0});
  return filter.putInForce();
}

}  // namespace vt::worker
