#include "platform/DirectoryBuffer.h"

#include <gtest/gtest.h>

namespace vt {
namespace {

const DirectoryRecord kAnn{
    "users", "ann", {{"uid", {"501"}}, {"nick", {"a", "", "an"}}, {"none", {}}}};

TEST(DirectoryBuffer, CountsHeadersNamesAndValues) {
  EXPECT_EQ(encodedSize({"", "", {}}), 8U);
  EXPECT_EQ(encodedSize(kAnn),
            (8U + 5 + 3) + (8 + 3) + (4 + 3) + (8 + 4) + (4 + 1) + 4 + (4 + 2) + (8 + 4));
}

TEST(DirectoryBuffer, GivesBackTheRecordsPutIn) {
  DataBuffer buffer(200);
  ASSERT_TRUE(appendRecord(buffer, kAnn));
  ASSERT_TRUE(appendRecord(buffer, {"groups", "staff", {}}));
  EXPECT_EQ(recordAt(buffer, 1), kAnn);
  EXPECT_EQ(recordAt(buffer, 2), (DirectoryRecord{"groups", "staff", {}}));
  EXPECT_EQ(recordAt(buffer, 0), std::nullopt);
  EXPECT_EQ(recordAt(buffer, 3), std::nullopt);
}

TEST(DirectoryBuffer, TakesARecordThatFitsExactlyAndElseStaysAsItIs) {
  const auto size = static_cast<std::uint32_t>(encodedSize(kAnn));
  DataBuffer exact(size);
  EXPECT_TRUE(appendRecord(exact, kAnn));
  EXPECT_EQ(exact.length, size);
  DataBuffer small(size - 1);
  EXPECT_FALSE(appendRecord(small, kAnn));
  EXPECT_EQ(small.length, 0U);
}

TEST(DirectoryBuffer, RefusesANameThatItsHeaderCannotCount) {
  DataBuffer buffer(1 << 20);
  EXPECT_TRUE(appendRecord(buffer, {"users", std::string(65535, 'x'), {}}));
  EXPECT_FALSE(appendRecord(buffer, {"users", std::string(65536, 'x'), {}}));
}

TEST(DirectoryBuffer, FindsNoRecordInAnyCutOfOne) {
  DataBuffer buffer(200);
  ASSERT_TRUE(appendRecord(buffer, kAnn));
  const std::uint32_t whole = buffer.length;
  for (buffer.length = 0; buffer.length < whole; ++buffer.length) {
    SCOPED_TRACE(buffer.length);
    EXPECT_EQ(recordAt(buffer, 1), std::nullopt);
  }
}

TEST(DirectoryBuffer, SurvivesEveryByteBeingDamaged) {
  DataBuffer buffer(200);
  ASSERT_TRUE(appendRecord(buffer, kAnn));
  for (std::uint32_t at = 0; at < buffer.length; ++at) {
    const std::uint8_t before = buffer.bytes[at];
    for (const std::uint8_t value : {0x00, 0x7F, 0xFF}) {
      buffer.bytes[at] = value;
      const auto record = recordAt(buffer, 1);
      EXPECT_TRUE(!record || encodedSize(*record) <= buffer.length);
    }
    buffer.bytes[at] = before;
  }
}

TEST(DirectoryBuffer, ReadsTextsThatFillItExactlyAndNoOthers) {
  DataBuffer buffer(20);
  buffer.bytes = {1, 0, 0, 0, 'a', 2, 0, 0, 0, 'b', 'c'};
  buffer.length = 11;
  EXPECT_EQ(textsIn(buffer), (std::vector<std::string>{"a", "bc"}));
  for (buffer.length = 1; buffer.length < 11; ++buffer.length) {
    if (buffer.length == 5) continue;  // "a" alone
    SCOPED_TRACE(buffer.length);
    EXPECT_EQ(textsIn(buffer), std::nullopt);
  }
}

}  // namespace
}  // namespace vt
