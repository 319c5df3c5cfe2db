#pragma once

#include <memory>

#include "platform/linux/FileDescriptor.h"
#include "settings/VTSettings.h"

namespace vt::tool {

/// One change of the settings file by a command.
///
/// While it lives no other command changes the file: each holds the lock "Settings.plist.lock"
/// beside it. What is changed in memory is written by save(), all at once, or not at all.
class SettingsChange {
 public:
  /// Takes the lock, waiting a few seconds for another command, and reads the file anew. Throws
  /// CommandError when the lock cannot be had, or the file is there and cannot be understood: to
  /// write it then would lose what it holds.
  SettingsChange();
  SettingsChange(const SettingsChange&) = delete;
  SettingsChange& operator=(const SettingsChange&) = delete;
  ~SettingsChange();

  VTSettings& settings() const { return *settings_; }

  /// Writes the file. Throws CommandError when that fails; the file is then as it was.
  void save();

 private:
  FileDescriptor lock_;
  std::shared_ptr<VTSettings> settings_;
};

/// The settings as the file has them, to be read only. Throws CommandError when the file is there
/// and cannot be read or understood.
std::shared_ptr<VTSettings> readableSettings();

}  // namespace vt::tool
