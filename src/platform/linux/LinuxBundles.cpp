#include "platform/linux/LinuxBundles.h"

#include <filesystem>

#include "foundation/PropertyList.h"
#include "platform/linux/PosixFiles.h"

namespace vt {
namespace {

constexpr std::uint64_t kLongestFile = 16 << 20;

bool isFolder(const std::string& path) {
  std::error_code ignored;
  return std::filesystem::is_directory(path, ignored);
}

// The dictionary that the file holds; nullptr when it is missing or holds something else.
std::shared_ptr<Dictionary> dictionaryIn(const std::string& file) {
  const Result<std::string, FileError> bytes = PosixFiles().read(file, kLongestFile);
  if (!bytes) return nullptr;
  const auto root = readPropertyList(*bytes);
  return root ? root->dictionary() : nullptr;
}

}  // namespace

std::shared_ptr<Dictionary> LinuxBundles::infoDictionary(const std::string& path) {
  const std::string folder = rootPrefix_ + path;
  if (!isFolder(folder)) return nullptr;
  for (const char* file : {"/Contents/Info.plist", "/Resources/Info.plist"}) {
    if (std::shared_ptr<Dictionary> information = dictionaryIn(folder + file)) return information;
  }
  return Dictionary::make();
}

LinuxBundles::Tables LinuxBundles::readTables(const std::string& path,
                                              const std::string& table) const {
  Tables tables;
  if (table.find('/') != std::string::npos) return tables;
  std::vector<std::string> folders;
  folders.reserve(languages_.size() + 4);
  for (const std::string& language : languages_) folders.push_back(language + ".lproj/");
  for (const char* folder : {"en.lproj/", "English.lproj/", "Base.lproj/", ""}) {
    folders.emplace_back(folder);
  }
  for (const std::string& folder : folders) {
    for (const char* resources : {"/Contents/Resources/", "/Resources/"}) {
      std::string file = rootPrefix_ + path;
      file.append(resources).append(folder).append(table).append(".strings");
      if (auto texts = dictionaryIn(file)) tables.push_back(std::move(texts));
    }
  }
  return tables;
}

const LinuxBundles::Tables& LinuxBundles::tablesOf(const std::string& path,
                                                   const std::string& table) {
  const auto known = tables_.find({path, table});
  if (known != tables_.end()) return known->second;
  Tables tables;
  if (isFolder(rootPrefix_ + path)) {
    tables = readTables(path, table);
  } else {
    for (const ShippedStrings& strings : shipped_) {
      if (strings.bundlePath != path || strings.table != table) continue;
      auto texts = Dictionary::make();
      for (const auto& [key, text] : strings.texts) texts->set(key, text);
      tables.push_back(std::move(texts));
    }
  }
  return tables_.emplace(std::pair(path, table), std::move(tables)).first->second;
}

std::string LinuxBundles::localizedStringForKey(const std::string& path, std::string_view key,
                                                std::string_view value, std::string_view table) {
  for (const std::shared_ptr<Dictionary>& texts : tablesOf(path, std::string(table))) {
    const Value* found = texts->find(key);
    if (found && found->get<std::string>()) return *found->get<std::string>();
  }
  return std::string(value);
}

}  // namespace vt
