#pragma once

#include <memory>
#include <string>

#include "util/OpenSSL.h"

namespace vt {

/// Calls OpenSSL's own release function of a handle.
template <auto Release>
struct OpenSSLRelease {
  template <class Handle>
  void operator()(Handle* handle) const {
    (openssl().*Release)(handle);
  }
};

using CipherHandle = std::unique_ptr<EVP_CIPHER, OpenSSLRelease<&OpenSSL::EVP_CIPHER_free>>;
using CipherContext =
    std::unique_ptr<EVP_CIPHER_CTX, OpenSSLRelease<&OpenSSL::EVP_CIPHER_CTX_free>>;
using DigestHandle = std::unique_ptr<EVP_MD, OpenSSLRelease<&OpenSSL::EVP_MD_free>>;
using DigestContext = std::unique_ptr<EVP_MD_CTX, OpenSSLRelease<&OpenSSL::EVP_MD_CTX_free>>;

/// OpenSSL with its default and its legacy algorithms, Blowfish among them, in a context of its
/// own: loading the legacy ones into the process's context would switch its default ones off.
class CryptoLibrary {
 public:
  /// The one of this world, loaded by the first call (about 2 ms).
  static std::shared_ptr<CryptoLibrary> shared();

  CryptoLibrary();
  CryptoLibrary(const CryptoLibrary&) = delete;
  CryptoLibrary& operator=(const CryptoLibrary&) = delete;

  /// The cipher that OpenSSL knows by `name`, of a mode that needs key and vector alone: CBC, ECB,
  /// CFB, OFB, CTR, or a stream cipher. Null for an unknown name, and for the modes that
  /// authenticate, wrap keys or encipher disk sectors (GCM, CCM, OCB, SIV, XTS, …).
  CipherHandle cipherNamed(const std::string& name) const;
  /// Null for an unknown name.
  DigestHandle digestNamed(const std::string& name) const;

  OSSL_LIB_CTX* context() const { return context_.get(); }

 private:
  using Context = std::unique_ptr<OSSL_LIB_CTX, OpenSSLRelease<&OpenSSL::OSSL_LIB_CTX_free>>;
  using Provider = std::unique_ptr<OSSL_PROVIDER, OpenSSLRelease<&OpenSSL::OSSL_PROVIDER_unload>>;

  Context context_;
  Provider default_;  // null when it could not be loaded: its algorithms are then unknown
  Provider legacy_;
};

/// Leaves OpenSSL's queue of errors as it was, whatever fails while it lives.
class OpenSSLErrorsKept {
 public:
  OpenSSLErrorsKept();
  OpenSSLErrorsKept(const OpenSSLErrorsKept&) = delete;
  OpenSSLErrorsKept& operator=(const OpenSSLErrorsKept&) = delete;
  ~OpenSSLErrorsKept();
};

}  // namespace vt
