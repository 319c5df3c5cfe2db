#include "foundation/BinaryPropertyListReader.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/Array.h"
#include "support/PropertyListTesting.h"

namespace vt {
namespace {

std::string outcomeOf(const std::vector<std::string>& objectsInHex) {
  return outcome(readBinaryPropertyList(binaryPropertyList(objectsInHex)));
}

std::string withTrailer(const std::string& trailerInHex) {
  return "bplist00" + fromHex("09 08") + fromHex(trailerInHex);
}

TEST(BinaryPropertyListReader, ReadsEachKindOfObject) {
  struct Case {
    const char* what;
    std::vector<std::string> objects;
    const char* tree;
  };
  const Case cases[] = {
      {"false", {"08"}, "false"},
      {"true", {"09"}, "true"},
      {"one byte, unsigned", {"10 ff"}, "i255"},
      {"two bytes, unsigned", {"11 ffff"}, "i65535"},
      {"four bytes, unsigned", {"12 ffffffff"}, "i4294967295"},
      {"eight bytes, signed", {"13 ffffffffffffffff"}, "i-1"},
      {"16 bytes, largest", {"14 0000000000000000 ffffffffffffffff"}, "i18446744073709551615"},
      {"16 bytes, small", {"14 0000000000000000 0000000000000007"}, "i7"},
      {"16 bytes, negative", {"14 ffffffffffffffff fffffffffffffffe"}, "i-2"},
      {"float", {"22 3fc00000"}, "r3ff8000000000000"},
      {"double", {"23 3ff8000000000000"}, "r3ff8000000000000"},
      {"not a number", {"23 7ff8000000000000"}, "rnan"},
      {"reference date", {"33 0000000000000000"}, "d978307200000000"},
      {"half a second before it", {"33 bfe0000000000000"}, "d978307199500000"},
      {"data", {"43 0001ff"}, "x0001ff"},
      {"empty data", {"40"}, "x"},
      {"data with a count of its own",
       {"4f 10 10 000102030405060708090a0b0c0d0e0f"},
       "x000102030405060708090a0b0c0d0e0f"},
      {"count in eight bytes", {"4f 13 0000000000000001 aa"}, "xaa"},
      {"ASCII", {"52 6869"}, "s\"hi\""},
      {"NUL in ASCII", {"51 00"}, "s\"\\x00\""},
      {"UTF-16", {"61 00e4"}, "s\"\\xc3\\xa4\""},
      {"surrogate pair", {"62 d83d de00"}, "s\"\\xf0\\x9f\\x98\\x80\""},
      {"array", {"a2 01 02", "09", "10 05"}, "[true,i5]"},
      {"empty array", {"a0"}, "[]"},
      {"dictionary", {"d2 01 02 03 03", "51 62", "61 0061", "09"}, "{\"b\":true,\"a\":true}"},
      {"the same key twice",
       {"d3 01 02 01 03 03 04", "51 61", "51 62", "09", "08"},
       "{\"a\":false,\"b\":true}"},
      {"empty dictionary", {"d0"}, "{}"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(outcomeOf(c.objects), c.tree);
  }
}

TEST(BinaryPropertyListReader, RefusesWhatIsNoObjectAndNamesItsOffset) {
  struct Case {
    const char* what;
    std::vector<std::string> objects;
    const char* outcome;
  };
  const Case cases[] = {
      {"null", {"00"}, "unsupported 0:8"},
      {"fill byte", {"0f"}, "syntax 0:8"},
      {"32 byte integer", {"15 00"}, "syntax 0:8"},
      {"UID", {"80 01"}, "unsupported 0:8"},
      {"set", {"c1 01", "09"}, "unsupported 0:8"},
      {"unknown marker", {"a1 01", "70"}, "syntax 0:10"},
      {"integer past 64 bits", {"14 0000000000000001 0000000000000000"}, "value 0:8"},
      {"integer below 64 bits", {"14 ffffffffffffffff 0000000000000000"}, "value 0:8"},
      {"real of two bytes", {"21 0000"}, "syntax 0:8"},
      {"date that is no number", {"33 7ff8000000000000"}, "value 0:8"},
      {"date past all years", {"33 7e37e43c8800759c"}, "value 0:8"},
      {"date of four bytes", {"32 00000000"}, "syntax 0:8"},
      {"string past the end", {"5e 61"}, "syntax 0:8"},
      {"integer past the end", {"13 00"}, "syntax 0:8"},
      {"data with a count that wraps", {"4f 13 ffffffffffffffff"}, "syntax 0:8"},
      {"UTF-16 with a count that wraps", {"6f 13 8000000000000001"}, "syntax 0:8"},
      {"array with a count that wraps", {"af 13 ffffffffffffffff"}, "many 0:8"},
      {"dictionary with a count that wraps", {"df 13 8000000000000001"}, "many 0:8"},
      {"array past the end", {"ae 00"}, "syntax 0:8"},
      {"count that is no integer", {"5f 51 61"}, "syntax 0:9"},
      {"count of 16 bytes", {"5f 14 0000000000000000 0000000000000001 61"}, "syntax 0:9"},
      {"no count", {"5f"}, "syntax 0:8"},
      {"byte past ASCII", {"53 6180 62"}, "text 0:10"},
      {"high surrogate alone", {"62 0061 d83d"}, "text 0:11"},
      {"low surrogate first", {"62 de00 d83d"}, "text 0:9"},
      {"key that is no string", {"d1 01 01", "09"}, "structure 0:11"},
      {"reference to no object", {"a1 07"}, "syntax 0:10"},
      {"array in itself", {"a1 00"}, "deep 0:8"},
      {"ring of two", {"a1 01", "d1 02 00", "51 61"}, "deep 0:8"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(outcomeOf(c.objects), c.outcome);
  }
}

TEST(BinaryPropertyListReader, ChecksHeaderAndTrailer) {
  constexpr const char* kRest = "0000000000000001 0000000000000000 0000000000000009";
  struct Case {
    const char* what;
    std::string bytes;
    const char* outcome;
  };
  const Case cases[] = {
      {"whole", withTrailer(fmt::format("0000000000000101{}", kRest)), "true"},
      {"nothing", "", "truncated 0:0"},
      {"part of the header", "bplist", "truncated 0:6"},
      {"header alone", "bplist00", "truncated 0:8"},
      {"other version", "bplist15" + std::string(50, '\0'), "unsupported 0:6"},
      {"something else", "<plist/>", "syntax 0:0"},
      {"offsets of no bytes", withTrailer(fmt::format("0000000000000001{}", kRest)), "syntax 0:16"},
      {"offsets of nine bytes", withTrailer(fmt::format("0000000000000901{}", kRest)),
       "syntax 0:16"},
      {"references of no bytes", withTrailer(fmt::format("0000000000000100{}", kRest)),
       "syntax 0:16"},
      {"too few objects",
       withTrailer("0000000000000101 0000000000000000 0000000000000000 "
                   "0000000000000009"),
       "syntax 0:18"},
      {"too many objects",
       withTrailer("0000000000000101 ffffffffffffffff 0000000000000000 "
                   "0000000000000009"),
       "syntax 0:18"},
      {"root that is no object",
       withTrailer("0000000000000101 0000000000000001 0000000000000001 "
                   "0000000000000009"),
       "syntax 0:9"},
      {"table in the header",
       withTrailer("0000000000000101 0000000000000001 0000000000000000 "
                   "0000000000000004"),
       "syntax 0:34"},
      {"table past the end",
       withTrailer("0000000000000101 0000000000000001 0000000000000000 "
                   "ffffffffffffffff"),
       "syntax 0:34"},
      {"slack before the trailer",
       "bplist00" + fromHex("09 08 00") + fromHex(fmt::format("0000000000000101{}", kRest)),
       "syntax 0:19"},
      {"offset into the header",
       "bplist00" + fromHex("09 02") + fromHex(fmt::format("0000000000000101{}", kRest)),
       "syntax 0:9"},
      {"offset into the table",
       "bplist00" + fromHex("09 09") + fromHex(fmt::format("0000000000000101{}", kRest)),
       "syntax 0:9"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(outcome(readBinaryPropertyList(c.bytes)), c.outcome);
  }
}

TEST(BinaryPropertyListReader, MakesEachReferenceToASharedObjectAValueOfItsOwn) {
  const auto result = readBinaryPropertyList(binaryPropertyList({"a2 01 01", "a1 02", "09"}));
  ASSERT_EQ(outcome(result), "[[true],[true]]");
  result->array()->at(0).array()->append(1);
  EXPECT_EQ(dump(*result), "[[true,i1],[true]]");
}

TEST(BinaryPropertyListReader, TakesTheLargestDepthAndNotOneMore) {
  const auto nested = [](std::size_t depth) {
    std::string bytes = "bplist00";
    std::string offsets;
    for (std::size_t i = 0; i < depth; ++i) {
      offsets += fromHex(fmt::format("{:04x}", bytes.size()));
      bytes += i + 1 < depth ? fromHex(fmt::format("a1{:04x}", i + 1)) : fromHex("a0");
    }
    const std::size_t table = bytes.size();
    return bytes + offsets +
           fromHex(fmt::format("0000000000000202{:016x}{:016x}{:016x}", depth, 0, table));
  };
  EXPECT_TRUE(readBinaryPropertyList(nested(PropertyListLimits{}.depth)));
  EXPECT_EQ(readBinaryPropertyList(nested(PropertyListLimits{}.depth + 1)).error().kind,
            PropertyListErrorKind::kTooDeep);
}

TEST(BinaryPropertyListReader, RefusesASmallFileThatUnfoldsToTooManyValues) {
  // Ten references to the next, nine levels deep: 10^9 values in some 150 bytes.
  std::vector<std::string> objects;
  for (int level = 1; level <= 9; ++level) {
    std::string array = "aa";
    for (int i = 0; i < 10; ++i) array += fmt::format("{:02x}", level);
    objects.push_back(array);
  }
  objects.emplace_back("09");
  const auto result = readBinaryPropertyList(binaryPropertyList(objects), {.objects = 100'000});
  EXPECT_THAT(outcome(result), testing::StartsWith("many"));
}

TEST(BinaryPropertyListReader, CountsSharedTextAsOftenAsItIsNamed) {
  std::string text = "5f 10 80";
  for (int i = 0; i < 128; ++i) text += "61";
  const std::string bytes = binaryPropertyList({"a2 01 01", text});
  EXPECT_TRUE(readBinaryPropertyList(bytes, {.bytes = 256}));
  EXPECT_EQ(outcome(readBinaryPropertyList(bytes, {.bytes = 255})), "large 0:11");
}

TEST(BinaryPropertyListReader, TakesAsManyValuesAndBytesAsTheLimitsAllow) {
  const std::string bytes = binaryPropertyList({"a2 01 01", "09"});
  EXPECT_TRUE(readBinaryPropertyList(bytes, {.objects = 3}));
  EXPECT_EQ(outcome(readBinaryPropertyList(bytes, {.objects = 2})), "many 0:8");
  EXPECT_TRUE(readBinaryPropertyList(bytes, {.bytes = bytes.size()}));
  EXPECT_EQ(outcome(readBinaryPropertyList(bytes, {.bytes = bytes.size() - 1})), "large 0:47");
}

TEST(BinaryPropertyListReader, SurvivesEveryTruncationAndEveryChangeOfOneByte) {
  const std::string good =
      binaryPropertyList({"d3 01 02 03 04 05 06", "51 61", "62 00e4 00e5", "51 63", "a3 07 07 06",
                          "33 41c0000000000000", "44 01020304", "22 3fc00000"});
  ASSERT_TRUE(readBinaryPropertyList(good)) << outcome(readBinaryPropertyList(good));
  for (std::size_t size = 0; size < good.size(); ++size) {
    // On the heap and exact in size, so that the sanitizer sees a step past the end.
    const std::vector<char> cut(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(size));
    EXPECT_FALSE(readBinaryPropertyList({cut.data(), cut.size()})) << size;
  }
  for (std::size_t i = 0; i < good.size(); ++i) {
    for (int byte = 0; byte < 256; ++byte) {
      std::vector<char> changed(good.begin(), good.end());
      changed[i] = static_cast<char>(byte);
      const auto result = readBinaryPropertyList({changed.data(), changed.size()});
      if (!result) {
        EXPECT_LE(result.error().offset, good.size());
      }
    }
  }
}

}  // namespace
}  // namespace vt
