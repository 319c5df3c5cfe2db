#include "util/Base64.h"

#include <gtest/gtest.h>

#include <random>

#include "foundation/VTObject.h"
#include "support/Program.h"
#include "support/ReadFile.h"
#include "support/TemporaryFolder.h"

namespace vt {
namespace {

TEST(Base64, EncodesTheTestVectorsOfTheStandard) {
  const std::pair<const char*, const char*> vectors[] = {{"", ""},
                                                         {"f", "Zg=="},
                                                         {"fo", "Zm8="},
                                                         {"foo", "Zm9v"},
                                                         {"foob", "Zm9vYg=="},
                                                         {"fooba", "Zm9vYmE="},
                                                         {"foobar", "Zm9vYmFy"},
                                                         {"Man", "TWFu"},
                                                         {"Ma", "TWE="},
                                                         {"M", "TQ=="}};
  for (const auto& [clear, encoded] : vectors) {
    SCOPED_TRACE(clear);
    EXPECT_EQ(base64Encoding(Data(clear)), encoded);
    EXPECT_EQ(dataWithBase64EncodedString(encoded), Data(clear));
  }
}

TEST(Base64, PassesOverPaddingAndWhiteSpaceWhereverTheyStand) {
  const std::pair<const char*, const char*> texts[] = {{"TWE", "Ma"},
                                                       {"TW=Fu", "Man"},
                                                       {"TQ==\n", "M"},
                                                       {"=T=W=F=u=", "Man"},
                                                       {" \t\n\v\f\rTWFu", "Man"},
                                                       {"====", ""},
                                                       {" ", ""},
                                                       {"TWFuTQ==TWFu", "ManM\x05\x85\xb8"}};
  for (const auto& [text, clear] : texts) {
    SCOPED_TRACE(text);
    ASSERT_TRUE(dataWithBase64EncodedString(text));
    EXPECT_EQ(dataWithBase64EncodedString(text)->asString().substr(0, 4),
              std::string(clear).substr(0, 4));
  }
  EXPECT_EQ(dataWithBase64EncodedString("")->size(), 0U);
}

TEST(Base64, IsNilForWhatIsNoEncoding) {
  for (const char* text : {"T", "TWFuT", "TW!u", "TWFu-", "TWFu_", "TWF\xc3\xbc", "\x01", "T==="}) {
    SCOPED_TRACE(text);
    EXPECT_FALSE(dataWithBase64EncodedString(text));
  }
  EXPECT_FALSE(dataWithBase64EncodedString(std::string("TW\0Fu", 5)));
}

TEST(Base64, ThrowsForNil) {
  try {
    dataWithBase64EncodedString(std::nullopt);
    FAIL() << "nothing was thrown";
  } catch (const InvalidArgumentError& error) {
    EXPECT_STREQ(error.what(), "");
  }
}

TEST(Base64, AgreesWithAnotherImplementationOnRandomBytes) {
  std::mt19937 random(64);
  const TemporaryFolder folder;
  for (const std::size_t size : {1U, 2U, 3U, 56U, 57U, 58U, 1000U, 10001U}) {
    SCOPED_TRACE(size);
    std::string bytes(size, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random());
    writeFile(folder / "bytes", bytes);
    EXPECT_EQ(base64Encoding(Data(bytes)), runProgram({"base64", "-w0", folder / "bytes"}).output);
    EXPECT_EQ(dataWithBase64EncodedString(runProgram({"base64", folder / "bytes"}).output),
              Data(bytes));
  }
}

}  // namespace
}  // namespace vt
