#include "search/TypedSearch.h"

#include <algorithm>
#include <memory>
#include <string_view>
#include <vector>

#include "foundation/Array.h"
#include "kinds/VTSearchKind.h"
#include "platform/Platform.h"
#include "settings/VTSettings.h"

namespace vt {
namespace {

void appendTexts(const std::shared_ptr<Array>& values, std::vector<std::string>& texts) {
  if (!values) return;
  for (const Value& value : *values) {
    if (const std::string* text = value.get<std::string>()) texts.push_back(*text);
  }
}

// Titles are in English, whose letters need no more.
char lowerCase(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

/// Whether a word of `title` begins with `word`, so that "image" names "Images".
bool names(std::string_view word, std::string_view title) {
  const auto begins = [&](std::string_view part) {
    return part.size() >= word.size() &&
           std::ranges::equal(part.substr(0, word.size()), word, {}, lowerCase, lowerCase);
  };
  for (std::size_t at = 0; at != std::string_view::npos; at = title.find(' ', at)) {
    if (at != 0) ++at;
    if (begins(title.substr(at))) return true;
  }
  return false;
}

std::vector<std::string> typesOfKind(const std::string& word) {
  std::vector<std::string> types;
  if (word.size() < 3) return types;  // too little to mean a kind
  for (const auto& kind : *VTSearchKind::allSearchKinds()) {
    if (names(word, kind->title())) appendTexts(kind->types(), types);
  }
  return types;
}

}  // namespace

Result<MDTypedQuery, MDTypedRejection> queryForTypedSearch(const std::string& typed,
                                                           bool readsFiles) {
  const auto settings = VTSettings::sharedInstance();
  const auto attributes = [&settings](const std::string& shortName) {
    std::vector<std::string> found;
    appendTexts(settings->attributesForShortName(shortName), found);
    return found;
  };
  const auto types = [](const std::string& word) { return typesOfKind(word); };
  return Platform::current().metadataIndex().MDQueryStringFromTyped(typed, {attributes, types},
                                                                    readsFiles);
}

}  // namespace vt
