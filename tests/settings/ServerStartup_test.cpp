#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "settings/VTSettings.h"
#include "support/LogCapture.h"
#include "support/TestWorld.h"

namespace vt {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr const char* kPane = "/Library/PreferencePanes/Vistaro.prefPane";

class ServerStartup : public testing::Test {
 protected:
  ServerStartup() { std::filesystem::create_directory(world_.root() / "tmp"); }

  static std::shared_ptr<VTSettings> settings() { return VTSettings::sharedInstance(); }
  std::string processIdFile() const { return world_.root() / "tmp/vistaro.pid"; }
  bool hasProcessIdFile() const { return std::filesystem::exists(processIdFile()); }

  LogCapture log_;
  TestWorld world_;
};

TEST_F(ServerStartup, HasNotHappenedAtFirst) {
  EXPECT_FALSE(settings()->isUpAndRunning());
  EXPECT_EQ(settings()->startTime(), std::nullopt);
  EXPECT_EQ(settings()->totalSearches(), 0U);
  EXPECT_EQ(settings()->currentParallelUsers(), 0U);
}

TEST_F(ServerStartup, AnnouncesTheWebServerAndMarksItAsRunning) {
  const Date noon = kReferenceDate + std::chrono::hours(12);
  world_.process().setNow(noon);
  EXPECT_TRUE(settings()->finishStartupOfServer());
  EXPECT_TRUE(settings()->isUpAndRunning());
  EXPECT_EQ(settings()->startTime(), noon);
  ASSERT_THAT(world_.serviceDiscovery().services(), SizeIs(1));
  const auto service = world_.serviceDiscovery().services().front();
  EXPECT_EQ(service.domain, "");
  EXPECT_EQ(service.type, "_http._tcp.");
  EXPECT_EQ(service.port, 9000);
  EXPECT_EQ(service.publications, 1);
  EXPECT_TRUE(service.isAlive);
}

TEST_F(ServerStartup, NamesTheServiceAfterTheServer) {
  struct Case {
    const char* what;
    const char* serverName;
    const char* service;
    const char* serviceWithSSL;
  };
  const Case cases[] = {
      {"a local name", "studio.local", "Studio Vistaro", "Studio Vistaro (SSL)"},
      {"a name with parts", "files.example.org", "Files.example.org Vistaro",
       "Files.example.org Vistaro (SSL)"},
      {"parts before local", "a.b.local", "A.b Vistaro", "A.b Vistaro (SSL)"},
      {"local twice", "a.local.local", "A.local Vistaro", "A.local Vistaro (SSL)"},
      {"local within", "local.example", "Local.example Vistaro", "Local.example Vistaro (SSL)"},
      {"ending like local", "nonlocal", "Nonlocal Vistaro", "Nonlocal Vistaro (SSL)"},
      {"local in other case", "a.Local", "A.Local Vistaro", "A.Local Vistaro (SSL)"},
      {"local alone", "local", "Local Vistaro", "Local Vistaro (SSL)"},
      {"nothing before local", ".local", " Vistaro", " Vistaro (SSL)"},
      {"the rest as it is", "sTUDIO", "STUDIO Vistaro", "STUDIO Vistaro (SSL)"},
      {"no ASCII", "ömer.local", "Ömer Vistaro", "Ömer Vistaro (SSL)"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    settings()->setServerName(c.serverName);
    settings()->setSslEnabled(false);
    settings()->finishStartupOfServer();
    EXPECT_EQ(world_.serviceDiscovery().services().back().name, c.service);
    settings()->setSslEnabled(true);
    settings()->finishStartupOfServer();
    EXPECT_EQ(world_.serviceDiscovery().services().back().name, c.serviceWithSSL);
  }
}

TEST_F(ServerStartup, TakesTheHostsNameWhenNoneIsSet) {
  world_.setHostNames({"localhost", "studio.local"});
  settings()->finishStartupOfServer();
  EXPECT_EQ(world_.serviceDiscovery().services().back().name, "Studio Vistaro");
}

TEST_F(ServerStartup, AnnouncesThePortAsAThirtyTwoBitNumber) {
  struct Case {
    Value port;
    std::int32_t announced;
  };
  const Case cases[] = {{8080, 8080}, {"8081", 8081}, {4294967296 + 80, 80}, {-1, -1}, {"none", 0}};
  for (const Case& c : cases) {
    settings()->setServerPort(c.port);
    settings()->finishStartupOfServer();
    EXPECT_EQ(world_.serviceDiscovery().services().back().port, c.announced);
  }
}

TEST_F(ServerStartup, FailsWithoutAServerNameAfterTheTablesAreBuilt) {
  world_.setHostNames({});
  world_.metadataIndex().addAttribute("kMDItemKind", "Kind");
  EXPECT_FALSE(settings()->finishStartupOfServer());
  EXPECT_THAT(log_.lines(), ElementsAre("Preference pane not installed in /Library",
                                        "Got 1 spotlight attributes", "Invalid hostname"));
  EXPECT_TRUE(settings()->isUpAndRunning());
  EXPECT_NE(settings()->startTime(), std::nullopt);
  EXPECT_EQ(settings()->displayNameForAttributeKey("kMDItemKind"), "Kind");
  EXPECT_THAT(world_.serviceDiscovery().services(), IsEmpty());
  EXPECT_FALSE(hasProcessIdFile());
}

TEST_F(ServerStartup, FailsWithoutAService) {
  world_.serviceDiscovery().refuse();
  EXPECT_FALSE(settings()->finishStartupOfServer());
  EXPECT_TRUE(settings()->isUpAndRunning());
  EXPECT_FALSE(hasProcessIdFile());
}

TEST_F(ServerStartup, LogsTheInstalledVersion) {
  struct Case {
    const char* what;
    std::shared_ptr<Dictionary> information;
    const char* line;
  };
  const Case cases[] = {
      {"both", Dictionary::make({{"CFBundleShortVersionString", "2.1"}, {"CFBundleVersion", "77"}}),
       "Vistaro Version 2.1 (Build 77)"},
      {"a number", Dictionary::make({{"CFBundleShortVersionString", "2"}, {"CFBundleVersion", 7}}),
       "Vistaro Version 2 (Build 7)"},
      {"none", Dictionary::make(), "Vistaro Version (null) (Build (null))"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const LogCapture log;
    world_.bundles().add(kPane, c.information);
    EXPECT_TRUE(settings()->finishStartupOfServer());
    EXPECT_THAT(log.lines(), ElementsAre(c.line, "Got 0 spotlight attributes"));
  }
}

TEST_F(ServerStartup, WritesTheProcessIdWithoutLineEnd) {
  world_.process().setProcessIdentifier(1234);
  settings()->finishStartupOfServer();
  EXPECT_EQ(readFile(processIdFile()), "1234");
}

TEST_F(ServerStartup, ReplacesALinkInThePlaceOfTheProcessIdFile) {
  const std::string victim = world_.root() / "victim";
  writeFile(victim, "precious");
  std::filesystem::create_symlink(victim, processIdFile());
  EXPECT_TRUE(settings()->finishStartupOfServer());
  EXPECT_EQ(readFile(victim), "precious");
  EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(processIdFile())));
  EXPECT_EQ(readFile(processIdFile()), "4711");
}

TEST_F(ServerStartup, SucceedsAndSaysNothingWhenTheProcessIdCannotBeWritten) {
  std::filesystem::remove(world_.root() / "tmp");
  EXPECT_TRUE(settings()->finishStartupOfServer());
  EXPECT_THAT(log_.lines(), ElementsAre("Preference pane not installed in /Library",
                                        "Got 0 spotlight attributes"));
}

TEST_F(ServerStartup, RebuildsTheTablesAndPublishesASecondServiceWhenCalledAgain) {
  world_.metadataIndex().addAttribute("a", "A");
  settings()->finishStartupOfServer();
  world_.metadataIndex().addAttribute("b", "B");
  world_.process().setNow(kReferenceDate + std::chrono::hours(1));
  EXPECT_TRUE(settings()->finishStartupOfServer());
  EXPECT_EQ(settings()->displayNameForAttributeKey("b"), "B");
  EXPECT_EQ(settings()->startTime(), kReferenceDate + std::chrono::hours(1));
  const auto services = world_.serviceDiscovery().services();
  ASSERT_THAT(services, SizeIs(2));
  EXPECT_TRUE(services[0].isAlive);
  EXPECT_TRUE(services[1].isAlive);
}

TEST_F(ServerStartup, ReportsTheTwoCounters) {
  settings()->setSearchCount(7);
  settings()->setParallelUserCount(2);
  EXPECT_EQ(settings()->totalSearches(), 7U);
  EXPECT_EQ(settings()->currentParallelUsers(), 2U);
  world_.restart();
  EXPECT_EQ(settings()->totalSearches(), 0U);
}

TEST_F(ServerStartup, IsReadByKey) {
  EXPECT_EQ(settings()->valueForKey("upAndRunning"), Value(false));
  EXPECT_EQ(settings()->valueForKey("startTime"), std::nullopt);
  settings()->finishStartupOfServer();
  settings()->setSearchCount(7);
  settings()->setParallelUserCount(2);
  EXPECT_EQ(settings()->valueForKey("upAndRunning"), Value(true));
  EXPECT_EQ(settings()->valueForKey("startTime"), Value(kReferenceDate));
  EXPECT_EQ(settings()->valueForKey("totalSearches"), Value(7));
  EXPECT_EQ(settings()->valueForKey("currentParallelUsers"), Value(2));
}

TEST_F(ServerStartup, LetsAWriteByKeyGoTheUndefinedWay) {
  for (const char* key : {"upAndRunning", "startTime", "totalSearches", "currentParallelUsers"}) {
    SCOPED_TRACE(key);
    settings()->setValue(9, key);
    EXPECT_EQ(settings()->globalSettings()->get(key), Value(9));
    EXPECT_NE(settings()->valueForKey(key), Value(9));
  }
}

}  // namespace
}  // namespace vt
