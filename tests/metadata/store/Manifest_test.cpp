#include "metadata/store/Manifest.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "metadata/store/FileWriter.h"

namespace vt {
namespace {

using std::chrono::microseconds;

Manifest someManifest() {
  return {.generation = 12,
          .segments = {{"segment-12", {123456, 0x0123456789abcdef}}},
          .roots = {"/Data/Größe 1%", "/a\nb", std::string("/\xff")},
          .began = Date{microseconds{1'795'219'200'000'000}},
          .ended = Date{microseconds{1'795'219'203'500'000}},
          .duration = microseconds{3'500'000},
          .vouched = Date{microseconds{1'795'219'260'000'000}}};
}

TEST(Manifest, IsLinesOfPlainText) {
  const std::string text = printManifest(someManifest());
  const std::string body =
      "vistaro-index 2\n"
      "generation 12\n"
      "segment segment-12 123456 0123456789abcdef\n"
      "root /Data/Gr%C3%B6%C3%9Fe%201%25\n"
      "root /a%0Ab\n"
      "root /%FF\n"
      "began 1795219200000000\n"
      "ended 1795219203500000\n"
      "duration 3500000\n"
      "vouched 1795219260000000\n";
  EXPECT_EQ(text.substr(0, body.size()), body);
  EXPECT_EQ(text.substr(body.size()).size(), std::string("checksum 0123456789abcdef\n").size());
}

TEST(Manifest, GivesBackWhatWasPrinted) {
  Manifest empty;
  Manifest extreme = someManifest();
  extreme.generation = UINT64_MAX;
  extreme.began = Date{microseconds{INT64_MIN}};
  extreme.ended = Date{microseconds{INT64_MAX}};
  extreme.duration = microseconds{-1};
  extreme.roots = {"/", std::string(5000, '\x01')};
  extreme.segments.push_back({"another one", {0, UINT64_MAX}});
  for (const Manifest& manifest : {empty, someManifest(), extreme}) {
    const std::string text = printManifest(manifest);
    SCOPED_TRACE(text);
    const auto parsed = parseManifest(text, "/index/manifest");
    ASSERT_TRUE(parsed) << parsed.error().reason;
    EXPECT_EQ(*parsed, manifest);
  }
}

TEST(Manifest, IsDamagedWhereverABitFlipsOrItEnds) {
  const std::string text = printManifest(someManifest());
  for (std::size_t at = 0; at < text.size(); ++at) {
    for (int bit = 0; bit < 8; ++bit) {
      std::string flipped = text;
      flipped[at] = static_cast<char>(flipped[at] ^ (1 << bit));
      const auto parsed = parseManifest(flipped, "/index/manifest");
      ASSERT_FALSE(parsed) << "byte " << at;
      ASSERT_EQ(parsed.error().kind, StoreError::Kind::kDamaged);
    }
    ASSERT_FALSE(parseManifest(text.substr(0, at), "/index/manifest")) << at << " bytes";
  }
  EXPECT_EQ(parseManifest("", "/index/manifest").error().reason,
            "/index/manifest is damaged: it is not as written");
}

std::string sealed(const std::string& body) {
  return body + fmt::format("checksum {:016x}\n", checksumOf(body));
}

TEST(Manifest, IsNothingThatAnotherWriterWrote) {
  struct Case {
    const char* what;
    std::string body;
    StoreError::Kind kind;
  };
  const std::string end = "began 0\nended 0\nduration 0\nvouched 0\n";
  const Case cases[] = {
      {"later version", "vistaro-index 3\nsomething\n", StoreError::Kind::kOtherKind},
      {"earlier version", "vistaro-index 1\nsomething\n", StoreError::Kind::kOtherKind},
      {"nothing", "", StoreError::Kind::kOtherKind},
      {"no lines", "vistaro-index 2\n", StoreError::Kind::kDamaged},
      {"no generation", "vistaro-index 2\n" + end, StoreError::Kind::kDamaged},
      {"zeros in front", "vistaro-index 2\ngeneration 007\n" + end, StoreError::Kind::kDamaged},
      {"no number", "vistaro-index 2\ngeneration x\n" + end, StoreError::Kind::kDamaged},
      {"too large", "vistaro-index 2\ngeneration 18446744073709551616\n" + end,
       StoreError::Kind::kDamaged},
      {"lower-case escape", "vistaro-index 2\ngeneration 7\nroot /%ff\n" + end,
       StoreError::Kind::kDamaged},
      {"half an escape", "vistaro-index 2\ngeneration 7\nroot /%F\n" + end,
       StoreError::Kind::kDamaged},
      {"segment without size", "vistaro-index 2\ngeneration 7\nsegment a\n" + end,
       StoreError::Kind::kDamaged},
      {"more lines", "vistaro-index 2\ngeneration 7\n" + end + end, StoreError::Kind::kDamaged},
  };
  ASSERT_TRUE(parseManifest(sealed("vistaro-index 2\ngeneration 7\n" + end), "m"));
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const auto parsed = parseManifest(sealed(c.body), "m");
    ASSERT_FALSE(parsed);
    EXPECT_EQ(parsed.error().kind, c.kind) << parsed.error().reason;
  }
}

}  // namespace
}  // namespace vt
