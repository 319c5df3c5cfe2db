// Server configuration: typed access to global settings.

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
    {"smtpServerPassword", RestartFlag::kRaisedAfterStoring},
    {"smtpServerAuthenticationMode", RestartFlag::kRaisedAfterStoring},
};

RestartFlag restartFlagOf(std::string_view name) {
  for (const ServerSetting& setting : kServerSettings) {
    if (setting.name == name) return setting.restart;
  }
  return RestartFlag::kUntouched;
}

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
  if (sslEnabled().value_or(false).boolValue()) return "https://" + serverName().value_or("(null)");
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

}  // namespace vt
