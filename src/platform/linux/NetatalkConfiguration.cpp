#include "platform/linux/NetatalkConfiguration.h"

#include <fmt/format.h>

#include <set>

#include "platform/linux/PosixFiles.h"

namespace vt {
namespace {

constexpr std::string_view kVolume = "AFP volume";
constexpr std::uint64_t kLongestFile = std::uint64_t{16} << 20;
constexpr int kMostIncludes = 16;

/// A name as it is compared: ASCII letters small, blanks left out.
std::string foldedName(std::string_view name) {
  std::string folded;
  for (const char c : name) {
    if (c == ' ' || c == '\t') continue;
    folded += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  }
  return folded;
}

std::string_view valueIn(std::string_view text) {
  if (text.starts_with('"') || text.starts_with('\'')) {
    const std::string_view inner = text.substr(1);
    return inner.substr(0, inner.find(text.front()));
  }
  return trimmed(text.substr(0, text.find_first_of(";#")));
}

bool holdsVariable(std::string_view text) {
  const std::size_t dollar = text.find('$');
  return dollar != text.npos && dollar + 1 < text.size();
}

}  // namespace

Result<std::optional<std::string>, ConfigurationError> NetatalkConfiguration::read(
    std::string_view text) {
  std::string joined;  // the lines so far of one that goes on
  for (int number = 1; !text.empty(); ++number) {
    std::string_view line = cutLine(text);
    // Only the end: what follows a backslash keeps its blanks.
    line = line.substr(0, line.find_last_not_of(" \t\r\n\v\f") + 1);
    if (line.ends_with('\\')) {
      joined += line.substr(0, line.size() - 1);
      continue;
    }
    joined += line;
    auto include = readLine(trimmed(joined));
    if (!include)
      return ConfigurationError{fmt::format("line {}: {}", number, include.error().text)};
    if (*include) return include;
    joined.clear();
  }
  return std::optional<std::string>();
}

Result<std::optional<std::string>, ConfigurationError> NetatalkConfiguration::readLine(
    std::string_view line) {
  const std::optional<std::string> noInclude;
  if (line.empty() || line.starts_with(';') || line.starts_with('#')) return noInclude;
  if (line.starts_with('[') && line.ends_with(']')) {
    const std::string_view name = trimmed(line.substr(1, line.find(']') - 1));
    if (name.empty()) return ConfigurationError{"the section has no name"};
    const auto [found, isNew] = indexOfName_.emplace(foldedName(name), sections_.size());
    if (isNew) sections_.push_back({std::string(name), {}});
    current_ = found->second;
    return noInclude;
  }
  const std::size_t equals = line.find('=');
  if (equals == line.npos) return ConfigurationError{"it is neither a section nor a parameter"};
  const std::string name = foldedName(line.substr(0, equals));
  if (name.empty()) return ConfigurationError{"the parameter has no name"};
  std::string value(valueIn(trimmed(line.substr(equals + 1))));
  if (name == "include") return std::optional(std::move(value));
  if (!current_) return noInclude;
  ConfigurationSection& section = sections_[*current_];
  std::erase_if(section.values, [&](const auto& pair) { return pair.first == name; });
  section.values.emplace_back(name, std::move(value));
  return noInclude;
}

SharedFolders NetatalkConfiguration::volumes() const {
  std::set<std::string> others{"global", "homes"};
  for (const ConfigurationSection& section : sections_) {
    if (const std::string* preset = section.find("volpreset")) others.insert(foldedName(*preset));
  }
  SharedFolders volumes;
  for (const ConfigurationSection& section : sections_) {
    if (others.contains(foldedName(section.name))) continue;
    const std::string* path = section.find("path");
    const std::string* ownName = section.find("volumename");
    const std::string& name = ownName && !ownName->empty() ? *ownName : section.name;
    if (path && holdsVariable(*path)) {
      volumes.addNote(kVolume, name, fmt::format("its path \"{}\" depends on who asks", *path));
    } else if (holdsVariable(name)) {
      volumes.addNote(kVolume, name, "its name depends on who asks");
    } else {
      volumes.add(kVolume, name, path ? *path : std::string());
    }
  }
  return volumes;
}

Result<SharedFolders, ConfigurationError> readNetatalkVolumes(const std::string& file) {
  NetatalkConfiguration configuration;
  std::optional<std::string> next = file;
  for (int files = 0; next; ++files) {
    if (files > kMostIncludes) {
      return ConfigurationError{fmt::format("{} includes too many files", file)};
    }
    const std::string path = *next;
    const Result<std::string, FileError> text = PosixFiles().read(path, kLongestFile);
    if (!text) return ConfigurationError{text.error().text};
    auto include = configuration.read(*text);
    if (!include) return ConfigurationError{fmt::format("{}, {}", path, include.error().text)};
    next = std::move(include).value();
  }
  return configuration.volumes();
}

}  // namespace vt
