#include "metadata/extract/PlainTextExtractor.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include "metadata/live/Descriptor.h"
#include "metadata/live/PlainTextReader.h"
#include "metadata/types/ShippedTypes.h"
#include "support/ReadFile.h"
#include "support/TemporaryFolder.h"

namespace vt {
namespace {

class PlainTextExtractorTest : public testing::Test {
 protected:
  std::optional<std::string> textOf(const std::string& bytes) {
    const TemporaryFolder folder;
    writeFile(folder / "file.txt", bytes);
    const Descriptor file(open((folder / "file.txt").c_str(), O_RDONLY | O_CLOEXEC));
    const auto found = extractor_.extract(file.get(), types_.typeOfFile("file.txt"));
    EXPECT_TRUE(found);
    EXPECT_TRUE(found->attributes.empty());
    return found->text;
  }

  const ContentTypes types_ = shippedTypes();
  PlainTextExtractor extractor_{types_};
};

TEST_F(PlainTextExtractorTest, TakesTextAndSourceFilesAlone) {
  for (const char* name : {"notes.txt", "program.c", "page.html", "table.csv"}) {
    SCOPED_TRACE(name);
    EXPECT_TRUE(extractor_.takes(types_.typeOfFile(name)));
  }
  for (const char* name : {"photo.jpg", "paper.pdf", "unknown"}) {
    SCOPED_TRACE(name);
    EXPECT_FALSE(extractor_.takes(types_.typeOfFile(name)));
  }
}

TEST_F(PlainTextExtractorTest, GivesTextOfAnyEncodingAsUTF8) {
  EXPECT_EQ(textOf("some words"), "some words");
  EXPECT_EQ(textOf("Gr\xF6\xDF"
                   "e"),
            "Größe");
  EXPECT_EQ(textOf(std::string("\xFF\xFE"
                               "a\0\xF6\0",
                               6)),
            "aö");
}

TEST_F(PlainTextExtractorTest, GivesAnEmptyTextForAnEmptyFile) { EXPECT_EQ(textOf(""), ""); }

TEST_F(PlainTextExtractorTest, LooksNoFurtherThanAWalkDoes) {
  EXPECT_EQ(textOf(std::string(kMostTextBytes, 'x') + "beyond"), std::string(kMostTextBytes, 'x'));
}

}  // namespace
}  // namespace vt
