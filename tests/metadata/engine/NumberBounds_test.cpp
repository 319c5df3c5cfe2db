#include "metadata/engine/NumberBounds.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <variant>

#include "metadata/live/ShippedSchema.h"
#include "metadata/query/QueryParser.h"

namespace vt {
namespace {

constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();

std::string boundsOfSize(const std::string& comparison) {
  const query::AttributeSchema schema = shippedSchema();
  const auto parsed = query::parseQuery("kMDItemFSSize " + comparison, schema);
  const auto test = testOf(std::get<query::Comparison>(parsed->terms()[0]),
                           *schema.find("kMDItemFSSize"), {Date(), query::Calendar()});
  const auto bounds = boundsOf(std::get<query::NumberTest>(test));
  if (!bounds) return "none";
  return std::to_string(bounds->first) + " to " +
         (bounds->last == kMost ? "end" : std::to_string(bounds->last));
}

TEST(NumberBounds, AreThoseOfTheTest) {
  struct Case {
    const char* comparison;
    const char* bounds;
  };
  const Case cases[] = {
      {"== 7", "7 to 7"},
      {"== 7.5", "none"},
      {"== -1", "none"},
      {"< 7", "0 to 6"},
      {"< 7.5", "0 to 7"},
      {"< 0", "none"},
      {"<= 0", "0 to 0"},
      {"> 7.5", "8 to end"},
      {"> -3", "0 to end"},
      {">= 7", "7 to end"},
      {"> 18446744073709551615", "none"},
      {">= 18446744073709551615", "18446744073709551615 to end"},
      {"< 18446744073709551615", "0 to 18446744073709551614"},
      {">= 1e30", "none"},
      {"<= 1e30", "0 to end"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.comparison);
    EXPECT_EQ(boundsOfSize(c.comparison), c.bounds);
  }
}

TEST(NumberBounds, OfARangeTheWrongWayRoundAreNone) {
  EXPECT_FALSE(boundsOf({.low = Value(5), .high = Value(4)}));
  EXPECT_FALSE(boundsOf({.low = Value(5), .high = Value(5), .includesLow = false}));
  EXPECT_TRUE(boundsOf({.low = Value(5), .high = Value(5)}));
}

}  // namespace
}  // namespace vt
