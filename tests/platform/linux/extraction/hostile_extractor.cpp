// An extraction worker that does with each text file what its first word says, to see that it
// cannot. It finds the text "got its way" or "refused".

#include <chrono>
#include <memory>
#include <vector>

#include "extraction/BoundedText.h"
#include "extraction/ConformingTypes.h"
#include "extraction/worker/ExtractionTask.h"
#include "foundation/Array.h"
#include "support/Misdeeds.h"

namespace vt {
namespace {

class Misbehaver final : public Extractor {
 public:
  explicit Misbehaver(const ContentTypes& types) : types_(types, {"public.text"}) {}

  std::string_view name() const override { return "misbehaver"; }
  std::uint32_t version() const override { return 7; }
  bool takes(ContentTypeId type) const override { return types_.contains(type); }

  Result<Extraction, ExtractionFailure> extract(int file, ContentTypeId /*type*/) override {
    using Kind = ExtractionFailure::Kind;
    const Misdeed misdeed = misdeedIn(file);
    const std::string& deed = misdeed.deed;
    Extraction extraction;
    extraction.text = "refused";
    if (deed == "fail") return ExtractionFailure{Kind::kMalformed, "it is\nodd"};
    if (deed == "fail-as-crashed") return ExtractionFailure{Kind::kCrashed, "so it says"};
    if (deed == "garbage") {
      writeGarbage(file);
      return extraction;
    }
    if (deed == "lie") {
      extraction.attributes = {{"kMDItemFSName", "other.txt"},
                               {"kMDItemFSSize", 1},
                               {"kMDItemTitle", 5},
                               {"kMDItemAuthors", "not an array"},
                               {"kMDItemKeywords", Array::make({"a", 5})},
                               {"noSuchAttribute", "x"},
                               {"kMDItemSubject", "true"}};
      return extraction;
    }
    if (deed == "no-text") {
      extraction.text = "\xff\xfe";
      return extraction;
    }
    if (deed == "some-text") {
      extraction.text = std::string(std::size_t{1} << 20, 'x');  // more than a pipe holds
      return extraction;
    }
    if (deed == "much-text") {
      extraction.text = std::string(2 * kMostExtractedText, 'x');
      return extraction;
    }
    if (deed == "much-garbage") {
      const std::string block(std::size_t{1} << 20, 'x');
      for (int i = 0; i < 64; ++i) {
        extraction.attributes.emplace("attribute " + std::to_string(i), block);
      }
      return extraction;
    }
    const std::optional<bool> gotItsWay = tryMisdeed(misdeed, file);
    if (!gotItsWay) return ExtractionFailure{Kind::kUnreadable, "it says nothing"};
    if (*gotItsWay) extraction.text = "got its way";
    return extraction;
  }

 private:
  ConformingTypes types_;
};

}  // namespace
}  // namespace vt

int main(int argc, char** argv) {
#ifdef VT_FILE_LIMIT_MILLIS  // to see in less time what becomes of a file that takes too long
  constexpr std::chrono::milliseconds kLimit{VT_FILE_LIMIT_MILLIS};
#else
  constexpr std::chrono::milliseconds kLimit = vt::worker::kFileLimit;
#endif
  const auto misbehavers = [](const vt::ContentTypes& types) {
    std::vector<std::unique_ptr<vt::Extractor>> extractors;
    extractors.push_back(std::make_unique<vt::Misbehaver>(types));
    return extractors;
  };
  return vt::worker::runExtractionWorker(argc, argv, misbehavers, kLimit);
}
