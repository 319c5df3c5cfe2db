#include "scopes/VTConcreteSearchFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "support/ChangeJournal.h"
#include "support/TestWorld.h"

namespace vt {
namespace {

using testing::ElementsAre;

std::vector<std::string> keysOf(const Dictionary& dictionary) {
  std::vector<std::string> keys;
  for (const auto& [key, value] : dictionary) keys.push_back(key.str());
  return keys;
}

TEST(VTConcreteSearchFolder, StartsWithoutDownloadsAndTypedAddresses) {
  const TestWorld world;
  const auto folder = VTConcreteSearchFolder::initWithPath("/Data", "Data");
  EXPECT_EQ(folder->path(), "/Data");
  EXPECT_EQ(folder->title(), "Data");
  EXPECT_EQ(folder->download(), 0);
  EXPECT_FALSE(folder->userDefinedURLPaths());
  EXPECT_EQ(folder->afpURLPath(), std::nullopt);
  EXPECT_EQ(folder->smbURLPath(), std::nullopt);
}

TEST(VTConcreteSearchFolder, IsDownloadableByPlainPrefixAndADownloadOfOne) {
  struct Case {
    const char* what;
    std::optional<std::string> folder;
    std::int64_t download;
    const char* path;
    bool downloadable;
  };
  const Case cases[] = {
      {"below", "/Data", 1, "/Data/a.pdf", true},
      {"beside, the prefix shared", "/Data", 1, "/Data2/a.pdf", true},
      {"the folder itself", "/Data", 1, "/Data", true},
      {"not at the start", "/Data", 1, "/Other/Data/a.pdf", false},
      {"trailing slash", "/Data/", 1, "/Data/a.pdf", true},
      {"trailing slash, beside", "/Data/", 1, "/Data2/a.pdf", false},
      {"other case", "/Data", 1, "/data/a.pdf", false},
      {"not allowed", "/Data", 0, "/Data/a.pdf", false},
      {"mixed", "/Data", -1, "/Data/a.pdf", false},
      {"more than one", "/Data", 2, "/Data/a.pdf", false},
      {"no path", std::nullopt, 1, "/Data/a.pdf", false},
      {"empty path", "", 1, "/Data/a.pdf", false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const auto folder = VTConcreteSearchFolder::initWithPath(c.folder, "Data");
    folder->setDownload(c.download);
    EXPECT_EQ(folder->isDownloadable(c.path), c.downloadable);
  }
}

TEST(VTConcreteSearchFolder, CoversItsOnePath) {
  EXPECT_EQ(*VTConcreteSearchFolder::initWithPath("/Data", "D")->paths(), *Array::make({"/Data"}));
  EXPECT_EQ(*VTConcreteSearchFolder::initWithTitle("D")->paths(), *Array::make({nullptr}));
}

TEST(VTConcreteSearchFolder, ReadsBackAStoredFolder) {
  const auto data = Dictionary::make(
      {{"title", "X"}, {"path", "/X"}, {"download", 1}, {"userDefinedURLPaths", false}});
  const auto folder = VTConcreteSearchFolder::initWithDictionary(*data);
  EXPECT_EQ(folder->title(), "X");
  EXPECT_EQ(folder->path(), "/X");
  EXPECT_EQ(folder->download(), 1);
  EXPECT_FALSE(folder->userDefinedURLPaths());
}

TEST(VTConcreteSearchFolder, ConvertsNumbersTextAndNullWhenReadBack) {
  const auto data = Dictionary::make(
      {{"title", nullptr}, {"path", nullptr}, {"download", true}, {"userDefinedURLPaths", "YES"}});
  const auto folder = VTConcreteSearchFolder::initWithDictionary(*data);
  EXPECT_EQ(folder->title(), std::nullopt);
  EXPECT_EQ(folder->path(), std::nullopt);
  EXPECT_EQ(folder->download(), 1);
  EXPECT_TRUE(folder->userDefinedURLPaths());
}

TEST(VTConcreteSearchFolder, SetsAndReadsEachOfItsPropertiesByKey) {
  const TestWorld world;
  struct Case {
    const char* key;
    Value value;
  };
  const Case cases[] = {
      {"title", "T"},
      {"download", -1},
      {"path", "/p"},
      {"userDefinedURLPaths", true},
      {"afpURLPath", "afp://srv/p"},
      {"smbURLPath", "smb://srv/p"},
  };
  const auto folder = VTConcreteSearchFolder::initWithTitle(std::nullopt);
  for (const Case& c : cases) {
    SCOPED_TRACE(c.key);
    EXPECT_NE(folder->valueForKey(c.key), c.value);
    folder->setValue(c.value, c.key);
    EXPECT_EQ(folder->valueForKey(c.key), c.value);
  }
  EXPECT_EQ(folder->valueForKey("paths"), Value(Array::make({"/p"})));
  EXPECT_THROW(folder->setValue(std::nullopt, "userDefinedURLPaths"), InvalidArgumentError);
}

TEST(VTConcreteSearchFolder, IsNotMadeFromAKeyThatItDoesNotTake) {
  for (const char* key : {"colour", "children", "paths", "folders", "afpAvailable", "Title"}) {
    SCOPED_TRACE(key);
    EXPECT_THROW(VTConcreteSearchFolder::initWithDictionary(*Dictionary::make({{key, "x"}})),
                 UndefinedKeyError);
  }
  EXPECT_THROW(
      VTConcreteSearchFolder::initWithDictionary(*Dictionary::make({{"download", nullptr}})),
      InvalidArgumentError);
  EXPECT_THROW(VTConcreteSearchFolder::initWithDictionary(*Dictionary::make({{"path", 5}})),
               InvalidArgumentError);
}

TEST(VTConcreteSearchFolder, StoresAddressesOnlyWhereTheGettersGiveThem) {
  const TestWorld world;
  const auto folder = VTConcreteSearchFolder::initWithPath("/Data", "Data");
  folder->setSmbURLPath("smb://srv/Data");
  EXPECT_THAT(keysOf(*folder->serializedData()),
              ElementsAre("title", "download", "path", "userDefinedURLPaths"));
  folder->setUserDefinedURLPaths(/*userDefined=*/true);
  EXPECT_THAT(keysOf(*folder->serializedData()),
              ElementsAre("title", "download", "path", "userDefinedURLPaths", "smbURLPath"));
  folder->setAfpURLPath("");
  EXPECT_THAT(
      keysOf(*folder->serializedData()),
      ElementsAre("title", "download", "path", "userDefinedURLPaths", "afpURLPath", "smbURLPath"));
}

TEST(VTConcreteSearchFolder, StoresTheNullObjectForNil) {
  const TestWorld world;
  const auto data = VTConcreteSearchFolder::initWithTitle(std::nullopt)->serializedData();
  EXPECT_EQ(*data, *Dictionary::make({{"title", nullptr},
                                      {"download", 0},
                                      {"path", nullptr},
                                      {"userDefinedURLPaths", false}}));
  EXPECT_EQ(data->get("userDefinedURLPaths")->kind(), ValueKind::kBoolean);
}

TEST(VTConcreteSearchFolder, IsTheSameAfterStoringAndReadingBack) {
  const TestWorld world;
  const auto folder = VTConcreteSearchFolder::initWithPath("/Data", "Data");
  folder->setDownload(1);
  folder->setUserDefinedURLPaths(/*userDefined=*/true);
  folder->setAfpURLPath("afp://srv/Data");
  const auto data = folder->serializedData();
  EXPECT_EQ(*VTConcreteSearchFolder::initWithDictionary(*data)->serializedData(), *data);
}

TEST(VTConcreteSearchFolder, KeepsTypedAddressesWhenThePathChanges) {
  const auto folder = VTConcreteSearchFolder::initWithPath("/Data", "Data");
  folder->setUserDefinedURLPaths(/*userDefined=*/true);
  folder->setAfpURLPath("afp://srv/Data");
  folder->setPath("/Other");
  EXPECT_EQ(folder->afpURLPath(), "afp://srv/Data");
}

TEST(VTConcreteSearchFolder, AnnouncesThePathWithWhatDependsOnIt) {
  const auto folder = VTConcreteSearchFolder::initWithPath("/Data", "Data");
  ChangeJournal journal;
  for (const char* key : {"path", "afpURLPath", "smbURLPath", "sharePointName", "title"}) {
    journal.observe(*folder, key);
  }
  folder->setPath("/Other");
  EXPECT_THAT(journal.lines(),
              ElementsAre("will path", "will afpURLPath", "will smbURLPath", "will sharePointName",
                          "did path", "did afpURLPath", "did smbURLPath", "did sharePointName"));
}

TEST(VTConcreteSearchFolder, AnnouncesTypedAddresses) {
  const auto folder = VTConcreteSearchFolder::initWithPath("/Data", "Data");
  ChangeJournal journal;
  for (const char* key : {"afpURLPath", "smbURLPath", "userDefinedURLPaths"}) {
    journal.observe(*folder, key);
  }
  folder->setUserDefinedURLPaths(/*userDefined=*/true);
  folder->setValue("afp://srv/Data", "afpURLPath");
  folder->setSmbURLPath("smb://srv/Data");
  EXPECT_THAT(journal.lines(),
              ElementsAre("will userDefinedURLPaths", "did userDefinedURLPaths", "will afpURLPath",
                          "did afpURLPath", "will smbURLPath", "did smbURLPath"));
}

TEST(VTConcreteSearchFolder, GivesAWholePathWhileAnotherThreadSetsIt) {
  const std::string paths[] = {"/a", "/" + std::string(200, 'b')};
  const auto folder = VTConcreteSearchFolder::initWithPath(paths[0], "Data");
  std::atomic<bool> done = false;
  std::thread writer([&] {
    for (int i = 0; i < 20000; ++i) folder->setPath(paths[i % 2]);
    done = true;
  });
  int torn = 0;
  while (!done) {
    const std::optional<std::string> path = folder->path();
    torn += path == paths[0] || path == paths[1] ? 0 : 1;
  }
  writer.join();
  EXPECT_EQ(torn, 0);
}

}  // namespace
}  // namespace vt
