#include <fmt/format.h>

#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "foundation/NSLog.h"
#include "foundation/UTF8.h"
#include "platform/MetadataIndex.h"
#include "platform/Platform.h"
#include "settings/VTSettings.h"
#include "vistaro/Commands.h"
#include "vistaro/Exit.h"
#include "vistaro/Terminal.h"

namespace vt::tool {
namespace {

using Json = nlohmann::ordered_json;

struct AttributesOptions {
  std::optional<std::string> shortName;
  bool json = false;
};

struct ListedAttribute {
  std::string name;
  std::string displayName;
  std::vector<std::string> shortNames;
};

/// All attributes in the index's order, or those that go by the short name that was asked for.
std::vector<ListedAttribute> listedAttributes(const VTSettings& settings,
                                              const std::optional<std::string>& shortName) {
  std::map<std::string, std::vector<std::string>> shortNames;
  for (const auto& [word, attributes] : settings.attributeNames().attributesByShortName()) {
    const std::shared_ptr<Array> named = attributes.array();
    for (const Value& attribute : *named) {
      std::vector<std::string>& words = shortNames[*attribute.get<std::string>()];
      if (words.empty() || words.back() != word.str()) words.push_back(word.str());
    }
  }
  std::vector<std::string> names;
  if (!shortName) {
    names = Platform::current().metadataIndex().MDSchemaCopyAllAttributes();
  } else if (const std::shared_ptr<Array> found = settings.attributesForShortName(*shortName)) {
    names.reserve(found->size());
    for (const Value& attribute : *found) names.push_back(*attribute.get<std::string>());
  }
  std::vector<ListedAttribute> listed;
  listed.reserve(names.size());
  for (std::string& name : names) {
    listed.push_back(
        {name, settings.displayNameForAttributeKey(name).value_or(""), shortNames[name]});
  }
  return listed;
}

void printAsText(const std::vector<ListedAttribute>& attributes) {
  const Terminal terminal = Terminal::standardOutput();
  for (const ListedAttribute& attribute : attributes) {
    std::string line = terminal.bold(padded(printable(attribute.name), 34)) + ' ' +
                       padded(printable(attribute.displayName), 30) + ' ';
    for (std::size_t i = 0; i < attribute.shortNames.size(); ++i) {
      line += (i == 0 ? "" : ", ") + printable(attribute.shortNames[i]);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    fmt::print("{}\n", line);
  }
}

void printAsJson(const std::vector<ListedAttribute>& attributes) {
  Json list = Json::array();
  for (const ListedAttribute& attribute : attributes) {
    Json shortNames = Json::array();
    for (const std::string& word : attribute.shortNames) shortNames.push_back(displayText(word));
    list.push_back({{"name", displayText(attribute.name)},
                    {"displayName", displayText(attribute.displayName)},
                    {"shortNames", std::move(shortNames)}});
  }
  fmt::print("{}\n", Json{{"attributes", std::move(list)}}.dump(2));
}

int runAttributes(const AttributesOptions& options) {
  if (!Platform::current().hasMetadataIndex()) {
    printError("the attributes could not be read; `vistaro doctor` tells more");
    return kFailure;
  }
  const LogRedirection quiet([](std::string_view) {});  // the log is the server's
  const std::shared_ptr<VTSettings> settings = VTSettings::sharedInstance();
  settings->loadAttributeNames();
  const std::vector<ListedAttribute> attributes = listedAttributes(*settings, options.shortName);
  if (options.json) {
    printAsJson(attributes);
  } else {
    printAsText(attributes);
  }
  if (!attributes.empty()) return kFound;
  if (!options.json) {
    printError(
        fmt::format("no attribute goes by \"{}\"", printable(options.shortName.value_or(""))));
  }
  return kNothingFound;
}

}  // namespace

void addAttributesCommand(CLI::App& app, int& status) {
  auto options = std::make_shared<AttributesOptions>();
  CLI::App* command =
      app.add_subcommand("attributes", "List what is known of files, and the words for it");
  command->add_option("--short", options->shortName,
                      "Only the attributes that go by this short name; case does not matter");
  command->add_flag("--json", options->json, "A report for programs");
  command->callback([options, &status] { status = runAttributes(*options); });
}

}  // namespace vt::tool
