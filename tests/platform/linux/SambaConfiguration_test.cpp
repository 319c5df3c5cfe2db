#include "platform/linux/SambaConfiguration.h"

#include <errno.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "platform/linux/LinuxTasks.h"
#include "platform/memory/MemoryTasks.h"
#include "support/ReadFile.h"
#include "support/TemporaryFolder.h"

namespace vt {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// The shares of a configuration of this text, as Samba's own testparm reads it.
SharedFolders sharesOf(const std::string& text) {
  TemporaryFolder folder;
  writeFile(folder / "smb.conf", text);
  LinuxTasks tasks;
  auto configuration = readSambaConfiguration(tasks, folder / "smb.conf");
  if (!configuration) return {{}, {configuration.error().text}};
  return std::move(configuration).value().shares;
}

TEST(SambaConfiguration, ListsSharesInTheirOrderByWhateverNamesTheirParametersHave) {
  EXPECT_THAT(
      sharesOf("[b]\npath = /srv/b\n[a]\nDirectory=/srv/a\n[c]\n  PA TH =  /srv/c  \n").folders,
      ElementsAre(SharedFolder{"b", "/srv/b"}, SharedFolder{"a", "/srv/a"},
                  SharedFolder{"c", "/srv/c"}));
}

TEST(SambaConfiguration, KeepsNamesAndPathsAsTheyAre) {
  struct Case {
    const char* what;
    const char* text;
    SharedFolder share;
  };
  const Case cases[] = {
      {"blanks", "[My Docs]\npath = /srv/my docs\n", {"My Docs", "/srv/my docs"}},
      {"umlauts", "[Bücher]\npath = /srv/Bücher\n", {"Bücher", "/srv/Bücher"}},
      {"quotes", "[it's \"x\"]\npath = /srv/it's \"x\"\n", {"it's \"x\"", "/srv/it's \"x\""}},
      {"a path in quotes", "[q]\npath = \"/srv/a b\"\n", {"q", "/srv/a b"}},
      {"comment characters", "[c]\npath = /srv/a;b#c\n", {"c", "/srv/a;b#c"}},
      {"equals", "[e=f]\npath = /srv/a=b\n", {"e=f", "/srv/a=b"}},
      {"slashes", "[s]\npath = //srv//./a/../b/\n", {"s", "/srv/b"}},
      {"a continued line", "[c]\npath = /srv/a\\\nb\n", {"c", "/srv/ab"}},
      {"carriage returns", "[r]\r\npath = /srv/r\r\n", {"r", "/srv/r"}},
      {"a percent sign that is none of Samba's",
       "[p]\npath = /srv/50%off %\n",
       {"p", "/srv/50%off %"}},
      {"a hidden share", "[h$]\npath = /srv/h\n", {"h$", "/srv/h"}},
      {"a path for all", "[global]\npath = /srv/all\n[a]\ncomment = x\n", {"a", "/srv/all"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const SharedFolders shares = sharesOf(c.text);
    EXPECT_THAT(shares.folders, ElementsAre(c.share));
    EXPECT_THAT(shares.notes, IsEmpty());
  }
}

TEST(SambaConfiguration, PassesOverWhatIsNoFolderOfItsOwn) {
  const SharedFolders shares = sharesOf(
      "[HOMES]\ncomment = x\n[Printers]\npath = /var/spool\nprintable = yes\n"
      "[Print$]\npath = /var/lib/samba/printers\n[IPC$]\npath = /tmp\n"
      "[laser]\npath = /var/spool\nprint ok = yes\n");
  EXPECT_THAT(shares.folders, IsEmpty());
  EXPECT_THAT(shares.notes, IsEmpty());
}

TEST(SambaConfiguration, TellsWhatItLeavesOutAndWhy) {
  struct Case {
    const char* text;
    const char* note;
  };
  const Case cases[] = {
      {"[a]\ncomment = x\n", "the Samba share \"a\" is left out: it has no path"},
      {"[a]\npath = \n", "the Samba share \"a\" is left out: it has no path"},
      {"[a]\npath = /srv/a\navailable = no\n",
       "the Samba share \"a\" is left out: it is not available"},
      {"[global]\navailable = no\n[a]\npath = /srv/a\n",
       "the Samba share \"a\" is left out: it is not available"},
      {"[a]\npath = /home/%U/x\n",
       "the Samba share \"a\" is left out: its path \"/home/%U/x\" depends on who asks"},
      {"[a]\npath = /srv/%$(HOME)\n",
       "the Samba share \"a\" is left out: its path \"/srv/%$(HOME)\" depends on who asks"},
      {"[a]\npath = srv/a\n",
       "the Samba share \"a\" is left out: its path \"srv/a\" is not absolute"},
      {"[a]\npath = /\n", "the Samba share \"a\" is left out: it is the whole file system"},
      {"[a]\npath = /srv/\xFF\n",
       "the Samba share \"a\" is left out: its name or path is not UTF-8"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    const SharedFolders shares = sharesOf(c.text);
    EXPECT_THAT(shares.folders, IsEmpty());
    EXPECT_THAT(shares.notes, ElementsAre(c.note));
  }
}

TEST(SambaConfiguration, KnowsEveryVariableThatSambaHas) {
  for (const char letter : std::string("UGhmLMRdaIJijTtDwvVSPugHNp$")) {
    SCOPED_TRACE(letter);
    const std::string output = std::string("[a]\n\tpath = /srv/x%") + letter + "\n";
    EXPECT_THAT(parseSambaConfiguration(output).shares.folders, IsEmpty());
  }
}

TEST(SambaConfiguration, FollowsIncludesAndCopies) {
  TemporaryFolder folder;
  writeFile(folder / "more.conf", "[included]\npath = /srv/included\n");
  const SharedFolders shares = sharesOf(
      "[template]\npath = /srv/t\navailable = no\n[a]\ncopy = template\npath = /srv/a\n"
      "available = yes\n[b]\ncopy = a\ninclude = " +
      (folder / "more.conf") + "\n");
  EXPECT_THAT(shares.folders, ElementsAre(SharedFolder{"a", "/srv/a"}, SharedFolder{"b", "/srv/a"},
                                          SharedFolder{"included", "/srv/included"}));
}

TEST(SambaConfiguration, SaysWhereUsersDeclareShares) {
  struct Case {
    const char* what;
    const char* text;
    std::string folder;
    std::size_t limit;
    bool ownOnly;
  };
  const Case cases[] = {
      {"as Debian builds Samba", "", "/var/lib/samba/usershares", 100, true},
      {"elsewhere", "[global]\nusershare path = /srv/us\n", "/srv/us", 100, true},
      {"switched off", "[global]\nusershare max shares = 0\n", "/var/lib/samba/usershares", 0,
       true},
      {"no folder", "[global]\nusershare path =\n", "", 100, true},
      {"of others", "[global]\nusershare owner only = no\n", "/var/lib/samba/usershares", 100,
       false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    TemporaryFolder folder;
    writeFile(folder / "smb.conf", c.text);
    LinuxTasks tasks;
    const auto configuration = readSambaConfiguration(tasks, folder / "smb.conf");
    ASSERT_TRUE(configuration);
    EXPECT_EQ(configuration->usershareFolder, c.folder);
    EXPECT_EQ(configuration->usershareLimit, c.limit);
    EXPECT_EQ(configuration->userSharesOwnOnly, c.ownOnly);
  }
}

TEST(SambaConfiguration, IsReadThoughTheFoldersOfTheServerAreMissing) {
  EXPECT_THAT(sharesOf("[global]\nstate directory = /no/such/place\n[a]\npath = /srv/a\n").folders,
              ElementsAre(SharedFolder{"a", "/srv/a"}));
}

TEST(SambaConfiguration, OfABrokenFileIsAnErrorInTestparmsWords) {
  TemporaryFolder folder;
  writeFile(folder / "smb.conf", "[global]\nfoo = bar\n[a\npath = /srv/a\n");
  LinuxTasks tasks;
  const auto configuration = readSambaConfiguration(tasks, folder / "smb.conf");
  ASSERT_FALSE(configuration);
  EXPECT_EQ(configuration.error().text,
            "testparm could not read " + (folder / "smb.conf") +
                ": Unknown parameter encountered: \"foo\" Ignoring unknown parameter \"foo\" Error "
                "loading services.");
}

TEST(SambaConfiguration, SurvivesAMegabyteOfGarbage) {
  TemporaryFolder folder;
  std::mt19937 random(1);
  std::string garbage(1000000, '\0');
  for (char& c : garbage) c = static_cast<char>(random());
  writeFile(folder / "smb.conf", garbage);
  LinuxTasks tasks;
  EXPECT_FALSE(readSambaConfiguration(tasks, folder / "smb.conf"));
  EXPECT_THAT(parseSambaConfiguration(garbage).shares.folders, IsEmpty());
}

TEST(SambaConfiguration, SaysHowTestparmFailed) {
  struct Case {
    const char* what;
    TaskResult result;
    const char* text;
  };
  const Case cases[] = {
      {"missing", {TaskEnd::kNotStarted, ENOENT, {}, {}}, "testparm is not installed"},
      {"out of processes", {TaskEnd::kNotStarted, EAGAIN, {}, {}}, "temporarily unavailable"},
      {"too slow", {TaskEnd::kTimedOut, 0, {}, {}}, "it took too long"},
      {"too long", {TaskEnd::kTooMuchOutput, 0, {}, {}}, "its output is too long"},
      {"killed", {TaskEnd::kSignalled, 11, {}, {}}, "signal 11"},
      {"silent", {TaskEnd::kExited, 1, "[a]\n\tpath = /a\n", {}}, "it says nothing"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    MemoryTasks tasks;
    tasks.setScript("testparm", [&](const Task&) { return c.result; });
    const auto configuration = readSambaConfiguration(tasks, "/etc/samba/smb.conf");
    ASSERT_FALSE(configuration);
    EXPECT_THAT(configuration.error().text, HasSubstr(c.text));
    EXPECT_THAT(configuration.error().text, HasSubstr("/etc/samba/smb.conf"));
  }
}

TEST(SambaConfiguration, PassesOverLinesOfNoKnownForm) {
  EXPECT_THAT(
      parseSambaConfiguration("\tpath = /early\nnoise\n[a]\n\tnoise\n\tpath = /a\n]\n[\n[b]\n"
                              "\tpath = /b")
          .shares.folders,
      ElementsAre(SharedFolder{"a", "/a"}, SharedFolder{"b", "/b"}));
}

}  // namespace
}  // namespace vt
