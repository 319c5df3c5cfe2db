#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace vt::tool {

/// What is wrong with the command line, and where help is, in one line for people.
std::string describeUsageError(const CLI::App& app, const CLI::ParseError& error);

/// Takes whole numbers from 1 to 4,294,967,295 in decimal digits.
CLI::Validator countingNumber();

}  // namespace vt::tool
