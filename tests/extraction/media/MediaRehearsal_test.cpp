#include <gmock/gmock.h>

#include <string>

#include "extraction/media/Extracted.h"
#include "extraction/rehearsal/RehearsalFile.h"
#include "support/ReadFile.h"
#include "support/TemporaryFolder.h"

namespace vt {
namespace {

using testing::Contains;
using testing::HasSubstr;

// Whoever stops at an error sets up no more than that takes.
class MediaRehearsal : public testing::Test {
 protected:
  std::string written(const std::string& name, const RehearsalFile& file) const {
    writeFile(folder_ / name, file.bytes);
    return folder_ / name;
  }

 private:
  TemporaryFolder folder_;
};

TEST_F(MediaRehearsal, IsReadToItsEndAsMail) {
  const auto files = rehearsalOfMail();
  ASSERT_EQ(files.size(), 2U);
  const std::string plain = written("a.eml", files[0]);
  EXPECT_THAT(textIn(plain), HasSubstr("over the lazy dog."));
  EXPECT_THAT(attributesIn(plain), Contains("kMDItemSubject '\u00e9t\u00e9 and plain words'"));
  EXPECT_THAT(attributesIn(plain), Contains("kMDItemRecipients ['\u00c9tienne', "
                                            "'others@example.org', '\u00e9t']"));
  const std::string text = textIn(written("b.eml", files[1]));
  EXPECT_THAT(text, HasSubstr("d\u00e9j\u00e0 vu"));
  EXPECT_THAT(text, HasSubstr("a.bin"));
}

TEST_F(MediaRehearsal, IsReadToItsEndAsPictures) {
  const auto files = rehearsalOfPictures();
  ASSERT_EQ(files.size(), 3U);
  EXPECT_THAT(attributesIn(written("a.jpg", files[0])), Contains("kMDItemPixelWidth 8"));
  const auto told = attributesIn(written("b.jpg", files[1]));
  for (const char* line :
       {"kMDItemAcquisitionMake 'Vistaro'", "kMDItemTitle 'Rehearsal'", "kMDItemFNumber 2.8",
        "kMDItemStarRating 3", "kMDItemDescription 'text'", "kMDItemKeywords ['a']"}) {
    EXPECT_THAT(told, Contains(line));
  }
  EXPECT_THAT(attributesIn(written("c.png", files[2])), Contains("kMDItemPixelWidth 1"));
}

}  // namespace
}  // namespace vt
