#include <fmt/format.h>

#include <memory>
#include <nlohmann/json.hpp>
#include <optional>

#include "foundation/Dictionary.h"
#include "platform/DirectoryConstants.h"
#include "platform/Platform.h"
#include "platform/linux/LinuxTasks.h"
#include "platform/linux/SharePointRecordSource.h"
#include "scopes/VTSharePoint.h"
#include "vistaro/CommandError.h"
#include "vistaro/Commands.h"
#include "vistaro/Terminal.h"

namespace vt::tool {
namespace {

using Json = nlohmann::ordered_json;

Json textIn(const Dictionary& record, const char* attribute) {
  const Value* value = record.find(attribute);
  const auto* text = value ? value->get<std::string>() : nullptr;
  return text ? Json(*text) : Json(nullptr);
}

Json entryOf(const Dictionary& record) {
  return {{"name", textIn(record, kDSNAttrRecordName)},
          {"path", textIn(record, kDSNativeAttrDirectoryPath)},
          {"smbShared", textIn(record, kDSNativeAttrSMBShared) == "1"},
          {"smbName", textIn(record, kDSNativeAttrSMBName)},
          {"afpShared", textIn(record, kDSNativeAttrAFPShared) == "1"},
          {"afpName", textIn(record, kDSNativeAttrAFPName)}};
}

std::string printableIn(const Json& entry, const char* key) {
  return entry[key].is_string() ? printable(entry[key].get<std::string>()) : std::string();
}

void printEntry(const Json& entry, const Terminal& terminal) {
  fmt::print("{}  {}\n", terminal.bold(padded(printableIn(entry, "name"), 22)),
             printableIn(entry, "path"));
  if (entry["smbShared"] == true) fmt::print("    SMB  {}\n", printableIn(entry, "smbName"));
  if (entry["afpShared"] == true) fmt::print("    AFP  {}\n", printableIn(entry, "afpName"));
}

int runShares(bool json) {
  Json entries = Json::array();
  const auto sharePoints = VTSharePoint::allSharePoints();
  if (!sharePoints) throw CommandError{kFailure, "the directory could not be opened"};
  for (const auto& sharePoint : *sharePoints) entries.push_back(entryOf(*sharePoint));
  if (json) {
    fmt::print("{}\n", entries.dump(2));
  } else {
    const Terminal terminal = Terminal::standardOutput();
    for (const Json& entry : entries) printEntry(entry, terminal);
  }
  const SharePointRecordSource source(std::make_shared<LinuxTasks>(),
                                      Platform::current().systemPath(""));
  for (const std::string& note : source.listing().notes) printError("note: " + printable(note));
  if (!entries.empty()) return kFound;
  printError("no folder is shared over SMB or AFP");
  return kNothingFound;
}

}  // namespace

void addSharesCommand(CLI::App& app, int& status) {
  auto json = std::make_shared<bool>(false);
  CLI::App* command = app.add_subcommand(
      "shares", "List the folders that Samba and Netatalk share, to which links can lead");
  command->add_flag("--json", *json, "Print the shares as JSON, for programs");
  command->callback(
      [json, &status] { status = reportingErrors([&] { return runShares(*json); }); });
}

}  // namespace vt::tool
