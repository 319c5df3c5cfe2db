#include "foundation/NSLog.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <vector>

#include "support/TemporaryFolder.h"

namespace vt {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::MatchesRegex;

template <class... Arguments>
std::string logged(std::string_view format, const Arguments&... arguments) {
  std::string line;
  const LogRedirection redirection([&line](std::string_view text) { line = text; });
  NSLog(format, arguments...);
  return line;
}

// What arrives at the real standard error while `action` runs.
template <class Action>
std::string onStandardError(Action action) {
  const TemporaryFolder folder;
  const std::string path = folder / "stderr";
  const int file = open(path.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
  const int saved = dup(STDERR_FILENO);
  if (file < 0 || saved < 0) throw std::runtime_error("no file to catch standard error in");
  dup2(file, STDERR_FILENO);
  action();
  dup2(saved, STDERR_FILENO);
  close(saved);
  close(file);
  std::ifstream written(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(written), {}};
}

TEST(NSLog, PutsArgumentsWhereTheDirectivesStand) {
  EXPECT_EQ(logged("no directive"), "no directive");
  EXPECT_EQ(logged("%@ and %@", "a", std::string("b")), "a and b");
  EXPECT_EQ(logged("%d %ld %lld %lu %u", -1, -2L, -3LL, 4UL, 5U), "-1 -2 -3 4 5");
  EXPECT_EQ(logged("%f", 1.5), "1.500000");
  EXPECT_EQ(logged("%d%%", 50), "50%");
  EXPECT_EQ(logged("%d", true), "1");
  EXPECT_EQ(logged("{%@} {}", "a"), "{a} {}");
  EXPECT_EQ(logged("100 %"), "100 %");
}

TEST(NSLog, PrintsANilStringAsThePlatformDoes) {
  EXPECT_EQ(logged("<%@>", std::optional<std::string>()), "<(null)>");
  EXPECT_EQ(logged("<%@>", std::optional<std::string>("")), "<>");
}

TEST(NSLog, TakesArgumentsAsTextAndNotAsFormat) { EXPECT_EQ(logged("%@", "%@ {} %d"), "%@ {} %d"); }

TEST(NSLog, WritesTheFormatWhenAnArgumentIsMissing) {
  EXPECT_EQ(logged("%@ and %@", "a"), "%@ and %@");
}

TEST(NSLog, OutlivesASinkThatThrows) {
  const LogRedirection redirection([](std::string_view) { throw std::runtime_error("full"); });
  NSLog("%d", 1);  // would end the process if it threw
}

TEST(NSLog, GivesTheSinkTheTextUnchanged) { EXPECT_EQ(logged("%@", "a\n\x1b"), "a\n\x1b"); }

TEST(NSLog, ReturnsToTheSinkBeforeWhenARedirectionEnds) {
  std::vector<std::string> outer;
  std::vector<std::string> inner;
  const LogRedirection first([&](std::string_view text) { outer.emplace_back(text); });
  {
    const LogRedirection second([&](std::string_view text) { inner.emplace_back(text); });
    NSLog("one");
  }
  NSLog("two");
  EXPECT_THAT(inner, ElementsAre("one"));
  EXPECT_THAT(outer, ElementsAre("two"));
}

TEST(NSLog, BeginsALineWithTimeProcessAndId) {
  EXPECT_THAT(formatLogLine("hello"),
              MatchesRegex("[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{3} "
                           "foundation_test\\[" +
                           std::to_string(getpid()) + "\\] hello\n"));
}

TEST(NSLog, KeepsToOneLineWhateverTheText) {
  struct Case {
    std::string_view text;
    const char* end;
  };
  const Case cases[] = {
      {"a\nb", "] a\\x0ab\n"},
      {"a\n", "] a\n"},
      {"a\n\n", "] a\\x0a\n"},
      {"\r\x1b[2J\x7f", "] \\x0d\\x1b[2J\\x7f\n"},
      {std::string_view("a\0b", 3), "] a\\x00b\n"},
      {"\xC3\xA4", "] \xC3\xA4\n"},
      {"", "] \n"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.end);
    EXPECT_THAT(formatLogLine(c.text), EndsWith(c.end));
  }
}

TEST(NSLog, WritesToStandardErrorWithoutASink) {
  EXPECT_THAT(onStandardError([] { NSLog("a%@b", "\n"); }), MatchesRegex("[^\n]*\\] a\\\\x0ab\n"));
}

}  // namespace
}  // namespace vt
