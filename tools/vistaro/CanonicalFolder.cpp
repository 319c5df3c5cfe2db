#include "vistaro/CanonicalFolder.h"

#include <fmt/format.h>

#include <system_error>

#include "vistaro/CommandError.h"
#include "vistaro/Terminal.h"

namespace vt::tool {

std::filesystem::path canonicalFolder(const std::string& path) {
  std::error_code error;
  std::filesystem::path canonical = std::filesystem::canonical(path, error);
  if (!error && !std::filesystem::is_directory(canonical, error) && !error) {
    error = std::make_error_code(std::errc::not_a_directory);
  }
  if (error) throw CommandError{kUsage, fmt::format("{}: {}", printable(path), error.message())};
  return canonical;
}

}  // namespace vt::tool
