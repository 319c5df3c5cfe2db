#include <gmock/gmock.h>
#include <sys/stat.h>

#include <nlohmann/json.hpp>

#include "support/Places.h"
#include "tools/CommandTest.h"

namespace vt {
namespace {

using testing::HasSubstr;

class MimeCommand : public CommandTest {};

TEST_F(MimeCommand, TellsMimeTypeAndTypeOfEachFile) {
  const std::string report = addFile("report.pdf");
  const std::string note = addFile("note.txt");
  const ProgramResult result = vistaro({"mime", report, note, tree_.path()});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.output, "application/pdf  com.adobe.pdf      " + report +
                               "\n"
                               "text/plain       public.plain-text  " +
                               note +
                               "\n"
                               "-                public.folder      " +
                               tree_.path().string() + "\n");
  EXPECT_EQ(result.errors, "");
}

TEST_F(MimeCommand, FindsNothingWhenNoneHasAMimeType) {
  EXPECT_EQ(vistaro({"mime", tree_.path()}).exitCode, 1);
  const ProgramResult missing = vistaro({"mime", tree_ / "missing.pdf"});
  EXPECT_EQ(missing.exitCode, 1);
  EXPECT_EQ(missing.output, "");
  EXPECT_EQ(missing.errors,
            "vistaro: " + (tree_ / "missing.pdf") + ": no such file, or it may not be read\n");
  EXPECT_EQ(vistaro({"mime", tree_ / "missing.pdf", addFile("a.png")}).exitCode, 0);
}

TEST_F(MimeCommand, PrintsJSON) {
  const std::string odd = addFile("odd\xff.png");
  const ProgramResult result =
      vistaro({"mime", "--json", odd, tree_.path(), tree_ / "missing.pdf"});
  const auto files = nlohmann::json::parse(result.output);
  ASSERT_EQ(files.size(), 3U);
  EXPECT_EQ(files[0]["path"], tree_ / "odd\uFFFD.png");
  EXPECT_EQ(files[0]["contentType"], "public.png");
  EXPECT_EQ(files[0]["mimeType"], "image/png");
  EXPECT_EQ(files[1]["contentType"], "public.folder");
  EXPECT_TRUE(files[1]["mimeType"].is_null());
  EXPECT_TRUE(files[2]["contentType"].is_null());
}

TEST_F(MimeCommand, TakesAnyName) {
  for (const char* name : {"-.pdf", "--json.pdf", "[a,b].pdf", "./[a,b]", "a b.pdf", "search",
                           "mime", "odd\xff\n\x1b[2J.pdf", "--", "-"}) {
    SCOPED_TRACE(name);
    addFile(name);
    const std::string line = "cd '" + tree_.path().string() + "' && exec " +
                             builtProgram("vistaro") + " mime -- '" + name + "'";
    const ProgramResult result = runProgram({"sh", "-c", line}, environment());
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(std::ranges::count(result.output, '\n'), 1);
  }
}

TEST_F(MimeCommand, TellsNothingOfWhatTheCallerMayNotRead) {
  if (!canRunAs(2001)) GTEST_SKIP() << "needs root and a build that others may run";
  const std::string path = addFile("private.pdf");
  ASSERT_EQ(chmod(path.c_str(), 0600), 0);
  const ProgramResult result = vistaroAs(2001, {"mime", path});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.output, "");
}

TEST_F(MimeCommand, WantsAtLeastOneFileWithAName) {
  EXPECT_EQ(vistaro({"mime"}).exitCode, 2);
  EXPECT_EQ(vistaro({"mime", ""}).exitCode, 2);
  EXPECT_THAT(vistaro({"mime", "-x.pdf"}).errors, HasSubstr("there is no option -x.pdf"));
}

}  // namespace
}  // namespace vt
