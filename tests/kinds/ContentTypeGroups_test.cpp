// The shipped table of kinds, against the shipped table of content types.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "foundation/Array.h"
#include "kinds/VTSearchKind.h"
#include "metadata/types/ContentTypes.h"
#include "platform/Platform.h"
#include "platform/linux/FolderResources.h"
#include "support/Places.h"

namespace vt {
namespace {

class ContentTypeGroups : public testing::Test {
 protected:
  std::string kindOf(ContentTypeId type) const {
    const auto kind = VTSearchKind::kindForContentTypes(types_.treeIdentifiers(type).get());
    return kind ? kind->title() : "(nil)";
  }

 private:
  static ContentTypes contentTypes() {
    const auto table = FolderResources(resourceFolder()).resource("types", "tsv");
    if (!table) throw std::runtime_error("the table of content types is missing");
    auto types = ContentTypes::parse(*table);
    if (!types) throw std::runtime_error(types.error().reason);
    return std::move(types).value();
  }

  static Platform::Services services() {
    Platform::Services made;
    made.resources = std::make_shared<FolderResources>(resourceFolder());
    return made;
  }

  PlatformScope scope_{std::make_shared<Platform>(services())};

 protected:
  const ContentTypes types_ = contentTypes();
  const std::shared_ptr<ObjectArray<VTSearchKind>> kinds_ = VTSearchKind::allSearchKinds();
};

TEST_F(ContentTypeGroups, PutFilesWherePeopleLookForThem) {
  const std::map<std::string, std::vector<std::string>> expected = {
      {"Documents",
       {"txt",   "rtf",  "md",   "log", "doc",  "docx", "docm", "dot",  "dotm", "odt",  "fodt",
        "pages", "epub", "mobi", "cbz", "cbr",  "tex",  "xml",  "indd", "vsdx", "one",  "ps",
        "dwg",   "dxf",  "stl",  "obj", "gltf", "dae",  "kmz",  "gdoc", "srt",  "conf", "odg"}},
      {"PDF Documents", {"pdf"}},
      {"Spreadsheets",
       {"xls", "xlsx", "xlsm", "xltx", "xltm", "xlsb", "xla", "csv", "tsv", "prn", "ods", "ots",
        "numbers", "gsheet", "gnumeric", "sxc", "slk"}},
      {"Presentations",
       {"ppt", "pptx", "pptm", "ppsx", "ppsm", "potx", "odp", "otp", "key", "gslides", "sxi"}},
      {"Images", {"jpg", "jpeg", "png", "gif", "tiff", "heic", "webp", "svg", "svgz", "psd",
                  "ai",  "eps",  "cr2", "dng", "raw",  "ico",  "dcm",  "efx", "odi",  "xcf"}},
      {"Movies", {"mov", "mp4", "m4v", "avi", "mkv", "webm", "wmv", "asf", "swf", "ts", "fcpxml"}},
      {"Music", {"mp3", "m4a", "wav", "flac", "ogg", "wma", "aiff", "mid", "m3u", "pls", "ra"}},
      {"Mail", {"eml", "emlx", "msg", "mbox", "pst", "tnef"}},
      {"Contacts and Events", {"vcf", "ics", "vcs"}},
      {"Web Pages and Links",
       {"html", "htm", "xhtml", "mht", "webarchive", "webloc", "url", "rss", "atom"}},
      {"Source Code",
       {"c",  "h",  "cpp", "java", "js",   "py",   "rb",   "php", "sh",    "pl",   "swift", "go",
        "rs", "cs", "sql", "css",  "json", "yaml", "toml", "jsp", "ipynb", "diff", "bat",   "xsd"}},
      {"Archives",
       {"zip", "tar", "tgz", "gz", "bz2", "xz", "7z", "rar", "dmg", "iso", "deb", "rpm", "vmdk",
        "ova", "pkg"}},
      {"Fonts", {"ttf", "otf", "ttc", "woff2", "pfb"}},
      {"Applications", {"exe", "msi", "dll", "jar", "war", "apk", "ipa", "so", "crx", "class"}},
      {"Other", {"plist", "sqlite", "mdb", "lnk", "pem", "aae", "torrent", "unheard-of"}},
  };
  for (const auto& [kind, extensions] : expected) {
    for (const std::string& extension : extensions) {
      EXPECT_EQ(kindOf(types_.typeOfFile("name." + extension)), kind) << extension;
    }
  }
}

TEST_F(ContentTypeGroups, PutFoldersAndPackagesWherePeopleLookForThem) {
  const std::map<std::string, std::string> expected = {
      {"Projects", "Folders"},          {"Program.app", "Applications"},
      {"Text.rtfd", "Documents"},       {"Song.band", "Music"},
      {"App.xcodeproj", "Source Code"}, {"Image.sparsebundle", "Archives"},
      {"Some.framework", "Other"},
  };
  for (const auto& [name, kind] : expected) {
    EXPECT_EQ(kindOf(types_.typeOfFolder(name)), kind) << name;
  }
}

// Else the order in which a tree lists the parents would decide.
TEST_F(ContentTypeGroups, ListEveryTypeWhoseParentsDisagree) {
  std::set<std::string> listed;
  for (const auto& kind : *kinds_) {
    for (const Value& type : *kind->types()) listed.insert(*type.get<std::string>());
  }
  for (std::size_t id = 0; id < types_.size(); ++id) {
    const ContentType& type = types_[static_cast<ContentTypeId>(id)];
    std::set<std::string> kindsOfParents;
    for (const ContentTypeId parent : type.parents) kindsOfParents.insert(kindOf(parent));
    kindsOfParents.erase("Other");
    EXPECT_TRUE(kindsOfParents.size() <= 1 || listed.contains(std::string(type.identifier)))
        << type.identifier;
  }
}

TEST_F(ContentTypeGroups, ListOnlyTypesOfTheTableAndEachOnce) {
  std::set<std::string> seen;
  for (const auto& kind : *kinds_) {
    ASSERT_NE(kind->types(), nullptr) << kind->title();
    for (const Value& type : *kind->types()) {
      const std::string& identifier = *type.get<std::string>();
      const auto id = types_.find(identifier);
      ASSERT_TRUE(id) << identifier;
      EXPECT_EQ(types_[*id].identifier, identifier);
      EXPECT_TRUE(seen.insert(identifier).second) << identifier << " stands twice";
    }
  }
}

TEST_F(ContentTypeGroups, HaveOneDefaultAndRanksOfTheirOwn) {
  EXPECT_EQ(kinds_->size(), 16U);
  ASSERT_NE(VTSearchKind::defaultKind(), nullptr);
  EXPECT_EQ(VTSearchKind::defaultKind()->title(), "Other");
  EXPECT_EQ(VTSearchKind::searchableKinds()->size(), kinds_->size() - 1);
  std::set<std::uint64_t> ranks;
  for (const auto& kind : *kinds_) ranks.insert(kind->sortorder());
  EXPECT_EQ(ranks.size(), kinds_->size());
}

TEST_F(ContentTypeGroups, ShowThumbnailsOfWhatPeopleLookAt) {
  std::set<std::string> withThumbnails;
  for (const auto& kind : *kinds_) {
    if (kind->defaultView() == 1) withThumbnails.insert(kind->title());
  }
  EXPECT_THAT(withThumbnails, testing::ElementsAre("Images", "Movies"));
}

}  // namespace
}  // namespace vt
