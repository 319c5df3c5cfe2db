#pragma once

#include "metadata/database/Database.h"

namespace vt {

/// What the full-text tables of a catalogue name their tokenizer.
inline constexpr const char* kContentTokenizer = "vistaro";

/// Makes the tokenizer known to the connection. Of a text it gives the terms of that content; of a
/// phrase in a query what blanks part, as it stands.
StoreFailure addContentTokenizer(const Database& database);

}  // namespace vt
