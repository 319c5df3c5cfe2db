#include "metadata/query/WordBoundaries.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vt::query {

namespace {

/// The units with a bar at each boundary.
std::string barred(const SegmentedText& text) {
  std::string out;
  for (std::size_t at = 0; at <= text.units.size(); ++at) {
    if ((text.properties[at] & position::kBoundary) != 0) out += '|';
    if (at < text.units.size()) out += text.units[at];
  }
  return out;
}

}  // namespace

TEST(WordBoundaries, StandAtBothEndsOfEveryWord) {
  struct Case {
    const char* what;
    std::string_view text;
    std::string_view barred;
  };
  const Case cases[] = {
      {"blank", "one two", "|one| |two|"},
      {"punctuation", "a-b.c", "|a|-|b|.|c|"},
      {"underline", "a_b", "|a|_|b|"},
      {"lower to upper", "MyWindowClass", "|My|Window|Class|"},
      {"upper to upper and lower", "NSWindow", "|NSWindow|"},
      {"digits", "plan9b", "|plan|9|b|"},
      {"digit to upper", "9B", "|9|B|"},
      {"every separator", "a--b", "|a|-|-|b|"},
      {"ideographs", "日本a", "|日|本|a|"},
      {"kana", "のカ", "|の|カ|"},
      {"Cyrillic", "МирТруд", "|Мир|Труд|"},
      {"Hangul is a run", "한국 말", "|한국| |말|"},
      {"a mark goes with its letter", "x\u0323y", "|x\u0323y|"},
      {"composed first", "e\u0301A", "|é|A|"},
      {"symbol", "a😀b", "|a|😀|b|"},
      {"empty", "", "|"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(barred(segmentText(c.text, Folding::kNone)), c.barred);
  }
}

TEST(WordBoundaries, AreThoseOfTheTextBeforeFolding) {
  EXPECT_EQ(barred(segmentText("MyGrößeÜber", Folding::kCaseAndMarks)), "|my|grosse|uber|");
}

TEST(WordBoundaries, OfContentPutOneBlankBetweenWords) {
  EXPECT_EQ(barred(segmentContent("The  Budget,\n2024 -- Größe")),
            "|the| |budget| |2024| |grosse|");
  EXPECT_EQ(barred(segmentContent("BudgetPlan24")), "|budget|plan|24|");
}

TEST(WordBoundaries, OfContentLeaveTheRestOfManyWordsByCaseInOnePiece) {
  EXPECT_EQ(barred(segmentContent("aBbCcDdEeFfGgHhIiJj 1aB")),
            "|a|bb|cc|dd|ee|ff|gg|hhiijj| |1|a|b|");
}

TEST(WordBoundaries, OfContentInASCIIAreThoseBeforeACharacterThatIsNone) {
  // All texts of so many characters; behind one that is not of ASCII each is taken by itself.
  constexpr std::string_view kCharacters = "aBc1 _";
  constexpr int kLength = 5;
  constexpr std::string_view kOther = " Ж";
  std::vector<std::string> texts{""};
  for (std::size_t at = 0; texts[at].size() < kLength; ++at) {
    for (const char character : kCharacters) texts.push_back(texts[at] + character);
  }
  for (const std::string& text : texts) {
    const bool isPartedAlready = text.ends_with(' ') || text.ends_with('_');
    const std::string one = barred(segmentContent(text));
    const std::string other =
        barred(segmentContent(text + std::string(kOther.substr(isPartedAlready ? 1 : 0))));
    ASSERT_EQ(one + (isPartedAlready ? "ж|" : " |ж|"), other) << text;
  }
}

TEST(WordBoundaries, AreNotMadeByAMarkOfVoice) {
  EXPECT_EQ(barred(segmentText("あ\u3099b", Folding::kCaseAndMarks)), "|あ|b|");
  EXPECT_EQ(barred(segmentText("a\u3099b", Folding::kCaseAndMarks)), "|ab|");
}

TEST(WordBoundaries, MarkWhereCharactersBegin) {
  const SegmentedText text = segmentText("ßö", Folding::kCaseAndMarks);
  ASSERT_EQ(text.units, "sso");
  EXPECT_NE(text.properties[0] & position::kCharacter, 0);
  EXPECT_EQ(text.properties[1] & position::kCharacter, 0);  // the second half of ß
  EXPECT_NE(text.properties[2] & position::kCharacter, 0);
  EXPECT_NE(text.properties[3] & position::kCharacter, 0);
}

TEST(WordBoundaries, OfContentMarkEachLetterThatIsCompared) {
  const SegmentedText text = segmentContent("ßж");
  ASSERT_EQ(text.units, "ssж");
  for (const std::size_t at : {0, 1, 2, 4}) {
    EXPECT_NE(text.properties[at] & position::kCharacter, 0) << at;
  }
  EXPECT_EQ(text.properties[3] & position::kCharacter, 0);  // the second byte of ж
}

}  // namespace vt::query
