#include "platform/linux/NetatalkConfiguration.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "support/ReadFile.h"
#include "support/TemporaryFolder.h"

namespace vt {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// The volumes of one text; its error as the only note.
SharedFolders volumesOf(std::string_view text) {
  NetatalkConfiguration configuration;
  const auto include = configuration.read(text);
  if (!include) return {{}, {include.error().text}};
  return configuration.volumes();
}

TEST(NetatalkConfiguration, ReadsEveryFormOfAVolume) {
  struct Case {
    const char* what;
    const char* text;
    SharedFolder volume;
  };
  const Case cases[] = {
      {"plain", "[Data]\npath = /srv/data\n", {"Data", "/srv/data"}},
      {"indented", "  [Data]\n\t path = /srv/data\n", {"Data", "/srv/data"}},
      {"no blanks", "[Data]\npath=/srv/data", {"Data", "/srv/data"}},
      {"a name of its own", "[d]\npath = /srv/d\nvolume name = My Data\n", {"My Data", "/srv/d"}},
      {"an empty name", "[d]\npath = /srv/d\nvolume name =\n", {"d", "/srv/d"}},
      {"case and blanks in names", "[d]\nP A TH = /srv/d\nVolumeName = D\n", {"D", "/srv/d"}},
      {"blanks in a section's name", "[ My  Data ]\npath = /srv/d\n", {"My  Data", "/srv/d"}},
      {"umlauts", "[Bücher]\npath = /srv/Bücher\n", {"Bücher", "/srv/Bücher"}},
      {"a second equals sign", "[d]\npath = /srv/a=b\n", {"d", "/srv/a=b"}},
      {"quotes", "[d]\npath = \"/srv/a;b #c \"\n", {"d", "/srv/a;b #c "}},
      {"single quotes", "[d]\npath = '/srv/a;b'\n", {"d", "/srv/a;b"}},
      {"an open quote", "[d]\npath = \"/srv/d\n", {"d", "/srv/d"}},
      {"quotes inside", "[it's]\npath = /srv/it's\n", {"it's", "/srv/it's"}},
      {"a comment behind the value", "[d]\npath = /srv/d ; here\n", {"d", "/srv/d"}},
      {"comment lines", "# [x]\n[d]\n ; path = /x\npath = /srv/d\n#", {"d", "/srv/d"}},
      {"a comment that goes on", "; path \\\n[x]\n[d]\npath = /srv/d\n", {"d", "/srv/d"}},
      {"a line that goes on", "[d]\npath = /srv\\  \n/d\n", {"d", "/srv/d"}},
      {"carriage returns", "[d]\r\npath = /srv\\\r\n/d\r\n\r\n", {"d", "/srv/d"}},
      {"the same parameter again", "[d]\npath = /x\npath = /srv/d\n", {"d", "/srv/d"}},
      {"the same section again",
       "[d]\npath = /x\n[e]\n[D]\npath = /srv/d\n[e]\npath=/\n",
       {"d", "/srv/d"}},
      {"a dollar at the end", "[d$]\npath = /srv/d$\n", {"d$", "/srv/d$"}},
      {"slashes", "[d]\npath = /srv//./d/\n", {"d", "/srv/d"}},
      {"a parameter before any section", "path = /x\n[d]\npath = /srv/d\n", {"d", "/srv/d"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_THAT(volumesOf(c.text).folders, ElementsAre(c.volume));
  }
}

TEST(NetatalkConfiguration, PassesOverGlobalHomesAndPresets) {
  const SharedFolders volumes = volumesOf(
      "[ GLOBAL ]\npath = /g\nvol preset = for all\n[homes]\npath = /h\nbasedir regex = /home\n"
      "[For All]\npath = /p\n[one]\npath = /srv/one\nvol preset = Default Values\n"
      "[default_values]\npath = /srv/two\n[DefaultValues]\npath = /q\n");
  EXPECT_THAT(volumes.folders, ElementsAre(SharedFolder{"one", "/srv/one"},
                                           SharedFolder{"default_values", "/srv/two"}));
  EXPECT_THAT(volumes.notes, IsEmpty());
}

TEST(NetatalkConfiguration, TellsWhatItLeavesOutAndWhy) {
  struct Case {
    const char* text;
    const char* note;
  };
  const Case cases[] = {
      {"[a]\n", "the AFP volume \"a\" is left out: it has no path"},
      {"[a]\npath = \"\"\n", "the AFP volume \"a\" is left out: it has no path"},
      {"[a]\npath = /home/$u\n",
       "the AFP volume \"a\" is left out: its path \"/home/$u\" depends on who asks"},
      {"[a]\npath = /a\nvolume name = $v of $h\n",
       "the AFP volume \"$v of $h\" is left out: its name depends on who asks"},
      {"[a]\npath = ~\n", "the AFP volume \"a\" is left out: its path \"~\" is not absolute"},
      {"[a]\npath = /\n", "the AFP volume \"a\" is left out: it is the whole file system"},
      {"[\xFF]\npath = /a\n", "the AFP volume \"\xFF\" is left out: its name or path is not UTF-8"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    const SharedFolders volumes = volumesOf(c.text);
    EXPECT_THAT(volumes.folders, IsEmpty());
    EXPECT_THAT(volumes.notes, ElementsAre(c.note));
  }
}

TEST(NetatalkConfiguration, IsAnErrorAtTheFirstLineOfNoKnownForm) {
  struct Case {
    const char* text;
    const char* error;
  };
  const Case cases[] = {
      {"[a]\npath = /a\nnonsense\n", "line 3: it is neither a section nor a parameter"},
      {"[a\n", "line 1: it is neither a section nor a parameter"},
      {"\n\n[ ]\n", "line 3: the section has no name"},
      {"[a]\n= /a\n", "line 2: the parameter has no name"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_THAT(volumesOf(c.text).notes, ElementsAre(c.error));
  }
}

TEST(NetatalkConfiguration, GoesOnInAnIncludedFileAndNeverComesBack) {
  TemporaryFolder folder;
  writeFile(folder / "afp.conf",
            "[a]\ninclude = " + (folder / "more.conf") + "\npath = /never\n[b]\npath = /never\n");
  writeFile(folder / "more.conf", "path = /srv/a\n[c]\npath = /srv/c\n");
  const auto volumes = readNetatalkVolumes(folder / "afp.conf");
  ASSERT_TRUE(volumes);
  EXPECT_THAT(volumes->folders,
              ElementsAre(SharedFolder{"a", "/srv/a"}, SharedFolder{"c", "/srv/c"}));
}

TEST(NetatalkConfiguration, CannotBeReadWhenAFileCannot) {
  TemporaryFolder folder;
  writeFile(folder / "loop.conf", "include = " + (folder / "loop.conf") + "\n");
  writeFile(folder / "gone.conf", "[a]\ninclude = /no/such/file\n");
  writeFile(folder / "broken.conf", "[a\n");
  struct Case {
    std::string file;
    const char* error;
  };
  const Case cases[] = {
      {folder / "loop.conf", "includes too many files"},
      {folder / "gone.conf", "open /no/such/file: No such file or directory"},
      {folder / "broken.conf", "broken.conf, line 1: it is neither"},
      {folder / "missing.conf", "No such file or directory"},
      {folder.path(), "Is a directory"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.file);
    const auto volumes = readNetatalkVolumes(c.file);
    ASSERT_FALSE(volumes);
    EXPECT_THAT(volumes.error().text, HasSubstr(c.error));
  }
}

TEST(NetatalkConfiguration, SurvivesAMegabyteOfGarbage) {
  std::mt19937 random(1);
  std::string garbage(1000000, '\0');
  for (char& c : garbage) c = static_cast<char>(random());
  EXPECT_THAT(volumesOf(garbage).folders, IsEmpty());
}

}  // namespace
}  // namespace vt
