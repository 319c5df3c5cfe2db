#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Platform.h"
#include "platform/memory/FaultyFiles.h"
#include "platform/memory/MemoryBundles.h"
#include "platform/memory/MemoryDirectoryServices.h"
#include "platform/memory/MemoryHost.h"
#include "platform/memory/MemoryIdentity.h"
#include "platform/memory/MemoryMetadataIndex.h"
#include "platform/memory/MemoryProcess.h"
#include "platform/memory/MemoryRecords.h"
#include "platform/memory/MemoryResources.h"
#include "platform/memory/MemoryServiceDiscovery.h"
#include "support/ReadFile.h"
#include "support/TemporaryFolder.h"

namespace vt {

/// A platform of its own while it lives: real files under a temporary root prefix, everything else
/// in memory. "/Library/Application Support" and "/Library/Caches" are there, and nothing else.
class TestWorld {
 public:
  TestWorld() {
    for (const char* folder : {"Library/Application Support", "Library/Caches"}) {
      std::filesystem::create_directories(root_.path() / folder);
    }
    restart();
  }

  /// What a new process would find: the same files, and no state in memory.
  void restart() {
    scope_.reset();
    Platform::Services services;
    services.files = files_;
    services.process = process_;
    services.resources = resources_;
    services.host = host_;
    services.identity = identity_;
    services.metadataIndex = metadataIndex_;
    services.bundles = bundles_;
    services.serviceDiscovery = serviceDiscovery_;
    services.directoryServices = directory_;
    services.rootPrefix = root_.path();
    scope_.emplace(std::make_shared<Platform>(std::move(services)));
  }

  /// Gives the host other names, to a new process.
  void setHostNames(std::vector<std::string> names) {
    host_ = std::make_shared<MemoryHost>(std::move(names));
    restart();
  }

  const std::filesystem::path& root() const { return root_.path(); }
  std::string settingsFile() const {
    return root_ / "Library/Application Support/Vistaro/Settings.plist";
  }
  /// Puts `bytes` in the place of the settings file, its folder made.
  void writeSettingsFile(const std::string& bytes) const {
    std::filesystem::create_directories(std::filesystem::path(settingsFile()).parent_path());
    writeFile(settingsFile(), bytes);
  }

  FaultyFiles& files() { return *files_; }
  MemoryProcess& process() { return *process_; }
  MemoryResources& resources() { return *resources_; }
  MemoryIdentity& identity() { return *identity_; }
  MemoryMetadataIndex& metadataIndex() { return *metadataIndex_; }
  MemoryBundles& bundles() { return *bundles_; }
  MemoryServiceDiscovery& serviceDiscovery() { return *serviceDiscovery_; }
  MemoryDirectoryServices& directory() { return *directory_; }

  /// Shares the folder at `path`, over AFP and SMB by its name in each unless that is nullptr. Seen
  /// by the next load of the settings.
  void share(const std::string& path, const char* afpName, const char* smbName) {
    DirectoryRecord record{
        kDSStdRecordTypeSharePoints,
        path,
        {{kDSNAttrRecordName, {"share of " + path}}, {kDSNativeAttrDirectoryPath, {path}}}};
    if (afpName) {
      record.attributes.push_back({kDSNativeAttrAFPName, {afpName}});
      record.attributes.push_back({kDSNativeAttrAFPShared, {"1"}});
    }
    if (smbName) {
      record.attributes.push_back({kDSNativeAttrSMBName, {smbName}});
      record.attributes.push_back({kDSNativeAttrSMBShared, {"1"}});
    }
    share(std::move(record));
  }
  void share(DirectoryRecord record) { records_->add(std::move(record)); }

 private:
  TemporaryFolder root_;
  std::shared_ptr<FaultyFiles> files_ = std::make_shared<FaultyFiles>();
  std::shared_ptr<MemoryProcess> process_ = std::make_shared<MemoryProcess>();
  std::shared_ptr<MemoryResources> resources_ = std::make_shared<MemoryResources>();
  std::shared_ptr<MemoryHost> host_ =
      std::make_shared<MemoryHost>(std::vector<std::string>{"files.example.org"});
  std::shared_ptr<MemoryIdentity> identity_ = std::make_shared<MemoryIdentity>();
  std::shared_ptr<MemoryMetadataIndex> metadataIndex_ = std::make_shared<MemoryMetadataIndex>();
  std::shared_ptr<MemoryBundles> bundles_ = std::make_shared<MemoryBundles>();
  std::shared_ptr<MemoryServiceDiscovery> serviceDiscovery_ =
      std::make_shared<MemoryServiceDiscovery>();
  std::shared_ptr<MemoryRecords> records_ = std::make_shared<MemoryRecords>();
  std::shared_ptr<MemoryDirectoryServices> directory_ =
      std::make_shared<MemoryDirectoryServices>(records_);
  std::optional<PlatformScope> scope_;
};

}  // namespace vt
