#include <gmock/gmock.h>

#include "support/Places.h"
#include "tools/ImageCommandTest.h"

namespace vt {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

constexpr const char* kNoWalls =
    "note   thumbnails: files cannot be decoded behind walls here, or the image worker is missing: "
    "every file shows its icon\n";

/// Runs the commands as on machines that lack what walls are made of.
class ImageWalls : public ImageCommandTest {
 protected:
  ProgramResult vistaroWithout(const std::vector<std::string>& walls,
                               const std::vector<std::string>& arguments) const {
    std::vector<std::string> command = {testProgram("without_walls")};
    command.insert(command.end(), walls.begin(), walls.end());
    command.insert(command.end(), {"--", builtProgram("vistaro")});
    command.insert(command.end(), arguments.begin(), arguments.end());
    return runProgram(command, environment());
  }
  /// What `vistaro doctor` says, and the size of a picture's thumbnail: that of an icon is square.
  std::pair<std::string, std::string> seenWithout(const std::vector<std::string>& walls) {
    const std::string path = addPicture("a.png");
    return {vistaroWithout(walls, {"doctor"}).output,
            sizeToldIn(vistaroWithout(walls, {"thumbnail", path}))};
  }
};

TEST_F(ImageWalls, AreAllRaisedWhereTheyCanBe) {
  const auto [told, size] = seenWithout({});
  EXPECT_EQ(size, "128x64");
  if (told.find("bubblewrap") == told.npos) GTEST_SKIP() << "bubblewrap cannot run here";
  EXPECT_THAT(told, ContainsRegex("thumbnails are made behind bubblewrap, (Landlock, )?seccomp\n"));
}

TEST_F(ImageWalls, AreLandlockAndSeccompWithoutNamespaces) {
  const auto [told, size] = seenWithout({"namespaces"});
  EXPECT_THAT(told, HasSubstr("ok     thumbnails are made behind Landlock, seccomp\n"));
  EXPECT_EQ(size, "128x64");
}

TEST_F(ImageWalls, AreBubblewrapAndSeccompWithoutLandlock) {
  if (seenWithout({}).first.find("bubblewrap") == std::string::npos) {
    GTEST_SKIP() << "bubblewrap cannot run here";
  }
  std::filesystem::remove_all(root_ / "Library/Caches/Vistaro");
  const auto [told, size] = seenWithout({"landlock"});
  EXPECT_THAT(told, HasSubstr("ok     thumbnails are made behind bubblewrap, seccomp\n"));
  EXPECT_EQ(size, "128x64");
}

TEST_F(ImageWalls, AreNotDoneWithoutSoThatIconsAreShown) {
  const std::vector<std::string> cases[] = {
      {"namespaces", "landlock"},
      {"seccomp"},
      {"namespaces", "landlock", "seccomp"},
  };
  for (const std::vector<std::string>& walls : cases) {
    SCOPED_TRACE(walls[0]);
    std::filesystem::remove_all(root_ / "Library/Caches/Vistaro");
    const auto [told, size] = seenWithout(walls);
    EXPECT_THAT(told, HasSubstr(kNoWalls));
    EXPECT_THAT(told, Not(HasSubstr("thumbnails are made behind")));
    EXPECT_EQ(size, "128x128");
    const ProgramResult preview = vistaroWithout(walls, {"preview", tree_ / "a.png"});
    EXPECT_EQ(sizeToldIn(preview), "1024x1024");
  }
}

}  // namespace
}  // namespace vt
