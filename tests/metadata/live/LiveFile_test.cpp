#include "metadata/live/LiveFile.h"

#include <gtest/gtest.h>

#include "foundation/Array.h"
#include "metadata/live/LiveTree.h"
#include "metadata/types/ShippedTypes.h"

namespace vt {
namespace {

struct Told {
  explicit Told(const ContentTypes& table) : types(table), groups(table) {}

  std::optional<Value> of(const LiveTree& tree, const char* name, const char* attribute) {
    const std::optional<FileStatus> status = statusOf(AT_FDCWD, (tree / name).c_str());
    const std::string folder = tree.path();
    const LiveFile file{folder, name, typeOfEntry(types, name, entryKindOf(*status)), &*status};
    Value value;
    const bool isTold =
        tellAttribute(liveAttributeNamed(attribute).value(), file, {types, groups}, value);
    return isTold ? std::optional(value) : std::nullopt;
  }

  const ContentTypes& types;
  ResultGroups groups;
};

TEST(LiveFile, TellsWhatTheFileSystemKnows) {
  const LiveTree tree;
  const std::string path = tree.file("notes.txt", "hello");
  const timespec times[2] = {{1'100'000'000, 0}, {1'200'000'000, 500'000'000}};
  ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
  const ContentTypes types = shippedTypes();
  Told told(types);
  const struct {
    const char* attribute;
    Value value;
  } cases[] = {
      {"kMDItemPath", path},
      {"kMDItemFSName", "notes.txt"},
      {"kMDItemDisplayName", "notes.txt"},
      {"kMDItemFSInvisible", false},
      {"kMDItemContentType", "public.plain-text"},
      {"kMDItemKind", "Plain text"},
      {"kMDItemFSSize", 5},
      {"kMDItemLogicalSize", 5},
      {"kMDItemFSOwnerUserID", geteuid()},
      {"kMDItemFSContentChangeDate", dateFromTimespec(times[1])},
      {"kMDItemContentModificationDate", dateFromTimespec(times[1])},
      {"kMDItemLastUsedDate", dateFromTimespec(times[0])},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.attribute);
    EXPECT_EQ(told.of(tree, "notes.txt", c.attribute), c.value);
  }
}

TEST(LiveFile, TellsSizesAndDatesOfItsOwnKindOfNumber) {
  const LiveTree tree;
  tree.file("file", std::string(10'000, 'x'));
  const ContentTypes types = shippedTypes();
  Told told(types);
  EXPECT_GE(told.of(tree, "file", "kMDItemPhysicalSize")->integerValue(), 10'000);
  EXPECT_EQ(told.of(tree, "file", "kMDItemPhysicalSize")->integerValue() % 512, 0);
  EXPECT_EQ(told.of(tree, "file", "kMDItemFSCreationDate"),
            told.of(tree, "file", "kMDItemContentCreationDate"));
  EXPECT_EQ(told.of(tree, "file", "kMDItemAttributeChangeDate")->kind(), ValueKind::kDate);
}

TEST(LiveFile, TellsTypesByNameAndSortOfEntry) {
  const LiveTree tree;
  tree.folder("Mail.app");
  tree.folder("plain");
  tree.link("link.pdf", "nowhere");
  ASSERT_EQ(mkfifo((tree / "pipe.pdf").c_str(), 0644), 0);
  tree.file("file.pdf");
  const ContentTypes types = shippedTypes();
  Told told(types);
  const struct {
    const char* name;
    const char* type;
    std::optional<Value> group;
  } cases[] = {
      {"Mail.app", "com.apple.application-bundle", 8},
      {"plain", "public.folder", 9},
      {"link.pdf", "public.symlink", std::nullopt},
      {"pipe.pdf", "public.item", std::nullopt},
      {"file.pdf", "com.adobe.pdf", 11},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(told.of(tree, c.name, "kMDItemContentType"), Value(c.type));
    EXPECT_EQ(told.of(tree, c.name, "_kMDItemGroupId"), c.group);
    EXPECT_TRUE(told.of(tree, c.name, "kMDItemFSSize")) << "a record would end there";
  }
}

TEST(LiveFile, SharesOneTreeBetweenItemsOfAType) {
  const LiveTree tree;
  tree.file("a.pdf");
  tree.file("b.pdf");
  const ContentTypes types = shippedTypes();
  Told told(types);
  EXPECT_EQ(told.of(tree, "a.pdf", "kMDItemContentTypeTree")->array(),
            told.of(tree, "b.pdf", "kMDItemContentTypeTree")->array());
}

TEST(LiveFile, IsInvisibleWhenItsNameBeginsWithADot) {
  const LiveTree tree;
  tree.file(".hidden");
  const ContentTypes types = shippedTypes();
  EXPECT_EQ(Told(types).of(tree, ".hidden", "kMDItemFSInvisible"), Value(true));
}

TEST(LiveFile, SaysNothingOfAttributesThatAreInsideFiles) {
  for (const char* name : {"kMDItemAuthors", "kMDItemTextContent", "kmditempath", ""}) {
    SCOPED_TRACE(name);
    EXPECT_EQ(liveAttributeNamed(name), std::nullopt);
  }
}

}  // namespace
}  // namespace vt
