#include <gtest/gtest.h>

#include "scopes/ShortestAddress.h"
#include "scopes/VTConcreteSearchFolder.h"
#include "scopes/VTSearchFolderGroup.h"
#include "settings/VTSettings.h"
#include "support/TestWorld.h"

namespace vt {
namespace {

/// The server "srv", which shares /Volumes/Data as "Data".
class NetworkAddresses : public testing::Test {
 protected:
  NetworkAddresses() {
    world_.share("/Volumes/Data", "Data", "Data");
    settings().setServerName("srv");
  }

  static VTSettings& settings() { return *VTSettings::sharedInstance(); }
  static std::shared_ptr<VTConcreteSearchFolder> folder(std::optional<std::string> path) {
    return VTConcreteSearchFolder::initWithPath(std::move(path), "Folder");
  }
  static std::shared_ptr<VTConcreteSearchFolder> typed(const std::string& path,
                                                       const std::string& title,
                                                       const std::string& address) {
    auto made = VTConcreteSearchFolder::initWithPath(path, title);
    made->setUserDefinedURLPaths(/*userDefined=*/true);
    made->setAfpURLPath("afp://" + address);
    made->setSmbURLPath("smb://" + address);
    return made;
  }

  TestWorld world_;
};

TEST_F(NetworkAddresses, FollowFromTheSharePointThatCoversTheFolder) {
  struct Case {
    const char* what;
    const char* path;
    std::optional<std::string> address;
  };
  const Case cases[] = {
      {"the shared folder", "/Volumes/Data", "srv/Data"},
      {"below", "/Volumes/Data/Projects", "srv/Data/Projects"},
      {"trailing slash", "/Volumes/Data/", "srv/Data/"},
      {"beside, the prefix shared", "/Volumes/Data2/x", "srv/Data2/x"},
      {"nothing is escaped", "/Volumes/Data/a b#c%d'e\xC3\xBC", "srv/Data/a b#c%d'e\xC3\xBC"},
      {"elsewhere", "/Volumes/Other", std::nullopt},
      {"not at the start", "/x/Volumes/Data", std::nullopt},
      {"above", "/Volumes", std::nullopt},
      {"other case", "/volumes/data", std::nullopt},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const auto covered = folder(c.path);
    const bool found = c.address.has_value();
    EXPECT_EQ(covered->afpURLPath(), found ? std::optional("afp://" + *c.address) : std::nullopt);
    EXPECT_EQ(covered->smbURLPath(), found ? std::optional("smb://" + *c.address) : std::nullopt);
    EXPECT_EQ(covered->afpAvailable(), found);
    EXPECT_EQ(covered->smbAvailable(), found);
    EXPECT_EQ(covered->sharePointName(),
              found ? std::optional<std::string>("share of /Volumes/Data") : std::nullopt);
  }
}

TEST_F(NetworkAddresses, AreNilForAFolderWithoutPath) {
  EXPECT_EQ(folder(std::nullopt)->sharePointData(), nullptr);
  EXPECT_EQ(folder(std::nullopt)->afpURLPath(), std::nullopt);
  EXPECT_EQ(folder(std::nullopt)->afpURLforPath("/x"), std::nullopt);
}

TEST_F(NetworkAddresses, ComeFromTheFirstMatchNotTheLongest) {
  world_.share("/Volumes/Data/Inner", "Inner", "Inner");
  settings().reloadConfig();
  EXPECT_EQ(folder("/Volumes/Data/Inner/x")->afpURLPath(), "afp://srv/Data/Inner/x");
}

TEST_F(NetworkAddresses, NeedANameInTheProtocolButNotThatItIsShared) {
  world_.share("/afp", "A", nullptr);
  world_.share({kDSStdRecordTypeSharePoints,
                "off",
                {{kDSNAttrRecordName, {"off"}},
                 {kDSNativeAttrDirectoryPath, {"/off"}},
                 {kDSNativeAttrSMBName, {"Off"}},
                 {kDSNativeAttrSMBShared, {"0"}}}});
  world_.share({kDSStdRecordTypeSharePoints, "lost", {{kDSNativeAttrSMBName, {"Lost"}}}});
  settings().reloadConfig();
  EXPECT_EQ(folder("/afp")->afpURLPath(), "afp://srv/A");
  EXPECT_EQ(folder("/afp")->smbURLPath(), std::nullopt);
  EXPECT_FALSE(folder("/afp")->smbAvailable());
  EXPECT_EQ(folder("/off")->smbURLPath(), "smb://srv/Off");
  EXPECT_FALSE(folder("/off")->smbAvailable());
  EXPECT_EQ(folder("/off")->sharePointName(), "off");
}

TEST_F(NetworkAddresses, SurviveTheServersNameAndTheSharesUntilThePathIsSet) {
  const auto data = folder("/Volumes/Data");
  EXPECT_EQ(data->afpURLPath(), "afp://srv/Data");
  EXPECT_EQ(data->smbURLPath(), "smb://srv/Data");
  settings().setServerName("new");
  settings().reloadConfig();
  EXPECT_EQ(data->afpURLPath(), "afp://srv/Data");
  EXPECT_EQ(data->smbURLPath(), "smb://srv/Data");
  data->setPath("/Volumes/Data");
  EXPECT_EQ(data->afpURLPath(), "afp://new/Data");
  EXPECT_EQ(data->smbURLPath(), "smb://new/Data");
}

TEST_F(NetworkAddresses, AreLookedForAgainWhileThereAreNone) {
  const auto late = folder("/late");
  EXPECT_EQ(late->afpURLPath(), std::nullopt);
  world_.share("/late", "Late", "Late");
  settings().reloadConfig();
  EXPECT_EQ(late->afpURLPath(), "afp://srv/Late");
}

TEST_F(NetworkAddresses, AreThoseTypedWhereTheyAreTyped) {
  const auto data = folder("/Volumes/Data");
  data->setSmbURLPath("");
  EXPECT_EQ(data->smbURLPath(), "smb://srv/Data");
  data->setUserDefinedURLPaths(/*userDefined=*/true);
  EXPECT_EQ(data->smbURLPath(), "");
  EXPECT_FALSE(data->smbAvailable());
  EXPECT_EQ(data->afpURLPath(), std::nullopt);
  EXPECT_FALSE(data->afpAvailable());
  data->setAfpURLPath("afp://typed");
  EXPECT_TRUE(data->afpAvailable());
  EXPECT_EQ(data->afpURLforPath("/Volumes/Data/x"), "afp://typed/x");
}

TEST_F(NetworkAddresses, AreReadByKeyAndNeverWritten) {
  const auto data = folder("/Volumes/Data");
  EXPECT_EQ(data->valueForKey("sharePointName"), Value("share of /Volumes/Data"));
  EXPECT_EQ(data->valueForKey("sharePointData")->dictionary(), data->sharePointData());
  EXPECT_EQ(data->valueForKey("afpAvailable"), Value(true));
  EXPECT_EQ(data->valueForKey("smbAvailable"), Value(true));
  for (const char* key : {"sharePointName", "sharePointData", "afpAvailable", "smbAvailable"}) {
    EXPECT_THROW(data->setValue(true, key), UndefinedKeyError) << key;
  }
}

TEST_F(NetworkAddresses, DependOnThePath) {
  const std::set<std::string> path = {"path"};
  EXPECT_EQ(VTConcreteSearchFolder::keyPathsForValuesAffectingAfpURLPath(), path);
  EXPECT_EQ(VTConcreteSearchFolder::keyPathsForValuesAffectingSmbURLPath(), path);
  EXPECT_EQ(VTConcreteSearchFolder::keyPathsForValuesAffectingSharePointName(), path);
}

TEST_F(NetworkAddresses, OfFilesGoOnWhereTheFolderEnds) {
  struct Case {
    const char* what;
    const char* folder;
    const char* file;
    std::optional<std::string> address;
  };
  const Case cases[] = {
      {"blank stays", "/Volumes/Data/Projects", "/Volumes/Data/Projects/a b.txt",
       "srv/Data/Projects/a b.txt"},
      // The derived address keeps the slash of the path.
      {"trailing slash", "/Volumes/Data/", "/Volumes/Data/x", "srv/Data//x"},
      {"the folder itself", "/Volumes/Data", "/Volumes/Data", "srv/Data"},
      {"beside, the prefix shared", "/Volumes/Data", "/Volumes/Data2/x", "srv/Data2/x"},
      {"outside", "/Volumes/Data", "/Volumes/Other/x", std::nullopt},
      {"no address", "/other", "/other/x", std::nullopt},
      {"empty folder path", "", "/Volumes/Data/x", std::nullopt},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const bool found = c.address.has_value();
    EXPECT_EQ(folder(c.folder)->afpURLforPath(c.file),
              found ? std::optional("afp://" + *c.address) : std::nullopt);
    EXPECT_EQ(folder(c.folder)->smbURLforPath(c.file, /*windowsClient=*/false),
              found ? std::optional("smb://" + *c.address) : std::nullopt);
  }
}

TEST_F(NetworkAddresses, OfSMBHaveFiveSlashesForWindowsWhereverTheSchemeStands) {
  EXPECT_EQ(folder("/Volumes/Data")->smbURLforPath("/Volumes/Data/x", /*windowsClient=*/true),
            "file://///srv/Data/x");
  EXPECT_EQ(typed("/a", "a", "srv/smb://b")->smbURLforPath("/a/x", /*windowsClient=*/true),
            "file://///srv/file://///b/x");
}

TEST_F(NetworkAddresses, OfAGroupAreTheShortestTheEarliestAmongEquals) {
  const auto group = VTSearchFolderGroup::initWithTitle("Group");
  EXPECT_EQ(group->afpURLforPath("/d/x"), std::nullopt);
  group->addFolder(typed("/d", "long", "srv/Data/Projects"));
  group->addFolder(typed("/other", "elsewhere", "s"));
  group->addFolder(typed("/d", "short", "srv/P"));
  group->addFolder(typed("/d", "equal", "srv/Q"));
  EXPECT_EQ(group->afpURLforPath("/d/x"), "afp://srv/P/x");
  EXPECT_EQ(group->smbURLforPath("/d/x", /*windowsClient=*/false), "smb://srv/P/x");
  EXPECT_EQ(group->smbURLforPath("/d/x", /*windowsClient=*/true), "file://///srv/P/x");
  EXPECT_EQ(group->smbURLforPath("/e/x", /*windowsClient=*/true), std::nullopt);
}

TEST_F(NetworkAddresses, AreMeasuredInCharactersNotBytes) {
  const auto group = VTSearchFolderGroup::initWithTitle("Group");
  group->addFolder(typed("/d", "ascii", "srv/abc"));
  group->addFolder(typed("/d", "umlauts", "srv/\xC3\xBC\xC3\xBC"));
  EXPECT_EQ(group->afpURLforPath("/d/x"), "afp://srv/\xC3\xBC\xC3\xBC/x");
}

TEST_F(NetworkAddresses, AreNilInTheBase) {
  const auto base = VTSearchFolder::initWithTitle("Base");
  EXPECT_EQ(base->afpURLforPath("/x"), std::nullopt);
  EXPECT_EQ(base->smbURLforPath("/x", /*windowsClient=*/true), std::nullopt);
}

}  // namespace
}  // namespace vt
