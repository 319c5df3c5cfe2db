#include "extraction/media/WrittenDate.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>

namespace vt {
namespace {

using std::chrono::microseconds;
using std::chrono::seconds;

TEST(WrittenDate, ReadsDatesInWhateverWayFilesWriteThem) {
  ::setenv("TZ", "Europe/Berlin", 1);
  ::tzset();
  struct Case {
    const char* written;
    std::optional<std::int64_t> micros;
  };
  constexpr std::int64_t kMorning = 1'714'551'630'000'000;  // 2024-05-01T08:20:30Z
  const Case cases[] = {
      {"2024:05:01 10:20:30", kMorning},
      {"2024-05-01T10:20:30", kMorning},
      {"20240501T102030", kMorning},
      {"2024-05-01T08:20:30Z", kMorning},
      {"2024-05-01T08:20:30.000000Z", kMorning},
      {"2024-05-01T11:20:30+03:00", kMorning},
      {"2024-05-01 04:20:30 -0400", kMorning},
      {"2024-05-01T08:20:30.25Z", kMorning + 250'000},
      {"2024-05-01T08:20:30,5Z", kMorning + 500'000},
      {"2024-05-01", 1'714'514'400'000'000},
      {"20240501", 1'714'514'400'000'000},
      {"0000:00:00 00:00:00", std::nullopt},
      {"    :  :     :  :  ", std::nullopt},
      {"2024:13:01 10:20:30", std::nullopt},
      {"2024:02:30 10:20:30", std::nullopt},
      {"2024-05-01T25:00:00Z", std::nullopt},
      {"2024-05", std::nullopt},
      {"2024", std::nullopt},
      {"", std::nullopt},
      {"yesterday", std::nullopt},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.written);
    const std::optional<Date> date = dateOfWritten(c.written);
    ASSERT_EQ(date.has_value(), c.micros.has_value());
    if (date) {
      EXPECT_EQ(date->time_since_epoch().count(), *c.micros);
    }
  }
  ::unsetenv("TZ");
  ::tzset();
}

TEST(WrittenDate, ReadsAYearAlone) {
  EXPECT_EQ(yearOfWritten("1999"), 1999);
  EXPECT_EQ(yearOfWritten("1999-12-31"), 1999);
  EXPECT_EQ(yearOfWritten("99"), std::nullopt);
  EXPECT_EQ(yearOfWritten("0000"), std::nullopt);
}

}  // namespace
}  // namespace vt
