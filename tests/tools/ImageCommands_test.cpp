#include <gmock/gmock.h>
#include <sys/stat.h>

#include "images/PngEncoder.h"
#include "support/PngReader.h"
#include "support/ReadFile.h"
#include "tools/CommandTest.h"

namespace vt {
namespace {

using std::filesystem::exists;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

class ImageCommands : public CommandTest {
 protected:
  /// A red picture below the tree.
  std::string addPicture(const std::string& name, std::uint32_t width = 300,
                         std::uint32_t height = 150) {
    Image image{width, height};
    for (std::uint32_t i = 0; i < width * height; ++i) image.pixels.append("\xff\0\0\xff", 4);
    std::string path = tree_ / name;
    write(path, *encodePng(image));
    return path;
  }
  /// The size of the PNG file that the command told of, as "128x64"; its output when there is none.
  static std::string sizeToldIn(const ProgramResult& result) {
    const auto png = readPng(readFile(result.output.substr(0, result.output.find('\n'))));
    if (!png) return result.output + result.errors;
    return std::to_string(png->image.width) + "x" + std::to_string(png->image.height);
  }
  ProgramResult qlmanage(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), VT_QLMANAGE);
    return runProgram(arguments, environment());
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
