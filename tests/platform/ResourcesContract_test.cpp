// What every Resources promises, from a folder and from a table.

#include <gtest/gtest.h>

#include "platform/linux/FolderResources.h"
#include "platform/memory/MemoryResources.h"
#include "support/ReadFile.h"
#include "support/TemporaryFolder.h"

namespace vt {
namespace {

const TemporaryFolder& folder() {
  static const TemporaryFolder made;
  return made;
}

std::shared_ptr<Resources> folderResources() {
  writeFile(folder() / "Kinds.plist", std::string("a\0b", 3));
  return std::make_shared<FolderResources>(folder().path());
}

std::shared_ptr<Resources> memoryResources() {
  auto resources = std::make_shared<MemoryResources>();
  resources->add("Kinds", "plist", std::string("a\0b", 3));
  return resources;
}

class ResourcesContract : public testing::TestWithParam<std::shared_ptr<Resources> (*)()> {};

INSTANTIATE_TEST_SUITE_P(, ResourcesContract, testing::Values(&folderResources, &memoryResources));

TEST_P(ResourcesContract, GivesTheBytesOfAResource) {
  EXPECT_EQ(GetParam()()->resource("Kinds", "plist"), std::string("a\0b", 3));
}

TEST_P(ResourcesContract, HasNothingUnderAnotherNameOrType) {
  const auto resources = GetParam()();
  EXPECT_EQ(resources->resource("Kinds", "tsv"), std::nullopt);
  EXPECT_EQ(resources->resource("kinds", "plist"), std::nullopt);
  EXPECT_EQ(resources->resource("../" + folder().path().filename().string() + "/Kinds", "plist"),
            std::nullopt);
}

}  // namespace
}  // namespace vt
