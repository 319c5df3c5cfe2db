#include "platform/linux/SharePointRecordSource.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <optional>
#include <utility>

#include "platform/DirectoryBuffer.h"
#include "platform/DirectoryConstants.h"
#include "platform/Tasks.h"
#include "platform/linux/NetatalkConfiguration.h"
#include "platform/linux/PosixFiles.h"
#include "platform/linux/SambaConfiguration.h"
#include "platform/linux/UsershareFiles.h"

namespace vt {
namespace {

// The library lists share points through buffers of this many bytes.
constexpr std::size_t kLargestRecord = 2048;
// Where Samba keeps users' shares unless it is told otherwise.
constexpr std::string_view kDefaultUsershareFolder = "/var/lib/samba/usershares";

/// A shared folder with the name that each service has for it.
struct SharePoint {
  std::string path;
  std::optional<std::string> smbName;
  std::optional<std::string> afpName;
};

SharedFolders sambaShares(Tasks& tasks, const std::string& rootPrefix) {
  const std::string file = rootPrefix + "/etc/samba/smb.conf";
  if (!PosixFiles().exists(file)) return {};
  auto read = readSambaConfiguration(tasks, file);
  if (!read) return {{}, {fmt::format("Samba's shares are left out: {}", read.error().text)}};
  SambaConfiguration configuration = std::move(read).value();
  std::string& folder = configuration.usershareFolder;
  if (!folder.empty() && configuration.usershareLimit > 0) {
    const std::string prefix = folder == kDefaultUsershareFolder ? rootPrefix : "";
    configuration.shares.append(readUsershareFiles(prefix + folder, configuration));
  }
  return std::move(configuration.shares);
}

SharedFolders netatalkVolumes(const std::string& rootPrefix) {
  const std::string file = rootPrefix + "/etc/netatalk/afp.conf";
  if (!PosixFiles().exists(file)) return {};
  auto volumes = readNetatalkVolumes(file);
  if (!volumes) return {{}, {fmt::format("AFP volumes are left out: {}", volumes.error().text)}};
  return std::move(volumes).value();
}

std::vector<SharePoint> joined(std::vector<SharedFolder> samba,
                               std::vector<SharedFolder> netatalk) {
  std::vector<SharePoint> points;
  std::map<std::string, std::size_t> firstWithPath;
  for (SharedFolder& share : samba) {
    firstWithPath.emplace(share.path, points.size());
    points.push_back({std::move(share.path), std::move(share.name), std::nullopt});
  }
  for (SharedFolder& volume : netatalk) {
    const auto [found, isNew] = firstWithPath.emplace(volume.path, points.size());
    if (!isNew && !points[found->second].afpName) {
      points[found->second].afpName = std::move(volume.name);
    } else {
      points.push_back({std::move(volume.path), std::nullopt, std::move(volume.name)});
    }
  }
  return points;
}

DirectoryRecord recordOf(const SharePoint& point) {
  const std::string& name = point.smbName ? *point.smbName : *point.afpName;
  DirectoryRecord record{kDSStdRecordTypeSharePoints, name, {}};
  const auto add = [&](const char* type, std::string value) {
    record.attributes.push_back({type, {std::move(value)}});
  };
  add(kDSNAttrRecordName, name);
  add(kDSNativeAttrDirectoryPath, point.path);
  if (point.afpName) add(kDSNativeAttrAFPName, *point.afpName);
  if (point.smbName) add(kDSNativeAttrSMBName, *point.smbName);
  add(kDSNativeAttrAFPShared, point.afpName ? "1" : "0");
  add(kDSNativeAttrSMBShared, point.smbName ? "1" : "0");
  return record;
}

}  // namespace

SharePointRecordSource::SharePointRecordSource(std::shared_ptr<Tasks> tasks, std::string rootPrefix)
    : tasks_(std::move(tasks)), rootPrefix_(std::move(rootPrefix)) {}

SharePointRecordSource::Listing SharePointRecordSource::listing() const {
  SharedFolders samba = sambaShares(*tasks_, rootPrefix_);
  SharedFolders netatalk = netatalkVolumes(rootPrefix_);
  Listing listing;
  for (const SharePoint& point : joined(std::move(samba.folders), std::move(netatalk.folders))) {
    DirectoryRecord record = recordOf(point);
    if (encodedSize(record) <= kLargestRecord) {
      listing.records.push_back(std::move(record));
    } else {
      listing.notes.push_back(
          fmt::format("the share \"{}\" is left out: its names and path need more than {} bytes",
                      record.name, kLargestRecord));
    }
  }
  for (SharedFolders* service : {&samba, &netatalk}) {
    std::ranges::move(service->notes, std::back_inserter(listing.notes));
  }
  return listing;
}

std::vector<DirectoryRecord> SharePointRecordSource::records(
    std::string_view type, std::optional<std::string_view> name) const {
  if (type != kDSStdRecordTypeSharePoints) return {};
  std::vector<DirectoryRecord> records = listing().records;
  if (name) std::erase_if(records, [&](const auto& record) { return record.name != *name; });
  return records;
}

}  // namespace vt
