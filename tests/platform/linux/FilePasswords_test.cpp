#include "platform/linux/FilePasswords.h"

#include <gtest/gtest.h>

#include "../AccountFolder.h"

namespace vt {
namespace {

constexpr std::int64_t kToday = 20000;

bool verify(const AccountFolder& folder, const std::string& name, const std::string& password) {
  return FilePasswords(folder.root(), [] { return kToday; }).verify(name, password);
}

class FilePasswordsTest : public testing::Test {
 protected:
  FilePasswordsTest() { folder_.write("passwd", "ann:x:501:20::/:/\n"); }

  void setShadow(const std::string& fields) { folder_.write("shadow", "ann:" + fields + "\n"); }

  AccountFolder folder_;
};

TEST_F(FilePasswordsTest, AcceptTheRightPasswordOfEveryUsualHash) {
  for (const char* prefix : {"$y$", "$6$", "$5$", "$2b$"}) {
    for (const std::string password : {"secret", "p\xC3\xA4ssw\xC3\xB6rd \xE2\x82\xAC"}) {
      SCOPED_TRACE(prefix + password);
      setShadow(hashed(password, prefix) + ":19000:0:99999:7:::");
      EXPECT_TRUE(verify(folder_, "ann", password));
      EXPECT_FALSE(verify(folder_, "ann", password + "x"));
      EXPECT_FALSE(verify(folder_, "ann", "Secret"));
      EXPECT_FALSE(verify(folder_, "bob", password));
    }
  }
}

TEST_F(FilePasswordsTest, RefuseEmptyTextsAndTextsThatHoldNul) {
  using namespace std::string_literals;
  setShadow(hashed("secret", "$6$") + ":19000::::::");
  EXPECT_FALSE(verify(folder_, "ann", ""));
  EXPECT_FALSE(verify(folder_, "", "secret"));
  EXPECT_FALSE(verify(folder_, "ann", "secret\0"s));
  EXPECT_FALSE(verify(folder_, "ann\0x"s, "secret"));
}

TEST_F(FilePasswordsTest, RefuseAHashThatIsNone) {
  const std::string good = hashed("secret", "$6$");
  const std::string hashes[] = {"",         "*",        "!",   "!!",
                                "!" + good, "*" + good, "*0",  "*1",
                                "x",        "$",        "$y$", good.substr(0, good.size() - 1),
                                "secret"};
  for (const std::string& hash : hashes) {
    SCOPED_TRACE(hash);
    setShadow(hash + ":19000::::::");
    for (const char* password : {"secret", "*", "*0", "!", "x"}) {
      EXPECT_FALSE(verify(folder_, "ann", password));
    }
  }
}

TEST_F(FilePasswordsTest, FollowTheDatesOfTheAccount) {
  struct Case {
    const char* what;
    const char* dates;
    bool accepted;
  };
  const Case cases[] = {
      {"none", "::::::", true},
      {"aging off", "19000:0:99999:7:::", true},
      {"closes tomorrow", "19000:0:99999:7::20001:", true},
      {"closes today", "19000:0:99999:7::20000:", false},
      {"closed at the epoch", "19000:0:99999:7::0:", false},
      {"to be changed", "0:0:99999:7:::", false},
      {"on its last day", "19990:0:10:7:::", true},
      {"too old", "19989:0:10:7:::", false},
      {"too old but in grace", "19989:0:10:7:100::", false},
      {"unreadable change", "x:0:10:7:::", false},
      {"unreadable closing", "19000:0:99999:7::x:", false},
  };
  const std::string hash = hashed("secret", "$6$");
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    setShadow(hash + ":" + c.dates);
    EXPECT_EQ(verify(folder_, "ann", "secret"), c.accepted);
  }
}

TEST_F(FilePasswordsTest, TellWhetherAnAccountIsOpenWithoutItsPassword) {
  struct Case {
    const char* what;
    std::string shadow;
    bool isOpen;
  };
  const std::string hash = hashed("secret", "$6$");
  const Case cases[] = {
      {"as usual", hash + ":19000:0:99999:7:::", true},
      {"locked", "!" + hash + ":19000:0:99999:7:::", false},
      {"without password", "*:19000:0:99999:7:::", false},
      {"closed tomorrow", hash + ":19000:0:99999:7::20001:", true},
      {"closed today", hash + ":19000:0:99999:7::20000:", false},
      {"password to be changed", hash + ":0:0:99999:7:::", false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    setShadow(c.shadow);
    const FilePasswords passwords(folder_.root(), [] { return kToday; });
    EXPECT_EQ(passwords.isOpen("ann"), c.isOpen);
    EXPECT_FALSE(passwords.isOpen("bob"));
  }
}

TEST_F(FilePasswordsTest, NeedBothFilesToKnowTheAccount) {
  const std::string good = hashed("secret", "$6$");
  EXPECT_FALSE(verify(folder_, "ann", "secret")) << "no shadow file";
  setShadow(good + ":19000");
  EXPECT_FALSE(verify(folder_, "ann", "secret")) << "a line cut short";
  setShadow(good + ":19000::::::");
  folder_.write("passwd", "bob:x:502:20::/:/\n");
  EXPECT_FALSE(verify(folder_, "ann", "secret")) << "no account";
  folder_.write("passwd", "ann:x::20::/:/\n");
  EXPECT_FALSE(verify(folder_, "ann", "secret")) << "no id";
}

TEST_F(FilePasswordsTest, TakeAHashFromTheAccountLineOnlyWhenItStandsThere) {
  folder_.write("passwd", "ann:" + hashed("secret", "$6$") + ":501:20::/:/\nbob::502:20::/:/\n");
  setShadow(hashed("other", "$6$") + ":19000::::::");
  EXPECT_TRUE(verify(folder_, "ann", "secret"));
  EXPECT_FALSE(verify(folder_, "ann", "other"));
  EXPECT_FALSE(verify(folder_, "bob", "x"));
}

TEST_F(FilePasswordsTest, TakeTheDayFromTheSystemsClockByDefault) {
  setShadow(hashed("secret", "$6$") + ":19000:0:99999:7::19500:");
  EXPECT_FALSE(FilePasswords(folder_.root()).verify("ann", "secret"));
  setShadow(hashed("secret", "$6$") + ":19000:0:99999:7:::");
  EXPECT_TRUE(FilePasswords(folder_.root()).verify("ann", "secret"));
}

}  // namespace
}  // namespace vt
