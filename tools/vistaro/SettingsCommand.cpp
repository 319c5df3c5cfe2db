#include <fmt/format.h>

#include <algorithm>
#include <iostream>
#include <iterator>
#include <vector>

#include "foundation/UTF8.h"
#include "vistaro/CommandError.h"
#include "vistaro/Commands.h"
#include "vistaro/SettingTypes.h"
#include "vistaro/SettingsChange.h"
#include "vistaro/Terminal.h"
#include "vistaro/ValueJSON.h"

namespace vt::tool {
namespace {

constexpr int kKeyColumns = 29;

int listSettings(bool asJson) {
  const std::shared_ptr<Dictionary> stored = readableSettings()->globalSettings();
  if (asJson) {
    nlohmann::ordered_json entries = nlohmann::ordered_json::object();
    for (const auto& [key, value] : *stored) {
      const std::string text = textOfSetting(key.str(), value);
      entries[displayText(key.str())] =
          text == "(set)" ? nlohmann::ordered_json(text) : jsonOf(value);
    }
    fmt::print("{}\n", entries.dump(2));
    return kFound;
  }
  const Terminal terminal = Terminal::standardOutput();
  for (const KnownSetting& setting : knownSettings()) {
    const Value* const value = stored->find(setting.key);
    fmt::print("{}  {}\n", terminal.bold(padded(std::string(setting.key), kKeyColumns)),
               value != nullptr ? textOfSetting(setting.key, *value)
                                : terminal.dim(fmt::format("unset: {}", setting.meaning)));
  }
  for (const auto& [key, value] : *stored) {
    if (knownSetting(key.str()) != nullptr) continue;
    fmt::print("{}  {}\n", padded(printable(key.str()), kKeyColumns),
               textOfSetting(key.str(), value));
  }
  return kFound;
}

int getSetting(const std::string& key) {
  const std::optional<Value> value = readableSettings()->globalSettings()->get(key);
  if (!value) {
    throw CommandError{kNothingFound, fmt::format("the setting {} is unset", printable(key))};
  }
  fmt::print("{}\n", textOfSetting(key, *value));
  return kFound;
}

// A secret typed on the command line would be seen by everybody who lists processes.
std::string readStandardInput() {
  std::string text((std::istreambuf_iterator<char>(std::cin)), std::istreambuf_iterator<char>());
  if (text.ends_with('\n')) text.pop_back();
  return text;
}

// What is stored under a name that the server does not know.
enum class Unknown { kRefused, kText, kList };

SettingType typeOf(const std::string& key, Unknown unknown) {
  if (const KnownSetting* known = knownSetting(key)) return known->type;
  if (unknown == Unknown::kText) return SettingType::kText;
  if (unknown == Unknown::kList) return SettingType::kTexts;
  throw CommandError{kUsage, fmt::format("the server knows no setting {}; `vistaro settings list` "
                                         "names them, and --text or --list stores it all the same",
                                         printable(key))};
}

int setSetting(const std::string& key, std::vector<std::string> texts, Unknown unknown) {
  const SettingType type = typeOf(key, unknown);
  if (texts.size() == 1 && texts.front() == "-") texts.front() = readStandardInput();
  if (!isValidUTF8(key) || !std::ranges::all_of(texts, isValidUTF8)) {
    throw CommandError{kUsage, "settings must be UTF-8"};
  }
  const Value value = settingFromTexts(type, texts);
  SettingsChange change;
  change.settings().setValue(value, key);
  change.save();
  fmt::print("{} is {}\n", printable(key), textOfSetting(key, value));
  return kFound;
}

int unsetSetting(const std::string& key) {
  SettingsChange change;
  if (!change.settings().globalSettings()->contains(key)) {
    throw CommandError{kNothingFound, fmt::format("the setting {} is unset", printable(key))};
  }
  change.settings().setValueForUndefinedKey(std::nullopt, key);
  change.save();
  fmt::print("{} is unset\n", printable(key));
  return kFound;
}

}  // namespace

void addSettingsCommand(CLI::App& app, int& status) {
  CLI::App* settings = app.add_subcommand("settings", "Show and change the server's settings");
  settings->require_subcommand(1);

  auto asJson = std::make_shared<bool>(false);
  CLI::App* list = settings->add_subcommand("list", "List the settings and their values");
  list->add_flag("--json", *asJson, "Print those that are set, as JSON");
  list->callback(
      [asJson, &status] { status = reportingErrors([&] { return listSettings(*asJson); }); });

  auto key = std::make_shared<std::string>();
  CLI::App* get = settings->add_subcommand("get", "Print the value of one");
  get->add_option("key", *key, "Name of the setting")->required();
  get->callback([key, &status] { status = reportingErrors([&] { return getSetting(*key); }); });

  auto text = std::make_shared<std::string>();
  auto more = std::make_shared<std::vector<std::string>>();
  auto isText = std::make_shared<bool>(false);
  auto isList = std::make_shared<bool>(false);
  CLI::App* set = settings->add_subcommand("set", "Change one");
  set->add_option("key", *key, "Name of the setting")->required();
  // Apart from the others, since CLI11 takes to pieces what stands in brackets among several.
  set->add_option(
         "value", *text,
         "Its value; - reads it from standard input. Of a list the first element, or all of "
         "them as an array in JSON")
      ->required();
  set->add_option("more", *more, "The other elements of a list");
  CLI::Option* const asText =
      set->add_flag("--text", *isText, "Store a text under a name that the server does not know");
  set->add_flag("--list", *isList, "Store a list of texts there")->excludes(asText);
  set->callback([key, text, more, isText, isList, &status] {
    const Unknown unknown = *isText ? Unknown::kText : *isList ? Unknown::kList : Unknown::kRefused;
    std::vector<std::string> texts{*text};
    texts.insert(texts.end(), more->begin(), more->end());
    status = reportingErrors([&] { return setSetting(*key, std::move(texts), unknown); });
  });

  CLI::App* unset = settings->add_subcommand("unset", "Go back to the default of one");
  unset->add_option("key", *key, "Name of the setting")->required();
  unset->callback([key, &status] { status = reportingErrors([&] { return unsetSetting(*key); }); });
}

}  // namespace vt::tool
