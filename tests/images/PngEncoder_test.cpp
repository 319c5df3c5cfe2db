#include "images/PngEncoder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "support/PngReader.h"

namespace vt {
namespace {

using testing::ElementsAre;

Image noise(std::uint32_t width, std::uint32_t height, bool opaque) {
  std::mt19937 random(width * 1000 + height);
  Image image{width, height};
  for (std::size_t i = 0; i < std::size_t{width} * height * 4; ++i) {
    image.pixels += opaque && i % 4 == 3 ? '\xff' : static_cast<char>(random());
  }
  return image;
}

Image gradient(std::uint32_t width, std::uint32_t height) {
  Image image{width, height};
  for (std::uint32_t y = 0; y < height; ++y) {
    for (std::uint32_t x = 0; x < width; ++x) {
      image.pixels += static_cast<char>(x);
      image.pixels += static_cast<char>(y);
      image.pixels += static_cast<char>(x + y);
      image.pixels += '\xff';
    }
  }
  return image;
}

TEST(PngEncoder, KeepsEveryPixel) {
  const Image images[] = {noise(1, 1, true),  noise(1, 1, false),   noise(7, 5, true),
                          noise(7, 5, false), noise(300, 2, false), noise(2, 300, true),
                          gradient(256, 256)};
  for (const Image& image : images) {
    SCOPED_TRACE(std::to_string(image.width) + "x" + std::to_string(image.height));
    const auto file = encodePng(image);
    ASSERT_TRUE(file);
    const auto read = readPng(*file);
    ASSERT_TRUE(read);
    EXPECT_TRUE(read->image == image);
  }
}

TEST(PngEncoder, WritesNothingButThePixels) {
  EXPECT_THAT(readPng(*encodePng(noise(3, 3, false)))->chunks, ElementsAre("IHDR", "IDAT", "IEND"));
}

TEST(PngEncoder, LeavesOutTheAlphaOfAnOpaqueImage) {
  EXPECT_FALSE(readPng(*encodePng(noise(3, 3, true)))->hasAlpha);
  EXPECT_TRUE(readPng(*encodePng(noise(3, 3, false)))->hasAlpha);
}

TEST(PngEncoder, CompressesWhatIsSmooth) {
  const Image image = gradient(256, 256);
  EXPECT_LT(encodePng(image)->size(), image.pixels.size() / 50);
}

TEST(PngEncoder, RefusesAnImageThatIsNotWhole) {
  struct Case {
    const char* what;
    Image image;
  };
  const Case cases[] = {
      {"nothing", {}},
      {"no width", {0, 1, ""}},
      {"no height", {1, 0, ""}},
      {"a byte short", {1, 1, "abc"}},
      {"a byte too long", {1, 1, "abcde"}},
      {"a size whose bytes are 2 to the 64th", {1U << 31, 1U << 31, ""}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(encodePng(c.image), std::nullopt);
  }
}

}  // namespace
}  // namespace vt
