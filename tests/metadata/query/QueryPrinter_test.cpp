#include "metadata/query/QueryPrinter.h"

#include <gtest/gtest.h>

#include <random>

#include "foundation/UTF8.h"
#include "metadata/query/QueryTesting.h"

namespace vt::query {

namespace {

/// Queries made at random, right by construction.
class RandomQuery {
 public:
  explicit RandomQuery(std::uint32_t seed) : random_(seed) {}

  std::string expression(int depth) {
    switch (depth == 0 ? below(3) + 3 : below(7)) {
      case 0:
        return expression(depth - 1) + blank() + "&&" + blank() + expression(depth - 1);
      case 1:
        return expression(depth - 1) + "||" + expression(depth - 1);
      case 2:
        return "(" + blank() + expression(depth - 1) + ")";
      case 3:
        return below(8) == 0 ? (below(2) == 0 ? "true" : "false") : comparison();
      case 4:
        return comparison();
      case 5:
        return "InRange(" + pick({"kMDItemFSSize", "com_x"}) + "," + number() + blank() + "," +
               number() + ")";
      default:
        return "!" + blank() + expression(depth - 1);
    }
  }

 private:
  std::size_t below(std::size_t end) { return random_() % end; }
  std::string pick(std::initializer_list<const char*> words) {
    return words.begin()[below(words.size())];
  }
  std::string blank() { return pick({"", "", " ", "\t", "\n "}); }
  std::string number() {
    return pick({"0", "-1", "+2.50", "1e6", "\"7\"", "18446744073709551615"});
  }
  std::string letters() {
    std::string out;
    for (std::size_t n = below(4); n > 0; --n) out += "cdwts"[below(5)];
    return out;
  }

  std::string string() {
    const char quote = below(2) == 0 ? '"' : '\'';
    std::string out(1, quote);
    for (std::size_t n = below(8); n > 0; --n) {
      switch (below(8)) {
        case 0:
          out += "*";
          break;
        case 1:
          out += "?";
          break;
        case 2:
          out += pick({"\\*", "\\?", "\\\\", "\\\"", "\\'", "\\q", "\\ö"});
          break;
        case 3:
          out += quote == '"' ? '\'' : '"';
          break;
        case 4:
          appendCodePoint(out, static_cast<char32_t>(0xA0 + below(0xD000)));
          break;
        case 5:
          appendCodePoint(out, static_cast<char32_t>(0x1F600 + below(64)));
          break;
        default:
          out += static_cast<char>('a' + below(26));
      }
    }
    return out + quote;
  }

  std::string comparison() {
    const std::string brackets = below(4) == 0 ? "[" + pick({"c", "dc", "wt", "scc"}) + "]" : "";
    switch (below(5)) {
      case 0:
        return pick({"kMDItemFSSize", "com_x", "_x.y:z-1"}) + blank() +
               pick({"<", ">", "<=", ">=", "==", "=", "!="}) + brackets + blank() + number();
      case 1:
        return "kMDItemDueDate" + pick({"<", ">=", "!="}) + blank() +
               pick({"$time.today", "$time.today(-7d)", "$time.now ( 5 )", "$time.this_week()",
                     "$time.iso( 2024-02-29 12:30 )", "$time.last_year", "12.5"});
      case 2:
        return pick({"kMDItemTitle", "*", "**"}) + pick({"==", "=", "!="}) + brackets + blank() +
               pick({"word", "public.image", "true", "*", "12abc", "-x", "ä/ö", "12"});
      default:
        return pick({"kMDItemTitle", "kMDItemKeywords", "*", "com_x"}) + pick({"==", "!="}) +
               brackets + blank() + string() + letters();
    }
  }

  std::mt19937 random_;
};

}  // namespace

TEST(QueryPrinter, WritesOneSettledSpelling) {
  struct Case {
    std::string_view query;
    std::string_view printed;
  };
  const Case cases[] = {
      {"kMDItemTitle=a", "kMDItemTitle == \"a\""},
      {"kMDItemTitle ==[dc] 'a'w", "kMDItemTitle == \"a\"cdw"},
      {"kMDItemTitle = *", "kMDItemTitle == \"*\""},
      {"kMDItemTitle = 'say \"hi\"'", "kMDItemTitle == 'say \"hi\"'"},
      {"kMDItemTitle = \"\\q\\*\\\\*\"", "kMDItemTitle == \"q\\*\\\\*\""},
      {"kMDItemFSSize>[c]1e6", "kMDItemFSSize >[c] 1e6"},
      {"((a=1&&b=2)||c=3)&&!(d=4)", "(a == 1 && b == 2 || c == 3) && !d == 4"},
      {"!(a=1&&b=2)", "!(a == 1 && b == 2)"},
      {"!(!(true))", "!!true"},
      {"inRange( kMDItemFSSize , 1,\"2\" )", "InRange(kMDItemFSSize, 1, \"2\")"},
      {"kMDItemDueDate < $time.tomorrow()", "kMDItemDueDate < $time.tomorrow"},
      {"kMDItemDueDate < $time.today ( +7d )", "kMDItemDueDate < $time.today(7d)"},
      {"kMDItemDueDate < $time.iso( 2024-02-29 )", "kMDItemDueDate < $time.iso(2024-02-29)"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.query);
    EXPECT_EQ(printQuery(parsed(c.query)), c.printed);
  }
}

TEST(QueryPrinter, GivesTheSameTreeBackForAnyQuery) {
  for (std::uint32_t seed = 1; seed <= 3000; ++seed) {
    const std::string text = RandomQuery(seed).expression(4);
    const auto query = parseQuery(text, shippedSchema());
    ASSERT_TRUE(query) << "seed " << seed << ": " << describeQueryError(query.error()) << "\n"
                       << text;
    const std::string printed = printQuery(*query);
    const auto again = parseQuery(printed, shippedSchema());
    ASSERT_TRUE(again) << "seed " << seed << ": " << describeQueryError(again.error()) << "\n"
                       << printed;
    ASSERT_EQ(*query, *again) << "seed " << seed << ": " << text << "\n" << printed;
    ASSERT_EQ(printQuery(*again), printed) << "seed " << seed;
  }
}

TEST(QueryPrinter, WritesASingleTermAsInTheQuery) {
  const AttributeSchema schema = shippedSchema();
  for (const char* text : {"kMDItemFSName != \"*a*\"cd", "InRange(kMDItemFSSize, 1, 2)",
                           "kMDItemFSContentChangeDate >= $time.today(-1)"}) {
    const auto query = parseQuery(text, schema);
    ASSERT_TRUE(query) << text;
    EXPECT_EQ(printTerm(query->terms()[0]), text);
  }
}

TEST(QueryPrinter, StaysWithinTheLengthOfAQuery) {
  // Printed with blanks, quotes and two equal signs it would be longer than a query may be.
  std::string text = "a=b";
  for (int i = 1; i < 4096; ++i) text += "||a=bbbbbbbbb";
  const Query query = parsed(text);
  const std::string printed = printQuery(query);
  EXPECT_EQ(printed, text);
}

TEST(QueryPrinter, KeepsQuotesThatATerseSpellingNeeds) {
  const std::string_view terms = "a=\"12\"||a='x y'c||a=\"\"||a=\"b*\"||a=*||a=word||a=[c]5||";
  std::string text(terms);
  while (text.size() + terms.size() + 1 < kMaximumQueryBytes && text.size() < 31000) text += terms;
  text += "a=";
  text.append(kMaximumQueryBytes - text.size(), 'w');
  const Query query = parsed(text);
  const std::string printed = printQuery(query);
  ASSERT_LE(printed.size(), kMaximumQueryBytes);
  EXPECT_EQ(parsed(printed), query);
}

}  // namespace vt::query
