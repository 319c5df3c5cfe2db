#include "util/CryptoLibrary.h"

#include "platform/Platform.h"

namespace vt {
namespace {

bool needsKeyAndVectorAlone(const EVP_CIPHER* cipher) {
  if ((openssl().EVP_CIPHER_get_flags(cipher) & EVP_CIPH_FLAG_AEAD_CIPHER) != 0) return false;
  switch (openssl().EVP_CIPHER_get_mode(cipher)) {
    case EVP_CIPH_CBC_MODE:
    case EVP_CIPH_ECB_MODE:
    case EVP_CIPH_CFB_MODE:
    case EVP_CIPH_OFB_MODE:
    case EVP_CIPH_CTR_MODE:
    case EVP_CIPH_STREAM_CIPHER:
      return true;
    default:
      return false;
  }
}

}  // namespace

std::shared_ptr<CryptoLibrary> CryptoLibrary::shared() {
  return Platform::current().shared<CryptoLibrary>(
      [] { return std::make_shared<CryptoLibrary>(); });
}

CryptoLibrary::CryptoLibrary() : context_(openssl().OSSL_LIB_CTX_new()) {
  const OpenSSLErrorsKept errors;
  default_.reset(openssl().OSSL_PROVIDER_load(context_.get(), "default"));
  legacy_.reset(openssl().OSSL_PROVIDER_load(context_.get(), "legacy"));
}

CipherHandle CryptoLibrary::cipherNamed(const std::string& name) const {
  const OpenSSLErrorsKept errors;
  // The aliases ("blowfish", "aes128") are known to the table of names only.
  const EVP_CIPHER* known = openssl().EVP_get_cipherbyname(name.c_str());
  if (known == nullptr || !needsKeyAndVectorAlone(known)) return nullptr;
  return CipherHandle(
      openssl().EVP_CIPHER_fetch(context_.get(), openssl().EVP_CIPHER_get0_name(known), nullptr));
}

DigestHandle CryptoLibrary::digestNamed(const std::string& name) const {
  const OpenSSLErrorsKept errors;
  const EVP_MD* known = openssl().EVP_get_digestbyname(name.c_str());
  if (known == nullptr) return nullptr;
  return DigestHandle(
      openssl().EVP_MD_fetch(context_.get(), openssl().EVP_MD_get0_name(known), nullptr));
}

OpenSSLErrorsKept::OpenSSLErrorsKept() { openssl().ERR_set_mark(); }
OpenSSLErrorsKept::~OpenSSLErrorsKept() { openssl().ERR_pop_to_mark(); }

}  // namespace vt
