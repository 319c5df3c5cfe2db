#include "metadata/live/TextDecoding.h"

#include <gtest/gtest.h>

namespace vt {
namespace {

std::string bytes(std::initializer_list<int> numbers) {
  std::string text;
  for (const int number : numbers) text += static_cast<char>(number);
  return text;
}

TEST(TextDecoding, TellsEncodingsByMarkThenByForm) {
  const struct {
    const char* what;
    std::string bytes;
    const char* text;
  } cases[] = {
      {"nothing", "", ""},
      {"ASCII", "plain", "plain"},
      {"UTF-8",
       "Gr\xC3\xB6\xC3\x9F"
       "e",
       "Größe"},
      {"UTF-8 with mark", "\xEF\xBB\xBFx", "x"},
      {"UTF-8 cut in a character", "x\xE6\x97", "x"},
      {"UTF-8 cut after a lead byte", "x\xF0", "x"},
      {"Latin-1",
       "Gr\xF6\xDF"
       "e",
       "Größe"},
      {"Latin-1 before more text", "x\xE6\x97 y", "xæ\xC2\x97 y"},
      {"UTF-16, little endian", bytes({0xFF, 0xFE, 'H', 0, 0xF6, 0}), "Hö"},
      {"UTF-16, big endian", bytes({0xFE, 0xFF, 0, 'H', 0, 0xF6}), "Hö"},
      {"UTF-16 pair", bytes({0xFE, 0xFF, 0xD8, 0x3D, 0xDE, 0x00}), "😀"},
      {"UTF-16 cut in a pair", bytes({0xFE, 0xFF, 0, 'x', 0xD8, 0x3D}), "x"},
      {"UTF-16 cut in a unit", bytes({0xFE, 0xFF, 0, 'x', 0xD8}), "x"},
      {"UTF-16 lone high", bytes({0xFE, 0xFF, 0xD8, 0x3D, 0, 'x'}), "\xEF\xBF\xBDx"},
      {"UTF-16 lone low", bytes({0xFE, 0xFF, 0xDE, 0x00, 0, 'x'}), "\xEF\xBF\xBDx"},
      {"mark alone", bytes({0xFF, 0xFE}), ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(decodePlainText(c.bytes), c.text);
  }
}

}  // namespace
}  // namespace vt
