#include "vistaro/SettingsChange.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>

#include "vistaro/Checkup.h"
#include "vistaro/CommandError.h"

namespace vt::tool {
namespace {

// A command holds the lock for one read and one write, milliseconds as a rule.
constexpr std::chrono::seconds kLongestWait{5};
constexpr std::chrono::milliseconds kPause{20};

void needReadableFile() {
  for (const Diagnosis& diagnosis : checkSettings()) {
    if (diagnosis.finding != Finding::kOk) throw CommandError{kFailure, diagnosis.text};
  }
}

[[noreturn]] void failOn(const std::string& path) {
  throw CommandError{kFailure, fmt::format("{}: {}", path, std::strerror(errno))};
}

FileDescriptor lockForChange() {
  const std::optional<std::string> settingsFile = VTSettings::settingsStoragePath();
  if (!settingsFile) throw CommandError{kFailure, "the settings folder cannot be made"};
  const std::string path = *settingsFile + ".lock";
  FileDescriptor file(
      ::open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK, 0600));
  if (!file) failOn(path);
  const auto deadline = std::chrono::steady_clock::now() + kLongestWait;
  while (::flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK && errno != EINTR) failOn(path);
    if (std::chrono::steady_clock::now() >= deadline) {
      throw CommandError{kFailure, "another command is changing the settings; try again"};
    }
    std::this_thread::sleep_for(kPause);
  }
  return file;
}

}  // namespace

SettingsChange::SettingsChange() : lock_(lockForChange()) {
  needReadableFile();
  settings_ = VTSettings::sharedInstance();
  settings_->reloadConfig();
  settings_->setSaveSettingsOnChanges(/*save=*/false);
}

SettingsChange::~SettingsChange() { settings_->setSaveSettingsOnChanges(/*save=*/true); }

void SettingsChange::save() {
  if (!settings_->saveStorage()) throw CommandError{kFailure, "the settings were not changed"};
}

std::shared_ptr<VTSettings> readableSettings() {
  needReadableFile();
  return VTSettings::sharedInstance();
}

}  // namespace vt::tool
