#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace vt::worker {

/// Everything that the open file holds, from its start. Nothing when it holds more than `limit`
/// bytes or cannot be read.
std::optional<std::string> readInput(int descriptor, std::uint64_t limit);

/// Its first `limit` bytes, or as many as there are.
std::string readBeginning(int descriptor, std::uint64_t limit);

}  // namespace vt::worker
