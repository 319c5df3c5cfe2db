#include <nlohmann/json.hpp>

#include "foundation/Dictionary.h"
#include "foundation/UTF8.h"
#include "vistaro/SearchReport.h"
#include "vistaro/ValueJSON.h"

namespace vt::tool {
namespace {

using Json = nlohmann::ordered_json;

Json itemsOf(const SearchReport& report, const VTSearchResult& group) {
  Json items = Json::array();
  const auto [first, last] = report.shown(group);
  for (std::size_t i = first; i < last; ++i) {
    Json item = Json::object();
    for (const auto& [key, value] : *group.results()->at(i)) item[key.str()] = jsonOf(value);
    items.push_back(std::move(item));
  }
  return items;
}

}  // namespace

std::string jsonReport(const SearchReport& report) {
  Json groups = Json::array();
  for (const auto& group : *report.groups) {
    Json entry = Json::object();
    entry["title"] = group->title().value_or("");
    entry["count"] = group->count();
    entry["items"] = itemsOf(report, *group);
    groups.push_back(std::move(entry));
  }
  Json document = Json::object();
  document["query"] = displayText(report.query);
  document["count"] = report.count();
  document["seconds"] = report.seconds;
  document["groups"] = std::move(groups);
  return document.dump(2) + '\n';
}

}  // namespace vt::tool
