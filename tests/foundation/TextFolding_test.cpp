#include "foundation/TextFolding.h"

#include <gtest/gtest.h>
#include <unicode/uchar.h>

#include <string>

#include "foundation/UTF8.h"

namespace vt {

namespace {

std::string utf8Of(char32_t character) {
  std::string bytes;
  appendCodePoint(bytes, character);
  return bytes;
}

bool isSurrogate(char32_t character) { return character >= 0xD800 && character <= 0xDFFF; }

}  // namespace

TEST(TextFolding, FoldsWhatItIsAskedTo) {
  struct Case {
    const char* what;
    std::string_view text;
    Folding folding;
    std::string_view folded;
  };
  const Case cases[] = {
      {"nothing", "Frédéric", Folding::kNone, "Frédéric"},
      {"decomposed is composed", "Fre\u0301de\u0301ric", Folding::kNone, "Frédéric"},
      {"case keeps marks", "FRÉDÉRIC", Folding::kCase, "frédéric"},
      {"marks keep case", "FRÉDÉRIC", Folding::kMarks, "FREDERIC"},
      {"both", "FRE\u0301DE\u0301RIC", Folding::kCaseAndMarks, "frederic"},
      {"sharp s stays under case alone", "Straße", Folding::kCase, "straße"},
      {"capital sharp s", "STRAẞE", Folding::kCase, "straße"},
      {"sharp s under both", "STRAẞE Straße", Folding::kCaseAndMarks, "strasse strasse"},
      {"slashed o stays under marks alone", "Ørsted", Folding::kMarks, "Ørsted"},
      {"letters without decomposition", "Ørsted Łódź Æsir Þór Œuvre", Folding::kCaseAndMarks,
       "orsted lodz aesir thor oeuvre"},
      {"final sigma", "ΟΔΟΣ οδος", Folding::kCase, "οδοσ οδοσ"},
      {"dotted and dotless i", "İı", Folding::kCaseAndMarks, "ii"},
      {"ligature", "ﬁn", Folding::kCaseAndMarks, "fin"},
      {"Hangul jamo are composed", "\u1112\u1161\u11AB", Folding::kCaseAndMarks, "한"},
      {"two marks in either order", "a\u0301\u0323", Folding::kNone, "ạ\u0301"},
      {"ASCII", "ABC.txt", Folding::kCase, "abc.txt"},
      {"ASCII as it is", "ABC.txt", Folding::kMarks, "ABC.txt"},
      {"bytes that are not UTF-8", "a\xFF\xC3.txt", Folding::kCase, "a\uFFFD\uFFFD.txt"},
      {"a mark alone", "\u0301", Folding::kMarks, ""},
      {"empty", "", Folding::kCaseAndMarks, ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(foldText(c.text, c.folding), c.folded);
  }
}

TEST(TextFolding, FoldsCaseAsUnicodeSaysForEveryCharacter) {
  for (char32_t character = 1; character <= 0x10FFFF; ++character) {
    if (isSurrogate(character)) continue;
    std::string folded;
    appendFolded(character, Folding::kCase, folded);
    const auto expected =
        static_cast<char32_t>(u_foldCase(static_cast<UChar32>(character), U_FOLD_CASE_DEFAULT));
    // Compared where both libraries know the character, their Unicode versions may differ.
    if (u_charType(static_cast<UChar32>(character)) == U_UNASSIGNED) continue;
    ASSERT_EQ(folded, utf8Of(expected)) << "U+" << std::hex << static_cast<unsigned>(character);
  }
}

TEST(TextFolding, ChangesNothingTheSecondTime) {
  // What lies beyond U+20000 is ideographs, which nothing folds.
  for (char32_t character = 1; character < 0x20000; ++character) {
    if (isSurrogate(character)) continue;
    for (const Folding folding :
         {Folding::kNone, Folding::kCase, Folding::kMarks, Folding::kCaseAndMarks}) {
      const std::string once = foldText(utf8Of(character), folding);
      ASSERT_EQ(foldText(once, folding), once)
          << "U+" << std::hex << static_cast<unsigned>(character) << " "
          << static_cast<int>(folding);
    }
  }
}

TEST(TextFolding, OrdersALongRunOfMarks) {
  // Exchanging neighbours would take 10^10 steps here.
  std::string text = "a";
  for (int i = 0; i < 100000; ++i) text += "\u0301\u0323";
  const std::u32string composed = composedText(text);
  ASSERT_EQ(composed.size(), 200000U);
  EXPECT_EQ(composed[0], U'ạ');
  EXPECT_EQ(composed[1], U'\u0323');
  EXPECT_EQ(composed.back(), U'\u0301');
}

}  // namespace vt
