#include "util/SSCrypto.h"

#include <exception>
#include <limits>
#include <new>

#include "foundation/NSLog.h"
#include "foundation/UTF8.h"
#include "util/CocoaCryptoHashing.h"
#include "util/CryptoLibrary.h"
#include "util/SymmetricCipher.h"

namespace vt {
namespace {

constexpr const char* kDefaultCipher = "aes128";
constexpr const char* kUnnamedCipher = "EVP_bf_cbc";
constexpr std::int64_t kUsualIterations = 1000;

constexpr std::string_view kNoKeyToEncrypt = "No symmetric key or public key is set!";
constexpr std::string_view kNoKeyToDecrypt = "No symmetric key or private key is set!";

CipherHandle cipherFor(const CryptoLibrary& library, const std::optional<std::string>& name) {
  CipherHandle cipher = library.cipherNamed(name.value_or("bf-cbc"));
  if (!cipher) NSLog("cannot get cipher with name %@", name.value_or(kUnnamedCipher));
  return cipher;
}

std::vector<std::uint8_t> keyBuffer(std::uint64_t length) {
  try {
    return std::vector<std::uint8_t>(length);
  } catch (const std::exception&) {  // a length that no vector has, or that memory has not
    throw AssertionError("SSCrypto: Cannot calloc memory for buffer.");
  }
}

std::optional<std::string> asUTF8(const std::optional<Data>& data) {
  if (!data) return std::nullopt;
  std::string text = data->asString();
  return isValidUTF8(text) ? std::optional(std::move(text)) : std::nullopt;
}

/// Runs a cipher over one side of an object; what it cannot hold in memory is an assertion.
template <class Work>
std::optional<Data> withBuffer(const Work& work) {
  try {
    return work();
  } catch (const std::bad_alloc&) {
    throw AssertionError("SSCrypto: Cannot allocate memory for buffer!");
  }
}

}  // namespace

std::shared_ptr<SSCrypto> SSCrypto::init() { return std::shared_ptr<SSCrypto>(new SSCrypto); }

std::shared_ptr<SSCrypto> SSCrypto::initWithSymmetricKey(std::optional<Data> key) {
  std::shared_ptr<SSCrypto> crypto = init();
  crypto->setSymmetricKey(std::move(key));
  crypto->setIsSymmetric(/*symmetric=*/true);
  return crypto;
}

void SSCrypto::setupOpenSSL() { CryptoLibrary::shared(); }

void SSCrypto::setClearTextWithString(const std::optional<std::string>& text) {
  clearText_.set(text ? std::optional(Data(*text)) : std::nullopt);
}

std::optional<std::string> SSCrypto::clearTextAsString() const { return asUTF8(clearText_.data()); }

std::optional<std::string> SSCrypto::cipherTextAsString() const {
  return asUTF8(cipherText_.data());
}

bool SSCrypto::canUseSymmetricKey(std::string_view complaint) const {
  if (isSymmetric_ && symmetricKey_.data()) return true;
  NSLog(complaint);
  return false;
}

std::optional<Data> SSCrypto::encrypt() {
  return canUseSymmetricKey(kNoKeyToEncrypt) ? encrypt(kDefaultCipher) : std::nullopt;
}

std::optional<Data> SSCrypto::encrypt(const std::optional<std::string>& cipherName) {
  if (clearText_.isEmpty() || !canUseSymmetricKey(kNoKeyToEncrypt)) return std::nullopt;
  const auto library = CryptoLibrary::shared();
  const CipherHandle cipher = cipherFor(*library, cipherName);
  if (!cipher) return std::nullopt;
  std::optional<Data> text = withBuffer(
      [&] { return encipher(*library, cipher.get(), *symmetricKey_.data(), *clearText_.data()); });
  if (text) cipherText_.set(text);
  return text;
}

std::optional<Data> SSCrypto::decrypt() {
  return canUseSymmetricKey(kNoKeyToDecrypt) ? decrypt(kDefaultCipher) : std::nullopt;
}

std::optional<Data> SSCrypto::decrypt(const std::optional<std::string>& cipherName) {
  if (cipherText_.isEmpty() || !canUseSymmetricKey(kNoKeyToDecrypt)) return std::nullopt;
  const auto library = CryptoLibrary::shared();
  const CipherHandle cipher = cipherFor(*library, cipherName);
  if (!cipher) return std::nullopt;
  std::optional<Data> text = withBuffer(
      [&] { return decipher(*library, cipher.get(), *symmetricKey_.data(), *cipherText_.data()); });
  if (text) clearText_.set(text);
  return text;
}

std::optional<Data> SSCrypto::digest(const std::optional<std::string>& digestName) const {
  if (clearText_.isEmpty()) return std::nullopt;
  const OpenSSLErrorsKept errors;
  const std::string name = digestName.value_or("MD5");
  const DigestHandle algorithm = CryptoLibrary::shared()->digestNamed(name);
  const DigestContext context(openssl().EVP_MD_CTX_new());
  if (!algorithm || openssl().EVP_DigestInit_ex2(context.get(), algorithm.get(), nullptr) != 1) {
    NSLog("cannot get digest with name %@", name);
    return std::nullopt;
  }
  const Data& text = *clearText_.data();
  if (openssl().EVP_DigestUpdate(context.get(), text.bytes().data(), text.size()) != 1) {
    NSLog("EVP_DigestUpdate() failed!");
    return std::nullopt;
  }
  std::vector<std::uint8_t> result(EVP_MAX_MD_SIZE);
  unsigned int length = 0;
  if (openssl().EVP_DigestFinal_ex(context.get(), result.data(), &length) != 1) {
    NSLog("EVP_DigesttFinal() failed!");
    return std::nullopt;
  }
  result.resize(length);
  return Data(std::move(result));
}

std::optional<Data> SSCrypto::getKeyDataWithLength(std::uint64_t length) {
  const OpenSSLErrorsKept errors;
  std::vector<std::uint8_t> key = keyBuffer(length);
  if (openssl().RAND_bytes_ex(CryptoLibrary::shared()->context(), key.data(), key.size(),
                              /*strength=*/0) != 1) {
    return std::nullopt;
  }
  return Data(std::move(key));
}

std::optional<Data> SSCrypto::getKeyDataWithLength(std::uint64_t length,
                                                   const std::string& password,
                                                   const std::string& salt) {
  return getKeyDataWithLength(length, password, salt, kUsualIterations);
}

std::optional<Data> SSCrypto::getKeyDataWithLength(std::uint64_t length,
                                                   const std::string& password,
                                                   const std::string& salt,
                                                   std::int64_t iterations) {
  constexpr auto kMost = std::numeric_limits<int>::max();
  if (length < 1 || length > kMost || iterations < 1 || iterations > kMost) return std::nullopt;
  const OpenSSLErrorsKept errors;
  std::vector<std::uint8_t> key = keyBuffer(length);
  if (openssl().PKCS5_PBKDF2_HMAC_SHA1(password.data(), static_cast<int>(password.size()),
                                       reinterpret_cast<const unsigned char*>(salt.data()),
                                       static_cast<int>(salt.size()), static_cast<int>(iterations),
                                       static_cast<int>(length), key.data()) != 1) {
    return std::nullopt;
  }
  return Data(std::move(key));
}

Data SSCrypto::getSHA1ForData(const Data& data) { return sha1Hash(data); }
Data SSCrypto::getMD5ForData(const Data& data) { return md5Hash(data); }

}  // namespace vt
