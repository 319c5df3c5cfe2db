#include "metadata/store/PathOrder.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace vt {
namespace {

struct Tree {
  std::vector<std::uint32_t> parents = {0xFFFFFFFF};
  std::vector<std::string> names = {""};
  std::vector<std::string> paths = {"/"};

  std::uint32_t add(std::uint32_t parent, const std::string& name) {
    parents.push_back(parent);
    names.push_back(name);
    paths.push_back(paths[parent] + name + "/");
    return static_cast<std::uint32_t>(names.size() - 1);
  }
};

/// Compares any two files of the tree, one of each name in each folder, with their whole paths.
void expectOrderOfPaths(const Tree& tree, const std::vector<std::string>& names) {
  const auto nameOf = [&](std::uint32_t folder) { return std::string_view(tree.names[folder]); };
  const PathOrder order(tree.parents, nameOf);
  for (std::uint32_t a = 0; a < tree.names.size(); ++a) {
    for (std::uint32_t b = 0; b < tree.names.size(); ++b) {
      for (const std::string& left : names) {
        for (const std::string& right : names) {
          const std::string leftPath = tree.paths[a] + left;
          const std::string rightPath = tree.paths[b] + right;
          ASSERT_EQ(order.isBefore(a, left, b, right, nameOf), leftPath < rightPath)
              << leftPath << " and " << rightPath;
        }
      }
    }
  }
}

TEST(PathOrder, IsThatOfTheBytesAroundASlash) {
  // A dash and a dot are below a slash, a zero is above, and UTF-8 is above them all.
  Tree tree;
  for (const char* name : {"a", "a-", "a.b", "a0", "ab", "b", "\xc3\xa4"}) {
    const std::uint32_t folder = tree.add(0, name);
    tree.add(folder, "-");
    tree.add(tree.add(folder, "a"), "a");
  }
  expectOrderOfPaths(tree, {"-", ".", "0", "a", "a-", "a0", "ab", "\xc3\xa4", "\x01"});
}

TEST(PathOrder, IsThatOfTheBytesInRandomTrees) {
  std::mt19937 random(20261121);
  const std::vector<std::string> names = {"a", "a-", "a.", "a0", "A", "\x01", "a\xff", "aa"};
  for (int round = 0; round < 60; ++round) {
    SCOPED_TRACE(round);
    Tree tree;
    for (int folders = 0; folders < 25; ++folders) {
      const auto parent = static_cast<std::uint32_t>(random() % tree.names.size());
      const std::string& name = names[random() % names.size()];
      const bool isThere = std::find(tree.paths.begin(), tree.paths.end(),
                                     tree.paths[parent] + name + "/") != tree.paths.end();
      if (!isThere) tree.add(parent, name);
    }
    expectOrderOfPaths(tree, names);
  }
}

}  // namespace
}  // namespace vt
