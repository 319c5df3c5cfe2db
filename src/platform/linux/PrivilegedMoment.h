#pragma once

#include <cstdint>

namespace vt {

class Identity;

/// Acts as user 0 while it lives, where the process may, and then as before. Used to look at files
/// on behalf of an account whose groups the process has not taken on.
class PrivilegedMoment {
 public:
  explicit PrivilegedMoment(Identity& identity);
  PrivilegedMoment(const PrivilegedMoment&) = delete;
  PrivilegedMoment& operator=(const PrivilegedMoment&) = delete;
  /// Ends the process when the way back is refused: going on would answer as user 0.
  ~PrivilegedMoment();

 private:
  Identity& identity_;
  std::uint32_t uid_;
  bool isRegained_;
};

}  // namespace vt
