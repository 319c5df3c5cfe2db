#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "foundation/Result.h"

namespace vt {

/// Where this process finds what it works on, as its environment variables say.
struct Environment {
  std::string rootPrefix;      ///< VISTARO_ROOT without trailing slashes; "" for the machine itself
  std::string indexFolder;     ///< VISTARO_INDEX, else "/var/lib/vistaro/index" behind the prefix
  std::string resourceFolder;  ///< VISTARO_RESOURCES, else the folder that the build was given
  std::vector<std::string> languages;  ///< see preferredLanguages()
};

/// Why a variable cannot be used, as one line for whoever started the program.
struct EnvironmentError {
  std::string text;
};

/// The value of a variable, or nullptr.
using EnvironmentLookup = std::function<const char*(const char* variable)>;

/// Reads the three variables and the languages; an empty one counts as unset. An error when one is
/// not absolute or, with `effectiveUser` 0, when the folder that it names is missing, not owned by
/// root, or writable by group or others. Of an index folder that is yet to be made, the parent is
/// judged.
Result<Environment, EnvironmentError> readEnvironment(const EnvironmentLookup& lookup,
                                                      std::uint64_t effectiveUser);

/// The same for this process, through secure_getenv: in a process whose rights were raised at its
/// start every variable is unset.
Result<Environment, EnvironmentError> readEnvironment();

}  // namespace vt
