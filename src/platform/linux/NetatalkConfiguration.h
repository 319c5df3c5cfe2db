#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/Result.h"
#include "platform/linux/SambaConfiguration.h"
#include "platform/linux/SharedFolders.h"

namespace vt {

/// The sections of Netatalk's `afp.conf`, collected from its text.
///
/// Sections `[name]` and parameters `name = value`, indented or not; a line that begins with ";" or
/// "#" is a comment; one that ends with "\" goes on in the next. A value ends at the next ";" or
/// "#" unless it stands in quotes. Case and blanks in names do not matter. A section that comes
/// again adds to the first of its name, a parameter that comes again replaces.
class NetatalkConfiguration {
 public:
  /// Reads `text` on top of what was read. Answers the path of the file with which the reading goes
  /// on, when the text includes one: what follows the include is never read, as in Netatalk itself.
  /// An error, with the number of the line, at the first line of no known form; Netatalk then
  /// shares nothing at all.
  Result<std::optional<std::string>, ConfigurationError> read(std::string_view text);

  /// The volumes, in the order of the file: every section but [Global], [Homes] and those that a
  /// `vol preset` names. Left out with a note are those without an absolute path and those whose
  /// path or name holds a variable ("$u"), so that it is not one for everybody.
  SharedFolders volumes() const;

 private:
  Result<std::optional<std::string>, ConfigurationError> readLine(std::string_view line);

  std::vector<ConfigurationSection> sections_;      // parameters' names folded
  std::map<std::string, std::size_t> indexOfName_;  // folded name -> index in sections_
  std::optional<std::size_t> current_;              // nothing before the first section
};

/// The volumes of the configuration in `file` and what it includes. An error when a line cannot be
/// understood or a file cannot be read, is longer than 16 MiB, or too many are included.
Result<SharedFolders, ConfigurationError> readNetatalkVolumes(const std::string& file);

}  // namespace vt
