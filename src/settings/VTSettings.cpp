#include "settings/VTSettings.h"

#include <algorithm>
#include <utility>

#include "directory/VTUser.h"
#include "foundation/Property.h"
#include "platform/Platform.h"
#include "platform/Process.h"
#include "scopes/VTSearchFolder.h"

namespace vt {

void VTSettings::initialize() {
  struct SeededRandom {
    SeededRandom() { Platform::current().process().seedRandom(); }
  };
  Platform::current().shared<SeededRandom>([] { return std::make_shared<SeededRandom>(); });
}

std::shared_ptr<VTSettings> VTSettings::sharedInstance() {
  initialize();
  return Platform::current().shared<VTSettings>([] {
    std::shared_ptr<VTSettings> settings(new VTSettings);
    settings->setSaveSettingsOnChanges(/*save=*/true);
    settings->reloadConfig();
    return settings;
  });
}

void VTSettings::setSearchFolders(std::shared_ptr<ObjectArray<VTSearchFolder>> folders) {
  if (!folders) folders = ObjectArray<VTSearchFolder>::make();
  std::shared_ptr<Array> stored = VTSearchFolder::serializedDataFromFolderArray(*folders);
  // The old array lives until the end of this call, for a caller that holds one of its elements.
  const auto old = std::exchange(searchFolders_, std::move(folders));
  storage_->set("SearchFolders", std::move(stored));
  if (saveSettingsOnChanges_) saveStorage();
}

std::shared_ptr<VTSearchFolder> VTSettings::searchFolderForTitle(const std::string& title) const {
  const auto found = std::ranges::find_if(
      *searchFolders_, [&](const auto& folder) { return folder->title() == title; });
  return found == searchFolders_->end() ? nullptr : *found;
}

std::string VTSettings::logFile() const {
  return Platform::current().systemPath("/tmp/Vistaro.log");
}

std::string VTSettings::cacheDirectory() const {
  return Platform::current().systemPath("/Library/Caches/Vistaro");
}

std::string VTSettings::thumbnailCacheDirectory() const { return cacheDirectory() + "/Thumbnails"; }

const Property* VTSettings::propertyNamed(std::string_view key) const {
  using Settings = VTSettings;
  static constexpr Property kProperties[] = {
      property<&Settings::startupUserId, &Settings::setStartupUserId>("startupUserId"),
      property<&Settings::searchFolders, &Settings::setSearchFolders>("searchFolders"),
      property<&Settings::saveSettingsOnChanges, &Settings::setSaveSettingsOnChanges>(
          "saveSettingsOnChanges"),
      property<&Settings::serverRestartNecessary, &Settings::setServerRestartNecessary>(
          "serverRestartNecessary"),
      property<&Settings::searchCount, &Settings::setSearchCount>("searchCount"),
      property<&Settings::parallelUserCount, &Settings::setParallelUserCount>("parallelUserCount"),
      property<&Settings::presentGlobalSettings>("globalSettings"),
      property<&Settings::sharepoints>("sharepoints"),
      property<&Settings::defaultUser>("defaultUser"),
      property<&Settings::logFile>("logFile"),
      property<&Settings::cacheDirectory>("cacheDirectory"),
      property<&Settings::thumbnailCacheDirectory>("thumbnailCacheDirectory"),
      property<&Settings::isUpAndRunning>("upAndRunning"),
      property<&Settings::startTime>("startTime"),
      property<&Settings::totalSearches>("totalSearches"),
      property<&Settings::currentParallelUsers>("currentParallelUsers"),

      property<&Settings::serverName, &Settings::setServerName>("serverName"),
      property<&Settings::serverPort, &Settings::setServerPort>("serverPort"),
      property<&Settings::internalServerURL>("internalServerURL"),
      property<&Settings::serverURL>("serverURL"),
      property<&Settings::userAuthenticationDisabled, &Settings::setUserAuthenticationDisabled>(
          "userAuthenticationDisabled"),
      property<&Settings::sslEnabled, &Settings::setSslEnabled>("sslEnabled"),
      property<&Settings::useSSLTestCertificate, &Settings::setUseSSLTestCertificate>(
          "useSSLTestCertificate"),
      property<&Settings::sslCertificatePath, &Settings::setSslCertificatePath>(
          "sslCertificatePath"),
      property<&Settings::mailEnabled, &Settings::setMailEnabled>("mailEnabled"),
      property<&Settings::smtpFromEmailAddress, &Settings::setSmtpFromEmailAddress>(
          "smtpFromEmailAddress"),
      property<&Settings::smtpServerAddress, &Settings::setSmtpServerAddress>("smtpServerAddress"),
      property<&Settings::smtpCustomServerPort, &Settings::setSmtpCustomServerPort>(
          "smtpCustomServerPort"),
      property<&Settings::smtpDefaultServerPort, &Settings::setSmtpDefaultServerPort>(
          "smtpDefaultServerPort"),
      property<&Settings::smtpUseSSL, &Settings::setSmtpUseSSL>("smtpUseSSL"),
      property<&Settings::smtpServerUsername, &Settings::setSmtpServerUsername>(
          "smtpServerUsername"),
      property<&Settings::smtpServerPassword, &Settings::setSmtpServerPassword>(
          "smtpServerPassword"),
      property<&Settings::smtpServerAuthenticationMode, &Settings::setSmtpServerAuthenticationMode>(
          "smtpServerAuthenticationMode"),
      property<&Settings::smtpServerPort>("smtpServerPort"),
      property<&Settings::mailingConfiguredAndEnabled>("mailingConfiguredAndEnabled"),
  };
  return findProperty(kProperties, key);
}

}  // namespace vt
