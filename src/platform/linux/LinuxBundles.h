#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/Bundles.h"

namespace vt {

/// A table of texts that ships with the library and stands for that of a bundle which this machine
/// does not have.
struct ShippedStrings {
  std::string bundlePath;
  std::string table;
  std::map<std::string, std::string, std::less<>> texts;
};

/// Bundles on the file system, below a root prefix.
///
/// A bundle is a folder. Its files lie in "Contents", or in the folder itself as those of
/// frameworks do: "Info.plist" ("Resources/Info.plist" in a framework) and the tables
/// "Resources/LANGUAGE.lproj/TABLE.strings", each a property list of any format. Tables are looked
/// at in the order of the languages, then "en", "English" and "Base", then the table that belongs
/// to no language. Each file is read once.
class LinuxBundles final : public Bundles {
 public:
  /// `languages` as preferredLanguages() gives them.
  LinuxBundles(std::string rootPrefix, std::vector<std::string> languages,
               std::vector<ShippedStrings> shipped)
      : rootPrefix_(std::move(rootPrefix)),
        languages_(std::move(languages)),
        shipped_(std::move(shipped)) {}

  std::shared_ptr<Dictionary> infoDictionary(const std::string& path) override;
  std::string localizedStringForKey(const std::string& path, std::string_view key,
                                    std::string_view value, std::string_view table) override;

 private:
  using Tables = std::vector<std::shared_ptr<Dictionary>>;

  const Tables& tablesOf(const std::string& path, const std::string& table);
  Tables readTables(const std::string& path, const std::string& table) const;

  std::string rootPrefix_;
  std::vector<std::string> languages_;
  std::vector<ShippedStrings> shipped_;
  std::map<std::pair<std::string, std::string>, Tables> tables_;  // by bundle and table
};

}  // namespace vt
