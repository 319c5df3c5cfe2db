// The ciphers against the program `openssl enc`, with the key and vector that are derived by MD5.

#include "util/SymmetricCipher.h"

#include <gtest/gtest.h>

#include <array>
#include <set>
#include <sstream>

#include "support/Program.h"
#include "support/ReadFile.h"
#include "support/TestWorld.h"
#include "util/CocoaCryptoHashing.h"
#include "util/HexDump.h"
#include "util/SSCrypto.h"

namespace vt {
namespace {

class SymmetricCipherTest : public testing::Test {
 protected:
  static constexpr const char* kClearText = "The key stays as it was derived: 16 bytes.";

  static Data keyMaterial() { return Data(std::string(32, '\x5a')); }

  /// MD5 of what came before, the material and the salt, over and over: the rule of
  /// EVP_BytesToKey, written down once more.
  static std::string derivedBytes(std::size_t count) {
    std::string bytes;
    std::string last;
    while (bytes.size() < count) {
      last = md5Hash(Data(last + keyMaterial().asString())).asString();
      bytes += last;
    }
    return bytes.substr(0, count);
  }

  static std::string hexOf(const std::string& bytes) { return hexval(Data(bytes)); }

  static std::optional<Data> enciphered(const std::string& cipher) {
    const auto crypto = SSCrypto::initWithSymmetricKey(keyMaterial());
    crypto->setClearTextWithString(kClearText);
    return crypto->encrypt(cipher);
  }

  /// What the tool makes of the clear text, in hexadecimal.
  std::string toolsCipherText(const std::string& cipher, std::size_t keySize,
                              std::size_t vectorSize) {
    const std::string derived = derivedBytes(keySize + vectorSize);
    std::vector<std::string> arguments = {"openssl",
                                          "enc",
                                          "-" + cipher,
                                          "-provider",
                                          "legacy",
                                          "-provider",
                                          "default",
                                          "-in",
                                          folder_ / "clear",
                                          "-out",
                                          folder_ / "enciphered",
                                          "-K",
                                          hexOf(derived.substr(0, keySize))};
    if (vectorSize > 0) {
      arguments.insert(arguments.end(), {"-iv", hexOf(derived.substr(keySize))});
    }
    const ProgramResult result = runProgram(arguments);
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    return hexOf(readFile(folder_ / "enciphered"));
  }

  void SetUp() override { writeFile(folder_ / "clear", kClearText); }

  TestWorld world_;
  TemporaryFolder folder_;
};

TEST_F(SymmetricCipherTest, GivesWhatTheToolGives) {
  const struct {
    const char* name;
    const char* toolsName;
    std::size_t keySize;
    std::size_t vectorSize;
  } ciphers[] = {
      {"blowfish", "bf-cbc", 16, 8},     {"bf", "bf-cbc", 16, 8},
      {"aes128", "aes-128-cbc", 16, 16}, {"aes256", "aes-256-cbc", 32, 16},
      {"des3", "des-ede3-cbc", 24, 8},
  };
  for (const auto& c : ciphers) {
    SCOPED_TRACE(c.name);
    const std::optional<Data> ours = enciphered(c.name);
    ASSERT_TRUE(ours);
    EXPECT_EQ(hexval(*ours), toolsCipherText(c.toolsName, c.keySize, c.vectorSize));
  }
}

TEST_F(SymmetricCipherTest, GivesWhatTheToolGivesForEveryCipherItLists) {
  std::istringstream listed(runProgram({"openssl", "list", "-cipher-algorithms", "-provider",
                                        "legacy", "-provider", "default"})
                                .output +
                            runProgram({"openssl", "enc", "-list"}).output);
  std::set<std::string> names;
  for (std::string word; listed >> word;) {
    if (word.starts_with('-')) names.insert(word.substr(1));
  }
  const auto library = CryptoLibrary::shared();
  std::size_t compared = 0;
  for (const std::string& name : names) {
    SCOPED_TRACE(name);
    const CipherHandle cipher = library->cipherNamed(name);
    if (!cipher) continue;
    const auto keySize = static_cast<std::size_t>(EVP_CIPHER_get_key_length(cipher.get()));
    const auto vectorSize = static_cast<std::size_t>(EVP_CIPHER_get_iv_length(cipher.get()));
    const std::optional<Data> ours = enciphered(name);
    ASSERT_TRUE(ours);
    EXPECT_EQ(hexval(*ours), toolsCipherText(name, keySize, vectorSize));
    const auto reader = SSCrypto::initWithSymmetricKey(keyMaterial());
    reader->setCipherText(ours);
    EXPECT_EQ(reader->decrypt(name), Data(kClearText));
    ++compared;
  }
  EXPECT_GE(compared, 80U);
}

TEST_F(SymmetricCipherTest, ReadsWhatTheToolSalted) {
  for (const std::array<const char*, 2> names :
       {std::array{"aes-256-cbc", "aes256"}, std::array{"bf-cbc", "blowfish"}}) {
    SCOPED_TRACE(names[1]);
    ASSERT_EQ(runProgram({"openssl", "enc", std::string("-") + names[0], "-provider", "legacy",
                          "-provider", "default", "-md", "md5", "-salt", "-pass", "pass:open",
                          "-in", folder_ / "clear", "-out", folder_ / "salted"})
                  .exitCode,
              0);
    const std::string salted = readFile(folder_ / "salted");
    ASSERT_TRUE(salted.starts_with("Salted__"));
    const auto crypto = SSCrypto::initWithSymmetricKey(Data("open"));
    crypto->setCipherText(Data(salted));
    EXPECT_EQ(crypto->decrypt(names[1]), Data(kClearText));
  }
}

TEST_F(SymmetricCipherTest, TakesNoSaltFromATextOf16Bytes) {
  const auto lengthOf = [](const std::string& cipherText) {
    const auto crypto = SSCrypto::initWithSymmetricKey(keyMaterial());
    crypto->setCipherText(Data(cipherText));
    return crypto->decrypt("aes-128-ctr")->size();  // as long as its cipher text
  };
  EXPECT_EQ(lengthOf("Salted__12345678"), 16U);
  EXPECT_EQ(lengthOf("Salted__12345678x"), 1U);
  EXPECT_EQ(lengthOf("salted__12345678x"), 17U);
}

}  // namespace
}  // namespace vt
