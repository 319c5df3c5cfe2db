#pragma once

#include <fcntl.h>
#include <sys/acl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/TemporaryFolder.h"

namespace vt {

/// A tree of files of all sorts with random names, dates, sizes and, where the process may give
/// files away, owners, modes and access control lists.
class RandomFiles {
 public:
  static constexpr std::uint32_t kFirstUid = 20000;
  static constexpr std::uint32_t kUsers = 6;
  static constexpr std::uint32_t kFirstGid = 30000;
  static constexpr std::uint32_t kGroups = 4;
  /// Noon of 2024-02-29 in UTC; files are at most some years older and a day younger.
  static constexpr std::int64_t kNow = 1709209800;

  RandomFiles(std::uint32_t seed, std::size_t count) : random_(seed) {
    folders_.push_back(folder_.path());
    while (count-- > 0) add();
    // From the deepest, since making an entry changes the dates of its folder.
    for (auto path = paths_.rbegin(); path != paths_.rend(); ++path) dress(*path);
  }

  std::string path() const { return folder_.path(); }
  /// The folders, that of the tree first.
  const std::vector<std::string>& folders() const { return folders_; }

  std::uint32_t pick(std::uint32_t below) { return static_cast<std::uint32_t>(random_() % below); }

 private:
  std::string name() {
    constexpr auto kWords =
        std::to_array<const char*>({"report", "Report",   "REPORT 2024", "Größe", "Gro\u0308ße",
                                    "grosse", "a",        "b",           "ab",    "aab",
                                    "Straße", "naïve",    "日本語",      "x_y",   "budget-final",
                                    "IMG",    "\xFF\xFE", "İstanbul",    "αι",    "*",
                                    "?",      "\\",       "\"",          "e"});
    constexpr auto kEndings = std::to_array<const char*>(
        {"", "", ".txt", ".pdf", ".JPG", ".jpg", ".tar.gz", ".app", ".rtfd", ".md", ".", "\u0301"});
    std::string result = pick(8) == 0 ? "." : "";
    for (std::uint32_t words = 1 + pick(3); words > 0; --words) {
      result += kWords[pick(kWords.size())];
      if (words > 1) result += " _-."[pick(4)];
    }
    result += kEndings[pick(kEndings.size())];
    return result == "." || result == ".." ? "dots" : result;
  }

  /// Words that RandomQuery asks for, about `size` bytes of them.
  std::string text(std::size_t size) {
    constexpr auto kWords = std::to_array<const char*>(
        {"budget", "Budget", "report", "REPORT", "Größe", "grosse", "myReport", "日本語", "日本",
         "2024", "plan9", "x", "xx", "naïve", "B", "reporting", "2024Budget", "の"});
    constexpr auto kSeparators = std::to_array<const char*>({" ", "\n", "_", ", ", "", "-"});
    std::string result;
    // Few different ones in each, or all texts would have all words.
    const std::uint32_t first = pick(kWords.size());
    while (result.size() < size) {
      result += kWords[(first + pick(3)) % kWords.size()];
      result += kSeparators[pick(kSeparators.size())];
    }
    return result;
  }

  void add() {
    const std::string path =
        folders_[pick(static_cast<std::uint32_t>(folders_.size()))] + "/" + name();
    if (std::filesystem::exists(std::filesystem::symlink_status(path))) return;
    switch (pick(12)) {
      case 0:
      case 1:
      case 2:
        if (mkdir(path.c_str(), 0755) != 0) throw std::runtime_error(path);
        folders_.push_back(path);
        break;
      case 3:
        if (symlink(pick(2) == 0 ? "nowhere" : "..", path.c_str()) != 0) {
          throw std::runtime_error(path);
        }
        break;
      case 4:
        if (mkfifo(path.c_str(), 0644) != 0) throw std::runtime_error(path);
        break;
      default: {
        const int file = open(path.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0644);
        if (file < 0) throw std::runtime_error(path);
        const std::string text = this->text(pick(3) * pick(3000));
        if (write(file, text.data(), text.size()) < 0) throw std::runtime_error(path);
        close(file);
      }
    }
    paths_.push_back(path);
  }

  void dress(const std::string& path) {
    struct stat status{};
    lstat(path.c_str(), &status);
    if (geteuid() == 0) {
      if (lchown(path.c_str(), kFirstUid + pick(kUsers), kFirstGid + pick(kGroups)) != 0) {
        throw std::runtime_error("chown " + path);
      }
      // Most folders stay open to all, or nothing below would ever be reached.
      const bool isDressed = !S_ISDIR(status.st_mode) || pick(5) == 0;
      if (!S_ISLNK(status.st_mode) && isDressed) {
        chmod(path.c_str(), pick(512));
        if (pick(4) == 0) giveAcl(path);
      }
    }
    // Few dates, so that many files are equally old, and such as queries name to the microsecond:
    // now, and the midnights before and after it.
    constexpr auto kOffsets =
        std::to_array<std::int64_t>({86400, 41400, 0, -40000, -45000, -131400, -20'000'000});
    const std::int64_t time = kNow + kOffsets[pick(kOffsets.size())];
    const timespec times[2] = {{time - pick(3) * 5000, 0},
                               {time, static_cast<long>(pick(2) * pick(3)) * 500}};
    utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW);
  }

  void giveAcl(const std::string& path) {
    const auto letters = [&] {
      const std::uint32_t bits = pick(8);
      return std::string{(bits & 4) != 0 ? 'r' : '-', (bits & 2) != 0 ? 'w' : '-',
                         (bits & 1) != 0 ? 'x' : '-'};
    };
    const std::string text = "u::" + letters() + ",g::" + letters() + ",o::" + letters() +
                             ",m::" + letters() + ",u:" + std::to_string(kFirstUid + pick(kUsers)) +
                             ":" + letters() + ",g:" + std::to_string(kFirstGid + pick(kGroups)) +
                             ":" + letters();
    acl_t list = acl_from_text(text.c_str());
    if (list == nullptr || acl_set_file(path.c_str(), ACL_TYPE_ACCESS, list) != 0) {
      throw std::runtime_error("setfacl " + text + " " + path);
    }
    acl_free(list);
  }

  std::mt19937 random_;
  TemporaryFolder folder_;
  std::vector<std::string> folders_;
  std::vector<std::string> paths_;
};

}  // namespace vt
