#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "scopes/VTConcreteSearchFolder.h"
#include "search/SearchWorld.h"
#include "search/VTSearchResult.h"

namespace vt {
namespace {

std::shared_ptr<VTSearchFolder> typed(const std::string& path, const char* afp, const char* smb) {
  auto folder = VTConcreteSearchFolder::initWithPath(path, path);
  folder->setUserDefinedURLPaths(/*userDefined=*/true);
  if (afp) folder->setAfpURLPath(afp);
  if (smb) folder->setSmbURLPath(smb);
  return folder;
}

std::shared_ptr<VTSearchResult> groupOf(const std::string& path,
                                        std::shared_ptr<VTSearchResult::Folders> folders) {
  return VTSearchResult::initWithGroupKind(
      nullptr, VTSearchResult::Records::make({Dictionary::make({{"kMDItemPath", path}})}),
      std::move(folders), {}, nullptr);
}

std::shared_ptr<VTSearchResult::Folders> foldersOf(
    std::initializer_list<std::shared_ptr<VTSearchFolder>> folders) {
  return VTSearchResult::Folders::make(folders);
}

TEST(EncodedURL, ReplacesPercentEscapesAndThenQuotes) {
  struct Case {
    const char* what;
    const char* url;
    std::optional<std::string> encoded;
  };
  const Case cases[] = {
      {"empty", "", ""},
      {"plain", "smb://srv/a b#c", "smb://srv/a b#c"},
      {"escape", "a%20b", "a b"},
      {"both cases of digits", "%c3%BC", "\xC3\xBC"},
      {"quote", "it's", "it%27s"},
      {"an escaped quote comes out as it went in", "%27", "%27"},
      {"only once", "%2527", "%27"},
      {"percent alone", "%", std::nullopt},
      {"one digit", "%4", std::nullopt},
      {"no digits", "%zz", std::nullopt},
      {"second is no digit", "%4g", std::nullopt},
      {"percent in a name", "100% sure", std::nullopt},
      {"not UTF-8", "%FF", std::nullopt},
      {"broken off", "%C3", std::nullopt},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(VTSearchResult::encodedURL(c.url), c.encoded);
  }
}

TEST(OpenLinks, AreTheShortestOfTheFoldersTheEarliestAmongEquals) {
  const SearchWorld world;
  const auto group = groupOf(
      "/d/x", foldersOf({typed("/d", "afp://long", "smb://a"), typed("/e", "afp://e", "smb://e"),
                         typed("/d", "afp://b", "smb://long"), typed("/d", "afp://c", "smb://b")}));
  EXPECT_EQ(group->afpURLPathForItemAtIndex(0), "afp://b/x");
  EXPECT_EQ(group->smbURLPathForItemAtIndex(0, /*windowsClient=*/false), "smb://a/x");
}

TEST(OpenLinks, AreNilWithoutFoldersOrPath) {
  const SearchWorld world;
  EXPECT_EQ(groupOf("/d/x", nullptr)->afpURLPathForItemAtIndex(0), std::nullopt);
  const auto group = groupOf("/d/x", foldersOf({typed("/d", "afp://s", "smb://s")}));
  EXPECT_EQ(group->afpURLPathForItemAtIndex(1), std::nullopt);
  EXPECT_EQ(group->smbURLPathForItemAtIndex(1, /*windowsClient=*/true), std::nullopt);
  for (const bool local : {false, true}) {
    EXPECT_EQ(group->openURLPathForItemAtIndex(1, /*windowsClient=*/false, local), std::nullopt);
  }
}

TEST(OpenLinks, LeadWindowsClientsToTheFolderOfAFile) {
  const SearchWorld world;
  const std::string root = world.folder.path();
  std::filesystem::create_directory(root + "/sub");
  std::ofstream(root + "/sub/file") << "x";
  const auto link = [&](const std::string& path, const std::string& folder, bool windowsClient) {
    return groupOf(path, foldersOf({typed(folder, nullptr, "smb://s")}))
        ->smbURLPathForItemAtIndex(0, windowsClient);
  };
  EXPECT_EQ(link(root + "/sub/file", root, true), "file://///s/sub");
  EXPECT_EQ(link(root + "/sub/file", root, false), "smb://s/sub/file");
  EXPECT_EQ(link(root + "/sub", root, true), "file://///s/sub");
  EXPECT_EQ(link(root + "/sub/gone", root, true), "file://///s/sub/gone");
  // The folder of the file is the search folder, whose path then lacks the slash.
  EXPECT_EQ(link(root + "/sub/file", root + "/sub", true), "file://///s");
  EXPECT_EQ(link(root + "/sub/file", root + "/sub/", true), std::nullopt);
}

TEST(OpenLinks, AreChosenByTheClient) {
  const SearchWorld world;
  const auto open = [](const char* afp, const char* smb, bool windowsClient, bool localClient) {
    return groupOf("/d/it's", foldersOf({typed("/d", afp, smb)}))
        ->openURLPathForItemAtIndex(0, windowsClient, localClient);
  };
  EXPECT_EQ(open("afp://s", "smb://s", /*windowsClient=*/false, /*localClient=*/false),
            "afp://s/it%27s");
  EXPECT_EQ(open("afp://s", "smb://s", /*windowsClient=*/true, /*localClient=*/false),
            "file://///s/it%27s");
  EXPECT_EQ(open(nullptr, "smb://s", /*windowsClient=*/false, /*localClient=*/false),
            "smb://s/it%27s");
  EXPECT_EQ(open("afp://s", nullptr, /*windowsClient=*/true, /*localClient=*/false), std::nullopt);
  EXPECT_EQ(open(nullptr, nullptr, /*windowsClient=*/false, /*localClient=*/false), std::nullopt);
  for (const bool windows : {false, true}) {
    EXPECT_EQ(open("afp://s", "smb://s", windows, true), "urlrunner://file///d/it%27s");
  }
}

TEST(OpenLinks, AreRefusedForNamesThatDoNotDecodeThoughTheAddressStands) {
  const SearchWorld world;
  const auto group = groupOf("/d/100%", foldersOf({typed("/d", "afp://s", "smb://s")}));
  EXPECT_EQ(group->afpURLPathForItemAtIndex(0), "afp://s/100%");
  EXPECT_EQ(group->openURLPathForItemAtIndex(0, /*windowsClient=*/false, /*localClient=*/false),
            std::nullopt);
  EXPECT_EQ(group->openURLPathForItemAtIndex(0, /*windowsClient=*/false, /*localClient=*/true),
            std::nullopt);
}

TEST(OpenLinks, ThrowForAGroupWithoutRecords) {
  const SearchWorld world;
  const auto group = VTSearchResult::initWithGroupKind(nullptr, VTSearchResult::Records::make(),
                                                       nullptr, {}, nullptr);
  EXPECT_THROW(group->afpURLPathForItemAtIndex(0), std::out_of_range);
}

}  // namespace
}  // namespace vt
