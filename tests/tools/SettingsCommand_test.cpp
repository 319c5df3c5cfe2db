#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "support/Places.h"
#include "support/ReadFile.h"
#include "tools/CommandTest.h"

namespace vt {
namespace {

using testing::HasSubstr;
using testing::Not;

class SettingsCommand : public CommandTest {
 protected:
  ProgramResult settings(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "settings");
    return vistaro(arguments);
  }
  std::string settingsFile() const {
    return root_ / "Library/Application Support/Vistaro/Settings.plist";
  }
};

TEST_F(SettingsCommand, StoresValuesOfTheRightType) {
  EXPECT_EQ(settings({"set", "serverPort", "8080"}).exitCode, 0);
  EXPECT_EQ(settings({"set", "sslEnabled", "yes"}).exitCode, 0);
  EXPECT_EQ(settings({"set", "serverName", "files.example.org"}).exitCode, 0);
  const std::string file = readFile(settingsFile());
  EXPECT_THAT(file, HasSubstr("<integer>8080</integer>"));
  EXPECT_THAT(file, HasSubstr("<true/>"));
  EXPECT_EQ(settings({"get", "serverName"}).output, "files.example.org\n");
  EXPECT_EQ(settings({"get", "sslEnabled"}).output, "yes\n");
}

TEST_F(SettingsCommand, StoresLists) {
  const struct {
    std::vector<std::string> arguments;
    const char* shown;
  } cases[] = {
      {{"set", "webHostNames", "files.example.org"}, "[\"files.example.org\"]\n"},
      {{"set", "webHostNames", "a.example.org", "b.example.org"},
       "[\"a.example.org\",\"b.example.org\"]\n"},
      {{"set", "webHostNames", "[\"a, b\", \"c\"]"}, "[\"a, b\",\"c\"]\n"},
      {{"set", "webHostNames", "[]"}, "[]\n"},
      {{"set", "webHostNames", "[\"[c]\"]"}, "[\"[c]\"]\n"},
      {{"set", "webProxyAddresses", "10.0.0.1", "FE80:0::1"}, "[\"10.0.0.1\",\"fe80::1\"]\n"},
      {{"set", "mottos", "--list", "find", "it"}, "[\"find\",\"it\"]\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.shown);
    EXPECT_EQ(settings(c.arguments).exitCode, 0);
    EXPECT_EQ(settings({"get", c.arguments[1]}).output, c.shown);
  }
  EXPECT_THAT(readFile(settingsFile()), HasSubstr("<string>fe80::1</string>"));
}

TEST_F(SettingsCommand, RefusesValuesThatCannotBe) {
  const struct {
    std::vector<std::string> arguments;
    const char* says;
  } cases[] = {
      {{"set", "serverPort", "0"}, "\"0\" is no port from 1 to 65535"},
      {{"set", "serverPort", "65536"}, "is no port"},
      {{"set", "serverPort", "80x"}, "is no port"},
      {{"set", "sslEnabled", "maybe"}, "\"maybe\" is neither yes nor no"},
      {{"set", "startupUserId", "root"}, "is no whole number"},
      {{"set", "severPort", "80"}, "the server knows no setting severPort"},
      {{"set", "serverName", "\xff"}, "must be UTF-8"},
      {{"set", "webHostNames", "a", "\xff"}, "must be UTF-8"},
      {{"set", "webHostNames", "[1]"}, "is no array of texts"},
      {{"set", "webHostNames", "[\"a\""}, "is no array in JSON"},
      {{"set", "webHostNames", "[\"\"]"}, "\"\" is no text"},
      {{"set", "webProxyAddresses", "10.0.0.1", "proxy"}, "\"proxy\" is no address"},
      {{"set", "serverName", "a", "b"}, "the setting takes one value"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.says);
    const ProgramResult result = settings(c.arguments);
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_THAT(result.errors, HasSubstr(c.says));
  }
  EXPECT_FALSE(std::filesystem::exists(settingsFile()));
}

TEST_F(SettingsCommand, KeepsNamesThatTheServerDoesNotKnowWhenAsked) {
  EXPECT_EQ(settings({"set", "motto", "find it", "--text"}).exitCode, 0);
  EXPECT_EQ(settings({"get", "motto"}).output, "find it\n");
  EXPECT_THAT(settings({"list"}).output, HasSubstr("motto"));
}

TEST_F(SettingsCommand, ShowsNoSecret) {
  const std::string set = std::string("printf 'open sesame\\n' | ") + builtProgram("vistaro") +
                          " settings set smtpServerPassword -";
  const ProgramResult result = runProgram({"sh", "-c", set}, environment());
  EXPECT_EQ(result.output, "smtpServerPassword is (set)\n");
  EXPECT_EQ(settings({"get", "smtpServerPassword"}).output, "(set)\n");
  EXPECT_THAT(settings({"list"}).output, Not(HasSubstr("sesame")));
  EXPECT_THAT(settings({"list", "--json"}).output, Not(HasSubstr("sesame")));
}

TEST_F(SettingsCommand, GoesBackToTheDefault) {
  settings({"set", "serverPort", "8080"});
  EXPECT_EQ(settings({"unset", "serverPort"}).exitCode, 0);
  EXPECT_EQ(settings({"get", "serverPort"}).exitCode, 1);
  EXPECT_EQ(settings({"unset", "serverPort"}).exitCode, 1);
  EXPECT_THAT(settings({"list"}).output, HasSubstr("unset: port of the web server"));
}

TEST_F(SettingsCommand, KeepsWhatItDoesNotChange) {
  settings({"set", "serverPort", "8080"});
  vistaro({"folders", "add", tree_.path().string()});
  settings({"set", "sslEnabled", "no"});
  const auto stored = nlohmann::json::parse(settings({"list", "--json"}).output);
  EXPECT_EQ(stored["serverPort"], 8080);
  EXPECT_EQ(stored["sslEnabled"], false);
  EXPECT_EQ(vistaro({"folders", "list"}).exitCode, 0);
}

TEST_F(SettingsCommand, IsForThoseWhoMayReadTheFile) {
  if (!canRunAs(2001)) GTEST_SKIP() << "needs root, and a program that others may run";
  settings({"set", "serverPort", "8080"});
  std::filesystem::permissions(root_.path(), std::filesystem::perms(0755));
  const ProgramResult result = vistaroAs(2001, {"settings", "list"});
  EXPECT_EQ(result.exitCode, 3);
  EXPECT_THAT(result.errors, HasSubstr("Permission denied"));
}

}  // namespace
}  // namespace vt
