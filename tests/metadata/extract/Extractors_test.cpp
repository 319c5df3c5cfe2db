#include "metadata/extract/Extractors.h"

#include <gtest/gtest.h>

#include <utility>

#include "metadata/types/ShippedTypes.h"

namespace vt {
namespace {

/// Takes all that conforms to a type, and finds nothing.
class TakerOf final : public Extractor {
 public:
  TakerOf(const ContentTypes& types, const char* identifier)
      : types_(types), type_(*types.find(identifier)) {}

  std::string_view name() const override { return "taker"; }
  std::uint32_t version() const override { return 1; }
  bool takes(ContentTypeId type) const override { return types_.conforms(type, type_); }
  Result<Extraction, ExtractionFailure> extract(int /*file*/, ContentTypeId /*type*/) override {
    return Extraction();
  }

 private:
  const ContentTypes& types_;
  ContentTypeId type_;
};

TEST(Extractors, GiveTheFirstThatTakesTheType) {
  const ContentTypes types = shippedTypes();
  std::vector<std::unique_ptr<Extractor>> list;
  list.push_back(std::make_unique<TakerOf>(types, "public.html"));
  list.push_back(std::make_unique<TakerOf>(types, "public.text"));
  const Extractor* const html = list[0].get();
  const Extractor* const text = list[1].get();
  const Extractors extractors(types, std::move(list));
  EXPECT_EQ(extractors.forType(types.typeOfFile("page.html")), html);
  EXPECT_EQ(extractors.forType(types.typeOfFile("notes.txt")), text);
  EXPECT_EQ(extractors.forType(types.typeOfFile("photo.jpg")), nullptr);
}

TEST(ExtractionFailure, LastsWhenTheFileIsToBlame) {
  using Kind = ExtractionFailure::Kind;
  for (const Kind kind : {Kind::kMalformed, Kind::kTooLarge, Kind::kTimedOut, Kind::kCrashed}) {
    EXPECT_TRUE((ExtractionFailure{kind, ""}).isLasting());
  }
  EXPECT_FALSE((ExtractionFailure{Kind::kUnreadable, ""}).isLasting());
  EXPECT_FALSE((ExtractionFailure{Kind::kUnavailable, ""}).isLasting());
}

}  // namespace
}  // namespace vt
