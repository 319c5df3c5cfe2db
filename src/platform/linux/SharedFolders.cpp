#include "platform/linux/SharedFolders.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <iterator>

#include "foundation/UTF8.h"

namespace vt {

void SharedFolders::add(std::string_view kind, const std::string& name, std::string_view path) {
  if (path.empty()) return addNote(kind, name, "it has no path");
  if (path.front() != '/') {
    return addNote(kind, name, fmt::format("its path \"{}\" is not absolute", path));
  }
  if (name.empty()) return addNote(kind, name, "it has no name");
  if (!isValidUTF8(name) || !isValidUTF8(path)) {
    return addNote(kind, name, "its name or path is not UTF-8");
  }
  std::string canonical = canonicalText(path);
  // What follows the shared folder's path in a URL begins with a slash, except here.
  if (canonical == "/") return addNote(kind, name, "it is the whole file system");
  folders.push_back({name, std::move(canonical)});
}

void SharedFolders::addNote(std::string_view kind, std::string_view name, std::string_view reason) {
  notes.push_back(fmt::format("the {} \"{}\" is left out: {}", kind, name, reason));
}

void SharedFolders::append(SharedFolders others) {
  std::ranges::move(others.folders, std::back_inserter(folders));
  std::ranges::move(others.notes, std::back_inserter(notes));
}

const std::string* ConfigurationSection::find(std::string_view parameter) const {
  const auto found =
      std::ranges::find(values, parameter, &std::pair<std::string, std::string>::first);
  return found == values.end() ? nullptr : &found->second;
}

std::string canonicalText(std::string_view path) {
  std::string text = std::filesystem::path(path).lexically_normal().string();
  while (text.size() > 1 && text.back() == '/') text.pop_back();
  return text;
}

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kWhiteSpace = " \t\r\n\v\f";
  const std::size_t first = text.find_first_not_of(kWhiteSpace);
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(kWhiteSpace) - first + 1);
}

std::string_view cutLine(std::string_view& text) {
  const std::string_view line = text.substr(0, text.find('\n'));
  text.remove_prefix(std::min(line.size() + 1, text.size()));
  return line;
}

}  // namespace vt
