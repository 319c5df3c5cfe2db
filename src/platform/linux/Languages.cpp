#include "platform/linux/Languages.h"

#include <algorithm>
#include <string_view>

namespace vt {
namespace {

std::string_view valueOf(const EnvironmentLookup& lookup, const char* variable) {
  const char* value = lookup(variable);
  return value ? value : "";
}

// "de_DE.UTF-8@euro" is "de_DE".
std::string_view withoutEncoding(std::string_view locale) {
  return locale.substr(0, locale.find_first_of(".@"));
}

bool isUntranslated(std::string_view name) { return name == "C" || name == "POSIX"; }

bool isWellFormed(std::string_view name) {
  return !name.empty() && std::ranges::all_of(name, [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
  });
}

void addOnce(std::vector<std::string>& languages, std::string_view name) {
  if (std::ranges::find(languages, name) == languages.end()) languages.emplace_back(name);
}

}  // namespace

std::vector<std::string> preferredLanguages(const EnvironmentLookup& lookup) {
  std::string_view locale;
  for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    locale = valueOf(lookup, variable);
    if (!locale.empty()) break;
  }
  if (locale.empty() || isUntranslated(withoutEncoding(locale))) return {};

  std::string_view list = valueOf(lookup, "LANGUAGE");
  if (list.empty()) list = locale;
  std::vector<std::string> languages;
  while (!list.empty()) {
    const std::size_t end = std::min(list.find(':'), list.size());
    const std::string_view name = withoutEncoding(list.substr(0, end));
    list.remove_prefix(std::min(end + 1, list.size()));
    if (!isWellFormed(name)) continue;
    const std::string_view language = name.substr(0, name.find('_'));
    if (language == "en" || isUntranslated(name)) break;
    addOnce(languages, name);
    addOnce(languages, language);
  }
  return languages;
}

}  // namespace vt
