#include <fcntl.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <sys/acl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <iostream>
#include <random>
#include <string>
#include <vector>

#include "metadata/rights/AccessJudge.h"
#include "support/TemporaryFolder.h"

namespace vt {
namespace {

constexpr std::uint32_t kSeed = 20261121;
constexpr int kFolders = 160;
constexpr int kFiles = 1900;
constexpr int kUsers = 60;
constexpr std::uint32_t kFirstUid = 20000;
constexpr std::uint32_t kFirstGid = 30000;
constexpr std::uint32_t kGroups = 12;

/// A file or folder of the random tree, with all that the judge is told of it.
struct Node {
  std::string path;
  int folder = -1;  // index of the folder that holds it; -1 for the tree's own folder
  FileOwnership ownership;
  AclReading acl;
};

class RandomTree {
 public:
  explicit RandomTree(const std::string& root) : root_(root) {
    for (int i = 0; i < kFolders; ++i) {
      // Chains as well as bushes, so that closed folders lie above much of the tree.
      const int holder =
          i == 0 ? -1 : static_cast<int>(pick(static_cast<std::uint32_t>(i + 1))) - 1;
      nodes_.push_back({pathIn(holder, "d" + std::to_string(i)), holder, {}, {}});
      EXPECT_EQ(mkdir(nodes_.back().path.c_str(), 0755), 0);
    }
    for (int i = 0; i < kFiles; ++i) {
      const int holder = static_cast<int>(pick(kFolders + 1)) - 1;
      nodes_.push_back({pathIn(holder, "f" + std::to_string(i)), holder, {}, {}});
      if (pick(12) == 0) {
        EXPECT_EQ(symlink("nowhere", nodes_.back().path.c_str()), 0);
      } else {
        close(open(nodes_.back().path.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600));
      }
    }
    for (Node& node : nodes_) dress(node);
    for (Node& node : nodes_) look(node);
  }

  const std::vector<Node>& nodes() const { return nodes_; }
  std::uint32_t pick(std::uint32_t below) { return static_cast<std::uint32_t>(random_() % below); }

 private:
  std::string pathIn(int holder, const std::string& name) const {
    return (holder < 0 ? root_ : nodes_[static_cast<std::size_t>(holder)].path) + "/" + name;
  }

  void dress(const Node& node) {
    struct stat status{};
    ASSERT_EQ(lstat(node.path.c_str(), &status), 0);
    ASSERT_EQ(lchown(node.path.c_str(), kFirstUid + pick(kUsers), kFirstGid + pick(kGroups)), 0);
    if (S_ISLNK(status.st_mode)) return;
    // Most folders stay open to all, or nothing below would ever be reached.
    if (S_ISDIR(status.st_mode) && pick(8) != 0) return;
    ASSERT_EQ(chmod(node.path.c_str(), pick(512)), 0);
    if (pick(2) == 0) giveAcl(node);
  }

  void giveAcl(const Node& node) {
    const auto letters = [&] {
      const std::uint32_t bits = pick(8);
      return std::string{(bits & 4) != 0 ? 'r' : '-', (bits & 2) != 0 ? 'w' : '-',
                         (bits & 1) != 0 ? 'x' : '-'};
    };
    std::string text =
        "u::" + letters() + ",g::" + letters() + ",o::" + letters() + ",m::" + letters();
    std::uint32_t uid = kFirstUid + pick(10);
    for (std::uint32_t i = pick(6); i > 0; --i, uid += 1 + pick(10)) {
      text += ",u:" + std::to_string(uid) + ":" + letters();
    }
    std::uint32_t gid = kFirstGid + pick(3);
    for (std::uint32_t i = pick(4); i > 0; --i, gid += 1 + pick(3)) {
      text += ",g:" + std::to_string(gid) + ":" + letters();
    }
    acl_t list = acl_from_text(text.c_str());
    ASSERT_NE(list, nullptr) << text;
    EXPECT_EQ(acl_set_file(node.path.c_str(), ACL_TYPE_ACCESS, list), 0) << text;
    acl_free(list);
  }

  void look(Node& node) const {
    struct stat status{};
    ASSERT_EQ(lstat(node.path.c_str(), &status), 0);
    node.ownership = {status.st_uid, status.st_gid, status.st_mode};
    const std::size_t slash = node.path.rfind('/');
    const int holder = open(node.path.substr(0, slash).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_GE(holder, 0);
    node.acl = readAcl(holder, node.path.c_str() + slash + 1);
    close(holder);
  }

  std::string root_;
  std::mt19937 random_{kSeed};
  std::vector<Node> nodes_;
};

bool mayReach(const std::vector<Node>& nodes, const AccessJudge& judge, int folder) {
  for (; folder >= 0; folder = nodes[static_cast<std::size_t>(folder)].folder) {
    const Node& node = nodes[static_cast<std::size_t>(folder)];
    if (!judge.allows(node.ownership, kMaySearch, [&] { return node.acl; })) return false;
  }
  return true;
}

/// What the kernel answers the real user: 1 allowed, 0 refused, 2 anything else; one per node.
/// A link is the item itself, so it is read and not followed.
std::string verdictsOfTheKernel(const std::vector<Node>& nodes, const Credentials& who) {
  int ends[2];
  if (pipe(ends) != 0) return {};
  const pid_t child = fork();
  if (child == 0) {
    const std::vector<gid_t> groups(who.groups().begin(), who.groups().end());
    if (setgroups(groups.size(), groups.data()) != 0 || setgid(who.gid()) != 0 ||
        setuid(who.uid()) != 0 || geteuid() != who.uid() || setuid(0) == 0) {
      _exit(1);
    }
    for (const Node& node : nodes) {
      char byte;
      bool allowed;
      if (S_ISLNK(node.ownership.mode)) {
        allowed = readlink(node.path.c_str(), &byte, 1) >= 0;
      } else {
        const int file = open(node.path.c_str(), O_RDONLY | O_CLOEXEC);
        allowed = file >= 0;
        if (allowed) close(file);
      }
      const char verdict = allowed ? '1' : errno == EACCES ? '0' : '2';
      if (write(ends[1], &verdict, 1) != 1) _exit(1);
    }
    _exit(0);
  }
  close(ends[1]);
  std::string verdicts;
  char buffer[4096];
  for (ssize_t got; (got = read(ends[0], buffer, sizeof buffer)) > 0;) {
    verdicts.append(buffer, static_cast<std::size_t>(got));
  }
  close(ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  return status == 0 ? verdicts : std::string{};
}

TEST(KernelAgreement, IsCompleteOverRandomTreesUsersAndLists) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can become other users";
  SCOPED_TRACE("seed " + std::to_string(kSeed));
  const TemporaryFolder folder;
  RandomTree tree(folder.path());
  std::size_t verdicts = 0;
  std::size_t allowed = 0;
  for (std::uint32_t user = 0; user < kUsers; ++user) {
    std::vector<std::uint32_t> groups;
    for (std::uint32_t i = tree.pick(5); i > 0; --i)
      groups.push_back(kFirstGid + tree.pick(kGroups));
    const AccessJudge judge(Credentials(kFirstUid + user, kFirstGid + tree.pick(kGroups), groups));
    const std::string kernel = verdictsOfTheKernel(tree.nodes(), judge.who());
    ASSERT_EQ(kernel.size(), tree.nodes().size()) << "the child could not become user " << user;
    for (std::size_t i = 0; i < kernel.size(); ++i) {
      const Node& node = tree.nodes()[i];
      const bool ours = mayReach(tree.nodes(), judge, node.folder) &&
                        judge.allows(node.ownership, kMayRead, [&] { return node.acl; });
      ASSERT_EQ(ours ? '1' : '0', kernel[i]) << "user " << user << ", " << node.path;
      ++verdicts;
      allowed += ours ? 1 : 0;
    }
  }
  EXPECT_GE(verdicts, 100'000U);
  // The trees must not be so closed, or so open, that agreeing says nothing.
  EXPECT_GT(allowed, verdicts / 10);
  EXPECT_LT(allowed, verdicts * 9 / 10);
  RecordProperty("verdicts", static_cast<int>(verdicts));
  std::cout << verdicts << " verdicts, " << allowed << " allowed, seed " << kSeed << "\n";
}

}  // namespace
}  // namespace vt
