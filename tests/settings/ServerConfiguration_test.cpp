#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "settings/VTSettings.h"
#include "support/ChangeJournal.h"
#include "support/TestWorld.h"

namespace vt {
namespace {

using testing::ElementsAre;

// What a setter does with the need of a restart.
struct SetterCase {
  const char* key;
  bool raisedWhenSaved;
  bool raisedWhenNotSaved;
};

constexpr SetterCase kSetters[] = {
    {"serverName", true, true},
    {"serverPort", false, true},
    {"sslEnabled", false, true},
    {"userAuthenticationDisabled", false, false},
    {"useSSLTestCertificate", false, false},
    {"sslCertificatePath", false, false},
    {"mailEnabled", true, true},
    {"smtpFromEmailAddress", true, true},
    {"smtpServerAddress", true, true},
    {"smtpCustomServerPort", true, true},
    {"smtpDefaultServerPort", true, true},
    {"smtpUseSSL", true, true},
    {"smtpServerUsername", true, true},
    {"smtpServerAuthenticationMode", true, true},
};

TEST(ServerConfiguration, RaisesTheNeedOfARestartInThePrescribedOrder) {
  for (const SetterCase& c : kSetters) {
    SCOPED_TRACE(c.key);
    const TestWorld world;
    const auto settings = VTSettings::sharedInstance();
    settings->setValue("1", c.key);
    EXPECT_EQ(settings->serverRestartNecessary(), c.raisedWhenSaved);
    settings->saveStorage();
    EXPECT_FALSE(settings->serverRestartNecessary());
    settings->setSaveSettingsOnChanges(/*save=*/false);
    settings->setValue("2", c.key);
    EXPECT_EQ(settings->serverRestartNecessary(), c.raisedWhenNotSaved);
    settings->reloadConfig();
    EXPECT_FALSE(settings->serverRestartNecessary());
  }
}

TEST(ServerConfiguration, KeepsReadsAndRemovesEachSettingUnderItsName) {
  for (const SetterCase& c : kSetters) {
    SCOPED_TRACE(c.key);
    const TestWorld world;
    const auto settings = VTSettings::sharedInstance();
    settings->setValue("text", c.key);
    EXPECT_EQ(settings->globalSettings()->get(c.key), Value("text"));
    EXPECT_EQ(settings->valueForKey(c.key), Value("text"));
    settings->setValue(std::nullopt, c.key);
    EXPECT_FALSE(settings->globalSettings()->contains(c.key));
  }
}

TEST(ServerConfiguration, AnnouncesEachSettingOnce) {
  for (const SetterCase& c : kSetters) {
    const TestWorld world;
    const auto settings = VTSettings::sharedInstance();
    ChangeJournal journal;
    journal.observe(*settings, c.key);
    settings->setValue("1", c.key);
    EXPECT_THAT(journal.lines(),
                ElementsAre("will " + std::string(c.key), "did " + std::string(c.key)));
  }
}

TEST(ServerConfiguration, HasDefaultsThatAreNeverStored) {
  const TestWorld world;
  const auto settings = VTSettings::sharedInstance();
  EXPECT_EQ(settings->serverPort(), Value(9000));
  EXPECT_EQ(settings->smtpDefaultServerPort(), Value(true));
  EXPECT_EQ(settings->serverName(), "files.example.org");
  EXPECT_EQ(settings->internalServerURL(), "http://files.example.org:9000");
  EXPECT_EQ(settings->serverURL(), "http://files.example.org:9000");
  EXPECT_EQ(settings->smtpServerPort(), 25U);
  EXPECT_FALSE(settings->mailingConfiguredAndEnabled());
  for (const char* key :
       {"sslEnabled", "useSSLTestCertificate", "sslCertificatePath", "userAuthenticationDisabled",
        "mailEnabled", "smtpFromEmailAddress", "smtpServerAddress", "smtpCustomServerPort",
        "smtpUseSSL", "smtpServerUsername", "smtpServerAuthenticationMode"}) {
    EXPECT_EQ(settings->valueForKey(key), std::nullopt) << key;
  }
  EXPECT_TRUE(settings->globalSettings()->empty());
}

TEST(ServerConfiguration, DerivesTheServerNameFromTheHost) {
  struct Case {
    const char* what;
    std::vector<std::string> hostNames;
    std::optional<std::string> serverName;
  };
  const Case cases[] = {
      {"a name", {"files.example.org", "other"}, "files.example.org"},
      {"localhost with others", {"localhost", "second", "third"}, "second"},
      {"in other case", {"LocalHost", "second"}, "second"},
      {"localhost alone", {"localhost"}, "localhost"},
      {"localhost and more", {"localhost.example.org", "second"}, "localhost.example.org"},
      {"no name", {}, std::nullopt},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    TestWorld world;
    world.setHostNames(c.hostNames);
    EXPECT_EQ(VTSettings::sharedInstance()->serverName(), c.serverName);
  }
}

TEST(ServerConfiguration, TakesAnEmptyServerNameAsNone) {
  const TestWorld world;
  const auto settings = VTSettings::sharedInstance();
  settings->setServerName("srv");
  EXPECT_EQ(settings->serverName(), "srv");
  settings->setServerName("");
  EXPECT_EQ(settings->serverName(), "files.example.org");
  settings->reloadConfig();
  EXPECT_FALSE(settings->globalSettings()->contains("serverName"));
}

TEST(ServerConfiguration, LeavesThePortOutOfTheAddressWithSSL) {
  const TestWorld world;
  const auto settings = VTSettings::sharedInstance();
  settings->setServerPort(8443);
  settings->setServerName("srv");
  EXPECT_EQ(settings->serverURL(), "http://srv:8443");
  settings->setSslEnabled("1");
  EXPECT_EQ(settings->serverURL(), "https://srv");
  EXPECT_EQ(settings->internalServerURL(), "http://srv:8443");
}

TEST(ServerConfiguration, UsesValuesOfTheWrongTypeAsTheyAre) {
  TestWorld world;
  world.writeSettingsFile(
      R"({ GlobalSettings = { serverPort = "8080"; serverName = (a); sslEnabled = "no"; }; })");
  const auto settings = VTSettings::sharedInstance();
  EXPECT_EQ(settings->serverURL(), "http://files.example.org:8080");
  settings->globalSettings()->set("serverName", 5);
  EXPECT_EQ(settings->serverName(), "5");
}

TEST(ServerConfiguration, PicksTheMailPort) {
  struct Case {
    const char* what;
    std::optional<Value> useDefault;
    std::optional<Value> useSSL;
    std::optional<Value> mode;
    std::optional<Value> custom;
    std::uint64_t port;
  };
  constexpr auto kUnset = std::nullopt;
  const Case cases[] = {
      {"nothing set", kUnset, kUnset, kUnset, kUnset, 25},
      {"mode without SSL", kUnset, kUnset, 1, "2525", 25},
      {"SSL, no mode", true, true, kUnset, kUnset, 465},
      {"SSL, mode 0", true, true, 0, kUnset, 465},
      {"SSL, mode 1", true, true, 1, kUnset, 587},
      {"SSL, mode 2 as text", true, "1", "2", kUnset, 587},
      {"custom", false, true, 1, "2525", 2525},
      {"custom as a number", false, kUnset, kUnset, 2525, 2525},
      {"custom unset", false, kUnset, kUnset, kUnset, 0},
      {"custom no number", false, kUnset, kUnset, "none", 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const TestWorld world;
    const auto settings = VTSettings::sharedInstance();
    settings->setSmtpDefaultServerPort(c.useDefault);
    settings->setSmtpUseSSL(c.useSSL);
    settings->setSmtpServerAuthenticationMode(c.mode);
    settings->setSmtpCustomServerPort(c.custom);
    EXPECT_EQ(settings->smtpServerPort(), c.port);
  }
}

TEST(ServerConfiguration, IsReadyToMailWhenAllIsSet) {
  const TestWorld world;
  const auto settings = VTSettings::sharedInstance();
  const auto configure = [&] {
    settings->setMailEnabled(true);
    settings->setSmtpServerAddress("mail.example.org");
    settings->setSmtpDefaultServerPort(std::nullopt);
    settings->setSmtpFromEmailAddress("files@example.org");
  };
  configure();
  EXPECT_TRUE(settings->mailingConfiguredAndEnabled());
  for (const auto& [key, value] :
       std::initializer_list<std::pair<const char*, std::optional<Value>>>{
           {"mailEnabled", false},
           {"smtpServerAddress", std::nullopt},
           {"smtpDefaultServerPort", false},
           {"smtpFromEmailAddress", std::nullopt}}) {
    SCOPED_TRACE(key);
    configure();
    settings->setValue(value, key);
    EXPECT_FALSE(settings->mailingConfiguredAndEnabled());
  }
}

}  // namespace
}  // namespace vt
