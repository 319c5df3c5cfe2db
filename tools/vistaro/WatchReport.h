#pragma once

#include <chrono>
#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

#include "metadata/store/WatcherRecord.h"

namespace vt::tool {

/// Prints a line of a report: a label of at most eleven letters, and what it is of.
void showStatusLine(std::string_view label, const std::string& text);

/// "3 folders" or "1 folder", for a unit in the plural.
std::string countOf(std::uint64_t count, std::string_view units);

/// Prints how the files of an index are watched, which was up to date `age` ago.
void showWatch(const WatcherRecord& record, std::chrono::microseconds age);

/// The same as an object.
nlohmann::ordered_json watchAsJson(const WatcherRecord& record);

}  // namespace vt::tool
