#pragma once

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

#include "BackgroundProgram.h"
#include "ProgramRun.h"
#include "support/Program.h"
#include "support/TemporaryFolder.h"

namespace vt {

inline double mebibytesIn(const std::filesystem::path& folder) {
  std::uintmax_t bytes = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    if (entry.is_regular_file()) bytes += entry.file_size();
  }
  return static_cast<double>(bytes) / (1024 * 1024);
}

/// Recoll with an index of its own of one tree.
class Recoll {
 public:
  explicit Recoll(const std::string& tree) {
    std::ofstream(place_ / "recoll.conf") << "topdirs = " << tree << "\n";
  }

  double secondsOfIndexing() const {
    return secondsOfProgram({"recollindex", "-c", place_.path()});
  }
  double mebibytes() const { return mebibytesIn(place_.path() / "xapiandb"); }
  /// Of the whole process that lists the files with the word.
  double secondsOfSearch(const std::string& word) const {
    return secondsOfProgram({"recollq", "-c", place_.path(), "-b", "-n", "0-0", word});
  }

 private:
  TemporaryFolder place_;
};

/// Tracker with an index of its own of one tree, on a message bus of its own.
class Tracker {
 public:
  explicit Tracker(const std::string& tree) {
    const std::filesystem::path settings = place_.path() / "config/glib-2.0/settings";
    std::filesystem::create_directories(settings);
    std::ofstream(settings / "keyfile") << "[org/freedesktop/tracker/miner/files]\n"
                                        << "index-recursive-directories=['" << tree << "']\n"
                                        << "index-single-directories=@as []\n"
                                        << "initial-sleep=0\nenable-monitors=false\n";
    const std::string address = "unix:path=" + place_ / "bus";
    setenv("GSETTINGS_BACKEND", "keyfile", 1);
    setenv("DBUS_SESSION_BUS_ADDRESS", address.c_str(), 1);
    for (const auto& [variable, folder] : {std::pair("HOME", "home"),
                                           {"XDG_CONFIG_HOME", "config"},
                                           {"XDG_CACHE_HOME", "cache"},
                                           {"XDG_DATA_HOME", "data"},
                                           {"XDG_RUNTIME_DIR", "run"}}) {
      std::filesystem::create_directories(place_ / folder);
      setenv(variable, (place_ / folder).c_str(), 1);
    }
    bus_ = std::make_unique<BackgroundProgram>(std::vector<std::string>{
        "dbus-daemon", "--session", "--nofork", "--nopidfile", "--address=" + address});
  }

  /// Until the last file was looked into. It tells nobody when it is done: files and texts are
  /// counted each second, until there are no more for some.
  double secondsOfIndexing() {
    const auto start = std::chrono::steady_clock::now();
    const auto seconds = [&] {
      return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    };
    miner_ = std::make_unique<BackgroundProgram>(
        std::vector<std::string>{"/usr/libexec/tracker-miner-fs-3"});
    std::string counted;
    double lastChange = 0;
    while (seconds() - lastChange < kQuietSeconds) {
      std::this_thread::sleep_for(std::chrono::seconds(1));
      const std::string count =
          answerTo("SELECT COUNT(?file) { ?file a nfo:FileDataObject }") + countOfTexts();
      if (count != counted) lastChange = seconds();
      counted = count;
    }
    if (countOfTexts().find_first_of("123456789") == std::string::npos) {
      throw std::runtime_error("tracker has looked into nothing, as it does below /tmp");
    }
    return lastChange;
  }
  double mebibytes() const { return mebibytesIn(place_.path() / "cache"); }
  /// Of the whole process that lists the files with the word.
  double secondsOfSearch(const std::string& word) const {
    return secondsOfProgram(
        query("SELECT ?url { ?text fts:match \"" + word + "\" ; nie:isStoredAs ?url }"));
  }

 private:
  static constexpr double kQuietSeconds = 30;

  static std::vector<std::string> query(const std::string& text) {
    return {"tracker3", "sparql", "--dbus-service=org.freedesktop.Tracker3.Miner.Files", "-q",
            text};
  }

  static std::string countOfTexts() {
    return answerTo("SELECT COUNT(?text) { ?text nie:plainTextContent ?is }");
  }

  static std::string answerTo(const std::string& question) {
    return runProgram(query(question)).output;
  }

  TemporaryFolder place_;
  std::unique_ptr<BackgroundProgram> bus_;
  std::unique_ptr<BackgroundProgram> miner_;
};

}  // namespace vt
