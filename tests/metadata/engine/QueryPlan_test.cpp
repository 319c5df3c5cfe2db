#include "metadata/engine/QueryPlan.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <chrono>
#include <random>
#include <string>
#include <vector>

#include "metadata/live/ShippedSchema.h"
#include "metadata/query/QueryParser.h"

namespace vt {
namespace {

constexpr std::size_t kRows = 100;

/// The number that a term of these tests compares the size with.
std::size_t numberIn(const query::Term& term) {
  return std::stoul(
      std::get<query::NumberOperand>(std::get<query::Comparison>(term).value).literal);
}

/// Satisfied by the multiples of a number, and keeps a record of what it is asked.
class MultiplesStep final : public TermStep {
 public:
  MultiplesStep(std::size_t number, std::vector<std::string>& journal)
      : number_(number), journal_(journal) {}

  void narrow(RowSet& rows) const override {
    journal_.push_back(std::to_string(rows.count()) + " by " + std::to_string(number_));
    rows.keepIf([this](std::size_t row) { return row % number_ == 0; });
  }
  std::uint64_t cost() const override { return number_; }

 private:
  std::size_t number_;
  std::vector<std::string>& journal_;
};

class QueryPlanTest : public testing::Test {
 protected:
  std::vector<std::size_t> rowsOf(const std::string& text) {
    const auto parsed = query::parseQuery(text, schema_);
    EXPECT_TRUE(parsed) << text;
    const QueryPlan plan(*parsed, [this](const query::Term& term) {
      return std::make_unique<MultiplesStep>(numberIn(term), journal_);
    });
    std::vector<std::size_t> rows;
    plan.rowsAmong(RowSet::all(kRows), watch_).forEach([&](std::size_t row) {
      rows.push_back(row);
    });
    return rows;
  }

  const query::AttributeSchema schema_ = shippedSchema();
  std::vector<std::string> journal_;
  QueryPlan::Watch watch_;
};

template <class Test>
std::vector<std::size_t> rowsWhere(Test test) {
  std::vector<std::size_t> rows;
  for (std::size_t row = 0; row < kRows; ++row) {
    if (test(row)) rows.push_back(row);
  }
  return rows;
}

TEST_F(QueryPlanTest, JoinsTermsAsTheQueryDoes) {
  const auto by = [](std::size_t row, std::size_t number) { return row % number == 0; };
  EXPECT_EQ(rowsOf("true"), rowsWhere([](auto) { return true; }));
  EXPECT_EQ(rowsOf("false"), rowsWhere([](auto) { return false; }));
  EXPECT_EQ(rowsOf("kMDItemFSSize != 3"), rowsWhere([&](auto row) { return !by(row, 3); }));
  EXPECT_EQ(rowsOf("kMDItemFSSize == 3 && kMDItemFSSize == 2"),
            rowsWhere([&](auto row) { return by(row, 6); }));
  EXPECT_EQ(rowsOf("kMDItemFSSize == 3 || !(kMDItemFSSize == 2 || kMDItemFSSize == 5)"),
            rowsWhere([&](auto row) { return by(row, 3) || !(by(row, 2) || by(row, 5)); }));
  EXPECT_EQ(rowsOf("!(kMDItemFSSize == 2 && !(kMDItemFSSize != 3 && true)) && kMDItemFSSize == 4"),
            rowsWhere([&](auto row) { return !(by(row, 2) && by(row, 3)) && by(row, 4); }));
}

TEST_F(QueryPlanTest, AsksTheCheapestTermFirstAndTheRestOnlyOfWhatIsUndecided) {
  rowsOf("kMDItemFSSize == 10 && kMDItemFSSize == 5");
  EXPECT_EQ(journal_, (std::vector<std::string>{"100 by 5", "20 by 10"}));
  journal_.clear();
  rowsOf("kMDItemFSSize == 10 || kMDItemFSSize == 4");
  EXPECT_EQ(journal_, (std::vector<std::string>{"100 by 4", "75 by 10"}));
  journal_.clear();
  rowsOf("kMDItemFSSize == 10 && false");
  EXPECT_EQ(journal_, std::vector<std::string>{});
}

TEST_F(QueryPlanTest, AgreesWithTheTreeOverRandomQueries) {
  std::mt19937 random(20261121);
  struct Part {
    std::string text;
    std::vector<bool> rows;
  };
  for (int round = 0; round < 300; ++round) {
    std::vector<Part> parts;
    for (std::size_t number = 2; number < 8; ++number) {
      Part part{"kMDItemFSSize == " + std::to_string(number), std::vector<bool>(kRows)};
      for (std::size_t row = 0; row < kRows; ++row) part.rows[row] = row % number == 0;
      parts.push_back(std::move(part));
    }
    while (parts.size() > 1) {
      std::swap(parts[random() % (parts.size() - 1)], parts[parts.size() - 2]);
      const Part last = std::move(parts.back());
      parts.pop_back();
      Part& into = parts.back();
      const bool isAnd = random() % 2 == 0;
      const bool isNegated = random() % 3 == 0;
      into.text = std::string(isNegated ? "!" : "") + "(" + into.text + (isAnd ? " && " : " || ") +
                  last.text + ")";
      for (std::size_t row = 0; row < kRows; ++row) {
        const bool joined =
            isAnd ? into.rows[row] && last.rows[row] : into.rows[row] || last.rows[row];
        into.rows[row] = joined != isNegated;
      }
    }
    ASSERT_EQ(rowsOf(parts[0].text), rowsWhere([&](auto row) { return bool{parts[0].rows[row]}; }))
        << parts[0].text;
  }
}

TEST_F(QueryPlanTest, TellsWhatEachTermLeaves) {
  std::vector<std::string> told;
  watch_ = [&](const query::Term& term, std::size_t asked, std::size_t left) {
    told.push_back(fmt::format("{}: {} of {}", numberIn(term), left, asked));
  };
  rowsOf("kMDItemFSSize == 5 && kMDItemFSSize != 2");
  EXPECT_EQ(told, (std::vector<std::string>{"2: 50 of 100", "5: 10 of 50"}));
}

}  // namespace
}  // namespace vt
