#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <stdexcept>

#include "platform/memory/MemoryContentTypeTags.h"
#include "scopes/VTConcreteSearchFolder.h"
#include "search/SearchWorld.h"
#include "search/VTSearchResult.h"
#include "settings/VTSettings.h"
#include "support/ReadFile.h"

namespace vt {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

const std::string kLink =
    "<plist version=\"1.0\"><dict><key>URL</key><string>http://a.b/</string></dict></plist>";

std::shared_ptr<Dictionary> record(const std::string& path, std::vector<std::string> types) {
  auto tree = Array::make();
  for (std::string& type : types) tree->append(std::move(type));
  return SearchWorld::hit(path, /*modified=*/0, tree);
}

std::shared_ptr<VTSearchResult> groupOf(const std::vector<std::shared_ptr<Dictionary>>& records,
                                        std::shared_ptr<VTSearchResult::Folders> folders = nullptr,
                                        std::shared_ptr<VTUser> user = nullptr) {
  auto list = VTSearchResult::Records::make();
  for (const auto& each : records) list->append(each);
  return VTSearchResult::initWithGroupKind(nullptr, list, std::move(folders), {}, std::move(user));
}

std::shared_ptr<VTSearchFolder> folderAt(const std::string& path, std::int64_t download) {
  auto folder = VTConcreteSearchFolder::initWithPath(path, "Folder");
  folder->setDownload(download);
  return folder;
}

void setUpMail() {
  const auto settings = VTSettings::sharedInstance();
  settings->setMailEnabled(true);
  settings->setSmtpServerAddress("mail.example.org");
  settings->setSmtpFromEmailAddress("vistaro@example.org");
}

TEST(ItemServices, LetWhatIsNoFolderBeMailedOnceMailIsSetUp) {
  const SearchWorld world;
  const auto group = groupOf({record("/a", {"public.text", "public.item"}),
                              record("/b", {"public.folder", "public.directory", "public.item"}),
                              Dictionary::make({{"kMDItemPath", "/without a type"}})});
  EXPECT_FALSE(group->isEmailableAtIndex(0));
  setUpMail();
  EXPECT_TRUE(group->isEmailableAtIndex(0));
  EXPECT_FALSE(group->isEmailableAtIndex(1));
  EXPECT_TRUE(group->isEmailableAtIndex(2)) << "what is not told is no folder";
  VTSettings::sharedInstance()->setMailEnabled(false);
  EXPECT_FALSE(group->isEmailableAtIndex(0));
}

TEST(ItemServices, PutNoLimitToTheSizeOfAMail) {
  const SearchWorld world;
  setUpMail();
  const auto large = record("/a", {"public.movie"});
  large->set("kMDItemFSSize", std::uint64_t{1} << 50);
  EXPECT_TRUE(groupOf({large})->isEmailableAtIndex(0));
}

TEST(ItemServices, LetAFileBeDownloadedWhenOneSearchFolderDoes) {
  const SearchWorld world;
  const auto folders = VTSearchResult::Folders::make(
      {folderAt("/closed", 0), folderAt("/open", 1), folderAt("/open/closed", 0)});
  struct Case {
    const char* what;
    std::shared_ptr<Dictionary> item;
    bool isDownloadable;
  };
  const Case cases[] = {
      {"below one that allows it", record("/open/a", {"public.data"}), true},
      {"also below one that does not", record("/open/closed/a", {"public.data"}), true},
      {"below one that does not", record("/closed/a", {"public.data"}), false},
      {"below none", record("/elsewhere/a", {"public.data"}), false},
      {"beside one, with its name in front", record("/opened/a", {"public.data"}), true},
      {"folder", record("/open/b", {"public.folder", "public.directory"}), false},
      {"package", record("/open/b.app", {"com.apple.package", "public.directory"}), false},
      {"of no type", Dictionary::make({{"kMDItemPath", "/open/a"}}), true},
      {"without a path", Dictionary::make(), false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(groupOf({c.item}, folders)->isDownloadableForItemAtIndex(0), c.isDownloadable);
  }
}

/// Answers as it is told and writes down that it was asked.
class AskedFolder final : public VTSearchFolder {
 public:
  AskedFolder(std::string name, bool answer, std::vector<std::string>& asked)
      : name_(std::move(name)), answer_(answer), asked_(asked) {}
  bool isDownloadable(const std::string& path) const override {
    asked_.push_back(name_ + " " + path);
    return answer_;
  }

 private:
  std::string name_;
  bool answer_;
  std::vector<std::string>& asked_;
};

TEST(ItemServices, AskTheSearchFoldersInOrderUntilOneAllowsADownload) {
  std::vector<std::string> asked;
  const auto folders =
      VTSearchResult::Folders::make({std::make_shared<AskedFolder>("first", false, asked),
                                     std::make_shared<AskedFolder>("second", true, asked),
                                     std::make_shared<AskedFolder>("third", true, asked)});
  EXPECT_TRUE(groupOf({record("/a", {"public.data"})}, folders)->isDownloadableForItemAtIndex(0));
  EXPECT_THAT(asked, ElementsAre("first /a", "second /a"));
  asked.clear();
  EXPECT_FALSE(
      groupOf({record("/a", {"public.directory"})}, folders)->isDownloadableForItemAtIndex(0));
  EXPECT_THAT(asked, IsEmpty()) << "folders are asked of no folder";
}

TEST(ItemServices, LetNothingBeDownloadedWithoutSearchFolders) {
  const auto item = record("/a", {"public.image"});
  for (const auto& folders :
       {VTSearchResult::Folders::make(), std::shared_ptr<VTSearchResult::Folders>()}) {
    EXPECT_FALSE(groupOf({item}, folders)->isDownloadableForItemAtIndex(0));
    EXPECT_FALSE(groupOf({item}, folders)->isiPhoneDownloadableForItemAtIndex(0));
  }
}

TEST(ItemServices, LetPhonesHaveWhatTheyCanShow) {
  struct Case {
    const char* what;
    std::vector<std::string> types;
    bool isForPhones;
  };
  const Case cases[] = {
      {"image", {"public.png", "public.image"}, true},
      {"plain text", {"public.plain-text", "public.text"}, true},
      {"RTF", {"public.rtf", "public.text"}, false},
      {"RTF that is an image too", {"public.rtf", "public.text", "public.image"}, true},
      {"RTF that is a PDF too", {"public.rtf", "public.text", "com.adobe.pdf"}, true},
      {"Word", {"com.microsoft.word.doc", "public.data"}, true},
      {"Word of today", {"org.openxmlformats.wordprocessingml.document"}, false},
      {"Excel", {"com.microsoft.excel.xls", "public.data"}, true},
      {"PDF", {"com.adobe.pdf", "public.data"}, true},
      {"what conforms to PDF", {"com.adobe.illustrator.ai-image", "com.adobe.pdf"}, true},
      {"movie", {"public.mpeg-4", "public.movie"}, false},
      {"archive", {"public.zip-archive"}, false},
      {"image folder", {"public.image", "public.directory"}, false},
      {"of no type", {}, false},
      {"almost an image", {"public.Image", "public.image2"}, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const auto open = VTSearchResult::Folders::make({folderAt("/", 1)});
    EXPECT_EQ(groupOf({record("/a", c.types)}, open)->isiPhoneDownloadableForItemAtIndex(0),
              c.isForPhones);
    const auto closed = VTSearchResult::Folders::make({folderAt("/", 0)});
    EXPECT_FALSE(groupOf({record("/a", c.types)}, closed)->isiPhoneDownloadableForItemAtIndex(0));
  }
}

TEST(ItemServices, TakeARecordThatEndsEarlyForOneWithoutTypes) {
  const SearchWorld world;
  const auto item = Dictionary::make({{"kMDItemPath", "/a"}});
  const auto open = VTSearchResult::Folders::make({folderAt("/", 1)});
  EXPECT_FALSE(groupOf({item}, open)->isiPhoneDownloadableForItemAtIndex(0));
  EXPECT_EQ(groupOf({item}, open)->webLinkForItemAtIndex(0), std::nullopt);
}

TEST(ItemServices, AnswerNoOrNilPastTheEnd) {
  const SearchWorld world;
  const auto group = groupOf({record("/a.webloc", {"public.image"})},
                             VTSearchResult::Folders::make({folderAt("/", 1)}));
  EXPECT_FALSE(group->isDownloadableForItemAtIndex(1));
  EXPECT_FALSE(group->isiPhoneDownloadableForItemAtIndex(1));
  EXPECT_FALSE(group->isEmailableAtIndex(1));
  EXPECT_EQ(group->mimeTypeForItemAtIndex(1), std::nullopt);
  EXPECT_EQ(group->webLinkForItemAtIndex(1), std::nullopt);
}

TEST(ItemServices, RaiseOutOfRangeForAGroupWithoutRecords) {
  const SearchWorld world;
  const auto group = groupOf({}, VTSearchResult::Folders::make({folderAt("/", 1)}));
  EXPECT_THROW(group->isEmailableAtIndex(0), std::out_of_range);
  EXPECT_THROW(group->isDownloadableForItemAtIndex(0), std::out_of_range);
  EXPECT_THROW(group->mimeTypeForItemAtIndex(0), std::out_of_range);
  EXPECT_THROW(group->webLinkForItemAtIndex(0), std::out_of_range);
}

TEST(ItemServices, GiveTheAddressInAWebLinkFile) {
  const SearchWorld world;
  for (const char* name : {"page.webloc", "page.webhistory", "odd\xff.webloc", "page.txt"}) {
    SCOPED_TRACE(name);
    const std::string path = world.folder / name;
    writeFile(path, kLink);
    const bool isLink = std::string(name) != "page.txt";
    EXPECT_EQ(groupOf({record(path, {})})->webLinkForItemAtIndex(0),
              isLink ? std::optional<std::string>("http://a.b/") : std::nullopt);
  }
}

TEST(ItemServices, GiveNoAddressForAWebLinkFileWithoutOne) {
  const SearchWorld world;
  const std::string path = world.folder / "page.webloc";
  const auto group = groupOf({record(path, {})});
  writeFile(path, "<plist version=\"1.0\"><dict><key>Name</key><string>x</string></dict></plist>");
  EXPECT_EQ(group->webLinkForItemAtIndex(0), std::nullopt);
  writeFile(path, "<plist version=\"1.0\"><array/></plist>");
  EXPECT_EQ(group->webLinkForItemAtIndex(0), std::nullopt);
}

TEST(ItemServices, GiveNoAddressForWhatIsNoSmallRegularFile) {
  const SearchWorld world;
  const std::string secret = world.folder / "secret";
  writeFile(secret, kLink);
  struct Case {
    const char* what;
    void (*make)(const std::string& path, const std::string& secret);
  };
  const Case cases[] = {
      {"missing", [](const auto&, const auto&) {}},
      {"pipe", [](const auto& path, const auto&) { EXPECT_EQ(mkfifo(path.c_str(), 0644), 0); }},
      {"folder", [](const auto& path, const auto&) { std::filesystem::create_directory(path); }},
      {"link to a good one",
       [](const auto& path, const auto& target) { std::filesystem::create_symlink(target, path); }},
      {"link to the passwords",
       [](const auto& path, const auto&) { std::filesystem::create_symlink("/etc/shadow", path); }},
      {"100 MB of a hole behind a good one",
       [](const auto& path, const auto&) {
         writeFile(path, kLink);
         std::filesystem::resize_file(path, 100 << 20);
       }},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const std::string path = world.folder / (std::string(c.what) + ".webloc");
    c.make(path, secret);
    EXPECT_EQ(groupOf({record(path, {})})->webLinkForItemAtIndex(0), std::nullopt);
  }
}

TEST(ItemServices, ReadTheFileAnewEachTime) {
  const SearchWorld world;
  const std::string path = world.folder / "page.webloc";
  const auto group = groupOf({record(path, {})});
  EXPECT_EQ(group->webLinkForItemAtIndex(0), std::nullopt);
  writeFile(path, kLink);
  EXPECT_EQ(group->webLinkForItemAtIndex(0), "http://a.b/");
}

TEST(ItemServices, ActAsTheUserWhileTheyLookIntoAFile) {
  const SearchWorld world(SearchWorld::kKinds, MemoryIdentity::Rules::kStrict);
  world.identity->setGroups("ann", {80});
  const std::string path = world.folder / "page.webloc";
  writeFile(path, kLink);
  const auto group = groupOf({record(path, {})}, nullptr, world.ann());
  const std::vector<std::string> before = world.identity->calls();
  EXPECT_EQ(group->webLinkForItemAtIndex(0), "http://a.b/");
  EXPECT_THAT(before, IsEmpty());
  EXPECT_THAT(world.identity->calls(), ElementsAre("setgroups 20,80", "setegid 20", "seteuid 501",
                                                   "seteuid 0", "setegid 0", "setgroups "));
}

TEST(ItemServices, LookAtNothingWhenTheUserCannotBeTakenOn) {
  const SearchWorld world;
  world.identity->refuseUser(501);
  const std::string path = world.folder / "page.webloc";
  writeFile(path, kLink);
  world.index->addHit({{"kMDItemPath", path}, {"kMDItemContentType", "public.text"}});
  const auto group = groupOf({record(path, {})}, nullptr, world.ann());
  EXPECT_EQ(group->webLinkForItemAtIndex(0), std::nullopt);
  EXPECT_EQ(group->mimeTypeForItemAtIndex(0), std::nullopt);
  EXPECT_THAT(world.index->calls(), IsEmpty());
}

TEST(ItemServices, GoByTheFileRuleWhereTheProcessIsNotRoots) {
  const SearchWorld world;
  world.identity->setIds(501, 20);
  const std::string path = world.folder / "page.webloc";
  writeFile(path, kLink);
  const auto group = groupOf({record(path, {})}, nullptr, world.ann());
  ASSERT_EQ(chmod(path.c_str(), 0644), 0);
  EXPECT_EQ(group->webLinkForItemAtIndex(0), "http://a.b/");
  ASSERT_EQ(chmod(path.c_str(), 0600), 0);
  EXPECT_EQ(group->webLinkForItemAtIndex(0), std::nullopt);
  EXPECT_THAT(world.identity->calls(), IsEmpty());
}

TEST(ItemServices, GiveTheMimeTypeOfAnItemsFile) {
  const auto index = std::make_shared<MemoryMetadataIndex>();
  index->addHit({{"kMDItemPath", "/a"}, {"kMDItemContentType", "com.adobe.pdf"}});
  const auto tags = std::make_shared<MemoryContentTypeTags>();
  tags->add("com.adobe.pdf", kUTTagClassMIMEType, "application/pdf");
  Platform::Services services;
  services.metadataIndex = index;
  services.contentTypeTags = tags;
  const PlatformScope scope(std::make_shared<Platform>(std::move(services)));
  const auto group = groupOf({record("/a", {}), record("/b", {})});
  EXPECT_EQ(group->mimeTypeForItemAtIndex(0), "application/pdf");
  EXPECT_EQ(group->mimeTypeForItemAtIndex(1), std::nullopt);
}

}  // namespace
}  // namespace vt
