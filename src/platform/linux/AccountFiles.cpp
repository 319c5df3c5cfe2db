#include "platform/linux/AccountFiles.h"

#include <charconv>
#include <filesystem>
#include <fstream>
#include <limits>

namespace vt {
namespace {

constexpr std::uintmax_t kLargestFile = std::uintmax_t{64} << 20;

}  // namespace

std::vector<std::string> accountFileLines(const std::string& path) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error) || error) return {};
  if (std::filesystem::file_size(path, error) > kLargestFile || error) return {};
  std::ifstream file(path, std::ios::binary);
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line);) {
    if (!line.empty() && line.front() != '#') lines.push_back(std::move(line));
  }
  return lines;
}

std::vector<std::string_view> accountFields(std::string_view line) {
  std::vector<std::string_view> fields;
  for (;;) {
    const std::size_t end = line.find(':');
    fields.push_back(line.substr(0, end));
    if (end == line.npos) return fields;
    line.remove_prefix(end + 1);
  }
}

std::optional<std::uint32_t> accountId(std::string_view field) {
  std::uint32_t id = 0;
  const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), id);
  if (error != std::errc() || end != field.data() + field.size()) return std::nullopt;
  if (id == std::numeric_limits<std::uint32_t>::max()) return std::nullopt;
  return id;
}

}  // namespace vt
