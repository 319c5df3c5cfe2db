// Configuration of outgoing mail: typed access to global settings.

#include <utility>

#include "settings/VTSettings.h"
#include "util/SSCrypto.h"

namespace vt {
namespace {

constexpr std::uint64_t kPlainSmtpPort = 25;
constexpr std::uint64_t kSmtpOverSslPort = 465;
constexpr std::uint64_t kSubmissionPort = 587;

// Where the key of the password is kept; found by hand in a settings file, it should not catch the
// eye.
constexpr std::string_view kPasswordKeySetting = "registrationdata";
constexpr std::uint64_t kPasswordKeySize = 32;
constexpr const char* kPasswordCipher = "blowfish";

bool isTrue(const std::optional<Value>& value) { return value && value->boolValue(); }

/// The bytes of a setting; of a text, which somebody must have put there by hand, its own. Nil for
/// a value that has none.
std::optional<Data> bytesOf(const std::optional<Value>& value) {
  if (!value) return std::nullopt;
  if (const Data* data = value->get<Data>()) return *data;
  if (const std::string* text = value->get<std::string>()) return Data(*text);
  return std::nullopt;
}

}  // namespace

std::optional<Value> VTSettings::mailEnabled() const { return setting("mailEnabled"); }

void VTSettings::setMailEnabled(std::optional<Value> enabled) {
  store("mailEnabled", std::move(enabled));
}

std::optional<Value> VTSettings::smtpFromEmailAddress() const {
  return setting("smtpFromEmailAddress");
}

void VTSettings::setSmtpFromEmailAddress(std::optional<Value> address) {
  store("smtpFromEmailAddress", std::move(address));
}

std::optional<Value> VTSettings::smtpServerAddress() const { return setting("smtpServerAddress"); }

void VTSettings::setSmtpServerAddress(std::optional<Value> address) {
  store("smtpServerAddress", std::move(address));
}

std::optional<Value> VTSettings::smtpCustomServerPort() const {
  return setting("smtpCustomServerPort");
}

void VTSettings::setSmtpCustomServerPort(std::optional<Value> port) {
  store("smtpCustomServerPort", std::move(port));
}

Value VTSettings::smtpDefaultServerPort() const {
  return setting("smtpDefaultServerPort").value_or(true);
}

void VTSettings::setSmtpDefaultServerPort(std::optional<Value> useDefault) {
  store("smtpDefaultServerPort", std::move(useDefault));
}

std::optional<Value> VTSettings::smtpUseSSL() const { return setting("smtpUseSSL"); }

void VTSettings::setSmtpUseSSL(std::optional<Value> use) { store("smtpUseSSL", std::move(use)); }

std::optional<Value> VTSettings::smtpServerUsername() const {
  return setting("smtpServerUsername");
}

void VTSettings::setSmtpServerUsername(std::optional<Value> username) {
  store("smtpServerUsername", std::move(username));
}

std::optional<std::string> VTSettings::smtpServerPassword() const {
  std::optional<Data> key = bytesOf(setting(kPasswordKeySetting));
  std::optional<Data> cipherText = bytesOf(setting("smtpServerPassword"));
  if (!key || !cipherText) return std::nullopt;
  const auto crypto = SSCrypto::initWithSymmetricKey(std::move(key));
  crypto->setCipherText(std::move(cipherText));
  return crypto->decrypt(kPasswordCipher) ? crypto->clearTextAsString() : std::nullopt;
}

void VTSettings::setSmtpServerPassword(const std::optional<std::string>& password) {
  std::optional<Value> cipherText;
  if (password) {
    std::optional<Data> key = bytesOf(setting(kPasswordKeySetting));
    if (!key) {
      key = SSCrypto::getKeyDataWithLength(kPasswordKeySize);
      if (key) setValueForUndefinedKey(Value(*key), kPasswordKeySetting);
    }
    const auto crypto = SSCrypto::initWithSymmetricKey(std::move(key));
    crypto->setClearTextWithString(password);
    if (std::optional<Data> text = crypto->encrypt(kPasswordCipher)) {
      cipherText = Value(*std::move(text));
    }
  }
  store("smtpServerPassword", std::move(cipherText));
}

std::optional<Value> VTSettings::smtpServerAuthenticationMode() const {
  return setting("smtpServerAuthenticationMode");
}

void VTSettings::setSmtpServerAuthenticationMode(std::optional<Value> mode) {
  store("smtpServerAuthenticationMode", std::move(mode));
}

std::uint64_t VTSettings::smtpServerPort() const {
  if (smtpDefaultServerPort().boolValue()) {
    if (!isTrue(smtpUseSSL())) return kPlainSmtpPort;
    const std::int64_t mode = smtpServerAuthenticationMode().value_or(0).integerValue();
    return mode != 0 ? kSubmissionPort : kSmtpOverSslPort;
  }
  return smtpCustomServerPort().value_or(0).unsignedIntegerValue();
}

bool VTSettings::mailingConfiguredAndEnabled() const {
  return isTrue(mailEnabled()) && smtpServerAddress() && smtpServerPort() != 0 &&
         smtpFromEmailAddress();
}

}  // namespace vt
