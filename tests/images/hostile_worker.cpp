// An image worker whose decoder does what the file's first word says, to see that it cannot. It
// gives a picture of one red pixel when it got its way and of one green pixel when it was refused.

#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "images/worker/ImageTask.h"
#include "worker/ReadInput.h"
#include "worker/WorkerMain.h"

namespace {

using vt::Image;
using vt::worker::DecodeJob;

Image pixel(const char* rgba) { return {1, 1, std::string(rgba, 4)}; }

Image verdict(bool gotItsWay) { return pixel(gotItsWay ? "\xff\0\0\xff" : "\0\xff\0\xff"); }

bool canOpen(const std::string& path, int flags) { return open(path.c_str(), flags, 0600) >= 0; }

bool leaks() {
  // Whatever is open besides the file, the pipe and the standard ones.
  int count = 0;
  for (int descriptor = 0; descriptor < 64; ++descriptor) {
    count += fcntl(descriptor, F_GETFD) >= 0 ? 1 : 0;
  }
  return count > 4;  // output, errors, the file, the pipe
}

/// Whether so many threads can be alive at once.
bool startsThreads(int most) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, 16384);
  for (int i = 0; i < most; ++i) {
    pthread_t thread{};
    const auto wait = [](void*) -> void* { return poll(nullptr, 0, -1), nullptr; };
    if (pthread_create(&thread, &attributes, wait, nullptr) != 0) return false;
  }
  return true;
}

std::optional<Image> misbehave(const DecodeJob& job) {
  const std::string text = vt::worker::readBeginning(job.descriptor, 4096);
  const std::string deed = text.substr(0, text.find(' '));
  const std::string what = text.size() > deed.size() ? text.substr(deed.size() + 1) : "";
  if (deed == "behave") return verdict(false);
  if (deed == "read") return verdict(canOpen(what, O_RDONLY));
  if (deed == "write") return verdict(canOpen(what, O_WRONLY | O_CREAT));
  if (deed == "truncate") return verdict(canOpen(what, O_RDONLY | O_TRUNC));
  if (deed == "write-input") return verdict(write(job.descriptor, "x", 1) == 1);
  if (deed == "unlink") return verdict(unlink(what.c_str()) == 0);
  if (deed == "symlink") return verdict(symlink("/etc/passwd", what.c_str()) == 0);
  if (deed == "chmod") return verdict(chmod(what.c_str(), 0777) == 0);
  if (deed == "exec") return verdict(execl("/bin/true", "true", nullptr) == 0);
  if (deed == "fork") return verdict(fork() >= 0);
  if (deed == "vfork") return verdict(syscall(SYS_vfork) >= 0);
  if (deed == "socket") return verdict(socket(AF_INET, SOCK_STREAM, 0) >= 0);
  if (deed == "unix-socket") return verdict(socket(AF_UNIX, SOCK_STREAM, 0) >= 0);
  if (deed == "ptrace") return verdict(ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0);
  if (deed == "kill") return verdict(kill(getppid(), SIGKILL) == 0);
  if (deed == "kill-by-thread") return verdict(syscall(SYS_tgkill, getppid(), getppid(), 9) == 0);
  if (deed == "many-threads") return verdict(startsThreads(5000));
  if (deed == "regain-root") return verdict(setuid(0) == 0);
  if (deed == "unshare") return verdict(syscall(SYS_unshare, 0x10000000) == 0);
  if (deed == "mount") return verdict(syscall(SYS_mount, "none", "/", "tmpfs", 0, "") == 0);
  if (deed == "keyctl") return verdict(syscall(SYS_keyctl, 0, -3, 0) >= 0);
  if (deed == "bpf") return verdict(syscall(SYS_bpf, 0, nullptr, 0) >= 0);
  if (deed == "io-uring") return verdict(syscall(SYS_io_uring_setup, 1, nullptr) >= 0);
  if (deed == "raise-limit") {
    const unsigned long limits[2] = {~0UL, ~0UL};
    return verdict(syscall(SYS_prlimit64, 0, 9 /* RLIMIT_AS */, limits, nullptr) == 0);
  }
  if (deed == "leak") return verdict(leaks());
  if (deed == "who") return verdict(geteuid() == 0 || getuid() == 0);
  if (deed == "crash") abort();
  if (deed == "exit") _exit(0);
  if (deed == "throw") throw 1;
  if (deed == "nothing") return std::nullopt;
  if (deed == "short") return Image{4, 4, "abcd"};
  if (deed == "too-wide") return Image{job.width + 1, 1, std::string((job.width + 1) * 4, 'x')};
  if (deed == "too-much") {
    return Image{job.width * 2, job.height * 2, std::string(16UL * job.width * job.height, 'x')};
  }
  if (deed == "spin") {
    for (volatile bool forEver = true; forEver;) {
    }
  }
  if (deed == "wait") poll(nullptr, 0, -1);
  if (deed == "memory") {
    std::vector<std::string> hoard;
    for (;;) hoard.emplace_back(std::size_t{64} << 20, 'x');
  }
  if (deed == "threads") {
    std::thread other([] {});
    other.join();
    return verdict(false);
  }
  if (deed == "garbage") {
    // As the pipe is the highest descriptor of this process.
    for (int descriptor = 63; descriptor > 2; --descriptor) {
      if (descriptor != job.descriptor && write(descriptor, "garbage", 7) == 7) break;
    }
    return verdict(false);
  }
  return std::nullopt;
}

}  // namespace

int main(int argc, char** argv) {
#ifdef VT_FILE_LIMIT_MILLIS  // to see in less time what becomes of a file that takes too long
  constexpr std::chrono::milliseconds kLimit{VT_FILE_LIMIT_MILLIS};
#else
  constexpr std::chrono::milliseconds kLimit = vt::worker::kFileLimit;
#endif
  return vt::worker::runWorker(
      argc, argv, vt::worker::imageTasks([](vt::ImageFormat) { return misbehave; }), kLimit);
}
