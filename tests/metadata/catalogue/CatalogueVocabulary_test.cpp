#include <gtest/gtest.h>

#include <random>

#include "metadata/catalogue/CatalogueInFolder.h"

namespace vt {
namespace {

constexpr std::uint32_t kSeed = 20261121;

/// Words of some hundred that come again, and numbers, joined words and ideographs.
std::string randomText(std::mt19937& random) {
  std::string text;
  for (int left = 200; left > 0; --left) {
    const std::uint32_t pick = random();
    const std::string number = std::to_string(pick % 500);
    switch (pick / 500 % 5) {
      case 0:
        text += number;
        break;
      case 1:
        text += "plan" + number + "b";
        break;
      case 2:
        text += "MyWindow" + std::string(pick % 300, 'x');
        break;
      case 3:
        text += "日本語";
        break;
      default:
        text += "word" + std::string(1 + pick % 26, static_cast<char>('a' + pick % 26));
    }
    text += ' ';
  }
  return text;
}

/// How many terms the text index has, and how many of those that patterns are put to.
struct Terms {
  std::int64_t all = 0;
  std::int64_t unknown = 0;
};

Terms termsIn(const CatalogueInFolder& folder) {
  const Database database = valueOrThrow(openCatalogueForReading(folder.path()));
  constexpr std::string_view kTerms =
      "FROM (SELECT DISTINCT term FROM text_place) WHERE term < 'g' AND length(term) <= 251 "
      "OR term >= 'h'";
  const std::string all = "SELECT count(*) " + std::string(kTerms);
  return {valueOrThrow(database.number(all)),
          valueOrThrow(database.number("SELECT count(*) FROM (SELECT term " + std::string(kTerms) +
                                       " EXCEPT SELECT term FROM word)"))};
}

TEST(CatalogueVocabulary, HasEachTermOfTheTextsWheneverTheyAreSeen) {
  SCOPED_TRACE(kSeed);
  std::mt19937 random(kSeed);
  const CatalogueInFolder folder;
  std::uint64_t file = 0;
  for (int run = 0; run < 6; ++run) {
    const auto writer = folder.writer();
    for (int text = 0; text < 10; ++text) {
      valueOrThrow(writer->add(CatalogueInFolder::recordOf(++file), textAlone(randomText(random))));
      if (text % 3 == 2) {
        throwIf(writer->commit());
        EXPECT_EQ(termsIn(folder).unknown, 0);
      }
    }
    // What was added last is undone in some runs, and is to be new again in the next.
    if (run % 2 == 0) throwIf(writer->commit());
    if (run == 3) throwIf(writer->mergeText());
  }
  const Terms terms = termsIn(folder);
  EXPECT_GT(terms.all, 1000);
  EXPECT_EQ(terms.unknown, 0);
}

}  // namespace
}  // namespace vt
