#include "vistaro/ProgressLine.h"

#include <gtest/gtest.h>

namespace vt::tool {
namespace {

using std::chrono::milliseconds;

constexpr ProgressLine::Clock::time_point kStart{};

constexpr auto three = [] { return std::string("3 files"); };
constexpr auto four = [] { return std::string("4 files"); };
constexpr auto neverMade = [] {
  ADD_FAILURE() << "made too early";
  return std::string();
};

TEST(ProgressLine, ShowsNothingOfAShortSearch) {
  ProgressLine line(kStart);
  EXPECT_EQ(line.update(kStart + milliseconds(999), neverMade), "");
  EXPECT_EQ(line.remove(), "");
}

TEST(ProgressLine, ReplacesItselfAtMostTenTimesASecond) {
  ProgressLine line(kStart);
  EXPECT_EQ(line.update(kStart + milliseconds(1000), three), "\r\x1b[K3 files");
  EXPECT_EQ(line.update(kStart + milliseconds(1099), neverMade), "");
  EXPECT_EQ(line.update(kStart + milliseconds(1100), four), "\r\x1b[K4 files");
}

TEST(ProgressLine, IsRemovedOnce) {
  ProgressLine line(kStart);
  line.update(kStart + milliseconds(1000), three);
  EXPECT_EQ(line.remove(), "\r\x1b[K");
  EXPECT_EQ(line.remove(), "");
}

}  // namespace
}  // namespace vt::tool
