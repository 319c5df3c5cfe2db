#include <fmt/format.h>

#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "foundation/NSLog.h"
#include "foundation/UTF8.h"
#include "platform/Platform.h"
#include "platform/SystemPaths.h"
#include "platform/linux/RunningServer.h"
#include "settings/VTSettings.h"
#include "vistaro/Commands.h"
#include "vistaro/Exit.h"
#include "vistaro/LocalTime.h"
#include "vistaro/Terminal.h"

namespace vt::tool {
namespace {

using Json = nlohmann::ordered_json;
using State = RunningServer::State;

std::string keyOf(State state) {
  switch (state) {
    case State::kRunning:
      return "running";
    case State::kNoFile:
      return "stopped";
    case State::kStale:
      return "stale";
    case State::kGarbage:
      return "garbage";
    case State::kUnreadable:
      return "unreadable";
  }
  return {};
}

std::string sentenceOf(const RunningServer& server, const std::string& file) {
  switch (server.state) {
    case State::kRunning:
      return fmt::format("running as process {}", server.processId);
    case State::kNoFile:
      return "not running";
    case State::kStale:
      return fmt::format("not running; {} was left by process {}", file, server.processId);
    case State::kGarbage:
      return fmt::format("not running; {} holds no process id", file);
    case State::kUnreadable:
      return fmt::format("unknown; {} may not be read by this user", file);
  }
  return {};
}

void printAsText(const RunningServer& server, const std::string& file) {
  const auto show = [](std::string_view label, const std::string& text) {
    fmt::print("{:<10}{}\n", label, text);
  };
  const std::shared_ptr<VTSettings> settings = VTSettings::sharedInstance();
  show("Server", printable(sentenceOf(server, file)));
  if (server.state == State::kRunning) {
    show("Since", localTimeText(*server.since));
  }
  if (server.state != State::kUnreadable) {
    show("Port", fmt::format("{}", settings->serverPort().integerValue()));
    show("URL", printable(settings->serverURL()));
  }
  show("Version", VT_VERSION);
}

void printAsJson(const RunningServer& server) {
  Json report = Json::object();
  const std::shared_ptr<VTSettings> settings = VTSettings::sharedInstance();
  const bool isRunning = server.state == State::kRunning;
  report["state"] = keyOf(server.state);
  report["running"] = isRunning;
  report["processId"] = server.processId > 0 ? Json(server.processId) : Json();
  report["since"] = isRunning ? Json(instantText(*server.since)) : Json();
  const bool hasSettings = server.state != State::kUnreadable;
  report["port"] = hasSettings ? Json(settings->serverPort().integerValue()) : Json();
  report["url"] = hasSettings ? Json(displayText(settings->serverURL())) : Json();
  report["version"] = VT_VERSION;
  fmt::print("{}\n", report.dump(2));
}

int runStatus(bool json) {
  const LogRedirection quiet([](std::string_view) {});  // the log is the server's
  const std::string file = Platform::current().systemPath(kProcessIdFile);
  const RunningServer server = runningServer(file);
  if (json) {
    printAsJson(server);
  } else {
    printAsText(server, file);
  }
  if (server.state == State::kUnreadable) return kFailure;
  return server.state == State::kRunning ? kFound : kNothingFound;
}

}  // namespace

void addStatusCommand(CLI::App& app, int& status) {
  auto json = std::make_shared<bool>(false);
  CLI::App* command =
      app.add_subcommand("status", "Tell whether the server runs, since when and where");
  command->add_flag("--json", *json, "A report for programs");
  command->callback([json, &status] { status = runStatus(*json); });
}

}  // namespace vt::tool
