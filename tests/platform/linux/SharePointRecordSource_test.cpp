#include "platform/linux/SharePointRecordSource.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <utility>

#include "directory/DirectoryFunctions.h"
#include "foundation/Array.h"
#include "foundation/Dictionary.h"
#include "platform/DirectoryConstants.h"
#include "platform/Platform.h"
#include "platform/linux/LinuxPlatform.h"
#include "platform/linux/LinuxTasks.h"
#include "platform/memory/MemoryTasks.h"
#include "support/ReadFile.h"
#include "support/TemporaryFolder.h"

namespace vt {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// A machine under a root prefix. Samba's own testparm reads its configuration.
class SharePointRecordSourceTest : public testing::Test {
 protected:
  SharePointRecordSourceTest() {
    for (const char* folder : {"etc/samba", "etc/netatalk", "srv"}) {
      std::filesystem::create_directories(root_.path() / folder);
    }
    writeFile(root_ / "etc/passwd", "root:x:0:0:System:/root:/bin/sh\n");
  }

  void writeSamba(const std::string& text) const { writeFile(root_ / "etc/samba/smb.conf", text); }
  void writeNetatalk(const std::string& text) const {
    writeFile(root_ / "etc/netatalk/afp.conf", text);
  }

  SharePointRecordSource source() const {
    return {std::make_shared<LinuxTasks>(), root_.path().string()};
  }
  SharePointRecordSource::Listing listing() const { return source().listing(); }

  /// Each record as "path smb-name/afp-name", "-" for a name that is not there.
  std::vector<std::string> points() const {
    std::vector<std::string> lines;
    for (const DirectoryRecord& record : listing().records) {
      const auto value = [&](std::string_view type) {
        for (const DirectoryAttribute& attribute : record.attributes) {
          if (attribute.type == type) return attribute.values.at(0);
        }
        return std::string("-");
      };
      lines.push_back(value(kDSNativeAttrDirectoryPath) + " " + value(kDSNativeAttrSMBName) + "/" +
                      value(kDSNativeAttrAFPName));
    }
    return lines;
  }

  /// What the library gets, through the directory calls of the installed platform.
  std::shared_ptr<Array> recordList() const {
    Environment environment;
    environment.rootPrefix = root_.path();
    environment.resourceFolder = VT_RESOURCES;
    const PlatformScope installed(linuxPlatform(environment));
    DirectoryServices& services = Platform::current().directoryServices();
    EXPECT_EQ(services.dsOpenDirService(&gDirRef), kDSNoErr);
    DirNodeReference node = 0;
    EXPECT_EQ(MyOpenDirNode(&node), kDSNoErr);
    std::shared_ptr<Array> records = GetRecordList(node);
    services.dsCloseDirNode(node);
    services.dsCloseDirService(std::exchange(gDirRef, 0));
    return records;
  }

  TemporaryFolder root_;
};

TEST_F(SharePointRecordSourceTest, GivesTheLibraryOneRecordPerSharedFolder) {
  writeSamba("[Docs]\n path = /srv/docs/\n[Pictures]\n path = /srv/pictures\n");
  writeNetatalk("[Global]\n\n[Documents]\n  path = /srv//docs\n[Music]\n  path = /srv/music\n");
  const auto records = recordList();
  ASSERT_EQ(records->size(), 3U);
  EXPECT_EQ(*records->at(0).dictionary(),
            *Dictionary::make({{"dsAttrTypeStandard:RecordName", "Docs"},
                               {"dsAttrTypeNative:directory_path", "/srv/docs"},
                               {"dsAttrTypeNative:afp_name", "Documents"},
                               {"dsAttrTypeNative:smb_name", "Docs"},
                               {"dsAttrTypeNative:afp_shared", "1"},
                               {"dsAttrTypeNative:smb_shared", "1"}}));
  EXPECT_EQ(*records->at(1).dictionary(),
            *Dictionary::make({{"dsAttrTypeStandard:RecordName", "Pictures"},
                               {"dsAttrTypeNative:directory_path", "/srv/pictures"},
                               {"dsAttrTypeNative:smb_name", "Pictures"},
                               {"dsAttrTypeNative:afp_shared", "0"},
                               {"dsAttrTypeNative:smb_shared", "1"}}));
  EXPECT_EQ(*records->at(2).dictionary(),
            *Dictionary::make({{"dsAttrTypeStandard:RecordName", "Music"},
                               {"dsAttrTypeNative:directory_path", "/srv/music"},
                               {"dsAttrTypeNative:afp_name", "Music"},
                               {"dsAttrTypeNative:afp_shared", "1"},
                               {"dsAttrTypeNative:smb_shared", "0"}}));
}

}  // namespace
}  // namespace vt
