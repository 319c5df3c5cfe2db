#include <fmt/chrono.h>
#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "foundation/Array.h"
#include "foundation/Dictionary.h"
#include "foundation/UTF8.h"
#include "vistaro/SearchReport.h"

namespace vt::tool {
namespace {

using Json = nlohmann::ordered_json;

Json toJson(const Value& value) {
  switch (value.kind()) {
    case ValueKind::kBoolean:
      return *value.get<bool>();
    case ValueKind::kInteger:
      return *value.get<std::int64_t>();
    case ValueKind::kUnsignedInteger:
      return *value.get<std::uint64_t>();
    case ValueKind::kReal:
      return *value.get<double>();
    case ValueKind::kDate:
      return fmt::format("{:%Y-%m-%dT%H:%M:%S}Z",
                         std::chrono::floor<std::chrono::seconds>(*value.get<Date>()));
    case ValueKind::kString:
      return displayText(*value.get<std::string>());  // JSON text is UTF-8; a file name need not be
    case ValueKind::kArray: {
      Json elements = Json::array();
      for (const Value& element : *value.array()) elements.push_back(toJson(element));
      return elements;
    }
    default:
      return nullptr;  // a record holds nothing else
  }
}

Json itemsOf(const SearchReport& report, const VTSearchResult& group) {
  Json items = Json::array();
  const auto [first, last] = report.shown(group);
  for (std::size_t i = first; i < last; ++i) {
    Json item = Json::object();
    for (const auto& [key, value] : *group.results()->at(i)) item[key.str()] = toJson(value);
    items.push_back(std::move(item));
  }
  return items;
}

}  // namespace

std::string jsonReport(const SearchReport& report) {
  Json groups = Json::array();
  for (const auto& group : *report.groups) {
    groups.push_back(
        {{"title", group->title()}, {"count", group->count()}, {"items", itemsOf(report, *group)}});
  }
  const Json document = {{"query", displayText(report.query)},
                         {"count", report.count()},
                         {"seconds", report.seconds},
                         {"groups", std::move(groups)}};
  return document.dump(2) + '\n';
}

}  // namespace vt::tool
