#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "metadata/watch/FileSystemWatch.h"

namespace vt {

/// A watch that is told by the test what has happened. All of it is in one folder.
class MemoryWatch final : public FileSystemWatch {
 public:
  explicit MemoryWatch(std::string folder = "/watched") : folder_(std::move(folder)) {}

  const char* name() const override { return "memory"; }
  const char* unit() const override { return "folders"; }
  int descriptor() const override { return -1; }

  /// The next collect() finds that the file has changed.
  void change(const std::string& name) { happened_.push_back(name); }
  /// From now on these are not watched.
  void loseSightOf(std::vector<std::string> folders) { unwatched_ = std::move(folders); }
  int triesToWatch() const { return tries_; }

  std::vector<std::string> unwatched() const override { return unwatched_; }
  std::string whyUnwatched() const override { return unwatched_.empty() ? "" : "no watches"; }
  void watchUnwatched(WatchInstant /*now*/) override { ++tries_; }
  WatchCounts counts() const override { return {}; }

 protected:
  Result<bool, std::string> restart(WatchInstant /*now*/) override { return true; }
  bool drain(WatchInstant now) override {
    for (const std::string& name : std::exchange(happened_, {})) collector().addEntry(0, name, now);
    return true;
  }
  std::vector<std::string> pathsOf(WatchedFolder /*folder*/) override { return {folder_}; }

 private:
  std::string folder_;
  std::vector<std::string> happened_;
  std::vector<std::string> unwatched_;
  int tries_ = 0;
};

}  // namespace vt
