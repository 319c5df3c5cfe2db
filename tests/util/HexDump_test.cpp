#include "util/HexDump.h"

#include <gtest/gtest.h>

#include <random>

#include "support/Program.h"
#include "support/ReadFile.h"
#include "support/TemporaryFolder.h"
#include "util/Base64.h"

namespace vt {
namespace {

std::string decoded(const std::string& text, bool newLines) {
  return decodeBase64WithNewLines(Data(text), newLines).asString();
}

TEST(HexDumpBase64, WritesLinesOf64CharactersEachEndedByALineFeed) {
  const std::string line = encodeBase64(Data(std::string(48, 'x')));
  EXPECT_EQ(line.size(), 65U);
  EXPECT_EQ(line.find('\n'), 64U);
  const std::string two = encodeBase64WithNewlines(Data(std::string(49, 'x')), /*newlines=*/true);
  EXPECT_EQ(two.find('\n'), 64U);
  EXPECT_EQ(two.substr(65), "eA==\n");
  EXPECT_EQ(encodeBase64(Data()), "");
}

TEST(HexDumpBase64, WritesOneLineWithoutLineFeedWhenAsked) {
  EXPECT_EQ(encodeBase64WithNewlines(Data("Man"), /*newlines=*/false), "TWFu");
  const std::string text =
      encodeBase64WithNewlines(Data(std::string(2000, 'x')), /*newlines=*/false);
  EXPECT_EQ(text.size(), 2668U);
  EXPECT_EQ(text.find('\n'), std::string::npos);
}

TEST(HexDumpBase64, ReadsLinesThatEndInALineFeed) {
  EXPECT_EQ(decoded("TWFu\n", true), "Man");
  EXPECT_EQ(decoded("TQ==\n", true), "M");
  EXPECT_EQ(decodeBase64(Data("TWFu\n")).asString(), "Man");
  EXPECT_EQ(decoded(std::string(1020, 'Q') + "\n", true).size(), 765U);
}

TEST(HexDumpBase64, DecodesToNothingWhatIsNoLines) {
  const std::pair<const char*, std::string> texts[] = {
      {"no line feed", "TWFu"},
      {"a long line", std::string(1024, 'Q') + "\n"},
      {"a longer line", std::string(1028, 'Q') + "\n"},
      {"a very long line", std::string(2668, 'Q') + "\n"},
      {"a long line without line feed", std::string(2668, 'Q')},
      {"garbage", "!!!!\n"},
      {"unpadded", "eHh4eA\n"},
      {"nothing", ""},
      {"only a line feed", "\n"},
  };
  for (const auto& [what, text] : texts) {
    SCOPED_TRACE(what);
    EXPECT_EQ(decoded(text, true), "");
  }
}

TEST(HexDumpBase64, ReadsOneLineOfAnyLengthWhenAsked) {
  EXPECT_EQ(decoded("TWFu", false), "Man");
  EXPECT_EQ(decoded(std::string(2668, 'Q'), false).size(), 2001U);
  EXPECT_EQ(decoded("!!!!", false), "");
  EXPECT_EQ(decoded("eHh4eA", false), "xxx");  // the whole group
  EXPECT_EQ(decoded("TWFu\nTWFu\n", false), "");
}

TEST(HexDumpBase64, GivesBackRandomBytesInBothForms) {
  std::mt19937 random(4);
  for (int round = 0; round < 300; ++round) {
    std::string bytes(random() % 700, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random());
    SCOPED_TRACE(bytes.size());
    const Data data(bytes);
    EXPECT_EQ(decodeBase64(Data(encodeBase64(data))), data);
    const std::string line = encodeBase64WithNewlines(data, /*newlines=*/false);
    EXPECT_EQ(decodeBase64WithNewLines(Data(line), /*newLines=*/false), data);
    EXPECT_EQ(line, base64Encoding(data));
  }
}

TEST(HexDumpBase64, WritesTheLinesOfTheTool) {
  const TemporaryFolder folder;
  writeFile(folder / "bytes", std::string(1000, 'y'));
  EXPECT_EQ(encodeBase64(Data(std::string(1000, 'y'))),
            runProgram({"openssl", "base64", "-in", folder / "bytes"}).output);
}

TEST(Hexval, GivesTwoLowercaseDigitsForEachByte) {
  EXPECT_EQ(hexval(Data(std::string_view("\0\xab", 2))), "00ab");
  EXPECT_EQ(hexval(Data()), "");
}

// A line of the dump without its address.
std::string withoutAddress(const std::string& line) { return line.substr(6); }

TEST(Hexdump, FillsALineWith16Bytes) {
  const std::string dump = hexdump(Data("A b-9zABCDEFGHI\xff"));
  EXPECT_EQ(withoutAddress(dump),
            "   41 20 62 2D 39 7A 41 42   43 44 45 46 47 48 49 FF   A.b.9zAB CDEFGHI.\n");
  EXPECT_EQ(dump[0], '[');
  EXPECT_EQ(dump[5], ']');
}

TEST(Hexdump, PadsTheLastLine) {
  const std::string dump = hexdump(Data(std::string(17, 'A')));
  const std::string last = dump.substr(dump.find('\n') + 1);
  EXPECT_EQ(withoutAddress(last), "   41 " + std::string(47, ' ') + "  A\n");
  EXPECT_EQ(hexdump(Data()), "");
}

TEST(Hexdump, BreaksBothColumnsAfterTheEighthByte) {
  const std::string dump = hexdump(Data("12345678"));
  EXPECT_EQ(withoutAddress(dump),
            "   31 32 33 34 35 36 37 38   " + std::string(24, ' ') + "  12345678 \n");
}

TEST(Hexdump, GivesTheDistanceFromTheObjectAsAddress) {
  const Data data(std::string(33, 'x'));
  const auto distance = reinterpret_cast<std::uintptr_t>(data.bytes().data()) -
                        reinterpret_cast<std::uintptr_t>(&data);
  const std::string dump = hexdump(data);
  for (int line = 0; line < 3; ++line) {
    SCOPED_TRACE(line);
    char address[16];
    std::snprintf(address, sizeof address, "%.4x", static_cast<unsigned>(distance + 16U * line));
    const std::size_t start = line == 0 ? 0 : dump.find('\n', 76UL * line - 2) + 1;
    EXPECT_EQ(dump.substr(start + 1, 4), std::string(address).substr(0, 4));
  }
}

}  // namespace
}  // namespace vt
