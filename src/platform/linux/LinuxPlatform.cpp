#include "platform/linux/LinuxPlatform.h"

#include "platform/linux/AccountRecords.h"
#include "platform/linux/AttributeTables.h"
#include "platform/linux/ContentTypeTable.h"
#include "platform/linux/FolderIndexSource.h"
#include "platform/linux/FolderResources.h"
#include "platform/linux/IndexedMetadataIndex.h"
#include "platform/linux/LinuxBundles.h"
#include "platform/linux/LinuxContentTypeTags.h"
#include "platform/linux/LinuxDirectoryServices.h"
#include "platform/linux/LinuxHost.h"
#include "platform/linux/LinuxIdentity.h"
#include "platform/linux/LinuxProcess.h"
#include "platform/linux/LinuxRuntimeBundles.h"
#include "platform/linux/LinuxTasks.h"
#include "platform/linux/LiveMetadataIndex.h"
#include "platform/linux/PosixFiles.h"
#include "platform/linux/SharePointRecordSource.h"
#include "platform/linux/images/LinuxImages.h"

namespace vt {
namespace {

LiveMetadataIndex::CredentialsProvider credentialsFrom(std::shared_ptr<const Accounts> accounts) {
  return [accounts = std::move(accounts)](std::uint32_t uid) -> std::optional<Credentials> {
    const std::optional<Account> account = accounts->accountWithId(uid);
    if (!account) return std::nullopt;
    return Credentials(account->uid, account->gid, accounts->groupsOf(*account));
  };
}

std::shared_ptr<MetadataIndex> metadataIndex(std::shared_ptr<const ContentTypes> types,
                                             std::shared_ptr<const query::AttributeSchema> schema,
                                             std::shared_ptr<Identity> identity,
                                             std::shared_ptr<const Accounts> accounts,
                                             const std::string& folder) {
  if (!types || !schema) return nullptr;
  auto live = std::make_shared<LiveMetadataIndex>(types, std::move(schema), identity,
                                                  credentialsFrom(std::move(accounts)));
  return std::make_shared<IndexedMetadataIndex>(
      std::move(live), std::move(identity),
      std::make_shared<FolderIndexSource>(folder, std::move(types)));
}

}  // namespace

Platform::Services linuxServices(const Environment& environment) {
  const std::string& root = environment.rootPrefix;
  const std::shared_ptr<const Accounts> accounts = accountsUnder(root);
  const auto tasks = std::make_shared<LinuxTasks>();
  const auto records = std::make_shared<const AccountRecords>(
      accounts, passwordsUnder(root), std::make_shared<const SharePointRecordSource>(tasks, root));
  const auto identity = std::make_shared<LinuxIdentity>(accounts);
  const auto resources = std::make_shared<FolderResources>(environment.resourceFolder);
  const std::shared_ptr<const ContentTypes> types = contentTypesIn(*resources);
  const auto attributes = attributesIn(*resources, environment.languages);
  std::vector<ShippedStrings> strings;
  if (attributes) strings.push_back(shortNameTable(*attributes));
  return {
      .files = std::make_shared<PosixFiles>(accounts),
      .identity = identity,
      .directoryServices = std::make_shared<LinuxDirectoryServices>(records),
      .runtimeBundles = std::make_shared<LinuxRuntimeBundles>(records),
      .metadataIndex =
          metadataIndex(types, attributes, identity, accounts, environment.indexFolder),
      .resources = resources,
      .host = std::make_shared<LinuxHost>(root),
      .process = std::make_shared<LinuxProcess>(),
      .bundles = std::make_shared<LinuxBundles>(root, environment.languages, std::move(strings)),
      .serviceDiscovery = nullptr,
      .contentTypeTags = std::make_shared<LinuxContentTypeTags>(types),
      .tasks = tasks,
      .images = std::make_shared<LinuxImages>(
          LinuxImages::Setup{.iconFolder = environment.resourceFolder + "/icons", .types = types}),
      .rootPrefix = root,
  };
}

std::shared_ptr<Platform> linuxPlatform(const Environment& environment) {
  return std::make_shared<Platform>(linuxServices(environment));
}

}  // namespace vt
