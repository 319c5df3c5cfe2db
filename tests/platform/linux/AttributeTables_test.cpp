#include "platform/linux/AttributeTables.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/memory/MemoryResources.h"
#include "support/LogCapture.h"

namespace vt {
namespace {

using testing::ElementsAre;
using testing::Pair;

MemoryResources resourcesWith(const std::string& german) {
  MemoryResources resources;
  resources.add("attributes", "tsv",
                "heading\n"
                "a\tstring\t0\tAuthor\tauthor,by\t1\n"
                "b\tnumber\t0\tSize\t\t0\n");
  resources.add("attributes.de", "tsv", german);
  return resources;
}

TEST(AttributeTables, AreEnglishUnlessAnotherLanguageIsWanted) {
  const MemoryResources resources = resourcesWith("heading\na\tAutor\tautor\n");
  EXPECT_EQ(attributesIn(resources, {})->find("a")->displayName, "Author");
  EXPECT_EQ(attributesIn(resources, {"fr"})->find("a")->displayName, "Author");
  EXPECT_EQ(attributesIn(resources, {"de_AT", "de"})->find("a")->displayName, "Autor");
}

TEST(AttributeTables, PassOverADamagedTranslationAndLogIt) {
  const MemoryResources resources = resourcesWith("heading\na\tAutor\n");
  const LogCapture log;
  EXPECT_EQ(attributesIn(resources, {"de"})->find("a")->displayName, "Author");
  EXPECT_THAT(log.lines(), ElementsAre("attributes.de.tsv, line 2: 2 columns instead of 3; this "
                                       "translation is not used"));
}

TEST(AttributeTables, AreNoneWithoutTheTableOfAttributes) {
  EXPECT_EQ(attributesIn(MemoryResources(), {}), nullptr);
}

TEST(AttributeTables, StandForTheTableOfShortNamesOfTheMetadataBundle) {
  const ShippedStrings strings = shortNameTable(*attributesIn(resourcesWith("heading\n"), {}));
  EXPECT_EQ(strings.bundlePath,
            "/System/Library/Frameworks/CoreServices.framework/Frameworks/Metadata.framework");
  EXPECT_EQ(strings.table, "schema");
  EXPECT_THAT(strings.texts, ElementsAre(Pair("a.ShortName", "author,by")));
}

}  // namespace
}  // namespace vt
