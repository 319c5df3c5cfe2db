#pragma once

#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/opensslv.h>
#include <openssl/provider.h>
#include <openssl/rand.h>

#include "foundation/SharedLibrary.h"

// The functions of OpenSSL that are used.
#define VT_OPENSSL_FUNCTIONS(X) \
  X(BIO_ctrl)                   \
  X(BIO_f_base64)               \
  X(BIO_free_all)               \
  X(BIO_new)                    \
  X(BIO_new_mem_buf)            \
  X(BIO_push)                   \
  X(BIO_read_ex)                \
  X(BIO_s_mem)                  \
  X(BIO_set_flags)              \
  X(BIO_write_ex)               \
  X(ERR_pop_to_mark)            \
  X(ERR_set_mark)               \
  X(EVP_BytesToKey)             \
  X(EVP_CIPHER_CTX_free)        \
  X(EVP_CIPHER_CTX_new)         \
  X(EVP_CIPHER_fetch)           \
  X(EVP_CIPHER_free)            \
  X(EVP_CIPHER_get0_name)       \
  X(EVP_CIPHER_get_flags)       \
  X(EVP_CIPHER_get_mode)        \
  X(EVP_CipherFinal_ex)         \
  X(EVP_CipherInit_ex2)         \
  X(EVP_CipherUpdate)           \
  X(EVP_DigestFinal_ex)         \
  X(EVP_DigestInit_ex2)         \
  X(EVP_DigestUpdate)           \
  X(EVP_MD_CTX_free)            \
  X(EVP_MD_CTX_new)             \
  X(EVP_MD_fetch)               \
  X(EVP_MD_free)                \
  X(EVP_MD_get0_name)           \
  X(EVP_Q_digest)               \
  X(EVP_get_cipherbyname)       \
  X(EVP_get_digestbyname)       \
  X(OSSL_LIB_CTX_free)          \
  X(OSSL_LIB_CTX_new)           \
  X(OSSL_PROVIDER_load)         \
  X(OSSL_PROVIDER_unload)       \
  X(PKCS5_PBKDF2_HMAC_SHA1)     \
  X(RAND_bytes_ex)

namespace vt {

/// OpenSSL, loaded at its first use: it is needed for passwords and pictures, and a search that
/// does without it takes a tenth less time. Its members are the functions of their names.
struct OpenSSL {
  const SharedLibrary library{"libcrypto.so." OPENSSL_MSTR(OPENSSL_SHLIB_VERSION)};
  VT_OPENSSL_FUNCTIONS(VT_LIBRARY_FUNCTION)
};

/// Throws std::runtime_error when OpenSSL is not installed.
const OpenSSL& openssl();

}  // namespace vt
