#pragma once

#include <string>
#include <vector>

#include "platform/linux/Environment.h"

namespace vt {

/// The languages that whoever started the process wants to read, the most wanted first, each with
/// its country before it alone: "de_AT", "de". English is what everything is written in, so the
/// list ends where English would come; empty means English.
///
/// The variables are read as the C library's message catalogues do: the locale is the first of
/// LC_ALL, LC_MESSAGES and LANG that is not empty; when there is none, or it is "C" or "POSIX", no
/// language is wanted; else those of LANGUAGE, separated by colons, and where that is empty the
/// locale's own. Encodings and variants are cut off. A name that holds anything but letters, digits
/// and underscores is left out, since file names are made of it.
std::vector<std::string> preferredLanguages(const EnvironmentLookup& lookup);

}  // namespace vt
