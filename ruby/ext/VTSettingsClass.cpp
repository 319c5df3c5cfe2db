#include "Classes.h"
#include "Message.h"
#include "directory/VTUser.h"
#include "scopes/VTSearchFolder.h"
#include "settings/VTSettings.h"

namespace vt::ruby {

void defineVTSettings(VALUE module) {
  using S = VTSettings;
  static constexpr Message kMessages[] = {
      initialiser<&S::sharedInstance>("init"),
      classMessage<&S::sharedInstance>("sharedInstance"),
      classMessage<&S::settingsStoragePath>("settingsStoragePath"),
      message<&S::reloadConfig>("reloadConfig"),
      message<&S::saveStorage>("saveStorage"),
      message<&S::globalSettings>("globalSettings"),
      message<&S::valueForUndefinedKey>("valueForUndefinedKey:"),
      message<&S::setValueForUndefinedKey>("setValue:forUndefinedKey:"),
      message<&S::startupUserId>("startupUserId"),
      message<&S::setStartupUserId>("setStartupUserId:"),
      message<&S::storageForUser>("storageForUser:"),
      message<&S::setStorage>("setStorage:forUser:"),
      message<&S::searchFolders>("searchFolders"),
      message<&S::setSearchFolders>("setSearchFolders:"),
      message<&S::searchFolderForTitle>("searchFolderForTitle:"),
      message<&S::sharepoints>("sharepoints"),
      message<&S::defaultUser>("defaultUser"),
      message<&S::logFile>("logFile"),
      message<&S::cacheDirectory>("cacheDirectory"),
      message<&S::thumbnailCacheDirectory>("thumbnailCacheDirectory"),
      message<&S::saveSettingsOnChanges>("saveSettingsOnChanges"),
      message<&S::setSaveSettingsOnChanges>("setSaveSettingsOnChanges:"),
      message<&S::serverRestartNecessary>("serverRestartNecessary"),
      message<&S::setServerRestartNecessary>("setServerRestartNecessary:"),

      message<&S::serverName>("serverName"),
      message<&S::setServerName>("setServerName:"),
      message<&S::serverPort>("serverPort"),
      message<&S::setServerPort>("setServerPort:"),
      message<&S::internalServerURL>("internalServerURL"),
      message<&S::serverURL>("serverURL"),
      message<&S::userAuthenticationDisabled>("userAuthenticationDisabled"),
      message<&S::setUserAuthenticationDisabled>("setUserAuthenticationDisabled:"),
      message<&S::sslEnabled>("sslEnabled"),
      message<&S::setSslEnabled>("setSslEnabled:"),
      message<&S::useSSLTestCertificate>("useSSLTestCertificate"),
      message<&S::setUseSSLTestCertificate>("setUseSSLTestCertificate:"),
      message<&S::sslCertificatePath>("sslCertificatePath"),
      message<&S::setSslCertificatePath>("setSslCertificatePath:"),
      message<&S::mailEnabled>("mailEnabled"),
      message<&S::setMailEnabled>("setMailEnabled:"),
      message<&S::smtpFromEmailAddress>("smtpFromEmailAddress"),
      message<&S::setSmtpFromEmailAddress>("setSmtpFromEmailAddress:"),
      message<&S::smtpServerAddress>("smtpServerAddress"),
      message<&S::setSmtpServerAddress>("setSmtpServerAddress:"),
      message<&S::smtpCustomServerPort>("smtpCustomServerPort"),
      message<&S::setSmtpCustomServerPort>("setSmtpCustomServerPort:"),
      message<&S::smtpDefaultServerPort>("smtpDefaultServerPort"),
      message<&S::setSmtpDefaultServerPort>("setSmtpDefaultServerPort:"),
      message<&S::smtpUseSSL>("smtpUseSSL"),
      message<&S::setSmtpUseSSL>("setSmtpUseSSL:"),
      message<&S::smtpServerUsername>("smtpServerUsername"),
      message<&S::setSmtpServerUsername>("setSmtpServerUsername:"),
      message<&S::smtpServerPassword>("smtpServerPassword"),
      message<&S::setSmtpServerPassword>("setSmtpServerPassword:"),
      message<&S::smtpServerAuthenticationMode>("smtpServerAuthenticationMode"),
      message<&S::setSmtpServerAuthenticationMode>("setSmtpServerAuthenticationMode:"),
      message<&S::smtpServerPort>("smtpServerPort"),
      message<&S::mailingConfiguredAndEnabled>("mailingConfiguredAndEnabled"),

      message<&S::finishStartupOfServer>("finishStartupOfServer"),
      message<&S::loadAttributeNames>("loadAttributeNames"),
      message<&S::displayNameForAttributeKey>("displayNameForAttributeKey:"),
      message<&S::attributesForShortName, Trait::kReadOnly>("attributesForShortName:"),
      message<&S::isUpAndRunning>("isUpAndRunning"),
      message<&S::startTime>("startTime"),
      message<&S::totalSearches>("totalSearches"),
      message<&S::currentParallelUsers>("currentParallelUsers"),
      message<&S::searchCount>("searchCount"),
      message<&S::setSearchCount>("setSearchCount:"),
      message<&S::parallelUserCount>("parallelUserCount"),
      message<&S::setParallelUserCount>("setParallelUserCount:"),
  };
  defineClass<S>(module, "VTSettings", classNamed(module, "VTObject"), kMessages);
}

}  // namespace vt::ruby
