#include "Classes.h"
#include "Message.h"
#include "util/SSCrypto.h"

namespace vt::ruby {
namespace {

using C = SSCrypto;
using Name = const std::optional<std::string>&;
using Bytes = std::optional<Data>;
using Plain = Bytes (C::*)();
using Named = Bytes (C::*)(Name);
using Random = Bytes (*)(std::uint64_t);
using Derived = Bytes (*)(std::uint64_t, const std::string&, const std::string&);
using DerivedByRounds = Bytes (*)(std::uint64_t, const std::string&, const std::string&,
                                  std::int64_t);

}  // namespace

void defineSSCrypto(VALUE module) {
  constexpr Plain kEncrypt = &C::encrypt;
  constexpr Named kEncryptNamed = &C::encrypt;
  constexpr Plain kDecrypt = &C::decrypt;
  constexpr Named kDecryptNamed = &C::decrypt;
  static constexpr Message kMessages[] = {
      initialiser<&C::init>("init"),
      initialiser<&C::initWithSymmetricKey>("initWithSymmetricKey:"),
      message<&C::setupOpenSSL>("setupOpenSSL"),
      message<&C::cleanupOpenSSL>("cleanupOpenSSL"),
      message<&C::isSymmetric>("isSymmetric"),
      message<&C::setIsSymmetric>("setIsSymmetric:"),
      message<&C::symmetricKey>("symmetricKey"),
      message<&C::setSymmetricKey>("setSymmetricKey:"),
      message<&C::clearTextAsData>("clearTextAsData"),
      message<&C::setClearTextWithData>("setClearTextWithData:"),
      message<&C::setClearTextWithString>("setClearTextWithString:"),
      message<&C::clearTextAsString>("clearTextAsString"),
      message<&C::cipherTextAsData>("cipherTextAsData"),
      message<&C::setCipherText>("setCipherText:"),
      message<&C::cipherTextAsString>("cipherTextAsString"),
      eitherMessage<kEncrypt, kEncryptNamed>("encrypt"),
      eitherMessage<kEncrypt, kEncryptNamed>("encrypt:"),
      eitherMessage<kDecrypt, kDecryptNamed>("decrypt"),
      eitherMessage<kDecrypt, kDecryptNamed>("decrypt:"),
      message<&C::digest>("digest:"),
      classMessage<static_cast<Random>(&C::getKeyDataWithLength)>("getKeyDataWithLength:"),
      classMessage<static_cast<Derived>(&C::getKeyDataWithLength)>(
          "getKeyDataWithLength:fromPassword:withSalt:"),
      classMessage<static_cast<DerivedByRounds>(&C::getKeyDataWithLength)>(
          "getKeyDataWithLength:fromPassword:withSalt:withIterations:"),
      classMessage<&C::getSHA1ForData>("getSHA1ForData:"),
      classMessage<&C::getMD5ForData>("getMD5ForData:"),
  };
  defineClass<C>(module, "SSCrypto", classNamed(module, "VTObject"), kMessages);
}

}  // namespace vt::ruby
