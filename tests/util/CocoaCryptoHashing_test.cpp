#include "util/CocoaCryptoHashing.h"

#include <gtest/gtest.h>

#include "support/Program.h"
#include "support/TestWorld.h"

namespace vt {
namespace {

class CocoaCryptoHashing : public testing::Test {
  TestWorld world_;
};

TEST_F(CocoaCryptoHashing, GivesLowercaseHexadecimalDigests) {
  EXPECT_EQ(md5HexHash(Data()), "d41d8cd98f00b204e9800998ecf8427e");
  EXPECT_EQ(sha1HexHash(Data()), "da39a3ee5e6b4b0d3255bfef95601890afd80709");
  EXPECT_EQ(md5HexHash(Data("abc")), "900150983cd24fb0d6963f7d28e17f72");
  EXPECT_EQ(sha1HexHash(Data("abc")), "a9993e364706816aba3e25717850c26c9cd0d89d");
}

TEST_F(CocoaCryptoHashing, GivesDigestsOfTextByItsUTF8Bytes) {
  EXPECT_EQ(md5HexHash(std::string()), "d41d8cd98f00b204e9800998ecf8427e");
  EXPECT_EQ(sha1HexHash(std::string("Müller")), sha1HexHash(Data("M\xc3\xbcller")));
  EXPECT_EQ(md5Hash(std::string("Müller")), md5Hash(Data("M\xc3\xbcller")));
}

TEST_F(CocoaCryptoHashing, IsNilForTextThatIsNotUTF8) {
  const std::string broken = "a\xff";
  EXPECT_FALSE(md5Hash(broken));
  EXPECT_FALSE(md5HexHash(broken));
  EXPECT_FALSE(sha1Hash(broken));
  EXPECT_FALSE(sha1HexHash(broken));
}

TEST_F(CocoaCryptoHashing, GivesRawDigestsOfTheirLength) {
  EXPECT_EQ(md5Hash(Data("abc")).size(), 16U);
  EXPECT_EQ(sha1Hash(Data("abc")).size(), 20U);
}

TEST_F(CocoaCryptoHashing, AgreesWithAnotherImplementationOnBytesOfAllValues) {
  std::string bytes;
  for (int i = 0; i < 1000; ++i) bytes += static_cast<char>(i * 7);
  const TemporaryFolder folder;
  writeFile(folder / "bytes", bytes);
  const auto sumOf = [&](const char* program) {
    return runProgram({program, folder / "bytes"}).output.substr(0, 40);
  };
  EXPECT_EQ(md5HexHash(Data(bytes)), sumOf("md5sum").substr(0, 32));
  EXPECT_EQ(sha1HexHash(Data(bytes)), sumOf("sha1sum"));
}

}  // namespace
}  // namespace vt
