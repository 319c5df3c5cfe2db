#pragma once

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>

#include "support/Program.h"
#include "support/ReadFile.h"
#include "support/RunningProgram.h"
#include "support/TemporaryFolder.h"

namespace vt {

/// A system bus of our own and, on demand, an Avahi daemon that is on nothing but the loopback
/// interface. One at a time on this machine: the daemons would hear each other.
class PrivateBus {
 public:
  /// The address of every bus of this process, whether there is one just now or not: the D-Bus
  /// library reads the address once in the life of a process.
  static std::string address() { return "unix:path=" + (folder() / "bus"); }

  PrivateBus()
      : lock_(::open((std::filesystem::temp_directory_path() / "vistaro-avahi-test.lock").c_str(),
                     O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600)) {
    if (lock_ < 0 || ::flock(lock_, LOCK_EX) != 0) throw std::runtime_error("no lock");
    writeFile(folder() / "bus.conf",
              "<busconfig><type>system</type><listen>unix:path=" + (folder() / "bus") +
                  "</listen><auth>EXTERNAL</auth><policy context=\"default\">"
                  "<allow user=\"*\"/><allow own=\"*\"/>"
                  "<allow send_type=\"method_call\"/><allow send_type=\"signal\"/>"
                  "<allow send_requested_reply=\"true\" send_type=\"method_return\"/>"
                  "<allow send_requested_reply=\"true\" send_type=\"error\"/>"
                  "<allow receive_type=\"method_call\"/><allow receive_type=\"signal\"/>"
                  "<allow receive_type=\"method_return\"/><allow receive_type=\"error\"/>"
                  "</policy></busconfig>");
    writeFile(folder() / "avahi.conf",
              "[server]\nallow-interfaces=lo\nuse-ipv6=no\nhost-name=vistaro-test\n");
    bus_ = std::make_unique<RunningProgram>(
        std::vector<std::string>{"dbus-daemon", "--config-file=" + (folder() / "bus.conf"),
                                 "--nofork", "--nopidfile", "--nosyslog", "--print-address"});
    if (bus_->waitForLine("unix:path=").empty()) {
      throw std::runtime_error("no dbus-daemon (see script/packages.txt): " + bus_->output());
    }
  }
  PrivateBus(const PrivateBus&) = delete;
  PrivateBus& operator=(const PrivateBus&) = delete;
  ~PrivateBus() {
    avahi_.reset();
    bus_.reset();
    std::filesystem::remove(folder() / "bus");
    ::close(lock_);
  }

  /// Starts the Avahi daemon and waits until it knows its host name, for about a second.
  void startAvahi() {
    // The daemon has one process-id file for the machine: let it have a folder of its own there.
    const char* own =
        "mount -t tmpfs tmpfs /run/avahi-daemon 2>/dev/null || mount -t tmpfs tmpfs /run; ";
    const std::string daemon = "exec avahi-daemon -f " + (folder() / "avahi.conf") +
                               " --no-rlimits --no-drop-root --no-chroot";
    const bool canHaveOwnMounts = runProgram({"unshare", "--mount", "true"}).exitCode == 0;
    const std::vector<std::string> command =
        canHaveOwnMounts ? std::vector<std::string>{"unshare", "--mount", "sh", "-c", own + daemon}
                         : std::vector<std::string>{"sh", "-c", daemon};
    avahi_ = std::make_unique<RunningProgram>(
        command, std::map<std::string, std::string>{{"DBUS_SYSTEM_BUS_ADDRESS", address()}});
    if (avahi_->waitForLine("startup complete").empty()) {
      throw std::runtime_error("no avahi-daemon (see script/packages.txt): " + avahi_->output());
    }
  }
  void stopAvahi() { avahi_.reset(); }

  /// What is seen on the network of type `_http._tcp`, as `avahi-browse -trp` prints it. Takes a
  /// second or two.
  std::string services() const {
    return runProgram({"avahi-browse", "-trp", "_http._tcp"},
                      {{"DBUS_SYSTEM_BUS_ADDRESS", address()}})
        .output;
  }

 private:
  static const TemporaryFolder& folder() {
    static const TemporaryFolder kFolder;
    return kFolder;
  }

  int lock_;
  std::unique_ptr<RunningProgram> bus_;
  std::unique_ptr<RunningProgram> avahi_;
};

}  // namespace vt
