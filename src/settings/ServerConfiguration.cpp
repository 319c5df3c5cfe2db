// Server and mail configuration: typed access to global settings.

#include <fmt/format.h>
#include <strings.h>

#include <utility>

#include "platform/Host.h"
#include "platform/Platform.h"
#include "settings/VTSettings.h"
#include "settings/ValueText.h"

namespace vt {
namespace {

constexpr std::uint64_t kDefaultServerPort = 9000;
constexpr std::uint64_t kPlainSmtpPort = 25;
constexpr std::uint64_t kSmtpOverSslPort = 465;
constexpr std::uint64_t kSubmissionPort = 587;

/// When a setter says that the server must be started again: a save clears the flag, so before
/// storing means for as long as nothing is saved, and after storing means until the next save.
enum class RestartFlag { kUntouched, kRaisedBeforeStoring, kRaisedAfterStoring };

struct ServerSetting {
  std::string_view name;
  RestartFlag restart;
};

constexpr ServerSetting kServerSettings[] = {
    {"serverName", RestartFlag::kRaisedAfterStoring},
    {"serverPort", RestartFlag::kRaisedBeforeStoring},
    {"userAuthenticationDisabled", RestartFlag::kUntouched},
    {"sslEnabled", RestartFlag::kRaisedBeforeStoring},
    {"useSSLTestCertificate", RestartFlag::kUntouched},
    {"sslCertificatePath", RestartFlag::kUntouched},
    {"mailEnabled", RestartFlag::kRaisedAfterStoring},
    {"smtpFromEmailAddress", RestartFlag::kRaisedAfterStoring},
    {"smtpServerAddress", RestartFlag::kRaisedAfterStoring},
    {"smtpCustomServerPort", RestartFlag::kRaisedAfterStoring},
    {"smtpDefaultServerPort", RestartFlag::kRaisedAfterStoring},
    {"smtpUseSSL", RestartFlag::kRaisedAfterStoring},
    {"smtpServerUsername", RestartFlag::kRaisedAfterStoring},
    {"smtpServerAuthenticationMode", RestartFlag::kRaisedAfterStoring},
};

RestartFlag restartFlagOf(std::string_view name) {
  for (const ServerSetting& setting : kServerSettings) {
    if (setting.name == name) return setting.restart;
  }
  return RestartFlag::kUntouched;
}

bool isTrue(const std::optional<Value>& value) { return value && value->boolValue(); }

}  // namespace

std::optional<Value> VTSettings::setting(std::string_view name) const {
  return valueForUndefinedKey(name);
}

void VTSettings::store(std::string_view name, std::optional<Value> value) {
  const RestartFlag restart = restartFlagOf(name);
  if (restart == RestartFlag::kRaisedBeforeStoring) serverRestartNecessary_ = true;
  setValueForUndefinedKey(std::move(value), name);
  if (restart == RestartFlag::kRaisedAfterStoring) serverRestartNecessary_ = true;
}

std::optional<std::string> VTSettings::serverName() const {
  if (std::optional<std::string> name = textOf(setting("serverName"))) return name;
  const Host& host = Platform::current().host();
  std::optional<std::string> name = host.name();
  if (!name || ::strcasecmp(name->c_str(), "localhost") != 0) return name;
  const std::vector<std::string> names = host.names();
  return names.size() >= 2 ? names[1] : name;
}

void VTSettings::setServerName(std::optional<std::string> name) {
  store("serverName",
        name && !name->empty() ? std::optional<Value>(*std::move(name)) : std::nullopt);
}

Value VTSettings::serverPort() const { return setting("serverPort").value_or(kDefaultServerPort); }

void VTSettings::setServerPort(std::optional<Value> port) { store("serverPort", std::move(port)); }

std::string VTSettings::internalServerURL() const {
  return fmt::format("http://{}:{}", serverName().value_or("(null)"),
                     textOf(serverPort()).value_or(""));
}

std::string VTSettings::serverURL() const {
  // Without the port: with SSL the standard one is meant.
  if (isTrue(sslEnabled())) return "https://" + serverName().value_or("(null)");
  return internalServerURL();
}

std::optional<Value> VTSettings::userAuthenticationDisabled() const {
  return setting("userAuthenticationDisabled");
}

void VTSettings::setUserAuthenticationDisabled(std::optional<Value> disabled) {
  store("userAuthenticationDisabled", std::move(disabled));
}

std::optional<Value> VTSettings::sslEnabled() const { return setting("sslEnabled"); }

void VTSettings::setSslEnabled(std::optional<Value> enabled) {
  store("sslEnabled", std::move(enabled));
}

std::optional<Value> VTSettings::useSSLTestCertificate() const {
  return setting("useSSLTestCertificate");
}

void VTSettings::setUseSSLTestCertificate(std::optional<Value> use) {
  store("useSSLTestCertificate", std::move(use));
}

std::optional<Value> VTSettings::sslCertificatePath() const {
  return setting("sslCertificatePath");
}

void VTSettings::setSslCertificatePath(std::optional<Value> path) {
  store("sslCertificatePath", std::move(path));
}

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
