#include "platform/linux/Languages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

namespace vt {
namespace {

using Variables = std::map<std::string, std::string>;

std::vector<std::string> languagesWith(const Variables& variables) {
  return preferredLanguages([&](const char* variable) -> const char* {
    const auto found = variables.find(variable);
    return found == variables.end() ? nullptr : found->second.c_str();
  });
}

TEST(Languages, FollowTheVariablesOfMessageCatalogues) {
  struct Case {
    const char* what;
    Variables variables;
    std::vector<std::string> languages;
  };
  const Case cases[] = {
      {"nothing set", {}, {}},
      {"LANG", {{"LANG", "de_DE.UTF-8"}}, {"de_DE", "de"}},
      {"no country", {{"LANG", "de"}}, {"de"}},
      {"a variant", {{"LANG", "de_DE@euro"}}, {"de_DE", "de"}},
      {"LC_MESSAGES first", {{"LC_MESSAGES", "fr_FR"}, {"LANG", "de_DE"}}, {"fr_FR", "fr"}},
      {"LC_ALL before all", {{"LC_ALL", "it"}, {"LC_MESSAGES", "fr"}, {"LANG", "de"}}, {"it"}},
      {"an empty LC_ALL", {{"LC_ALL", ""}, {"LANG", "de"}}, {"de"}},
      {"English", {{"LANG", "en_GB.UTF-8"}}, {}},
      {"C in UTF-8", {{"LC_ALL", "C.UTF-8"}, {"LANG", "de"}}, {}},
      {"POSIX", {{"LANG", "POSIX"}}, {}},
      {"LANGUAGE", {{"LANGUAGE", "de_AT:fr:de"}, {"LANG", "it"}}, {"de_AT", "de", "fr"}},
      {"LANGUAGE in the C locale", {{"LANGUAGE", "de"}, {"LC_ALL", "C"}}, {}},
      {"LANGUAGE without a locale", {{"LANGUAGE", "de"}}, {}},
      {"English before German", {{"LANGUAGE", "fr:en:de"}, {"LANG", "de"}}, {"fr"}},
      {"empty parts", {{"LANGUAGE", ":de::fr:"}, {"LANG", "de"}}, {"de", "fr"}},
      {"a path", {{"LANGUAGE", "../../etc/x:de"}, {"LANG", "de"}}, {"de"}},
      {"a path alone", {{"LANG", "/etc/x"}}, {}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(languagesWith(c.variables), c.languages);
  }
}

}  // namespace
}  // namespace vt
