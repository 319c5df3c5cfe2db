#include "extraction/media/PictureLayout.h"

#include <gtest/gtest.h>

#include <vector>

namespace vt {
namespace {

std::string png(char depth, char colour) {
  return std::string("\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\x02\x80\0\0\x01\xe0", 24) + depth + colour +
         std::string(7, '\0');
}

TEST(PictureLayout, IsToldByTheHeadOfAPNG) {
  struct Case {
    const char* what;
    char depth;
    char colour;
    std::uint32_t bits;
    const char* space;
    std::optional<bool> hasAlpha;
  };
  const Case cases[] = {{"gray", 16, 0, 16, "Gray", false},
                        {"colours", 8, 2, 8, "RGB", false},
                        {"palette", 4, 3, 8, "RGB", std::nullopt},
                        {"gray and alpha", 8, 4, 8, "Gray", true},
                        {"colours and alpha", 8, 6, 8, "RGB", true}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const auto layout = pictureLayoutOf(png(c.depth, c.colour));
    ASSERT_TRUE(layout);
    EXPECT_EQ(layout->width, 640U);
    EXPECT_EQ(layout->height, 480U);
    EXPECT_EQ(layout->bitsPerSample, c.bits);
    EXPECT_EQ(layout->colorSpace, c.space);
    EXPECT_EQ(layout->hasAlpha, c.hasAlpha);
  }
}

TEST(PictureLayout, IsToldByTheFrameOfAJPEGWhateverStandsBeforeIt) {
  const std::string segment("\xff\xe0\0\x06JFIF", 8);
  const std::string tables("\xff\xc4\0\x04xx", 6);
  for (const int components : {1, 3, 4}) {
    SCOPED_TRACE(components);
    const std::string frame = std::string("\xff\xff\xc2\0\x11\x08\x01\xe0\x02\x80", 10) +
                              static_cast<char>(components) + std::string(20, '\0');
    const auto layout = pictureLayoutOf("\xff\xd8" + segment + tables + frame);
    ASSERT_TRUE(layout);
    EXPECT_EQ(layout->width, 640U);
    EXPECT_EQ(layout->height, 480U);
    EXPECT_EQ(layout->bitsPerSample, 8U);
    EXPECT_EQ(layout->colorSpace, components == 1 ? "Gray" : components == 3 ? "RGB" : "CMYK");
  }
}

TEST(PictureLayout, IsToldByTheHeadOfAGIF) {
  const auto layout = pictureLayoutOf(std::string("GIF89a\x80\x02\xe0\x01\0\0\0", 13));
  ASSERT_TRUE(layout);
  EXPECT_EQ(layout->width, 640U);
  EXPECT_EQ(layout->height, 480U);
}

TEST(PictureLayout, IsNotToldByWhatIsCutOffOrAnotherFormat) {
  for (const std::string& whole :
       {png(8, 2), std::string("\xff\xd8\xff\xe0\0\x06JFIF", 10), std::string("GIF89a"),
        std::string("BM and more"), std::string("\xff\xd8 no marker, but more bytes")}) {
    const std::size_t longest = whole.starts_with("\x89PNG") ? whole.size() - 1 : whole.size();
    for (std::size_t size = 0; size <= longest; ++size) {
      EXPECT_FALSE(pictureLayoutOf(whole.substr(0, size))) << size;
    }
  }
}

/// A profile with one element, "desc".
std::string profile(std::string_view space, const std::string& element) {
  const auto size = static_cast<char>(element.size());
  return std::string(16, '\0') + std::string(space) + std::string(108, '\0') +
         std::string("\0\0\0\1desc\0\0\0\x90\0\0\0", 15) + size + element;
}

TEST(ColorProfile, TellsItsNameAndColours) {
  struct Case {
    const char* what;
    std::string element;
    const char* name;
  };
  const Case cases[] = {
      {"version 2", std::string("desc\0\0\0\0\0\0\0\x05sRGB\0", 17), "sRGB"},
      {"version 4",
       std::string("mluc\0\0\0\0\0\0\0\1\0\0\0\x0c"
                   "enUS\0\0\0\x04\0\0\0\x1c\0P\0\xe4",
                   32),
       "P\xc3\xa4"},
      {"length beyond the end", std::string("desc\0\0\0\0\0\xff\xff\xffsRGB", 16), "sRGB"},
      {"cut off", "desc", ""},
      {"another type", "text\0\0\0\0sRGB", ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const std::string bytes = profile("CMYK", c.element);
    const ColorProfile found = colorProfileOf(bytes);
    EXPECT_EQ(std::string(found.name.c_str()), c.name);
    EXPECT_EQ(found.colorSpace, "CMYK");
  }
  EXPECT_EQ(colorProfileOf("too short").colorSpace, "");
}

}  // namespace
}  // namespace vt
