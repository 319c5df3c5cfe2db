#pragma once

#include <gtest/gtest.h>
#include <unistd.h>
#include <utime.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "support/Places.h"
#include "support/Program.h"
#include "support/TemporaryFolder.h"

namespace vt {

/// Runs the built command over a tree of its own, under a root prefix with two accounts: `ann`
/// (2001, also in group 3001) and `ben` (2002).
class CommandTest : public testing::Test {
 protected:
  CommandTest() {
    for (const char* folder : {"etc", "tmp", "Library/Application Support", "Library/Caches"}) {
      std::filesystem::create_directories(root_.path() / folder);
    }
    write(root_ / "etc/passwd",
          "root:x:0:0:System:/root:/bin/sh\n"
          "ann:x:2001:2001:Ann Other:/home/ann:/bin/sh\n"
          "ben:x:2002:2002:Ben Third:/home/ben:/bin/sh\n");
    write(root_ / "etc/group",
          "root:x:0:\nadmin:x:80:ben\nann:x:2001:\nben:x:2002:\nteam:x:3001:ann\n");
  }

  static void write(const std::string& path, std::string_view bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
  }

  /// A file of `size` bytes below the tree, last changed `age` seconds before 2026-11-21 00:00 UTC.
  std::string addFile(const std::string& name, std::size_t size = 1, long age = 0) {
    const std::string path = tree_ / name;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    write(path, std::string(size, 'x'));
    const utimbuf times{1795219200 - age, 1795219200 - age};
    utime(path.c_str(), &times);
    return path;
  }

  ProgramResult vistaro(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), builtProgram("vistaro"));
    return runProgram(arguments, environment());
  }
  std::map<std::string, std::string> environment() const {
    return {{"VISTARO_ROOT", root_.path().string()},
            {"VISTARO_RESOURCES", resourceFolder()},
            {"TZ", "UTC"},
            {"LC_ALL", "C"}};
  }

  /// What a search says that had no index to look into.
  static constexpr const char* kWalkedWithoutIndex =
      "vistaro: note: the files were walked, since there is no index\n";

  /// Whether this process can become another user who could run the command.
  static bool canRunAs(unsigned uid) {
    return geteuid() == 0 &&
           runProgram(asUser(uid, {"test", "-x", builtProgram("vistaro")})).exitCode == 0;
  }
  ProgramResult vistaroAs(unsigned uid, std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), builtProgram("vistaro"));
    return runProgram(asUser(uid, arguments), environment());
  }

  ProgramResult search(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"search", "--path", tree_.path().string()});
    return vistaro(arguments);
  }

  /// The same command run by a user who has no groups but the one of the same number.
  static std::vector<std::string> asUser(unsigned uid, const std::vector<std::string>& command) {
    const std::string id = std::to_string(uid);
    std::vector<std::string> words = {"setpriv", "--reuid", id, "--regid", id, "--clear-groups"};
    words.insert(words.end(), command.begin(), command.end());
    return words;
  }

  TemporaryFolder root_;
  TemporaryFolder tree_;
};

}  // namespace vt
