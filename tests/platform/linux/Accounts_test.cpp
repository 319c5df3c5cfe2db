#include "platform/linux/Accounts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "../AccountFolder.h"
#include "platform/DirectoryConstants.h"
#include "platform/linux/AccountRecords.h"

namespace vt {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(FileAccounts, ReadEachFieldAndTheFirstPartOfTheFullName) {
  AccountFolder folder;
  folder.write("passwd",
               "# accounts\n\nann:x:501:20:Ann Example,Room 1,555:/home/ann:/bin/bash\n"
               "bob:x:502:20:,Room 2:/home/bob:\n");
  const auto accounts = fileAccounts(folder.root());
  const auto ann = accounts->accountNamed("ann");
  ASSERT_TRUE(ann);
  EXPECT_EQ(ann->uid, 501U);
  EXPECT_EQ(ann->gid, 20U);
  EXPECT_EQ(ann->realName, "Ann Example");
  EXPECT_EQ(ann->home, "/home/ann");
  EXPECT_EQ(ann->shell, "/bin/bash");
  EXPECT_EQ(accounts->accountNamed("bob")->realName, "");
  EXPECT_EQ(accounts->accountWithId(502)->name, "bob");
  EXPECT_EQ(accounts->allAccounts().size(), 2U);
}

TEST(FileAccounts, DoNotHoldALineWithoutUsableIds) {
  const char* const lines[] = {
      "bad::20:20::/:/bin/sh:more",
      "bad:x::20::/:/bin/sh",
      "bad:x:20:::/:/bin/sh",
      "bad:x:abc:20::/:/bin/sh",
      "bad:x:-1:20::/:/bin/sh",
      "bad:x:4294967295:20::/:/bin/sh",
      "bad:x:4294967296:20::/:/",
      "bad:x: 1:20::/:/bin/sh",
      "bad:x:1x:20::/:/bin/sh",
      "bad:x:+1:20::/:/bin/sh",
      "bad:x:20:20",
      "bad",
      ":x:0:0::/:/bin/sh",
      "+::0:0:::",
      "+bad:x:0:0::/:/bin/sh",
  };
  for (const char* line : lines) {
    SCOPED_TRACE(line);
    AccountFolder folder;
    folder.write("passwd", std::string(line) + "\n");
    const auto accounts = fileAccounts(folder.root());
    EXPECT_THAT(accounts->allAccounts(), IsEmpty());
    EXPECT_FALSE(accounts->accountNamed("bad"));
    EXPECT_FALSE(accounts->accountNamed(""));
    EXPECT_FALSE(accounts->accountWithId(0));
  }
}

TEST(FileAccounts, AnswerWithTheFirstOfTwoLinesOfOneName) {
  AccountFolder folder;
  folder.write("passwd", "ann:x:1:1::/:/\nann:x:0:0::/:/\neve:x:1:2::/:/");
  const auto accounts = fileAccounts(folder.root());
  EXPECT_EQ(accounts->accountNamed("ann")->uid, 1U);
  EXPECT_EQ(accounts->accountWithId(1)->name, "ann");
  EXPECT_EQ(accounts->accountNamed("eve")->gid, 2U) << "a last line without a line feed";
}

TEST(FileAccounts, ListGroupsInFileOrderWithThePrimaryOneFirstAndNoneTwice) {
  AccountFolder folder;
  folder.write("group",
               "z:x:90:ann,bob\nstaff:x:20:ann\na:x:10:bob,ann\nbad:x::ann\nz2:x:90:ann\n"
               "prefix:x:91:anna,an\nlast:x:5:,ann,\n");
  const auto accounts = fileAccounts(folder.root());
  EXPECT_THAT(accounts->groupsOf({"ann", 501, 20, "", "", ""}), ElementsAre(20, 90, 10, 5));
  EXPECT_THAT(accounts->groupsOf({"eve", 502, 20, "", "", ""}), ElementsAre(20));
  EXPECT_THAT(accounts->groupNamed("a")->members, ElementsAre("bob", "ann"));
  EXPECT_THAT(accounts->groupNamed("last")->members, ElementsAre("ann"));
  EXPECT_FALSE(accounts->groupNamed("bad"));
}

TEST(FileAccounts, AreEmptyWithoutFiles) {
  TemporaryFolder folder;
  const auto accounts = fileAccounts(folder.path());
  EXPECT_THAT(accounts->allAccounts(), IsEmpty());
  EXPECT_THAT(accounts->allGroups(), IsEmpty());
}

TEST(SystemAccounts, FindRootByNameAndId) {
  const auto accounts = systemAccounts();
  EXPECT_EQ(accounts->accountNamed("root")->uid, 0U);
  EXPECT_EQ(accounts->accountWithId(0)->name, "root");
  EXPECT_EQ(accounts->groupsOf(*accounts->accountNamed("root")).front(), 0U);
  EXPECT_EQ(accounts->groupNamed("root")->gid, 0U);
}

TEST(SystemAccounts, DoNotFindWhatIsNot) {
  using namespace std::string_literals;
  const auto accounts = systemAccounts();
  for (const std::string& name : {""s, "a:b"s, "ROOT"s, "root\0x"s, "no-such-account"s}) {
    SCOPED_TRACE(name);
    EXPECT_FALSE(accounts->accountNamed(name));
    EXPECT_FALSE(accounts->groupNamed(name));
  }
  EXPECT_FALSE(accounts->accountWithId(0xFFFFFFFF));
}

TEST(SystemAccounts, AgreeWithTheFilesOnTheSystemsOwnAccounts) {
  const auto system = systemAccounts();
  std::size_t compared = 0;
  for (const Account& account : fileAccounts("")->allAccounts()) {
    if (account.uid >= 1000) continue;  // other tests may be making these
    SCOPED_TRACE(account.name);
    const auto found = system->accountNamed(account.name);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->uid, account.uid);
    EXPECT_EQ(found->gid, account.gid);
    EXPECT_EQ(found->realName, account.realName);
    EXPECT_EQ(system->groupsOf(*found), fileAccounts("")->groupsOf(account));
    ++compared;
  }
  EXPECT_GT(compared, 10U);
}

TEST(Accounts, ComeFromTheFilesOnlyUnderAPrefixThatHasThem) {
  AccountFolder folder;
  EXPECT_FALSE(hasOwnAccounts(folder.root()));
  EXPECT_TRUE(accountsUnder(folder.root())->accountNamed("root"));
  folder.write("passwd", "ann:x:501:20::/:/\n");
  EXPECT_TRUE(hasOwnAccounts(folder.root()));
  EXPECT_FALSE(accountsUnder(folder.root())->accountNamed("root"));
  EXPECT_TRUE(accountsUnder(folder.root())->accountNamed("ann"));
  EXPECT_FALSE(hasOwnAccounts(""));
}

/// The GroupMembership of the record "admin" over a group file; nothing without the record.
std::optional<std::vector<std::string>> administrators(std::string_view groupFile) {
  AccountFolder folder;
  folder.write("group", groupFile);
  const AccountRecords records(fileAccounts(folder.root()), nullptr);
  const auto found = records.records(kDSStdRecordTypeGroups, "admin");
  if (found.empty()) return std::nullopt;
  EXPECT_EQ(found.front().name, "admin");
  for (const DirectoryAttribute& attribute : found.front().attributes) {
    if (attribute.type == kDSNAttrGroupMembership) return attribute.values;
  }
  return std::vector<std::string>();
}

TEST(AccountRecords, TakeTheAdministratorsFromTheFirstGroupThatThereIs) {
  EXPECT_EQ(administrators("wheel:x:10:w\nsudo:x:27:s\nadmin:x:80:a,b\n"),
            (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(administrators("wheel:x:10:w\nsudo:x:27:s\n"), std::vector<std::string>{"s"});
  EXPECT_EQ(administrators("wheel:x:10:w\n"), std::vector<std::string>{"w"});
  EXPECT_EQ(administrators("admin:x:80:\nsudo:x:27:s\n"), std::vector<std::string>());
  EXPECT_EQ(administrators("users:x:100:u\n"), std::nullopt);
}

TEST(AccountRecords, HaveNoUserWhoseIdsTheDirectoryCannotExpress) {
  AccountFolder folder;
  folder.write("passwd",
               "last:x:2147483647:1::/:/\nover:x:2147483648:1::/:/\ngroup:x:1:2147483648::/:/\n");
  const AccountRecords records(fileAccounts(folder.root()), nullptr);
  EXPECT_EQ(records.records(kDSStdRecordTypeUsers, "last").size(), 1U);
  EXPECT_EQ(records.records(kDSStdRecordTypeUsers, "over").size(), 0U);
  EXPECT_EQ(records.records(kDSStdRecordTypeUsers, "group").size(), 0U);
  EXPECT_EQ(records.records(kDSStdRecordTypeUsers, std::nullopt).size(), 1U);
}

}  // namespace
}  // namespace vt
