#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace vt::tool {

/// Adds the files that a command is about, at least one. Names that begin with a dash stand after
/// "--". A name in brackets, "[a,b]", would be taken for a list, so "./" stands before it.
void addFileArguments(CLI::App& command, std::vector<std::string>& files);

/// The absolute path (bytes) of a file as it was typed; links and ".." stay as they are. Throws
/// CommandError for an empty name.
std::string absolutePathOf(const std::string& typed);

/// That there is nothing to be told of the file, in one line for people. It does not say whether
/// the file is missing or may not be read, which is nobody's to know.
std::string describeUnreadable(const std::string& typed);

}  // namespace vt::tool
