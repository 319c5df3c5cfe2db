#include "metadata/engine/SubstringScanner.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace vt {
namespace {

std::vector<std::size_t> placesOf(const SubstringScanner& scanner, std::string_view text) {
  std::vector<std::size_t> places;
  for (std::size_t at = scanner.find(text, 0); at != std::string_view::npos;
       at = scanner.find(text, at + 1)) {
    places.push_back(at);
  }
  return places;
}

std::vector<std::size_t> placesByDefinition(std::string_view needle, std::string_view text) {
  std::vector<std::size_t> places;
  for (std::size_t at = 0; at + needle.size() <= text.size(); ++at) {
    if (text.substr(at, needle.size()) == needle) places.push_back(at);
  }
  return places;
}

/// Text that ends, and begins, where the readable memory does.
class FencedText {
 public:
  FencedText() : page_(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))) {
    void* memory = mmap(nullptr, 3 * page_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    EXPECT_NE(memory, MAP_FAILED);
    memory_ = static_cast<char*>(memory);
    EXPECT_EQ(mprotect(memory_ + page_, page_, PROT_READ | PROT_WRITE), 0);
  }
  FencedText(const FencedText&) = delete;
  FencedText& operator=(const FencedText&) = delete;
  ~FencedText() { munmap(memory_, 3 * page_); }

  std::string_view atEnd(std::string_view text) { return put(2 * page_ - text.size(), text); }
  std::string_view atStart(std::string_view text) { return put(page_, text); }

 private:
  std::string_view put(std::size_t at, std::string_view text) {
    std::memcpy(memory_ + at, text.data(), text.size());
    return {memory_ + at, text.size()};
  }

  std::size_t page_;
  char* memory_ = nullptr;
};

class SubstringScannerWith : public testing::TestWithParam<VectorInstructions> {};

TEST_P(SubstringScannerWith, FindsEachOccurrenceInRandomTextsAtAnyAlignment) {
  std::mt19937 random(20261121);
  for (int round = 0; round < 4000; ++round) {
    SCOPED_TRACE(round);
    // Few letters, so that needles occur, nearly occur, and overlap themselves.
    const auto letters = 1 + random() % 4;
    std::string text(random() % 300, ' ');
    for (char& c : text) c = "aeqz"[random() % letters];
    std::string needle;
    if (text.size() > 1 && random() % 2 == 0) {
      const std::size_t at = random() % text.size();
      needle = text.substr(at, 1 + random() % 40);
    }
    while (needle.empty() || random() % 4 == 0) needle += "aeqz"[random() % letters];
    const std::string_view part =
        std::string_view(text).substr(std::min<std::size_t>(random() % 40, text.size()));
    ASSERT_EQ(placesOf(SubstringScanner(needle, GetParam()), part),
              placesByDefinition(needle, part))
        << needle << " in " << part;
  }
}

TEST_P(SubstringScannerWith, FindsANeedleAtEachPlaceOfALongText) {
  for (const std::size_t length : {1, 2, 3, 31, 32, 33, 64, 255}) {
    const std::string needle = std::string(length - 1, 'a') + "q";
    const SubstringScanner scanner(needle, GetParam());
    for (std::size_t place = 0; place < 200; ++place) {
      for (const std::size_t rest : {0, 1, 15, 16, 31, 32, 70}) {
        const std::string text = std::string(place, 'a') + needle + std::string(rest, 'a');
        ASSERT_EQ(placesOf(scanner, text), std::vector<std::size_t>{place}) << length;
      }
    }
  }
}

TEST_P(SubstringScannerWith, ReadsNothingOutsideOfTheText) {
  FencedText fenced;
  for (std::size_t size = 1; size < 200; ++size) {
    const std::string text(size, 'a');
    for (const char* needle : {"a", "q", "aq", "qa", "aaaaaaa", "aaaqaaa"}) {
      const SubstringScanner scanner(needle, GetParam());
      const std::vector<std::size_t> expected = placesByDefinition(needle, text);
      ASSERT_EQ(placesOf(scanner, fenced.atEnd(text)), expected);
      ASSERT_EQ(placesOf(scanner, fenced.atStart(text)), expected);
    }
  }
}

TEST_P(SubstringScannerWith, FindsNothingBeyondTheEnd) {
  const SubstringScanner scanner("ab", GetParam());
  EXPECT_EQ(scanner.find("", 0), std::string_view::npos);
  EXPECT_EQ(scanner.find("a", 0), std::string_view::npos);
  EXPECT_EQ(scanner.find("ab", 1), std::string_view::npos);
  EXPECT_EQ(scanner.find("ab", 3), std::string_view::npos);
}

TEST_P(SubstringScannerWith, TakesBytesOfAnyValue) {
  const std::string needle("\0\xFF\x80", 3);
  const std::string text = std::string(100, '\0') + needle + std::string(100, '\xFF');
  EXPECT_EQ(placesOf(SubstringScanner(needle, GetParam()), text), std::vector<std::size_t>{100});
}

std::string nameOf(const testing::TestParamInfo<VectorInstructions>& info) {
  switch (info.param) {
    case VectorInstructions::kNone:
      return "NoVectors";
    case VectorInstructions::kSSE2:
      return "SSE2";
    case VectorInstructions::kAVX2:
      return "AVX2";
  }
  return {};
}

INSTANTIATE_TEST_SUITE_P(EachOfThisProcessor, SubstringScannerWith,
                         testing::ValuesIn(availableVectorInstructions()), nameOf);

}  // namespace
}  // namespace vt
