#include "platform/linux/LinuxServiceDiscovery.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>

#include "platform/linux/PrivateBus.h"
#include "support/LogCapture.h"
#include "support/Places.h"

namespace vt {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using Clock = std::chrono::steady_clock;

constexpr const char* kType = "_http._tcp.";

/// How long the fastest of a few publications takes, so that a busy machine does not count.
std::chrono::milliseconds fastestPublication() {
  auto fastest = std::chrono::milliseconds::max();
  for (int i = 0; i < 5; ++i) {
    const auto service = linuxServiceDiscovery()->serviceWithDomain("", kType, "Quick", 9000);
    const Clock::time_point begin = Clock::now();
    service->publish();
    fastest = std::min(fastest,
                       std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin));
  }
  return fastest;
}

/// Where every bus of this process is, one after the other: the D-Bus library reads the address
/// once in the life of a process.
const TemporaryFolder& busFolder() {
  static const TemporaryFolder kFolder;
  return kFolder;
}

void usePrivateBus() {
  ::setenv("DBUS_SYSTEM_BUS_ADDRESS", PrivateBus::addressIn(busFolder()).c_str(), /*overwrite=*/1);
}

TEST(LinuxServiceDiscoveryWithoutBus, GivesUpAtOnceAndLogsIt) {
  usePrivateBus();
  const LogCapture log;
  const auto discovery = linuxServiceDiscovery();
  const auto service = discovery->serviceWithDomain("", kType, "Studio Vistaro", 9000);
  ASSERT_NE(service, nullptr);
  service->publish();
  discovery->processEvents();
  EXPECT_THAT(log.lines(),
              ElementsAre(HasSubstr("The service \"Studio Vistaro\" is not announced on the ")));
  EXPECT_LT(fastestPublication(), std::chrono::milliseconds(50));
}

TEST(LinuxServiceDiscoveryWithoutBus, RefusesAPortThatThereIsNot) {
  usePrivateBus();
  for (const std::int32_t port : {0, -1, 65536}) {
    const LogCapture log;
    linuxServiceDiscovery()->serviceWithDomain("", kType, "A", port)->publish();
    EXPECT_THAT(log.lines(), ElementsAre("The service \"A\" is not announced on the network: no "
                                         "such port"));
  }
}

/// Tests against a real daemon, which only root can start.
class LinuxServiceDiscoveryTest : public testing::Test {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "only root can start an Avahi daemon";
    lock_ = std::make_unique<NetworkLock>();
    bus_ = std::make_unique<PrivateBus>(busFolder(), "vistaro-test");
    usePrivateBus();
  }

  std::shared_ptr<NetService> published(const std::string& name, std::int32_t port) {
    auto service = discovery_->serviceWithDomain("", kType, name, port);
    service->publish();
    return service;
  }

  /// Runs the loop of the server until what is seen on the network is as wanted; what was seen last
  /// when it does not come to that.
  std::string networkOnce(const std::function<bool(const std::string&)>& isWanted) {
    const Clock::time_point end = Clock::now() + std::chrono::seconds(30);
    std::string seen;
    do {
      discovery_->processEvents();
      seen = bus_->services();
    } while (!isWanted(seen) && Clock::now() < end);
    return seen;
  }
  std::string networkWith(const std::string& part) {
    return networkOnce(
        [&](const std::string& seen) { return seen.find(part) != std::string::npos; });
  }

  LogCapture log_;
  std::unique_ptr<NetworkLock> lock_;
  std::unique_ptr<PrivateBus> bus_;
  std::shared_ptr<ServiceDiscovery> discovery_ = linuxServiceDiscovery();
};

TEST_F(LinuxServiceDiscoveryTest, ShowsNameTypeAndPortUntilTheServiceGoes) {
  bus_->startAvahi();
  auto service = published("Büro Vistaro (SSL)", 8443);
  const std::string seen = networkWith("=;");
  EXPECT_THAT(seen, HasSubstr(";B\\195\\188ro\\032Vistaro\\032\\040SSL\\041;"));
  EXPECT_THAT(seen, HasSubstr(";local;vistaro-test.local;127.0.0.1;8443;"));
  service.reset();
  EXPECT_THAT(networkOnce([](const std::string& now) { return now.empty(); }), IsEmpty());
  EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(LinuxServiceDiscoveryTest, HandsTheServiceOverWithinFiftyMilliseconds) {
  EXPECT_LT(fastestPublication(), std::chrono::milliseconds(50)) << "no daemon on the bus";
  bus_->startAvahi();
  EXPECT_LT(fastestPublication(), std::chrono::milliseconds(50));
}

TEST_F(LinuxServiceDiscoveryTest, NeedsNobodyToRunALoopForAServiceThatIsHandedOver) {
  bus_->startAvahi();
  const auto service = published("Alone", 9000);
  std::string seen;
  const Clock::time_point end = Clock::now() + std::chrono::seconds(30);
  while (seen.find(";Alone;") == std::string::npos && Clock::now() < end) seen = bus_->services();
  EXPECT_THAT(seen, HasSubstr(";Alone;"));
}

TEST_F(LinuxServiceDiscoveryTest, TakesAnotherNameWhenOneIsTaken) {
  bus_->startAvahi();
  const auto first = published("Studio Vistaro", 9000);
  const auto second = published("Studio Vistaro", 9001);
  const std::string seen = networkOnce([](const std::string& now) {
    return now.find(";9000;") != std::string::npos && now.find(";9001;") != std::string::npos;
  });
  EXPECT_THAT(seen, HasSubstr(";Studio\\032Vistaro\\032\\0352;"));
  EXPECT_THAT(seen, HasSubstr(";9001;"));
}

TEST_F(LinuxServiceDiscoveryTest, TakesAnotherNameWhenAnotherHostHasIt) {
  if (!PrivateBus::canHaveOwnMounts()) GTEST_SKIP() << "only one daemon can run here";
  const TemporaryFolder folder;
  PrivateBus otherHost(folder, "vistaro-other");
  otherHost.startAvahi(/*publishesAddresses=*/false);
  RunningProgram rival({"avahi-publish", "-s", "Studio Vistaro", "_http._tcp", "9001"},
                       otherHost.environment());
  ASSERT_NE(rival.waitForLine("Established"), "") << rival.output();
  bus_->startAvahi();
  const auto service = published("Studio Vistaro", 9000);
  // On a busy machine the name is seen that is given up once the other host objects.
  const std::string seen = networkOnce([](const std::string& now) {
    return now.find(";Studio\\032Vistaro\\032\\0352;") != std::string::npos &&
           now.find(";vistaro-test.local;127.0.0.1;9000;") != std::string::npos;
  });
  EXPECT_THAT(seen, HasSubstr(";Studio\\032Vistaro\\032\\0352;"));
  EXPECT_THAT(seen, HasSubstr(";vistaro-test.local;127.0.0.1;9000;"));
}

TEST_F(LinuxServiceDiscoveryTest, AnnouncesToADaemonThatComesLaterAndToOneThatComesBack) {
  const auto service = published("Late", 9000);
  EXPECT_THAT(log_.lines(), ElementsAre("The service \"Late\" is not announced on the network for "
                                        "now: Avahi is not ready"));
  bus_->startAvahi();
  EXPECT_THAT(networkWith(";Late;"), HasSubstr(";Late;"));
  bus_->stopAvahi();
  discovery_->processEvents();
  bus_->startAvahi();
  EXPECT_THAT(networkWith(";Late;"), HasSubstr(";Late;"));
}

TEST_F(LinuxServiceDiscoveryTest, CutsANameThatIsTooLongBetweenCharacters) {
  bus_->startAvahi();
  std::string name(62, 'x');
  name += "é and more";
  const auto service = published(name, 9000);
  EXPECT_THAT(networkWith("=;"), HasSubstr(";" + std::string(62, 'x') + ";"));
}

/// The whole startup, in a process of its own.
class ServerProcessTest : public LinuxServiceDiscoveryTest {
 protected:
  ServerProcessTest() {
    for (const char* folder : {"etc", "tmp", "Library/Application Support"}) {
      std::filesystem::create_directories(root_.path() / folder);
    }
    writeFile(root_ / "etc/passwd", "root:x:0:0::/root:/bin/sh\n");
    writeFile(root_ / "etc/hostname", "studio.local\n");
  }

  std::unique_ptr<RunningProgram> server() const {
    return std::make_unique<RunningProgram>(
        std::vector<std::string>{testProgram("vistaro_test_server")},
        std::map<std::string, std::string>{
            {"VISTARO_ROOT", root_.path().string()},
            {"VISTARO_RESOURCES", resourceFolder()},
            {"DBUS_SYSTEM_BUS_ADDRESS", PrivateBus::addressIn(busFolder())}});
  }

  TemporaryFolder root_;
};

TEST_F(ServerProcessTest, IsSeenOnTheNetworkWhileItRuns) {
  bus_->startAvahi();
  auto process = server();
  EXPECT_EQ(process->waitForLine("startup answered"), "startup answered YES");
  EXPECT_THAT(process->output(), HasSubstr("Got 167 spotlight attributes"));
  const std::string seen = networkWith("=;");
  EXPECT_THAT(seen, HasSubstr("=;lo;IPv4;Studio\\032Vistaro;"));
  EXPECT_THAT(seen, HasSubstr(";local;vistaro-test.local;127.0.0.1;9000;"));
  EXPECT_EQ(readFile(root_ / "tmp/vistaro.pid"), std::to_string(process->pid()));
  process->end();
  EXPECT_THAT(networkOnce([](const std::string& now) { return now.empty(); }), IsEmpty());
}

TEST_F(ServerProcessTest, StartsWithoutADaemonAsWell) {
  auto process = server();
  EXPECT_EQ(process->waitForLine("startup answered"), "startup answered YES");
  EXPECT_EQ(readFile(root_ / "tmp/vistaro.pid"), std::to_string(process->pid()));
}

}  // namespace
}  // namespace vt
