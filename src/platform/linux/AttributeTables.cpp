#include "platform/linux/AttributeTables.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <utility>

#include "foundation/NSLog.h"
#include "metadata/query/AttributeTranslation.h"
#include "platform/SystemPaths.h"

namespace vt {

std::shared_ptr<const query::AttributeSchema> attributesIn(
    const Resources& resources, const std::vector<std::string>& languages) {
  const std::optional<std::string> attributes = resources.resource("attributes", "tsv");
  if (!attributes) return nullptr;
  auto schema = query::AttributeSchema::parse(*attributes);
  if (!schema) return nullptr;
  std::vector<query::AttributeTranslation> translations;
  for (const std::string& language : languages) {
    const std::string name = "attributes." + language;
    const std::optional<std::string> table = resources.resource(name, "tsv");
    if (!table) continue;
    auto translation = query::AttributeTranslation::parse(*table);
    if (translation) {
      translations.push_back(std::move(translation).value());
    } else {
      NSLog("%@.tsv, line %lu: %@; this translation is not used", name, translation.error().line,
            translation.error().message);
    }
  }
  return std::make_shared<const query::AttributeSchema>(
      translations.empty() ? std::move(schema).value() : query::translated(*schema, translations));
}

ShippedStrings shortNameTable(const query::AttributeSchema& schema) {
  ShippedStrings strings{std::string(kMetadataBundle), std::string(kSchemaTable), {}};
  for (const query::Attribute& attribute : schema.attributes()) {
    if (attribute.shortNames.empty()) continue;
    strings.texts[attribute.name + std::string(kShortNameSuffix)] =
        fmt::format("{}", fmt::join(attribute.shortNames, ","));
  }
  return strings;
}

}  // namespace vt
