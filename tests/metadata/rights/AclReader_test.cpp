#include "metadata/rights/AclReader.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/acl.h>
#include <unistd.h>

#include <fstream>
#include <string>

#include "support/TemporaryFolder.h"

namespace vt {
namespace {

void setAcl(const std::string& path, const std::string& text) {
  acl_t list = acl_from_text(text.c_str());
  ASSERT_NE(list, nullptr);
  EXPECT_EQ(acl_set_file(path.c_str(), ACL_TYPE_ACCESS, list), 0);
  acl_free(list);
}

TEST(AclReader, ReadsTheSameByNameAndByDescriptor) {
  const TemporaryFolder folder;
  const std::string path = folder / "file";
  std::ofstream{path};
  setAcl(path, "u::rw,u:12345:r,g::-,m::r,o::-");
  const int directory = open(folder.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  for (const AclReading& acl : {readAcl(directory, "file"), readAcl(file)}) {
    ASSERT_TRUE(acl.isKnown);
    ASSERT_TRUE(acl.list);
    ASSERT_EQ(acl.list->entries().size(), 5U);
    EXPECT_EQ(acl.list->entries()[1].id, 12345U);
  }
  close(file);
  close(directory);
}

TEST(AclReader, FindsNoListWhereThereIsNone) {
  const TemporaryFolder folder;
  std::ofstream{folder / "file"};
  const int directory = open(folder.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  const AclReading acl = readAcl(directory, "file");
  EXPECT_TRUE(acl.isKnown);
  EXPECT_FALSE(acl.list);
  close(directory);
}

TEST(AclReader, KnowsNothingOfAFileThatIsGone) {
  const TemporaryFolder folder;
  const int directory = open(folder.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  EXPECT_FALSE(readAcl(directory, "gone").isKnown);
  EXPECT_FALSE(readAcl(-1).isKnown);
  close(directory);
}

TEST(AclReader, ReadsListsLongerThanItsUsualBuffer) {
  const TemporaryFolder folder;
  const std::string path = folder / "file";
  std::ofstream{path};
  std::string text = "u::rw,g::r,m::r,o::-";
  for (int uid = 20000; uid < 20200; ++uid) text += ",u:" + std::to_string(uid) + ":r";
  setAcl(path, text);
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  const AclReading acl = readAcl(file);
  ASSERT_TRUE(acl.list);
  EXPECT_EQ(acl.list->entries().size(), 204U);
  close(file);
}

TEST(AclReader, GivesTheBytesAsTheyAreKept) {
  const TemporaryFolder folder;
  std::ofstream{folder / "plain"};
  std::ofstream{folder / "listed"};
  setAcl(folder / "listed", "u::rw,u:12345:r,g::-,m::r,o::-");
  const int directory = open(folder.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  std::vector<std::uint8_t> bytes;
  EXPECT_EQ(readAclBytes(directory, "listed", bytes), AclPresence::kPresent);
  const auto list = AccessControlList::parse(bytes);
  ASSERT_TRUE(list);
  EXPECT_EQ(list->entries()[1].id, 12345U);
  EXPECT_EQ(readAclBytes(directory, "plain", bytes), AclPresence::kNone);
  EXPECT_TRUE(bytes.empty());
  EXPECT_EQ(readAclBytes(directory, "gone", bytes), AclPresence::kUnknown);
  close(directory);
  const int processes = open("/proc/self", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  EXPECT_EQ(readAclBytes(processes, "status", bytes), AclPresence::kNotKept);
  close(processes);
}

}  // namespace
}  // namespace vt
