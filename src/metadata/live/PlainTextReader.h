#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "metadata/rights/AccessJudge.h"

namespace vt {

/// How much of a file is looked at for its text: enough for nearly every text that people write,
/// and a bound on what one query reads.
inline constexpr std::size_t kMostTextBytes = 1 << 20;

/// The text of an open plain-text file, read from where its descriptor is: what its first
/// kMostTextBytes hold, as UTF-8. What of it can't be read is not in it.
std::string plainTextOf(int file);

/// The text of the plain-text file `name` (ended by NUL) of the open folder `folder`, as
/// plainTextOf() gives it.
///
/// Nothing unless it is a regular file that the judged account may read, which is judged on the
/// open file itself. Pipes, sockets and devices are not opened, links not followed, and the access
/// time stays where it is when that may be asked.
std::optional<std::string> readPlainText(int folder, const char* name, const AccessJudge& judge);

}  // namespace vt
