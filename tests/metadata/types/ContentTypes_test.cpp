#include "metadata/types/ContentTypes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "foundation/Array.h"
#include "metadata/types/ShippedTypes.h"

namespace vt {
namespace {

std::string fileType(const ContentTypes& types, std::string_view name) {
  return std::string(types[types.typeOfFile(name)].identifier);
}
std::string folderType(const ContentTypes& types, std::string_view name) {
  return std::string(types[types.typeOfFolder(name)].identifier);
}
std::vector<std::string> tree(const ContentTypes& types, std::string_view identifier) {
  std::vector<std::string> identifiers;
  for (const ContentTypeId id : types[types.find(identifier).value()].tree) {
    identifiers.emplace_back(types[id].identifier);
  }
  return identifiers;
}

TEST(ContentTypes, GivesAPlainFileTheTypeOfItsExtension) {
  const ContentTypes types = shippedTypes();
  const struct {
    const char* name;
    const char* type;
  } cases[] = {
      {"report.pdf", "com.adobe.pdf"},
      {"REPORT.PDF", "com.adobe.pdf"},
      {"notes.txt", "public.plain-text"},
      {"a.b.jpeg", "public.jpeg"},
      {"letter.pages", "com.apple.iwork.pages.sffpages"},
      {"table.numbers", "com.apple.iwork.numbers.sffnumbers"},
      {"talk.key", "com.apple.iwork.keynote.sffkey"},
      {"Old.app", "com.apple.application-file"},
      {"letter.rtfd", "com.apple.flat-rtfd"},
      {"x.framework", "public.data"},
      {"README", "public.data"},
      {"x.unheardof", "public.data"},
      {"x.", "public.data"},
      {".txt", "public.data"},
      {".hidden.txt", "public.plain-text"},
      {"\xff\xfe.txt", "public.plain-text"},
      {"", "public.data"},
      {".", "public.data"},
      {"..", "public.data"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(fileType(types, c.name), c.type);
  }
}

TEST(ContentTypes, GivesAFolderTheTypeOfAPackageOrPlainFolder) {
  const ContentTypes types = shippedTypes();
  const struct {
    const char* name;
    const char* type;
  } cases[] = {
      {"Mail.app", "com.apple.application-bundle"},
      {"MAIL.APP", "com.apple.application-bundle"},
      {"letter.rtfd", "com.apple.rtfd"},
      {"letter.pages", "com.apple.iwork.pages.pages"},
      {"table.numbers", "com.apple.iwork.numbers.numbers"},
      {"talk.key", "com.apple.iwork.keynote.key"},
      {"talk.kth", "public.folder"},
      {"x.framework", "com.apple.framework"},
      {"old.pdf", "public.folder"},
      {"Projects", "public.folder"},
      {".app", "public.folder"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(folderType(types, c.name), c.type);
  }
}

TEST(ContentTypes, NeverTakesAPackageTypeForAFileNorAFileTypeForAFolder) {
  const ContentTypes types = shippedTypes();
  const ContentTypeId directory = types.find("public.directory").value();
  for (std::size_t id = 0; id < types.size(); ++id) {
    for (const std::string_view view : types[static_cast<ContentTypeId>(id)].extensions) {
      const std::string extension(view);
      SCOPED_TRACE(extension);
      EXPECT_FALSE(types.conforms(types.typeOfFile("x." + extension), directory));
      EXPECT_TRUE(types.conforms(types.typeOfFolder("x." + extension), directory));
    }
  }
}

TEST(ContentTypes, KnowsLinksAndSpecialFilesApartFromTheirNames) {
  const ContentTypes types = shippedTypes();
  EXPECT_EQ(types[types.typeOfLink()].identifier, "public.symlink");
  EXPECT_EQ(types[types.typeOfSpecialFile()].identifier, "public.item");
}

TEST(ContentTypes, PutsTheTypeItselfFirstAndTheGeneralOnesLastInATree) {
  const ContentTypes types = shippedTypes();
  EXPECT_THAT(tree(types, "public.folder"),
              testing::ElementsAre("public.folder", "public.directory", "public.item"));
  EXPECT_THAT(tree(types, "public.symlink"),
              testing::ElementsAre("public.symlink", "public.item", "com.apple.resolvable"));
  EXPECT_THAT(tree(types, "public.jpeg"),
              testing::ElementsAre("public.jpeg", "public.image", "public.data", "public.content",
                                   "public.item"));
}

TEST(ContentTypes, PutsATypeBeforeAllThatItConformsToInEveryTree) {
  const ContentTypes types = shippedTypes();
  for (std::size_t id = 0; id < types.size(); ++id) {
    const ContentType& type = types[static_cast<ContentTypeId>(id)];
    SCOPED_TRACE(type.identifier);
    std::set<ContentTypeId> seen;
    for (const ContentTypeId member : type.tree) {
      for (const ContentTypeId parent : types[member].parents) {
        EXPECT_FALSE(seen.contains(parent)) << types[parent].identifier;
        EXPECT_TRUE(types.conforms(static_cast<ContentTypeId>(id), parent));
      }
      EXPECT_TRUE(seen.insert(member).second) << "twice in the tree";
    }
    EXPECT_EQ(types.treeIdentifiers(static_cast<ContentTypeId>(id))->size(), type.tree.size());
  }
}

TEST(ContentTypes, FindsTypesRegardlessOfCase) {
  const ContentTypes types = shippedTypes();
  EXPECT_EQ(types.find("Public.JPEG"), types.find("public.jpeg"));
  EXPECT_EQ(types.find("public.unheard-of"), std::nullopt);
}

TEST(ContentTypes, GivesThePreferredMimeTypeAndNoPattern) {
  const ContentTypes types = shippedTypes();
  EXPECT_EQ(types.preferredMimeType("public.plain-text"), "text/plain");
  EXPECT_EQ(types.preferredMimeType("public.text"), std::nullopt);
  EXPECT_EQ(types.preferredMimeType("public.content"), std::nullopt);
  EXPECT_EQ(types.preferredMimeType("no.such.type"), std::nullopt);
}

}  // namespace
}  // namespace vt
