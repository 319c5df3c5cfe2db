#pragma once

#include <crypt.h>

#include <fstream>
#include <memory>
#include <string>
#include <string_view>

#include "support/TemporaryFolder.h"

namespace vt {

/// A root prefix whose account files a test writes.
class AccountFolder {
 public:
  AccountFolder() { std::filesystem::create_directory(folder_ / "etc"); }

  std::string root() const { return folder_.path(); }
  /// Writes `etc/NAME`.
  void write(std::string_view name, std::string_view text) const {
    std::ofstream(folder_.path() / "etc" / name, std::ios::binary) << text;
  }

 private:
  TemporaryFolder folder_;
};

/// The hash of `password` by the method of `prefix` ("$y$", "$6$"), with a salt of the system's.
inline std::string hashed(const std::string& password, const char* prefix) {
  char setting[CRYPT_GENSALT_OUTPUT_SIZE];
  if (!crypt_gensalt_rn(prefix, 0, nullptr, 0, setting, sizeof(setting))) return "";
  const auto work = std::make_unique<crypt_data>();
  return crypt_r(password.c_str(), setting, work.get());
}

}  // namespace vt
