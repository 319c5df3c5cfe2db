#include <fmt/format.h>
#include <gtest/gtest.h>
#include <zlib.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <random>

#include "images/FormatSamples.h"
#include "images/PngEncoder.h"
#include "images/Samples.h"
#include "images/TestImages.h"
#include "support/Program.h"
#include "support/ReadFile.h"
#include "support/TemporaryFolder.h"

namespace vt {
namespace {

class HostileFiles : public testing::Test {
 protected:
  std::string at(std::string_view name) const { return folder_ / name; }
  std::optional<Image> thumbnailOf(std::string_view name) {
    const auto source = images_.open(at(name));
    return source ? images_.thumbnail(**source, {64, 64, /*iconMode=*/true}) : std::nullopt;
  }
  /// Whether a good file still gets its thumbnail.
  bool worksOn() {
    writeQuarters(at("good.png"), 20, 10);
    const auto image = thumbnailOf("good.png");
    return image && coloursOf(*image) == "red green blue white";
  }

  TemporaryFolder folder_;
  LinuxImages images_{testImages()};
};

std::string chunk(const std::string& type, const std::string& data) {
  const auto number = [](std::uint32_t value) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(value >> shift);
    return bytes;
  };
  const std::string summed = type + data;
  const auto sum = crc32_z(0, reinterpret_cast<const Bytef*>(summed.data()), summed.size());
  return number(static_cast<std::uint32_t>(data.size())) + summed +
         number(static_cast<std::uint32_t>(sum));
}

/// A grey PNG of `side` by `side` pixels that compresses to next to nothing.
std::string pngBomb(std::uint32_t side) {
  std::string header;
  for (int i = 0; i < 2; ++i) {
    for (int shift = 24; shift >= 0; shift -= 8) header += static_cast<char>(side >> shift);
  }
  header += std::string("\x08\0\0\0\0", 5);
  // The start of the pixels is enough: what matters is what a decoder makes room for.
  const std::string rows(std::size_t{side} * 64, '\0');
  uLongf size = compressBound(rows.size());
  std::string data(size, '\0');
  compress(reinterpret_cast<Bytef*>(data.data()), &size,
           reinterpret_cast<const Bytef*>(rows.data()), rows.size());
  data.resize(size);
  return "\x89PNG\r\n\x1a\n" + chunk("IHDR", header) + chunk("IDAT", data) + chunk("IEND", "");
}

TEST_F(HostileFiles, OfTooManyPixelsAreNotUnpacked) {
  writeFile(at("bomb.png"), pngBomb(30'000));
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(thumbnailOf("bomb.png"));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
  EXPECT_TRUE(worksOn());
}

TEST_F(HostileFiles, ThatExpandWithoutEndCostOnlyThemselves) {
  std::string entities = "<!DOCTYPE svg [<!ENTITY a0 \"xxxxxxxxxx\">";
  for (int i = 1; i < 12; ++i) {
    entities += fmt::format("<!ENTITY a{} \"&a{};&a{};&a{};&a{};&a{};&a{};&a{};&a{};\">", i, i - 1,
                            i - 1, i - 1, i - 1, i - 1, i - 1, i - 1, i - 1);
  }
  writeFile(at("bomb.svg"), entities +
                                "]><svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'>"
                                "<text>&a11;</text></svg>");
  EXPECT_FALSE(thumbnailOf("bomb.svg"));

  make({"python3", "-c",
        "import sys,zipfile\n"
        "with zipfile.ZipFile(sys.argv[1],'w',zipfile.ZIP_DEFLATED) as z:\n"
        "  z.writestr('docProps/thumbnail.jpeg', bytes(1<<30))\n",
        at("bomb.docx")});
  EXPECT_FALSE(thumbnailOf("bomb.docx"));

  std::string nested;
  for (int i = 0; i < 200'000; ++i) nested += "<g>";
  writeFile(at("deep.svg"), "<svg xmlns='http://www.w3.org/2000/svg'>" + nested);
  EXPECT_FALSE(thumbnailOf("deep.svg"));

  std::string pages = pdf();
  const std::size_t kids = pages.find("[3 0 R]");
  pages.replace(kids, 7, "[2 0 R]");  // a tree of pages that is its own branch
  writeFile(at("loop.pdf"), pages);
  thumbnailOf("loop.pdf");
  EXPECT_TRUE(worksOn());
}

TEST_F(HostileFiles, CannotShowTheirNeighbours) {
  writeQuarters(at("secret.png"), 100, 100);
  for (const char* reference : {"secret.png", "./secret.png", "file://FOLDER/secret.png"}) {
    SCOPED_TRACE(reference);
    std::string address = reference;
    if (const auto place = address.find("FOLDER"); place != address.npos) {
      address.replace(place, 6, folder_.path().string());
    }
    writeFile(at("a.svg"),
              fmt::format("<svg xmlns='http://www.w3.org/2000/svg' "
                          "xmlns:x='http://www.w3.org/1999/xlink' width='64' height='64'>"
                          "<image x:href='{0}' href='{0}' width='64' height='64'/></svg>",
                          address));
    const auto image = thumbnailOf("a.svg");
    ASSERT_TRUE(image);
    EXPECT_EQ(coloursOf(*image), "clear clear clear clear");
  }
  writeFile(at("a.svg"),
            "<!DOCTYPE svg [<!ENTITY secret SYSTEM 'file:///etc/passwd'>]>"
            "<svg xmlns='http://www.w3.org/2000/svg' width='64' height='64'>"
            "<text y='40' font-size='60'>&secret;</text></svg>");
  if (const auto image = thumbnailOf("a.svg")) {
    EXPECT_EQ(image->pixels, std::string(image->pixels.size(), '\0'));
  }
}

TEST_F(HostileFiles, CannotPlayOtherFiles) {
  writeQuarters(at("frame.png"), 200, 100);
  make({"ffmpeg", "-v", "error", "-loop", "1", "-t", "1", "-i", at("frame.png"), "-pix_fmt",
        "yuv420p", at("secret.mp4")});
  const std::string lists[] = {
      "#EXTM3U\n#EXT-X-TARGETDURATION:9\n#EXTINF:9,\nfile://" + at("secret.mp4") +
          "\n#EXT-X-ENDLIST\n",
      "ffconcat version 1.0\nfile '" + at("secret.mp4") + "'\n",
  };
  for (const std::string& list : lists) {
    for (const char* name : {"list.mp4", "list.avi", "list.mkv"}) {
      SCOPED_TRACE(name);
      writeFile(at(name), list);
      EXPECT_FALSE(thumbnailOf(name));
    }
  }
}

TEST_F(HostileFiles, ThatAreDamagedCostOnlyThemselves) {
  std::mt19937 random(7);
  for (const SampleFormat& format : sampleFormats()) {
    SCOPED_TRACE(format.ending);
    const std::string damaged = fmt::format("damaged.{}", format.ending);
    writeSample(at(damaged));
    const std::string whole = readFile(at(damaged));
    for (int i = 0; i < 12; ++i) {
      std::string bytes = whole;
      if (i % 3 == 0) bytes.resize(bytes.size() * static_cast<std::size_t>(i) / 13);
      for (int change = 0; i % 3 != 0 && change < 1 << i / 2; ++change) {
        bytes[random() % bytes.size()] = static_cast<char>(random());
      }
      writeFile(at(damaged), bytes);
      // Some are good enough for a picture, which must then be one.
      if (const auto image = thumbnailOf(damaged)) {
        EXPECT_TRUE(image->isWhole());
        EXPECT_LE(image->width, 64U);
        EXPECT_LE(image->height, 64U);
      }
    }
  }
  EXPECT_TRUE(worksOn());
}

TEST_F(HostileFiles, LeaveNothingOfTheirTextsInTheirPictures) {
  std::string file = *encodePng(quarters(20, 10));
  const std::size_t end = file.size() - 12;
  file.insert(end, chunk("tEXt", std::string("profile\0/etc/passwd", 19)));
  writeFile(at("a.png"), file);
  const auto image = thumbnailOf("a.png");
  ASSERT_TRUE(image);
  EXPECT_EQ(images_.png(*image)->find("passwd"), std::string::npos);
}

}  // namespace
}  // namespace vt
