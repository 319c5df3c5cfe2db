#include "foundation/Date.h"

#include <gtest/gtest.h>

#include <limits>

namespace vt {
namespace {

using namespace std::chrono;

TEST(Date, CountsFromTheFirstInstantOf2001) {
  EXPECT_EQ(kReferenceDate, Date{sys_days{2001y / 1 / 1}});
  EXPECT_EQ(secondsSinceReferenceDate(kReferenceDate + 1500ms), 1.5);
  EXPECT_EQ(secondsSinceReferenceDate(sys_days{2000y / 12 / 31}), -86400.0);
}

TEST(Date, RoundsSecondsToTheMicrosecond) {
  EXPECT_EQ(dateFromReferenceSeconds(0.1), kReferenceDate + 100ms);
  EXPECT_EQ(dateFromReferenceSeconds(-0.0000004), kReferenceDate);
  EXPECT_EQ(dateFromReferenceSeconds(-0.0000006), kReferenceDate - 1us);
}

TEST(Date, ComesBackFromItsSecondsInEveryYearThatHasAName) {
  for (int y = 1; y <= 9999; y += 7) {
    SCOPED_TRACE(y);
    const Date date = sys_days{year{y} / 3 / 1} + 12h + 34min + 56s + 250ms;
    EXPECT_EQ(dateFromReferenceSeconds(secondsSinceReferenceDate(date)), date);
  }
}

TEST(Date, ClampsWhatItCannotHold) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(dateFromReferenceSeconds(std::numeric_limits<double>::quiet_NaN()), kReferenceDate);
  EXPECT_EQ(dateFromReferenceSeconds(kInfinity), dateFromReferenceSeconds(1e300));
  EXPECT_EQ(dateFromReferenceSeconds(-kInfinity), dateFromReferenceSeconds(-1e300));
  EXPECT_GT(dateFromReferenceSeconds(kInfinity), Date{sys_days{9999y / 12 / 31}});
  EXPECT_LT(dateFromReferenceSeconds(-kInfinity), Date{sys_days{-9999y / 1 / 1}});
}

TEST(Date, CutsTheNanosecondsOfAFileTimeTowardsThePast) {
  EXPECT_EQ(dateFromTimespec({.tv_sec = 1, .tv_nsec = 999'999'999}), Date{microseconds{1'999'999}});
  EXPECT_EQ(dateFromTimespec({.tv_sec = -1, .tv_nsec = 1'999}), Date{microseconds{-999'999}});
}

}  // namespace
}  // namespace vt
