#include "vistaro/ProgressLine.h"

#include <gtest/gtest.h>

namespace vt::tool {
namespace {

using std::chrono::milliseconds;

constexpr ProgressLine::Clock::time_point kStart{};

TEST(ProgressLine, ShowsNothingOfAShortSearch) {
  ProgressLine line(kStart);
  EXPECT_EQ(line.update(1, 2, kStart + milliseconds(999)), "");
  EXPECT_EQ(line.remove(), "");
}

TEST(ProgressLine, ReplacesItselfAtMostTenTimesASecond) {
  ProgressLine line(kStart);
  EXPECT_EQ(line.update(1, 2, kStart + milliseconds(1000)),
            "\r\x1b[Ksearching: 1 folders, 2 files");
  EXPECT_EQ(line.update(2, 3, kStart + milliseconds(1099)), "");
  EXPECT_EQ(line.update(3, 4, kStart + milliseconds(1100)),
            "\r\x1b[Ksearching: 3 folders, 4 files");
}

TEST(ProgressLine, IsRemovedOnce) {
  ProgressLine line(kStart);
  line.update(1, 2, kStart + milliseconds(1000));
  EXPECT_EQ(line.remove(), "\r\x1b[K");
  EXPECT_EQ(line.remove(), "");
}

}  // namespace
}  // namespace vt::tool
