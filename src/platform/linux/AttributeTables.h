#pragma once

#include <memory>
#include <string>
#include <vector>

#include "metadata/query/AttributeSchema.h"
#include "platform/Resources.h"
#include "platform/linux/LinuxBundles.h"

namespace vt {

/// The shipped attributes, named in the first of `languages` (see preferredLanguages()) that has a
/// name for each; nullptr when "attributes.tsv" is missing or damaged. A damaged translation is
/// logged and passed over.
std::shared_ptr<const query::AttributeSchema> attributesIn(
    const Resources& resources, const std::vector<std::string>& languages);

/// The short names of `schema` as the metadata bundle's table of them. An attribute without any has
/// no entry.
ShippedStrings shortNameTable(const query::AttributeSchema& schema);

}  // namespace vt
