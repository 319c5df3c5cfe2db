#include "worker/InheritedCode.h"

#include <gmock/gmock.h>
#include <sys/resource.h>

#include <cstdint>
#include <functional>
#include <locale>
#include <regex>
#include <sstream>
#include <string>

#include "support/InChildProcess.h"
#include "support/ReadFile.h"

namespace vt::worker {
namespace {

/// Takes code from all over the program and the library of C++.
void roam() {
  std::ostringstream out;
  out.imbue(std::locale::classic());
  out << 1.5 << std::hex << 255 << std::boolalpha << true;
  const std::regex words("([a-z]+)[0-9]*|x{2,3}");
  out << std::regex_replace("some words12 and xxx", words, "<$1>");
  std::istringstream in(out.str());
  for (std::string word; in >> word;) {
  }
}

/// Calls `look` with each mapping of the process: where it is, and the line that tells of it.
void forEachMapping(
    const std::function<void(const char* start, const char* end, const std::string& line)>& look) {
  std::istringstream maps(readFile("/proc/self/maps"));
  for (std::string line; std::getline(maps, line);) {
    std::size_t behind = 0;
    const std::uintptr_t start = std::stoull(line, &behind, 16);
    const std::uintptr_t end = std::stoull(line.substr(behind + 1), nullptr, 16);
    look(reinterpret_cast<const char*>(start), reinterpret_cast<const char*>(end), line);
  }
}

/// The mappings of files that hold code, and a sum of their bytes.
std::string codeOfThisProcess() {
  std::ostringstream code;
  forEachMapping([&](const char* start, const char* end, const std::string& line) {
    if (line.find("r-xp") == line.npos || line.find('/') == line.npos) return;
    std::uint64_t sum = 0;
    for (const char* byte = start; byte < end; ++byte) sum = sum * 31 + std::uint8_t(*byte);
    code << line << ' ' << sum << '\n';
  });
  return code.str();
}

long faultsInAChild(const std::function<void()>& work) {
  return std::stol(inChildProcess([&] {
    rusage before{};
    rusage after{};
    ::getrusage(RUSAGE_SELF, &before);
    work();
    ::getrusage(RUSAGE_SELF, &after);
    return std::to_string(after.ru_minflt - before.ru_minflt);
  }));
}

TEST(InheritedCode, DoesTheWorkTwice) {
  int times = 0;
  inheritCodeOf([&] { ++times; });
  EXPECT_EQ(times, 2);
}

TEST(InheritedCode, StaysWhatItWasAndWhereItWas) {
  EXPECT_EQ(inChildProcess([] {
              const std::string before = codeOfThisProcess();
              inheritCodeOf([] { roam(); });
              return codeOfThisProcess() == before ? "the same" : before + codeOfThisProcess();
            }),
            "the same");
}

TEST(InheritedCode, IsNotLeftWritable) {
  EXPECT_EQ(inChildProcess([] {
              inheritCodeOf([] { roam(); });
              std::string writable;
              forEachMapping([&](const char*, const char*, const std::string& line) {
                if (line.find("wx") != line.npos) writable += line + "\n";
              });
              return writable;
            }),
            "");
}

TEST(InheritedCode, SparesChildrenFaults) {
  const long without = std::stol(inChildProcess([] {
    roam();
    return std::to_string(faultsInAChild(roam));
  }));
  const long with = std::stol(inChildProcess([] {
    inheritCodeOf([] { roam(); });
    return std::to_string(faultsInAChild(roam));
  }));
  EXPECT_LT(with, without);
}

}  // namespace
}  // namespace vt::worker
