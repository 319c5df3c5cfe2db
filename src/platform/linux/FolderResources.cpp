#include "platform/linux/FolderResources.h"

#include <fmt/format.h>

#include "platform/linux/PosixFiles.h"

namespace vt {
namespace {

constexpr std::uint64_t kLongestResource = 64 << 20;

}  // namespace

std::optional<std::string> FolderResources::resource(std::string_view name,
                                                     std::string_view type) const {
  const std::string file = fmt::format("{}.{}", name, type);
  if (file.find('/') != std::string::npos) return std::nullopt;
  Result<std::string, FileError> bytes = PosixFiles().read(folder_ + "/" + file, kLongestResource);
  if (!bytes) return std::nullopt;
  return *std::move(bytes);
}

}  // namespace vt
