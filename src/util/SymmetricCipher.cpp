#include "util/SymmetricCipher.h"

#include <string.h>  // explicit_bzero

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <string_view>

#include "foundation/NSLog.h"

namespace vt {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::string_view kSaltMark = "Salted__";
constexpr std::size_t kSaltSize = 8;
constexpr std::size_t kMostBytes = std::numeric_limits<int>::max() - EVP_MAX_BLOCK_LENGTH;

/// Key and vector as the cipher takes them; wiped in the end.
struct DerivedKey {
  DerivedKey() = default;
  DerivedKey(const DerivedKey&) = delete;
  DerivedKey& operator=(const DerivedKey&) = delete;
  ~DerivedKey() {
    explicit_bzero(key.data(), key.size());
    explicit_bzero(vector.data(), vector.size());
  }

  std::array<std::uint8_t, EVP_MAX_KEY_LENGTH> key{};
  std::array<std::uint8_t, EVP_MAX_IV_LENGTH> vector{};
};

bool derive(DerivedKey& derived, const CryptoLibrary& library, const EVP_CIPHER* cipher,
            const Data& material, const std::uint8_t* salt) {
  const DigestHandle md5 = library.digestNamed("MD5");
  return md5 && openssl().EVP_BytesToKey(cipher, md5.get(), salt, material.bytes().data(),
                                         static_cast<int>(material.size()), /*count=*/1,
                                         derived.key.data(), derived.vector.data()) > 0;
}

/// What each step says when it fails.
struct StepTexts {
  std::string_view init;
  std::string_view update;
  std::string_view final;
};

constexpr StepTexts kEncryptTexts = {"EVP_EncryptInit() failed!", "EVP_EncryptUpdate() failed!",
                                     "EVP_EncryptFinal() failed!"};
constexpr StepTexts kDecryptTexts = {"EVP_DecryptInit() failed!", "EVP_DecryptUpdate() failed!",
                                     "EVP_DecryptFinal() failed!"};

enum class Direction : int { kDecipher = 0, kEncipher = 1 };

std::optional<Data> run(Direction direction, const EVP_CIPHER* cipher, const DerivedKey& derived,
                        Bytes input) {
  const StepTexts& texts = direction == Direction::kEncipher ? kEncryptTexts : kDecryptTexts;
  const CipherContext context(openssl().EVP_CIPHER_CTX_new());
  if (openssl().EVP_CipherInit_ex2(context.get(), cipher, derived.key.data(), derived.vector.data(),
                                   static_cast<int>(direction), nullptr) != 1) {
    NSLog(texts.init);
    return std::nullopt;
  }
  std::vector<std::uint8_t> output(input.size() + EVP_MAX_BLOCK_LENGTH);
  int written = 0;
  if (openssl().EVP_CipherUpdate(context.get(), output.data(), &written, input.data(),
                                 static_cast<int>(input.size())) != 1) {
    NSLog(texts.update);
    return std::nullopt;
  }
  int last = 0;
  if (openssl().EVP_CipherFinal_ex(context.get(), output.data() + written, &last) != 1) {
    explicit_bzero(output.data(), output.size());
    NSLog(texts.final);
    return std::nullopt;
  }
  output.resize(static_cast<std::size_t>(written) + static_cast<std::size_t>(last));
  return Data(std::move(output));
}

bool isSalted(const Data& text) {
  return text.size() > kSaltMark.size() + kSaltSize &&
         std::ranges::equal(kSaltMark, Bytes(text.bytes()).first(kSaltMark.size()), {},
                            [](char c) { return static_cast<std::uint8_t>(c); });
}

}  // namespace

std::optional<Data> encipher(const CryptoLibrary& library, const EVP_CIPHER* cipher,
                             const Data& keyMaterial, const Data& clearText) {
  const OpenSSLErrorsKept errors;
  DerivedKey derived;
  if (!derive(derived, library, cipher, keyMaterial, /*salt=*/nullptr)) {
    NSLog(kEncryptTexts.init);
    return std::nullopt;
  }
  if (clearText.size() > kMostBytes) {
    NSLog(kEncryptTexts.update);
    return std::nullopt;
  }
  return run(Direction::kEncipher, cipher, derived, clearText.bytes());
}

std::optional<Data> decipher(const CryptoLibrary& library, const EVP_CIPHER* cipher,
                             const Data& keyMaterial, const Data& cipherText) {
  const OpenSSLErrorsKept errors;
  Bytes input = cipherText.bytes();
  const std::uint8_t* salt = nullptr;
  if (isSalted(cipherText)) {
    salt = input.subspan(kSaltMark.size()).data();
    input = input.subspan(kSaltMark.size() + kSaltSize);
  }
  DerivedKey derived;
  if (!derive(derived, library, cipher, keyMaterial, salt)) {
    NSLog(kDecryptTexts.init);
    return std::nullopt;
  }
  if (input.size() > kMostBytes) {
    NSLog(kDecryptTexts.update);
    return std::nullopt;
  }
  return run(Direction::kDecipher, cipher, derived, input);
}

}  // namespace vt
