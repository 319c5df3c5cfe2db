#include "platform/linux/worker/BubblewrapArguments.h"

#include <unistd.h>

#include "worker/WorkerProtocol.h"

namespace vt {
namespace {

/// Shows the worker a file or folder of the machine, when it is there, where it is.
void show(const std::string& place, std::vector<std::string>& arguments) {
  // Else bubblewrap makes the folders above it, open to root alone.
  for (std::size_t end = place.find('/', 1); end != place.npos; end = place.find('/', end + 1)) {
    arguments.insert(arguments.end(), {"--perms", "0755", "--dir", place.substr(0, end)});
  }
  arguments.insert(arguments.end(), {"--ro-bind-try", place, place});
}

}  // namespace

std::vector<std::string> bubblewrapArguments(const std::string& program) {
  // Where the worker sees its own program.
  const std::string inner = program.substr(program.rfind('/'));
  std::vector<std::string> arguments = {"bwrap",         "--unshare-net", "--unshare-pid",
                                        "--unshare-ipc", "--unshare-uts", "--unshare-cgroup-try",
                                        "--new-session", "--cap-drop",    "ALL"};
  // No --die-with-parent: it goes by the thread that started us, which may end before its process.
  // The end of the socket is what ends the worker.
  if (::geteuid() == 0) {
    // It gives up root itself: only then can it still open its program, wherever that lies.
    arguments.insert(arguments.end(), {"--cap-add", "CAP_SETUID", "--cap-add", "CAP_SETGID"});
  } else {
    arguments.emplace_back("--unshare-user");
  }
  for (const char* place : {"/usr/lib", "/usr/lib64", "/usr/share/fonts", "/usr/local/share/fonts",
                            "/usr/share/fontconfig", "/usr/share/poppler", "/etc/fonts",
                            "/etc/ld.so.cache", "/var/cache/fontconfig", VT_WORKER_MODULES}) {
    show(place, arguments);
  }
  for (const char* library : {"lib", "lib64", "lib32"}) {
    arguments.insert(arguments.end(),
                     {"--symlink", std::string("usr/") + library, std::string("/") + library});
  }
  arguments.insert(arguments.end(), {"--ro-bind-try", "/usr/lib64", "/usr/lib64", "--ro-bind",
                                     program, inner, "--dev", "/dev", "--remount-ro", "/",
                                     "--chdir", "/", "--", inner, worker::kInsideBubblewrap});
  return arguments;
}

}  // namespace vt
