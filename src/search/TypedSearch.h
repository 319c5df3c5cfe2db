#pragma once

#include <string>

#include "foundation/Result.h"
#include "platform/MetadataIndex.h"

namespace vt {

/// The query for what somebody typed into a search field (see docs/query-language.md, "What is
/// typed"): the settings' short names and the kinds of files have their meaning in it. Short names
/// have none before startup, or loadAttributeNames(), has loaded them.
///
/// With `readsFiles` words are looked for in the text of files even when every file must be read.
Result<MDTypedQuery, MDTypedRejection> queryForTypedSearch(const std::string& typed,
                                                           bool readsFiles);

}  // namespace vt
