#include "platform/linux/UsershareFiles.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "support/ReadFile.h"
#include "support/TemporaryFolder.h"

namespace vt {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::string usershare(const std::string& path, const std::string& name) {
  return "#VERSION 2\npath=" + path +
         "\ncomment=\nusershare_acl=S-1-1-0:R\nguest_ok=n\nsharename=" + name + "\n";
}

TEST(ParseUsershareFile, ReadsBothVersions) {
  struct Case {
    const char* what;
    std::string text;
    const char* name;
  };
  const Case cases[] = {
      {"version 2", usershare("/srv/a b", "Ärger"), "Ärger"},
      {"without a name", "#VERSION 2\npath=/srv/a b\ncomment=x\nusershare_acl=\nguest_ok=y\n",
       "ärger"},
      {"version 1", "#VERSION 1\npath=/srv/a b\ncomment=x\nusershare_acl=", "ärger"},
      {"carriage returns", "#VERSION 1\r\npath=/srv/a b\r\ncomment=\r\nusershare_acl=\r\n",
       "ärger"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const auto share = parseUsershareFile("ärger", c.text);
    ASSERT_TRUE(share);
    EXPECT_EQ(*share, (SharedFolder{c.name, "/srv/a b"}));
  }
}

TEST(ParseUsershareFile, SaysWhatIsWrong) {
  struct Case {
    std::string text;
    const char* error;
  };
  const Case cases[] = {
      {"", "no version that is known"},
      {"path=/srv/a\ncomment=\nusershare_acl=\n", "no version that is known"},
      {"#VERSION 3\npath=/srv/a\ncomment=\nusershare_acl=\n", "no version that is known"},
      {"#VERSION 2\n", "in place of \"path=\""},
      {"#VERSION 2\npath=/srv/a\n", "in place of \"comment=\""},
      {"#VERSION 2\npath=/srv/a\ncomment=\n", "in place of \"usershare_acl=\""},
      {"#VERSION 2\npath=/srv/a\nguest_ok=y\ncomment=\nusershare_acl=\n",
       "in place of \"comment=\""},
      {usershare("/srv/a", "other"), "named otherwise"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    const auto share = parseUsershareFile("mine", c.text);
    ASSERT_FALSE(share);
    EXPECT_THAT(share.error().text, HasSubstr(c.error));
  }
  EXPECT_THAT(parseUsershareFile("a:b", usershare("/srv/a", "a:b")).error().text,
              HasSubstr("forbidden character"));
}

/// A folder of users' shares as Samba asks for it, and a folder to share.
class UsershareFilesTest : public testing::Test {
 protected:
  void SetUp() override {
    if (::geteuid() != 0) GTEST_SKIP() << "Samba takes such a folder only from root";
    std::filesystem::create_directory(shares_);
    std::filesystem::create_directory(shared_);
    ::chmod(shares_.c_str(), 01770);
    configuration_.usershareLimit = 100;
  }

  void write(const std::string& name, const std::string& text) const {
    writeFile(shares_ + "/" + name, text);
  }
  SharedFolders read() const { return readUsershareFiles(shares_, configuration_); }

  TemporaryFolder folder_;
  const std::string shares_ = folder_ / "usershares";
  const std::string shared_ = folder_ / "shared";
  SambaConfiguration configuration_;
};

TEST_F(UsershareFilesTest, GivesTheSharesInTheOrderOfTheirFiles) {
  write("beta", usershare(shared_, "Beta"));
  write("alpha", usershare(shared_ + "/", "Alpha"));
  write(":tmpABCDEF", usershare(shared_, "half"));
  const SharedFolders shares = read();
  EXPECT_THAT(shares.folders,
              ElementsAre(SharedFolder{"Alpha", shared_}, SharedFolder{"Beta", shared_}));
  EXPECT_THAT(shares.notes, IsEmpty());
}

TEST_F(UsershareFilesTest, LeavesOutFilesThatAreNoneOfSambas) {
  write("toolong", usershare(shared_, "toolong") + std::string(10240, 'x'));
  std::filesystem::create_directory(shares_ + "/afolder");
  std::filesystem::create_symlink(folder_ / "target", shares_ + "/link");
  writeFile(folder_ / "target", usershare(shared_, "link"));
  ::mkfifo((shares_ + "/fifo").c_str(), 0600);
  write("gone", usershare(shared_ + "/gone", "gone"));
  write("relative", usershare("srv", "relative"));
  write("garbage", std::string("\0\xFF\n\n", 4));
  const SharedFolders shares = read();
  EXPECT_THAT(shares.folders, IsEmpty());
  EXPECT_THAT(shares.notes,
              ElementsAre(HasSubstr("\"afolder\" is left out: its file is no regular file"),
                          HasSubstr("\"fifo\" is left out: its file is no regular file"),
                          HasSubstr("\"garbage\" is left out: its file has no version"),
                          HasSubstr("gone is no folder"),
                          HasSubstr("\"link\" is left out: its file is no regular file"),
                          HasSubstr("\"relative\" is left out: its path is not absolute"),
                          HasSubstr("\"toolong\" is left out: its file is too long")));
}

TEST_F(UsershareFilesTest, LetUsersShareOnlyWhatIsTheirs) {
  write("mine", usershare(shared_, "mine"));
  ::chown((shares_ + "/mine").c_str(), 2001, 2001);
  EXPECT_THAT(read().notes, ElementsAre(HasSubstr("does not belong to the user who shares it")));
  ::chown(shared_.c_str(), 2001, 2001);
  EXPECT_THAT(read().folders, ElementsAre(SharedFolder{"mine", shared_}));
  ::chown(shared_.c_str(), 2002, 2002);
  configuration_.userSharesOwnOnly = false;
  EXPECT_THAT(read().folders, ElementsAre(SharedFolder{"mine", shared_}));
}

TEST_F(UsershareFilesTest, NeverTakeANameOfTheConfiguration) {
  configuration_.sectionNames.insert(sambaName("DOCS"));
  write("docs", usershare(shared_, "Docs"));
  EXPECT_THAT(read().notes, ElementsAre(HasSubstr("the configuration has a share of that name")));
}

TEST_F(UsershareFilesTest, CountOnlyUpToTheirLimit) {
  configuration_.usershareLimit = 1;
  write("a", usershare(shared_, "a"));
  write("b", usershare(shared_, "b"));
  const SharedFolders shares = read();
  EXPECT_THAT(shares.folders, ElementsAre(SharedFolder{"a", shared_}));
  EXPECT_THAT(shares.notes, ElementsAre(HasSubstr("\"b\" is left out: users have declared more")));
}

TEST_F(UsershareFilesTest, AreNotReadFromAFolderThatOthersCouldFill) {
  write("a", usershare(shared_, "a"));
  for (const mode_t mode : {01777U, 0770U}) {
    ::chmod(shares_.c_str(), mode);
    EXPECT_THAT(read().folders, IsEmpty());
    EXPECT_THAT(read().notes, ElementsAre(HasSubstr("not sticky or writable by everybody")));
  }
  ::chmod(shares_.c_str(), 01770);
  ::chown(shares_.c_str(), 2001, 2001);
  EXPECT_THAT(read().notes, ElementsAre(HasSubstr("is not root's")));
}

TEST_F(UsershareFilesTest, AreNoneWithoutTheFolder) {
  const SharedFolders shares = readUsershareFiles(folder_ / "missing", configuration_);
  EXPECT_THAT(shares.folders, IsEmpty());
  EXPECT_THAT(shares.notes, IsEmpty());
}

}  // namespace
}  // namespace vt
