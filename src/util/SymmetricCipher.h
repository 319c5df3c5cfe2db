#pragma once

#include <optional>
#include <span>

#include "foundation/Data.h"
#include "util/CryptoLibrary.h"

namespace vt {

// Enciphering with a key of any length, as `openssl enc -md md5` does it: key and vector of the
// cipher are derived from it by EVP_BytesToKey with MD5, one round, and the salt if there is one.
// The key has the cipher's own length. It is 16 bytes for Blowfish, which could use more: asking
// OpenSSL 3 for more once the key is set discards the key.

/// The cipher text of `clearText`, padded to whole blocks. Nil, with a log line, when OpenSSL
/// refuses.
std::optional<Data> encipher(const CryptoLibrary& library, const EVP_CIPHER* cipher,
                             const Data& keyMaterial, const Data& clearText);

/// The clear text of `cipherText`. Text that begins with "Salted__" carries its salt in the 8 bytes
/// after that. Nil, with a log line, for a wrong key or damaged text, as far as the padding tells.
std::optional<Data> decipher(const CryptoLibrary& library, const EVP_CIPHER* cipher,
                             const Data& keyMaterial, const Data& cipherText);

}  // namespace vt
