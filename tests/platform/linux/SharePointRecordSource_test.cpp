#include "platform/linux/SharePointRecordSource.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <utility>

#include "directory/DirectoryFunctions.h"
#include "foundation/Array.h"
#include "foundation/Dictionary.h"
#include "platform/DirectoryBuffer.h"
#include "platform/DirectoryConstants.h"
#include "platform/Platform.h"
#include "platform/linux/LinuxPlatform.h"
#include "platform/linux/LinuxTasks.h"
#include "platform/memory/MemoryTasks.h"
#include "support/Places.h"
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
    environment.resourceFolder = resourceFolder();
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

TEST_F(SharePointRecordSourceTest, ListsSambasSharesFirstEachServiceInItsOrder) {
  writeSamba("[z]\npath = /srv/z\n[b]\npath = /srv/b\n");
  writeNetatalk("[y]\npath = /srv/y\n[b2]\npath = /srv/b\n[a]\npath = /srv/a\n");
  EXPECT_THAT(points(), ElementsAre("/srv/z z/-", "/srv/b b/b2", "/srv/y -/y", "/srv/a -/a"));
}

TEST_F(SharePointRecordSourceTest, GivesASecondNameOfOneServiceARecordOfItsOwn) {
  writeSamba("[one]\npath = /srv/a\n[two]\npath = /srv/a/\n");
  writeNetatalk("[first]\npath = /srv/a\n[second]\npath = /srv/a\n");
  EXPECT_THAT(points(), ElementsAre("/srv/a one/first", "/srv/a two/-", "/srv/a -/second"));
}

TEST_F(SharePointRecordSourceTest, PutsUsersSharesBehindTheConfigurations) {
  if (::geteuid() != 0) GTEST_SKIP() << "Samba takes such a folder only from root";
  writeSamba("[z]\npath = /srv/z\n");
  const std::string folder = root_ / "var/lib/samba/usershares";
  std::filesystem::create_directories(folder);
  ::chmod(folder.c_str(), 01770);
  writeFile(folder + "/mine",
            "#VERSION 2\npath=" + (root_ / "srv") +
                "\ncomment=\nusershare_acl=S-1-1-0:R\nguest_ok=n\nsharename=Mine\n");
  EXPECT_THAT(points(), ElementsAre("/srv/z z/-", (root_ / "srv") + " Mine/-"));
  writeSamba("[global]\nusershare max shares = 0\n[z]\npath = /srv/z\n");
  EXPECT_THAT(points(), ElementsAre("/srv/z z/-"));
}

TEST_F(SharePointRecordSourceTest, ReadsTheConfigurationsAnewEachTime) {
  const SharePointRecordSource records = source();
  EXPECT_THAT(records.listing().records, IsEmpty());
  writeNetatalk("[a]\npath = /srv/a\n");
  EXPECT_EQ(records.listing().records.size(), 1U);
}

TEST_F(SharePointRecordSourceTest, SharesOverTheOtherServiceWhenOneIsBroken) {
  writeSamba("[a\n");
  writeNetatalk("[a]\npath = /srv/a\n");
  EXPECT_THAT(points(), ElementsAre("/srv/a -/a"));
  EXPECT_THAT(listing().notes,
              ElementsAre(HasSubstr("Samba's shares are left out: testparm could")));
  writeSamba("[a]\npath = /srv/a\n");
  writeNetatalk("[a\n");
  EXPECT_THAT(points(), ElementsAre("/srv/a a/-"));
  EXPECT_THAT(listing().notes, ElementsAre(HasSubstr("AFP volumes are left out: ")));
}

TEST_F(SharePointRecordSourceTest, NeitherRunsNorMissesTestparmWithoutAConfigurationOfSambas) {
  const auto tasks = std::make_shared<MemoryTasks>();
  const SharePointRecordSource records(tasks, root_.path());
  EXPECT_THAT(records.listing().notes, IsEmpty());
  EXPECT_THAT(tasks->runs(), IsEmpty());
  writeSamba("");
  EXPECT_THAT(records.listing().notes, ElementsAre(HasSubstr("testparm is not installed")));
}

TEST_F(SharePointRecordSourceTest, AnswersByTypeAndName) {
  writeNetatalk("[a]\npath = /srv/a\n[b]\npath = /srv/b\n[B]\npath = /srv/c\n");
  EXPECT_EQ(source().records(kDSStdRecordTypeSharePoints, "b").size(), 1U);
  EXPECT_THAT(source().records(kDSStdRecordTypeSharePoints, "c"), IsEmpty());
  EXPECT_THAT(source().records(kDSStdRecordTypeUsers, std::nullopt), IsEmpty());
  EXPECT_FALSE(source().verifyPassword("a", "a"));
}

TEST_F(SharePointRecordSourceTest, LeavesOutARecordThatNoBufferHolds) {
  const auto pathOf = [](std::size_t length) {
    std::string path = "/srv/" + std::string(length - 5, 'x');
    for (std::size_t i = 200; i < length; i += 200) path[i] = '/';
    return path;
  };
  writeNetatalk("[a]\npath = " + pathOf(1000) + "\n");
  const std::size_t longest = 1000 + 2048 - encodedSize(listing().records.at(0));
  writeNetatalk("[a]\npath = " + pathOf(longest) + "\n[b]\npath = /srv/b\n");
  EXPECT_EQ(recordList()->size(), 2U);
  writeNetatalk("[a]\npath = " + pathOf(longest + 1) + "\n[b]\npath = /srv/b\n");
  EXPECT_EQ(recordList()->size(), 1U);
  EXPECT_THAT(listing().notes, ElementsAre("the share \"a\" is left out: its names and path need "
                                           "more than 2048 bytes"));
}

TEST_F(SharePointRecordSourceTest, ListsTenThousandShares) {
  std::string samba;
  std::string netatalk;
  for (int i = 0; i < 10000; ++i) {
    const std::string number = std::to_string(i);
    samba += "[s" + number + "]\npath = /srv/" + number + "\n";
    netatalk += "[a" + number + "]\npath = /srv/" + number + "\n";
  }
  writeSamba(samba);
  writeNetatalk(netatalk);
  const auto records = recordList();
  ASSERT_EQ(records->size(), 10000U);
  EXPECT_EQ(records->at(9999).dictionary()->get(kDSNativeAttrAFPName), Value("a9999"));
}

}  // namespace
}  // namespace vt
