#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "support/Places.h"
#include "support/RunningProgram.h"
#include "tools/CommandTest.h"

namespace vt {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;
using testing::StartsWith;

class StatusCommand : public CommandTest {
 protected:
  StatusCommand() { write(root_ / "etc/hostname", "files.example.org\n"); }

  std::unique_ptr<RunningProgram> server() const {
    std::map<std::string, std::string> variables = environment();
    variables["DBUS_SYSTEM_BUS_ADDRESS"] = "unix:path=/nonexistent/bus";
    auto process = std::make_unique<RunningProgram>(
        std::vector<std::string>{testProgram("vistaro_test_server")}, variables);
    EXPECT_EQ(process->waitForLine("startup answered"), "startup answered YES");
    return process;
  }
};

TEST_F(StatusCommand, TellsSinceWhenAndWhereTheServerRuns) {
  const auto process = server();
  const ProgramResult result = vistaro({"status"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_THAT(result.output, StartsWith("Server    running as process " +
                                        std::to_string(process->pid()) + "\nSince     20"));
  EXPECT_THAT(result.output, HasSubstr("\nPort      9000\n"));
  EXPECT_THAT(result.output, HasSubstr("\nURL       http://files.example.org:9000\n"));
  EXPECT_THAT(result.output, HasSubstr("\nVersion   "));
}

TEST_F(StatusCommand, ReportsToPrograms) {
  auto process = server();
  const json running = json::parse(vistaro({"status", "--json"}).output);
  EXPECT_EQ(running["state"], "running");
  EXPECT_EQ(running["running"], true);
  EXPECT_EQ(running["processId"], process->pid());
  EXPECT_THAT(running["since"].get<std::string>(),
              MatchesRegex("[0-9-]{10}T[0-9]{2}:[0-9]{2}:[0-9]{2}Z"));
  EXPECT_EQ(running["port"], 9000);
  EXPECT_EQ(running["url"], "http://files.example.org:9000");
  EXPECT_TRUE(running["version"].is_string());
  process->end();
  const ProgramResult result = vistaro({"status", "--json"});
  EXPECT_EQ(result.exitCode, 1);
  const json stale = json::parse(result.output);
  EXPECT_EQ(stale["state"], "stale");
  EXPECT_EQ(stale["running"], false);
  EXPECT_TRUE(stale["since"].is_null());
}

TEST_F(StatusCommand, TellsTheWaysNotToRunApart) {
  const std::string file = root_ / "tmp/vistaro.pid";
  const auto firstLine = [&] {
    const ProgramResult result = vistaro({"status"});
    EXPECT_EQ(result.exitCode, 1);
    return result.output.substr(0, result.output.find('\n'));
  };
  EXPECT_EQ(firstLine(), "Server    not running");
  write(file, "garbage");
  EXPECT_EQ(firstLine(), "Server    not running; " + file + " holds no process id");
  write(file, std::to_string(getpid()));
  EXPECT_EQ(firstLine(),
            "Server    not running; " + file + " was left by process " + std::to_string(getpid()));
}

TEST_F(StatusCommand, SaysSoWhenTheFileMayNotBeRead) {
  if (!canRunAs(2001)) GTEST_SKIP() << "only root can become other users";
  const auto process = server();
  const ProgramResult result = vistaroAs(2001, {"status"});
  EXPECT_EQ(result.exitCode, 3);
  EXPECT_THAT(result.output, HasSubstr("may not be read by this user"));
  EXPECT_THAT(result.output, Not(HasSubstr("9000")));
}

}  // namespace
}  // namespace vt
