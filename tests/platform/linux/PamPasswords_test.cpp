#include "platform/linux/PamPasswords.h"

#include <grp.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <random>
#include <sstream>

#include "../AccountFolder.h"
#include "platform/linux/Accounts.h"
#include "platform/linux/AuthProtocol.h"
#include "support/Places.h"

namespace vt {
namespace {

using namespace std::string_literals;

// A service file that every Debian system has. The stand-ins below never look at it.
constexpr const char* kPresentService = "passwd";

std::string randomName() {
  std::random_device random;
  return "vt" + std::to_string(random() % 100000000);
}

bool run(const std::string& command) {
  return std::system((command + " >/dev/null 2>&1").c_str()) == 0;
}

/// A user of this system and a PAM service, both of random names, both gone with this object.
class RealUser {
 public:
  explicit RealUser(const std::string& password) {
    std::ofstream("/etc/pam.d/" + service) << "auth required pam_unix.so\n"
                                              "account required pam_unix.so\n";
    isReady_ = run("useradd --no-create-home " + name) && setPassword(password);
  }
  RealUser(const RealUser&) = delete;
  RealUser& operator=(const RealUser&) = delete;
  ~RealUser() {
    run("userdel " + name);
    std::filesystem::remove("/etc/pam.d/" + service);
  }

  bool isReady() const { return isReady_; }
  bool setPassword(const std::string& password) const {
    TemporaryFolder folder;
    std::ofstream(folder / "line") << name << ":" << password << "\n";
    return run("chpasswd < " + (folder / "line"));
  }

  const std::string name = randomName();
  const std::string service = name + "-service";

 private:
  bool isReady_ = false;
};

PamPasswords passwordsBy(const std::string& helper, const std::string& service,
                         std::chrono::milliseconds limit = std::chrono::seconds(15)) {
  return PamPasswords({helper, service, limit});
}

TEST(PamPasswords, FollowThePasswordAndTheStateOfARealAccount) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can make a user";
  RealUser user("right");
  ASSERT_TRUE(user.isReady());
  const PamPasswords passwords = passwordsBy(builtProgram("vistaro-auth"), user.service);
  const auto verify = [&](const std::string& password) {
    return passwords.verify(user.name, password);
  };
  EXPECT_TRUE(verify("right"));
  EXPECT_FALSE(verify("wrong"));
  EXPECT_FALSE(verify(""));
  EXPECT_FALSE(verify("right\0"s));
  EXPECT_FALSE(passwords.verify(user.name + "\0x"s, "right"));
  EXPECT_FALSE(passwords.verify(randomName(), "right"));
  EXPECT_FALSE(passwords.verify("", "right"));
  EXPECT_FALSE(verify(std::string(1025, 'x')));

  ASSERT_TRUE(user.setPassword("p\xC3\xA4ss\xE2\x82\xACwort"));
  EXPECT_TRUE(verify("p\xC3\xA4ss\xE2\x82\xACwort"));
  EXPECT_FALSE(verify("right"));

  ASSERT_TRUE(run("usermod -L " + user.name));
  EXPECT_FALSE(verify("p\xC3\xA4ss\xE2\x82\xACwort")) << "locked";
  ASSERT_TRUE(run("usermod -U " + user.name));
  EXPECT_TRUE(verify("p\xC3\xA4ss\xE2\x82\xACwort"));
  ASSERT_TRUE(run("chage -E 2020-01-01 " + user.name));
  EXPECT_FALSE(verify("p\xC3\xA4ss\xE2\x82\xACwort")) << "expired";
  ASSERT_TRUE(run("chage -E -1 -d 0 " + user.name));
  EXPECT_FALSE(verify("p\xC3\xA4ss\xE2\x82\xACwort")) << "to be changed";
}

TEST(PamPasswords, RefuseWithoutAServiceFileEvenWhereOtherServicesWouldDo) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can make a user";
  RealUser user("right");
  ASSERT_TRUE(user.isReady());
  for (const std::string& service :
       {user.service + "-not"s, ""s, "../pam.d/" + user.service, "."s, user.service + "\0"s}) {
    SCOPED_TRACE(service);
    EXPECT_FALSE(passwordsBy(builtProgram("vistaro-auth"), service).verify(user.name, "right"));
  }
}

TEST(PamPasswords, GiveAUserAnswersAboutThemselvesOnly) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can make a user";
  RealUser user("right");
  RealUser other("right");
  ASSERT_TRUE(user.isReady() && other.isReady());
  TemporaryFolder folder;  // the folder of the build may be closed to this user
  const std::string helper = folder / "helper";
  std::filesystem::copy_file(builtProgram("vistaro-auth"), helper);
  const pid_t child = fork();
  if (child == 0) {
    const std::optional<Account> account = systemAccounts()->accountNamed(user.name);
    if (!account || setgroups(0, nullptr) != 0) _exit(10);
    if (setgid(account->gid) != 0 || setuid(account->uid) != 0) _exit(11);
    const PamPasswords passwords = passwordsBy(helper, user.service);
    if (!passwords.verify(user.name, "right")) _exit(12);
    _exit(passwords.verify(other.name, "right") ? 13 : 0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0) << WEXITSTATUS(status);
}

/// A stand-in for the helper: a shell script that reads the request and then does `body`.
class StandIn {
 public:
  explicit StandIn(const std::string& body) {
    std::ofstream(path()) << "#!/bin/sh\ncat > " << folder_ / "request" << "\n" << body << "\n";
    std::filesystem::permissions(path(), std::filesystem::perms(0755));
  }

  std::string path() const { return folder_ / "helper"; }
  std::string file(std::string_view name) const {
    std::ostringstream text;
    text << std::ifstream(folder_ / name, std::ios::binary).rdbuf();
    return text.str();
  }
  std::string operator/(std::string_view name) const { return folder_ / name; }

  bool verify(std::chrono::milliseconds limit = std::chrono::seconds(15)) const {
    return passwordsBy(path(), kPresentService, limit).verify("ann", "secret");
  }

 private:
  TemporaryFolder folder_;
};

TEST(PamPasswords, AcceptOnlyAPlainYesByBothByteAndExitStatus) {
  struct Case {
    const char* what;
    const char* body;
    bool accepted;
  };
  const Case cases[] = {
      {"yes", "printf Y; exit 0", true},
      {"no", "printf N; exit 1", false},
      {"yes, but failed", "printf Y; exit 1", false},
      {"no, but succeeded", "printf N; exit 0", false},
      {"nothing", "exit 0", false},
      {"too much", "printf YY; exit 0", false},
      {"other", "printf y; exit 0", false},
      {"killed after yes", "printf Y; kill -9 $$", false},
      {"killed", "kill -9 $$", false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(StandIn(c.body).verify(), c.accepted);
  }
}

TEST(PamPasswords, EndAHelperThatTakesTooLong) {
  const std::chrono::milliseconds limit(200);
  for (const char* body :
       {"exec sleep 1000", "printf Y; exec sleep 1000", "printf Y; exec >&-; exec sleep 1000"}) {
    SCOPED_TRACE(body);
    const StandIn standIn("echo $$ > \"$0.pid\"; "s + body);
    EXPECT_FALSE(standIn.verify(limit));
    const std::string pid = standIn.file("helper.pid");
    // Nothing when the limit struck before the script had begun; else it must be gone.
    if (!pid.empty()) {
      EXPECT_NE(kill(std::stoi(pid), 0), 0);
    }
  }
}

TEST(PamPasswords, RefuseWhenTheHelperCannotBeStarted) {
  EXPECT_FALSE(passwordsBy("/nowhere/helper", kPresentService).verify("ann", "secret"));
  EXPECT_FALSE(passwordsBy("/etc/passwd", kPresentService).verify("ann", "secret"));
}

TEST(PamPasswords, AreCheckedWhateverTheApplicationDoesWithItsChildren) {
  const StandIn yes("printf Y; exit 0");
  const StandIn no("printf N; exit 1");
  struct sigaction ignore{};
  struct sigaction before{};
  ignore.sa_handler = SIG_IGN;
  sigaction(SIGCHLD, &ignore, &before);
  EXPECT_TRUE(yes.verify());
  EXPECT_FALSE(no.verify());
  sigaction(SIGCHLD, &before, nullptr);
}

TEST(PamPasswords, HandTheTextsOverThePipeAloneByteForByte) {
  const StandIn standIn(
      "tr '\\0' '\\n' < /proc/$$/cmdline > \"$0.args\"; env > \"$0.env\"; "
      "ls /proc/$$/fd > \"$0.fds\"; printf Y");
  setenv("VT_TEST_VARIABLE", "kept", 1);
  EXPECT_TRUE(standIn.verify());
  EXPECT_EQ(standIn.file("request"), "\3\0\0\0ann\6\0\0\0secret"s);
  EXPECT_EQ(standIn.file("helper.args").find("secret"), std::string::npos);
  EXPECT_EQ(standIn.file("helper.args").find("ann"), std::string::npos);
  EXPECT_EQ(standIn.file("helper.env").find("VT_TEST_VARIABLE"), std::string::npos);
  EXPECT_EQ(standIn.file("helper.fds").find("4\n"), std::string::npos);
}

/// Feeds `request` to the helper itself; its exit status and what it said.
std::pair<int, std::string> answerTo(const std::string& request, const std::string& arguments) {
  TemporaryFolder folder;
  std::ofstream(folder / "request", std::ios::binary) << request;
  const int status = std::system((builtProgram("vistaro-auth") + " " + arguments + " < " +
                                  (folder / "request") + " > " + (folder / "answer"))
                                     .c_str());
  std::ostringstream said;
  said << std::ifstream(folder / "answer").rdbuf();
  return {WEXITSTATUS(status), said.str()};
}

TEST(VistaroAuth, AnswersNoToARequestThatIsMalformed) {
  const std::string good = "\3\0\0\0ann\6\0\0\0secret"s;
  struct Case {
    const char* what;
    std::string request;
    const char* arguments;
  };
  const Case cases[] = {
      {"nothing", "", kPresentService},
      {"no password", "\3\0\0\0ann"s, kPresentService},
      {"cut short", good.substr(0, good.size() - 1), kPresentService},
      {"trailing byte", good + "x", kPresentService},
      {"empty name", "\0\0\0\0\6\0\0\0secret"s, kPresentService},
      {"empty password", "\3\0\0\0ann\0\0\0\0"s, kPresentService},
      {"NUL in the name", "\3\0\0\0a\0n\6\0\0\0secret"s, kPresentService},
      {"NUL in the password", "\3\0\0\0ann\6\0\0\0sec\0et"s, kPresentService},
      {"too long", "\1\4\0\0" + std::string(1025, 'x') + "\6\0\0\0secret"s, kPresentService},
      {"huge length", "\xFF\xFF\xFF\xFF"s + good, kPresentService},
      {"no service", good, ""},
      {"unknown service", good, "vt-no-such-service"},
      {"service elsewhere", good, "../pam.d/passwd"},
      {"two services", good, "passwd passwd"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(answerTo(c.request, c.arguments), std::pair(auth::kExitBadRequest, "N"s));
  }
}

TEST(VistaroAuth, KnowsTheNameOfAServiceFromAPath) {
  for (const char* name : {"vistaro", "a-1", "x"}) EXPECT_TRUE(auth::isServiceName(name)) << name;
  for (const char* name : {"", ".", "..", "a/b", "Vistaro", "a b", "a_b"}) {
    EXPECT_FALSE(auth::isServiceName(name)) << name;
  }
  EXPECT_FALSE(auth::isServiceName(std::string(65, 'a')));
}

}  // namespace
}  // namespace vt
