#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <tuple>

#include "platform/Bundles.h"

namespace vt {

/// Bundles from a table, in one language.
class MemoryBundles final : public Bundles {
 public:
  /// Makes a bundle, or gives it another dictionary.
  void add(const std::string& path,
           std::shared_ptr<Dictionary> infoDictionary = Dictionary::make()) {
    bundles_[path] = std::move(infoDictionary);
  }
  /// Puts a text into a table of a bundle that was added.
  void addString(const std::string& path, std::string_view table, std::string_view key,
                 std::string text) {
    strings_[{path, std::string(table), std::string(key)}] = std::move(text);
  }

  std::shared_ptr<Dictionary> infoDictionary(const std::string& path) override {
    const auto found = bundles_.find(path);
    return found == bundles_.end() ? nullptr : found->second;
  }

  std::string localizedStringForKey(const std::string& path, std::string_view key,
                                    std::string_view value, std::string_view table) override {
    const auto found = strings_.find({path, std::string(table), std::string(key)});
    return found == strings_.end() ? std::string(value) : found->second;
  }

 private:
  std::map<std::string, std::shared_ptr<Dictionary>> bundles_;
  std::map<std::tuple<std::string, std::string, std::string>, std::string> strings_;
};

}  // namespace vt
