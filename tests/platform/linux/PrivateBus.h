#pragma once

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <filesystem>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/Program.h"
#include "support/ReadFile.h"
#include "support/RunningProgram.h"
#include "support/TemporaryFolder.h"

namespace vt {

/// A system bus and, on demand, an Avahi daemon that is on nothing but the loopback interface.
class PrivateBus {
 public:
  /// The bus is the socket "bus" in `folder`; the daemon's host is called `hostName`.
  PrivateBus(const TemporaryFolder& folder, std::string hostName)
      : folder_(folder.path()), hostName_(std::move(hostName)) {
    writeFile(folder_ / "bus.conf",
              "<busconfig><type>system</type><listen>" + addressIn(folder) +
                  "</listen><auth>EXTERNAL</auth><policy context=\"default\">"
                  "<allow user=\"*\"/><allow own=\"*\"/>"
                  "<allow send_type=\"method_call\"/><allow send_type=\"signal\"/>"
                  "<allow send_requested_reply=\"true\" send_type=\"method_return\"/>"
                  "<allow send_requested_reply=\"true\" send_type=\"error\"/>"
                  "<allow receive_type=\"method_call\"/><allow receive_type=\"signal\"/>"
                  "<allow receive_type=\"method_return\"/><allow receive_type=\"error\"/>"
                  "</policy></busconfig>");
    bus_ = std::make_unique<RunningProgram>(
        std::vector<std::string>{"dbus-daemon", "--config-file=" + (folder_ / "bus.conf").string(),
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
    std::filesystem::remove(folder_ / "bus");
  }

  static std::string addressIn(const TemporaryFolder& folder) {
    return "unix:path=" + (folder / "bus");
  }
  /// What makes a program use this bus.
  std::map<std::string, std::string> environment() const {
    return {{"DBUS_SYSTEM_BUS_ADDRESS", "unix:path=" + (folder_ / "bus").string()}};
  }

  /// Starts the Avahi daemon and waits until it knows its host name, for about a second. Of two
  /// daemons one must not publish the address that they share.
  void startAvahi(bool publishesAddresses = true) {
    writeFile(folder_ / "avahi.conf",
              "[server]\nallow-interfaces=lo\nuse-ipv6=no\nhost-name=" + hostName_ +
                  "\n[publish]\npublish-addresses=" + (publishesAddresses ? "yes" : "no") + "\n");
    const std::string daemon = "exec avahi-daemon -f " + (folder_ / "avahi.conf").string() +
                               " --no-rlimits --no-drop-root --no-chroot";
    // The daemon has one process-id file for the machine: let it have a folder of its own there.
    const char* ownFolder =
        "mkdir -p /run/avahi-daemon && mount -t tmpfs tmpfs /run/avahi-daemon && ";
    avahi_ = std::make_unique<RunningProgram>(
        canHaveOwnMounts()
            ? std::vector<std::string>{"unshare", "--mount", "sh", "-c", ownFolder + daemon}
            : std::vector<std::string>{"sh", "-c", daemon},
        environment());
    if (avahi_->waitForLine("startup complete").empty()) {
      throw std::runtime_error("no avahi-daemon (see script/packages.txt): " + avahi_->output());
    }
  }
  void stopAvahi() { avahi_.reset(); }

  /// Whether more than one daemon can run on this machine.
  static bool canHaveOwnMounts() {
    return runProgram({"unshare", "--mount", "true"}).exitCode == 0;
  }

  /// What is seen on the network of type `_http._tcp`, as `avahi-browse -trp` prints it. Takes a
  /// second or two.
  std::string services() const {
    return runProgram({"avahi-browse", "-trp", "_http._tcp"}, environment()).output;
  }

 private:
  std::filesystem::path folder_;
  std::string hostName_;
  std::unique_ptr<RunningProgram> bus_;
  std::unique_ptr<RunningProgram> avahi_;
};

/// Keeps other processes from running daemons on this machine while it lives: they would hear each
/// other.
class NetworkLock {
 public:
  NetworkLock()
      : descriptor_(
            ::open((std::filesystem::temp_directory_path() / "vistaro-avahi-test.lock").c_str(),
                   O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600)) {
    if (descriptor_ < 0 || ::flock(descriptor_, LOCK_EX) != 0) throw std::runtime_error("no lock");
  }
  NetworkLock(const NetworkLock&) = delete;
  NetworkLock& operator=(const NetworkLock&) = delete;
  ~NetworkLock() { ::close(descriptor_); }

 private:
  int descriptor_;
};

}  // namespace vt
