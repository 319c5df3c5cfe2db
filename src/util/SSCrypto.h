#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "foundation/Data.h"
#include "foundation/VTObject.h"
#include "util/SecureBytes.h"

namespace vt {

/// Raised when memory for a buffer cannot be had.
class AssertionError : public std::logic_error {
 public:
  using std::logic_error::logic_error;
};

/// Enciphers and deciphers with a named cipher and a key of any length, and makes digests and keys.
///
/// Holds what goes in and what comes out: set one side, call the operation, read the other. Key and
/// texts are wiped from memory when they are replaced or the object goes away; copies that were
/// handed out are not. The names of ciphers and digests are OpenSSL's ("blowfish", "aes128").
/// Every failure is logged, and answered with nil.
class SSCrypto final : public VTObject {
 public:
  /// Without a key, and not symmetric.
  static std::shared_ptr<SSCrypto> init();
  /// `initWithSymmetricKey:`
  static std::shared_ptr<SSCrypto> initWithSymmetricKey(std::optional<Data> key);

  /// Loads the algorithms (about 2 ms), which every operation that needs them does by itself.
  void setupOpenSSL();
  /// Does nothing: what was loaded is shared, and goes with the platform.
  void cleanupOpenSSL() {}

  /// Whether symmetricKey() is used; there is no other way yet, so nothing can be enciphered else.
  bool isSymmetric() const { return isSymmetric_; }
  void setIsSymmetric(bool symmetric) { isSymmetric_ = symmetric; }
  std::optional<Data> symmetricKey() const { return symmetricKey_.data(); }
  void setSymmetricKey(std::optional<Data> key) { symmetricKey_.set(std::move(key)); }

  std::optional<Data> clearTextAsData() const { return clearText_.data(); }
  void setClearTextWithData(std::optional<Data> text) { clearText_.set(std::move(text)); }
  /// `setClearTextWithString:`
  /// Its UTF-8 bytes.
  void setClearTextWithString(const std::optional<std::string>& text);
  /// Nil when it is not UTF-8.
  std::optional<std::string> clearTextAsString() const;

  std::optional<Data> cipherTextAsData() const { return cipherText_.data(); }
  void setCipherText(std::optional<Data> text) { cipherText_.set(std::move(text)); }
  /// Nil when it is not UTF-8, as cipher text rarely is.
  std::optional<std::string> cipherTextAsString() const;

  /// As encrypt("aes128"); nil, with a log line, without a symmetric key.
  std::optional<Data> encrypt();
  /// `encrypt:`
  /// Enciphers the clear text into the cipher text, and gives that. A nil name is Blowfish in CBC
  /// mode. Nil without clear text, and with a log line for a name that is unknown or whose mode
  /// needs more than key and vector (GCM, CCM, XTS, key wrapping, …). The vector is derived from
  /// the key, so the same text gives the same cipher text.
  std::optional<Data> encrypt(const std::optional<std::string>& cipherName);

  /// As decrypt("aes128"); nil, with a log line, without a symmetric key.
  std::optional<Data> decrypt();
  /// `decrypt:`
  /// Deciphers the cipher text into the clear text, and gives that. Names as for encrypt(). Text
  /// that begins with "Salted__" is read as `openssl enc -md md5` wrote it. Nil without cipher
  /// text, and with a log line for a wrong key or damaged text, as far as the padding tells: one
  /// wrong key in 270 gives garbage.
  std::optional<Data> decrypt(const std::optional<std::string>& cipherName);

  /// `digest:`
  /// The digest of the clear text; a nil name is MD5. Nil without clear text, and with a log line
  /// for an unknown name.
  std::optional<Data> digest(const std::optional<std::string>& digestName) const;

  /// `getKeyDataWithLength:`
  /// Random bytes fit for a key; nil when the system has none to give. Throws AssertionError when
  /// there is no memory for so many.
  static std::optional<Data> getKeyDataWithLength(std::uint64_t length);
  /// `getKeyDataWithLength:fromPassword:withSalt:`
  /// With 1,000 rounds.
  static std::optional<Data> getKeyDataWithLength(std::uint64_t length, const std::string& password,
                                                  const std::string& salt);
  /// `getKeyDataWithLength:fromPassword:withSalt:withIterations:`
  /// A key derived from the UTF-8 bytes of password and salt, all of them, by PBKDF2 with
  /// HMAC-SHA1. Nil for a length or a number of rounds below 1.
  static std::optional<Data> getKeyDataWithLength(std::uint64_t length, const std::string& password,
                                                  const std::string& salt, std::int64_t iterations);
  /// `getSHA1ForData:` and `getMD5ForData:`
  static Data getSHA1ForData(const Data& data);
  static Data getMD5ForData(const Data& data);

 private:
  SSCrypto() = default;

  bool canUseSymmetricKey(std::string_view complaint) const;

  SecureBytes symmetricKey_;
  SecureBytes cipherText_;
  SecureBytes clearText_;
  bool isSymmetric_ = false;
};

}  // namespace vt
