#include "util/SSCrypto.h"

#include <gmock/gmock.h>
#include <openssl/err.h>
#include <openssl/evp.h>

#include "support/LogCapture.h"
#include "support/TestWorld.h"
#include "util/CryptoLibrary.h"
#include "util/HexDump.h"

namespace vt {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SSCryptoTest : public testing::Test {
 protected:
  static std::shared_ptr<SSCrypto> withKey(char fill = 'k') {
    return SSCrypto::initWithSymmetricKey(Data(std::string(32, fill)));
  }
  static std::shared_ptr<SSCrypto> with(const std::string& clearText) {
    auto crypto = withKey();
    crypto->setClearTextWithString(clearText);
    return crypto;
  }

  TestWorld world_;
  LogCapture log_;
};

TEST_F(SSCryptoTest, EnciphersAndDeciphers) {
  const auto crypto = with("secret");
  const std::optional<Data> cipherText = crypto->encrypt("blowfish");
  ASSERT_TRUE(cipherText);
  EXPECT_EQ(cipherText->size(), 8U);
  EXPECT_EQ(crypto->cipherTextAsData(), cipherText);

  const auto reader = withKey();
  reader->setCipherText(cipherText);
  EXPECT_EQ(reader->decrypt("blowfish"), Data("secret"));
  EXPECT_EQ(reader->clearTextAsString(), "secret");
  EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(SSCryptoTest, PadsAFullBlockWithAnother) {
  EXPECT_EQ(with("12345678")->encrypt("blowfish")->size(), 16U);
}

TEST_F(SSCryptoTest, GivesTheSameCipherTextEachTime) {
  EXPECT_EQ(with("secret")->encrypt("blowfish"), with("secret")->encrypt("blowfish"));
}

TEST_F(SSCryptoTest, TakesBlowfishForNoNameAndAES128ForNoArgument) {
  EXPECT_EQ(with("secret")->encrypt(std::nullopt), with("secret")->encrypt("bf-cbc"));
  EXPECT_EQ(with("secret")->encrypt(), with("secret")->encrypt("aes128"));
  EXPECT_NE(with("secret")->encrypt(), with("secret")->encrypt(std::nullopt));
  const auto crypto = with("secret");
  crypto->encrypt();
  crypto->setClearTextWithString("other");
  EXPECT_EQ(crypto->decrypt(), Data("secret"));
}

TEST_F(SSCryptoTest, IsNilWithoutALogLineForNoText) {
  const auto crypto = withKey();
  EXPECT_FALSE(crypto->encrypt("blowfish"));
  EXPECT_FALSE(crypto->decrypt("blowfish"));
  crypto->setClearTextWithString("");
  crypto->setCipherText(Data());
  EXPECT_FALSE(crypto->encrypt("blowfish"));
  EXPECT_FALSE(crypto->encrypt("no such cipher"));
  EXPECT_FALSE(crypto->decrypt("blowfish"));
  EXPECT_FALSE(crypto->digest(std::nullopt));
  EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(SSCryptoTest, FindsAWrongKeyByThePadding) {
  const auto crypto = withKey('w');
  crypto->setCipherText(with("secret")->encrypt("blowfish"));
  EXPECT_FALSE(crypto->decrypt("blowfish"));
  EXPECT_THAT(log_.lines(), ElementsAre("EVP_DecryptFinal() failed!"));
  EXPECT_FALSE(crypto->clearTextAsData());
}

TEST_F(SSCryptoTest, FindsDamagedText) {
  for (const std::string text : {"x", "1234567", "123456789"}) {
    SCOPED_TRACE(text);
    const auto crypto = withKey();
    crypto->setCipherText(Data(text));
    EXPECT_FALSE(crypto->decrypt("blowfish"));
  }
  EXPECT_THAT(log_.lines(), ElementsAre("EVP_DecryptFinal() failed!", "EVP_DecryptFinal() failed!",
                                        "EVP_DecryptFinal() failed!"));
}

TEST_F(SSCryptoTest, NamesTheCipherThatItDoesNotKnow) {
  const auto crypto = with("secret");
  crypto->setCipherText(Data("12345678"));
  EXPECT_FALSE(crypto->encrypt("rot13"));
  EXPECT_FALSE(crypto->decrypt("rot13"));
  EXPECT_THAT(log_.lines(), ElementsAre("cannot get cipher with name rot13",
                                        "cannot get cipher with name rot13"));
}

TEST_F(SSCryptoTest, RefusesModesThatNeedMoreThanKeyAndVector) {
  for (const char* name : {"aes-128-gcm", "aes-256-ccm", "aes-128-ocb", "aes-128-xts",
                           "id-aes128-wrap", "chacha20-poly1305", "aes-128-cbc-hmac-sha1"}) {
    SCOPED_TRACE(name);
    EXPECT_FALSE(with("secret")->encrypt(name));
    EXPECT_EQ(log_.lines().back(), std::string("cannot get cipher with name ") + name);
  }
}

TEST_F(SSCryptoTest, NeedsASymmetricKey) {
  const auto crypto = SSCrypto::init();
  crypto->setClearTextWithString("secret");
  crypto->setCipherText(Data("12345678"));
  EXPECT_FALSE(crypto->isSymmetric());
  EXPECT_FALSE(crypto->encrypt());
  EXPECT_FALSE(crypto->decrypt());
  crypto->setIsSymmetric(/*symmetric=*/true);
  EXPECT_FALSE(crypto->encrypt());
  EXPECT_FALSE(crypto->encrypt("blowfish"));
  EXPECT_THAT(log_.lines(), ElementsAre("No symmetric key or public key is set!",
                                        "No symmetric key or private key is set!",
                                        "No symmetric key or public key is set!",
                                        "No symmetric key or public key is set!"));
  crypto->setSymmetricKey(Data("k"));
  EXPECT_TRUE(crypto->encrypt());
}

TEST_F(SSCryptoTest, ReadsTextsAsUTF8) {
  const auto crypto = with("Müller");
  EXPECT_EQ(crypto->clearTextAsData(), Data("M\xc3\xbcller"));
  crypto->setClearTextWithData(Data("\xff"));
  EXPECT_FALSE(crypto->clearTextAsString());
  crypto->setCipherText(Data("plain"));
  EXPECT_EQ(crypto->cipherTextAsString(), "plain");
  crypto->setClearTextWithString(std::nullopt);
  EXPECT_FALSE(crypto->clearTextAsData());
}

TEST_F(SSCryptoTest, MakesDigestsOfTheClearText) {
  const auto crypto = with("abc");
  EXPECT_EQ(hexval(*crypto->digest(std::nullopt)), "900150983cd24fb0d6963f7d28e17f72");
  EXPECT_EQ(hexval(*crypto->digest("sha1")), "a9993e364706816aba3e25717850c26c9cd0d89d");
  EXPECT_EQ(crypto->digest("sha256")->size(), 32U);
  EXPECT_EQ(hexval(*crypto->digest("md4")), "a448017aaf21d8525fc10ae87aa6729d");
  EXPECT_THAT(log_.lines(), IsEmpty());
  EXPECT_FALSE(crypto->digest("md99"));
  EXPECT_THAT(log_.lines(), ElementsAre("cannot get digest with name md99"));
}

TEST_F(SSCryptoTest, MakesRandomKeys) {
  const std::optional<Data> key = SSCrypto::getKeyDataWithLength(32);
  ASSERT_TRUE(key);
  EXPECT_EQ(key->size(), 32U);
  EXPECT_NE(key, SSCrypto::getKeyDataWithLength(32));
  EXPECT_EQ(SSCrypto::getKeyDataWithLength(0)->size(), 0U);
}

TEST_F(SSCryptoTest, DerivesKeysFromPasswords) {
  // Test vectors of RFC 6070.
  EXPECT_EQ(hexval(*SSCrypto::getKeyDataWithLength(20, "password", "salt", 1)),
            "0c60c80f961f0e71f3a9b524af6012062fe037a6");
  EXPECT_EQ(hexval(*SSCrypto::getKeyDataWithLength(20, "password", "salt", 4096)),
            "4b007901b765489abead49d926f721d065a429c1");
  EXPECT_EQ(hexval(*SSCrypto::getKeyDataWithLength(16, std::string("pass\0word", 9),
                                                   std::string("sa\0lt", 5), 4096)),
            "56fa6aa75548099dcc37d7f03425e0c3");
  EXPECT_EQ(SSCrypto::getKeyDataWithLength(20, "password", "salt"),
            SSCrypto::getKeyDataWithLength(20, "password", "salt", 1000));
  EXPECT_FALSE(SSCrypto::getKeyDataWithLength(20, "password", "salt", 0));
  EXPECT_FALSE(SSCrypto::getKeyDataWithLength(0, "password", "salt", 1));
}

TEST_F(SSCryptoTest, AssertsThatThereIsMemory) {
  try {
    SSCrypto::getKeyDataWithLength(~std::uint64_t{0});
    FAIL() << "nothing was thrown";
  } catch (const AssertionError& error) {
    EXPECT_STREQ(error.what(), "SSCrypto: Cannot calloc memory for buffer.");
  }
}

TEST_F(SSCryptoTest, MakesDigestsOfData) {
  EXPECT_EQ(SSCrypto::getSHA1ForData(Data("abc")).size(), 20U);
  EXPECT_EQ(hexval(SSCrypto::getMD5ForData(Data("abc"))), "900150983cd24fb0d6963f7d28e17f72");
}

TEST_F(SSCryptoTest, LeavesTheAlgorithmsAndErrorsOfTheProcessAlone) {
  ERR_clear_error();
  const auto crypto = withKey();
  crypto->setupOpenSSL();
  crypto->setCipherText(Data("x"));
  crypto->decrypt("blowfish");
  crypto->decrypt("no such cipher");
  crypto->cleanupOpenSSL();
  EXPECT_EQ(ERR_peek_error(), 0U);
  unsigned char digest[EVP_MAX_MD_SIZE];
  EXPECT_EQ(EVP_Digest("abc", 3, digest, nullptr, EVP_sha256(), nullptr), 1);
  const CipherContext context(EVP_CIPHER_CTX_new());
  const unsigned char key[16] = {};
  EXPECT_EQ(EVP_EncryptInit_ex2(context.get(), EVP_aes_128_cbc(), key, key, nullptr), 1);
  EXPECT_EQ(ERR_peek_error(), 0U);
}

}  // namespace
}  // namespace vt
