#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

// What the library and its helper program for password checks agree on; docs/accounts.md has it
// byte by byte.

namespace vt::auth {

/// A name or password longer than this is refused unasked. Two of them and their lengths fit into
/// one page, so a pipe takes the request whole even where the kernel grants it no more than that.
inline constexpr std::uint32_t kLongestText = 1024;
inline constexpr std::size_t kLongestRequest = std::size_t{2} * (4 + kLongestText);

inline constexpr char kAccepted = 'Y';
inline constexpr char kRefused = 'N';

inline constexpr int kExitAccepted = 0;
inline constexpr int kExitRefused = 1;
inline constexpr int kExitBadRequest = 2;

inline constexpr const char* kServiceFolder = "/etc/pam.d/";

/// Whether `service` can be the name of a PAM service file: lower-case letters, digits and dashes.
constexpr bool isServiceName(std::string_view service) {
  if (service.empty() || service.size() > 64) return false;
  for (const char c : service) {
    if (!(c >= 'a' && c <= 'z') && !(c >= '0' && c <= '9') && c != '-') return false;
  }
  return true;
}

}  // namespace vt::auth
