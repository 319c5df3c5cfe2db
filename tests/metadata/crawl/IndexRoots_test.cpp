#include "metadata/crawl/IndexRoots.h"

#include <gtest/gtest.h>

namespace vt {
namespace {

TEST(IndexRoots, AreTheOutermostFolders) {
  using Paths = std::vector<std::string>;
  const struct {
    const char* what;
    Paths given;
    Paths walked;
  } cases[] = {
      {"none", {}, {}},
      {"apart", {"/b", "/a"}, {"/a", "/b"}},
      {"repeated", {"/a", "/a"}, {"/a"}},
      {"nested", {"/a/b/c", "/a"}, {"/a"}},
      {"nested, another between them in order", {"/a/b", "/a b", "/a"}, {"/a", "/a b"}},
      {"one name begins like another", {"/ab", "/a"}, {"/a", "/ab"}},
      {"all is in the root", {"/a", "/", "/b"}, {"/"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(outermostRoots(c.given), c.walked);
  }
}

}  // namespace
}  // namespace vt
