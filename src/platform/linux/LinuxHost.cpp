#include "platform/linux/LinuxHost.h"

#include <netdb.h>
#include <strings.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <sstream>
#include <string_view>

#include "platform/linux/PosixFiles.h"

namespace vt {
namespace {

constexpr std::uint64_t kLongestFile = 1 << 20;

bool sameName(const std::string& a, const std::string& b) {
  return ::strcasecmp(a.c_str(), b.c_str()) == 0;  // host names are ASCII
}

bool contains(const std::vector<std::string>& names, const std::string& name) {
  return std::ranges::any_of(names, [&](const auto& known) { return sameName(known, name); });
}

void addName(std::vector<std::string>& names, const std::string& name) {
  if (!name.starts_with("ip6-") && !contains(names, name)) names.push_back(name);
}

std::optional<std::string> systemHostName() {
  char buffer[256] = {};
  if (::gethostname(buffer, sizeof buffer - 1) != 0 || buffer[0] == '\0') return std::nullopt;
  return buffer;
}

std::vector<std::string> wordsOf(const std::string& line) {
  std::istringstream words(line.substr(0, line.find('#')));
  std::vector<std::string> result;
  for (std::string word; words >> word;) result.push_back(word);
  return result;
}

std::string readFile(const std::string& path) {
  const Result<std::string, FileError> bytes = PosixFiles().read(path, kLongestFile);
  return bytes ? *bytes : std::string();
}

// Each line of a hosts file: an address, then its names.
void addNamesOfHostsFile(std::vector<std::string>& names, const std::string& hosts) {
  std::istringstream lines(hosts);
  for (std::string line; std::getline(lines, line);) {
    const std::vector<std::string> words = wordsOf(line);
    if (words.empty()) continue;
    const bool isLoopback = words[0].starts_with("127.") || words[0] == "::1";
    const bool isNamed =
        !names.empty() && std::any_of(words.begin() + 1, words.end(), [&](const std::string& word) {
          return sameName(word, names.front());
        });
    if (!isLoopback && !isNamed) continue;
    std::for_each(words.begin() + 1, words.end(),
                  [&](const std::string& word) { addName(names, word); });
  }
}

std::optional<std::string> canonicalName(const std::string& name) {
  addrinfo hints{};
  hints.ai_flags = AI_CANONNAME;
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  if (::getaddrinfo(name.c_str(), nullptr, &hints, &found) != 0) return std::nullopt;
  const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> owner(found, &::freeaddrinfo);
  return found->ai_canonname ? std::optional<std::string>(found->ai_canonname) : std::nullopt;
}

}  // namespace

std::optional<std::string> LinuxHost::name() const {
  if (!rootPrefix_.empty()) {
    const std::vector<std::string> words = wordsOf(readFile(rootPrefix_ + "/etc/hostname"));
    if (!words.empty()) return words.front();
  }
  return systemHostName();
}

std::vector<std::string> LinuxHost::names() const {
  std::vector<std::string> names;
  const std::optional<std::string> own = name();
  if (own) names.push_back(*own);
  addNamesOfHostsFile(names, readFile(rootPrefix_ + "/etc/hosts"));
  if (own && rootPrefix_.empty()) {
    if (const std::optional<std::string> canonical = canonicalName(*own)) {
      addName(names, *canonical);
    }
  }
  return names;
}

}  // namespace vt
