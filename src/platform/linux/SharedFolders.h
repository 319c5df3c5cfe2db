#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vt {

/// A folder that a file service offers, by the name that it has there. The path is absolute.
struct SharedFolder {
  std::string name;
  std::string path;

  friend bool operator==(const SharedFolder&, const SharedFolder&) = default;
};

/// What one file service shares, in its own order.
struct SharedFolders {
  std::vector<SharedFolder> folders;
  std::vector<std::string> notes;  ///< for whoever looks after the machine: what was left out, why

  /// Adds a share, or a note when no record can stand for it: no absolute path, the root of the
  /// file system, a name or path that is not UTF-8. `kind` tells the note what is left out.
  void add(std::string_view kind, const std::string& name, std::string_view path);
  void addNote(std::string_view kind, std::string_view name, std::string_view reason);
  /// Puts the folders and notes of another service behind these.
  void append(SharedFolders others);
};

/// One section of a configuration file: its name, and its values by the names of parameters.
struct ConfigurationSection {
  std::string name;
  std::vector<std::pair<std::string, std::string>> values;

  /// The value of `parameter`, compared byte by byte, or nullptr.
  const std::string* find(std::string_view parameter) const;
};

/// `path` with single slashes, without "." and "..", and without a slash at its end. Links are not
/// looked at. The file services do the same before they open a shared folder.
std::string canonicalText(std::string_view path);

/// `text` less the white space at both ends.
std::string_view trimmed(std::string_view text);

/// Cuts the first line, without its line feed, from the front of `text`.
std::string_view cutLine(std::string_view& text);

}  // namespace vt
