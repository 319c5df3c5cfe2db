#pragma once

#include <optional>
#include <string>

namespace vt {

/// What a test's file asks of whoever looks into it: "DEED WHAT".
struct Misdeed {
  std::string deed;
  std::string what;
};
Misdeed misdeedIn(int input);

/// Tries what code that got hold of a confined process might: whether it got its way. Nothing for a
/// deed that it does not know; some do not come back. `input` is the file.
std::optional<bool> tryMisdeed(const Misdeed& misdeed, int input);

/// Writes to the pipe that the answer goes to, which is the highest descriptor of the process.
void writeToPipe(int input, const std::string& bytes);

}  // namespace vt
