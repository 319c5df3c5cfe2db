// What happens once, when the server is ready to serve, and what is known of it from then on.

#include <fmt/format.h>

#include "foundation/NSLog.h"
#include "platform/Bundles.h"
#include "platform/Files.h"
#include "platform/Platform.h"
#include "platform/Process.h"
#include "platform/ServiceDiscovery.h"
#include "platform/SystemPaths.h"
#include "settings/LetterCase.h"
#include "settings/VTSettings.h"
#include "settings/ValueText.h"

namespace vt {
namespace {

constexpr std::string_view kServiceDomain;  // the default domains
constexpr std::string_view kServiceType = "_http._tcp.";
constexpr std::string_view kLocalDomain = "local";

void logVersion() {
  const std::shared_ptr<Dictionary> information =
      Platform::current().bundles().infoDictionary(std::string(kPreferencePaneBundle));
  if (!information) {
    NSLog("Preference pane not installed in /Library");
    return;
  }
  NSLog("Vistaro Version %@ (Build %@)", textOf(information->get("CFBundleShortVersionString")),
        textOf(information->get("CFBundleVersion")));
}

// The host name as people see it: "studio.local" is "Studio".
std::string shownHostName(std::string name) {
  const std::size_t dot = name.rfind('.');
  if (dot != std::string::npos && name.substr(dot + 1) == kLocalDomain) name.resize(dot);
  return withFirstCharacterInUpperCase(name);
}

void writeProcessIdFile() {
  Platform& platform = Platform::current();
  // The server runs without it as well; only `vistaro status` then does not find it.
  [[maybe_unused]] const std::optional<FileError> ignored =
      platform.files().writeAtomically(platform.systemPath(kProcessIdFile),
                                       fmt::format("{}", platform.process().processIdentifier()));
}

}  // namespace

void VTSettings::loadAttributeNames() { attributeNames_ = AttributeNames::load(startupUserId()); }

bool VTSettings::finishStartupOfServer() {
  logVersion();
  loadAttributeNames();
  upAndRunning_ = true;
  startTime_ = Platform::current().process().now();

  const std::optional<std::string> name = serverName();
  if (!name) {
    NSLog("Invalid hostname");
    return false;
  }
  const std::optional<Value> ssl = sslEnabled();
  const std::string serviceName =
      fmt::format("{} Vistaro{}", shownHostName(*name), ssl && ssl->boolValue() ? " (SSL)" : "");
  std::shared_ptr<NetService> service = Platform::current().serviceDiscovery().serviceWithDomain(
      std::string(kServiceDomain), std::string(kServiceType), serviceName,
      static_cast<std::int32_t>(serverPort().unsignedIntegerValue()));
  if (!service) return false;
  bonjourServices_.push_back(service);
  service->publish();
  writeProcessIdFile();
  return true;
}

std::optional<std::string> VTSettings::displayNameForAttributeKey(const std::string& key) const {
  return attributeNames_.displayNameFor(key);
}

std::shared_ptr<Array> VTSettings::attributesForShortName(const std::string& shortName) const {
  return attributeNames_.attributesFor(shortName);
}

}  // namespace vt
