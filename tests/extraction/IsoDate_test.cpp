#include "extraction/IsoDate.h"

#include <gtest/gtest.h>

namespace vt {
namespace {

TEST(IsoDate, IsReadInEachOfItsForms) {
  struct Case {
    const char* text;
    std::int64_t seconds;  // since 1970
  };
  const Case cases[] = {
      {"2024-03-01T12:30:00Z", 1709296200},
      {" 2024-03-01T12:30:00Z\n", 1709296200},
      {"2024-03-01T14:30:00+02:00", 1709296200},
      {"2024-03-01T05:00:00-0730", 1709296200},
      {"2024-03-01T12:30:00.123Z", 1709296200},
      {"2024-03-01 12:30", 1709296200},
      {"2024-03-01", 1709251200},
      {"2024-03", 1709251200},
      {"2024", 1704067200},
      {"1969-12-31T23:59:59Z", -1},
      {"2024-02-29", 1709164800},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    const std::optional<Date> date = dateInIsoText(c.text);
    ASSERT_TRUE(date);
    EXPECT_EQ(*date, Date{std::chrono::seconds{c.seconds}});
  }
}

TEST(IsoDate, IsNothingElse) {
  for (const char* text :
       {"", "yesterday", "24-03-01", "2024-13-01", "2024-02-30", "2023-02-29", "2024-03-01T",
        "2024-03-01T25:00", "2024-03-01T12:60", "2024-03-01T12:30:00X", "2024-03-01T12:30+99:00",
        "2024-03-01T12:30+", "2024-3-1", "-024-03-01", "0000-01-01", "2024-03-01x"}) {
    EXPECT_EQ(dateInIsoText(text), std::nullopt) << text;
  }
}

}  // namespace
}  // namespace vt
