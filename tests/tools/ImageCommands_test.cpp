#include <gmock/gmock.h>
#include <pty.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <array>

#include "support/Places.h"
#include "tools/ImageCommandTest.h"

namespace vt {
namespace {

using std::filesystem::exists;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class ImageCommands : public ImageCommandTest {
 protected:
  /// What the command writes on a terminal of that type.
  std::string shownOnTerminal(const std::vector<std::string>& command, const char* type) const {
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (child == 0) {
      for (const auto& [name, value] : environment()) setenv(name.c_str(), value.c_str(), 1);
      setenv("TERM", type, 1);
      std::vector<char*> arguments;
      for (const std::string& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
      arguments.push_back(nullptr);
      execv(arguments[0], arguments.data());
      _exit(127);
    }
    std::string shown;
    std::array<char, 4096> block;
    ssize_t count = 0;
    while ((count = read(terminal, block.data(), block.size())) > 0) {
      shown.append(block.data(), static_cast<std::size_t>(count));
    }
    close(terminal);
    waitpid(child, nullptr, 0);
    return shown;
  }
};

TEST_F(ImageCommands, MakeAThumbnailInTheCache) {
  const ProgramResult result = vistaro({"thumbnail", addPicture("a.png")});
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  EXPECT_THAT(result.output, StartsWith(root_ / "Library/Caches/Vistaro/Thumbnails/"));
  EXPECT_EQ(sizeToldIn(result), "128x64");
  const ProgramResult small = vistaro({"thumbnail", "--small", tree_ / "a.png"});
  EXPECT_THAT(small.output, EndsWith("_small.png\n"));
  EXPECT_EQ(sizeToldIn(small), "65x33");
}

TEST_F(ImageCommands, MakeAPictureOfAnySizeInAFolder) {
  const std::string path = addPicture("a.png", 900, 600);
  const ProgramResult result =
      vistaro({"thumbnail", "--size", "300", "--output", root_ / "tmp", path});
  EXPECT_EQ(result.output, (root_ / "tmp/a.png.png") + "\n") << result.errors;
  EXPECT_EQ(sizeToldIn(result), "300x200");
  EXPECT_EQ(vistaro({"thumbnail", "--size", "300", path}).exitCode, 2);
  EXPECT_EQ(vistaro({"thumbnail", "--size", "0", "--output", "/tmp", path}).exitCode, 2);
  EXPECT_EQ(vistaro({"thumbnail", "--size", "5000", "--output", "/tmp", path}).exitCode, 2);
}

TEST_F(ImageCommands, TellOfEachFileThatHasNone) {
  const ProgramResult result = vistaro({"thumbnail", tree_ / "missing", addPicture("a.png")});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_THAT(result.errors, HasSubstr("missing: no thumbnail can be made"));
  EXPECT_EQ(vistaro({"thumbnail", tree_ / "missing"}).exitCode, 1);
}

TEST_F(ImageCommands, ShowNobodyWhatTheyMayNotRead) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can act for others";
  const std::string path = addPicture("a.png");
  EXPECT_EQ(vistaro({"thumbnail", path}).exitCode, 0);
  chmod(path.c_str(), 0600);
  const ProgramResult result = vistaro({"thumbnail", "--user", "ann", path});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.output, "") << "though there is one";
  EXPECT_EQ(vistaro({"preview", "--user", "ann", path}).exitCode, 1);
  chmod(path.c_str(), 0644);
  EXPECT_EQ(sizeToldIn(vistaro({"thumbnail", "--user", "ann", path})), "128x64");
}

TEST_F(ImageCommands, MakeAPreviewForAUser) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can act for others";
  const std::string path = addPicture("a.png", 2000, 1000);
  const ProgramResult result = vistaro({"preview", "--user", "ann", path});
  EXPECT_EQ(result.output, (root_ / "Library/Caches/Vistaro/Preview-ann.png") + "\n");
  EXPECT_EQ(sizeToldIn(result), "1024x512");
  EXPECT_EQ(vistaro({"preview", path}).output,
            (root_ / "Library/Caches/Vistaro/Preview-root.png") + "\n");
}

TEST_F(ImageCommands, ShowTheIconOfAFolder) {
  EXPECT_EQ(sizeToldIn(vistaro({"thumbnail", tree_.path()})), "128x128");
}

TEST_F(ImageCommands, TellOnATerminalHowFarTheyAre) {
  std::vector<std::string> command = {builtProgram("vistaro"), "thumbnail"};
  for (int i = 0; i < 300; ++i) {
    const std::string path = tree_ / (std::to_string(i) + ".txt");
    write(path, "words");
    command.push_back(path);
  }
  // A line is there at most once in a while, and gone before anything else is written.
  EXPECT_THAT(shownOnTerminal(command, "xterm"),
              testing::ContainsRegex("\r\x1b\\[K[0-9]+ of 300 thumbnails\r\x1b\\[K/"));
  EXPECT_THAT(shownOnTerminal(command, "dumb"), Not(HasSubstr("of 300")));
}

TEST_F(ImageCommands, TakeANameOfAnyBytes) {
  std::string name(251, 'n');
  name[3] = '\n';
  name[4] = '\xff';
  const std::string path = tree_ / (name + ".png");
  std::filesystem::rename(addPicture("a.png"), path);
  const ProgramResult result = vistaro({"thumbnail", path});
  EXPECT_EQ(sizeToldIn(result), "128x64");
  // The tool would have to write a file whose name is too long.
  EXPECT_EQ(qlmanage({"-t", path, "-s", "128", "-o", root_ / "tmp"}).exitCode, 1);
  const ProgramResult beside =
      vistaro({"thumbnail", "--size", "300", "--output", root_ / "tmp", path});
  EXPECT_EQ(beside.exitCode, 1);
  EXPECT_THAT(beside.errors, HasSubstr("nnn\\x0a\xef\xbf\xbd"
                                       "nnn"));
  EXPECT_TRUE(std::filesystem::is_empty(root_ / "tmp"));
}

TEST_F(ImageCommands, ShowTheIconOfWhatHasNoContent) {
  write(tree_ / "empty.png", "");
  mkfifo((tree_ / "pipe.png").c_str(), 0644);
  for (const char* name : {"empty.png", "pipe.png"}) {
    EXPECT_EQ(sizeToldIn(vistaro({"thumbnail", tree_ / name})), "128x128") << name;
    EXPECT_EQ(qlmanage({"-t", tree_ / name, "-s", "128", "-o", root_ / "tmp"}).exitCode, 1);
  }
  EXPECT_EQ(sizeToldIn(vistaro({"thumbnail", "/dev/zero"})), "128x128");
  EXPECT_EQ(qlmanage({"-t", "/dev/zero", "-s", "128", "-o", root_ / "tmp"}).exitCode, 1);
}

TEST_F(ImageCommands, SayNoWhereTheCacheCannotBe) {
  std::filesystem::remove_all(root_ / "Library/Caches");
  write(root_ / "Library/Caches", "in the way");
  const std::string path = addPicture("a.png");
  for (const char* command : {"thumbnail", "preview"}) {
    const ProgramResult result = vistaro({command, path});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.errors, HasSubstr("can be made"));
  }
}

TEST_F(ImageCommands, MakeTheCacheWhereThereIsNone) {
  std::filesystem::remove_all(root_ / "Library");
  EXPECT_EQ(sizeToldIn(vistaro({"thumbnail", addPicture("a.png")})), "128x64");
}

TEST_F(ImageCommands, LeaveNoHalfFileOnAFullDisk) {
  const std::string path = addPicture("a.png");
  // As on a full disk, no file grows past a few bytes; the signal for that is at its default.
  const ProgramResult result = runProgram({"sh", "-c", "trap '' XFSZ; ulimit -f 0; exec \"$@\"",
                                           "sh", builtProgram("vistaro"), "thumbnail", path},
                                          environment());
  EXPECT_EQ(result.exitCode, 1) << result.output;
  EXPECT_TRUE(std::filesystem::is_empty(root_ / "Library/Caches/Vistaro/Thumbnails"));
}

TEST_F(ImageCommands, OfTheToolWriteNextToTheNameOfTheFile) {
  const std::string path = addPicture("a.png");
  const ProgramResult result =
      qlmanage({"-t", "-i", path, "-s", "128.000000", "-o", root_ / "tmp"});
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  EXPECT_EQ(readPng(readFile(root_ / "tmp/a.png.png"))->image.width, 128U);
}

TEST_F(ImageCommands, OfTheToolFailWithoutAThumbnail) {
  addFile("a.bin");
  const std::string picture = addPicture("a.png");
  EXPECT_EQ(qlmanage({"-t", tree_ / "a.bin", "-s", "128", "-o", root_ / "tmp"}).exitCode, 1);
  EXPECT_EQ(qlmanage({"-t", tree_ / "missing", "-s", "128", "-o", root_ / "tmp"}).exitCode, 1);
  EXPECT_EQ(qlmanage({"-t", picture, "-s", "128", "-o", root_ / "missing"}).exitCode, 1);
  EXPECT_TRUE(std::filesystem::is_empty(root_ / "tmp"));
}

TEST_F(ImageCommands, OfTheToolTakeTheseArgumentsAlone) {
  const std::string picture = addPicture("a.png");
  const std::vector<std::string> wrong[] = {
      {},
      {picture},
      {"-t"},
      {"-t", picture, "-s"},
      {"-t", picture, "-s", "large"},
      {"-t", picture, picture},
      {"-x", "-t", picture},
  };
  for (const auto& arguments : wrong) EXPECT_EQ(qlmanage(arguments).exitCode, 2);
}

}  // namespace
}  // namespace vt
