#include "util/CocoaCryptoHashing.h"

#include <stdexcept>

#include "foundation/UTF8.h"
#include "util/CryptoLibrary.h"
#include "util/HexDump.h"

namespace vt {
namespace {

Data digest(const char* name, const std::uint8_t* bytes, std::size_t size) {
  unsigned char result[EVP_MAX_MD_SIZE];
  std::size_t length = 0;
  if (openssl().EVP_Q_digest(CryptoLibrary::shared()->context(), name, nullptr, bytes, size, result,
                             &length) != 1) {
    throw std::runtime_error(std::string("OpenSSL has no ") + name);
  }
  return Data(std::vector<std::uint8_t>(result, result + length));
}

Data digest(const char* name, const Data& bytes) {
  return digest(name, bytes.bytes().data(), bytes.size());
}

std::optional<Data> digest(const char* name, const std::string& text) {
  if (!isValidUTF8(text)) return std::nullopt;
  return digest(name, reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
}

std::optional<std::string> hexOf(const std::optional<Data>& digest) {
  return digest ? std::optional(hexval(*digest)) : std::nullopt;
}

}  // namespace

Data md5Hash(const Data& bytes) { return digest("MD5", bytes); }
std::string md5HexHash(const Data& bytes) { return hexval(md5Hash(bytes)); }
Data sha1Hash(const Data& bytes) { return digest("SHA1", bytes); }
std::string sha1HexHash(const Data& bytes) { return hexval(sha1Hash(bytes)); }

std::optional<Data> md5Hash(const std::string& text) { return digest("MD5", text); }
std::optional<std::string> md5HexHash(const std::string& text) { return hexOf(md5Hash(text)); }
std::optional<Data> sha1Hash(const std::string& text) { return digest("SHA1", text); }
std::optional<std::string> sha1HexHash(const std::string& text) { return hexOf(sha1Hash(text)); }

}  // namespace vt
