// An extraction worker that does with each text file what its first word says, to see that it
// cannot. It finds the text "got its way" or "refused".

#include <unistd.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "extraction/BoundedText.h"
#include "extraction/ConformingTypes.h"
#include "extraction/ExtractionBytes.h"
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
    const bool isAfterOthers = files_++ > 0;
    if (deed == "remember") memory_ = misdeed.what;
    if (deed == "remember" || deed == "recall") {
      extraction.text = memory_;
      return extraction;
    }
    if (deed == "after-others") return afterOthers(isAfterOthers, misdeed.what, file);
    if (deed == "answer-twice") {
      writeToPipe(file, extractionBytes(extraction));
      return extraction;
    }
    if (deed == "keep-open") {
      for (int descriptor = 3; descriptor < 16; ++descriptor) ::dup(descriptor);
      return extraction;
    }
    if (deed == "fail") return ExtractionFailure{Kind::kMalformed, "it is\nodd"};
    if (deed == "fail-as-crashed") return ExtractionFailure{Kind::kCrashed, "so it says"};
    if (deed == "garbage") {
      writeToPipe(file, "garbage");
      return extraction;
    }
    if (deed == "garbage-everywhere") {
      for (int descriptor = 0; descriptor < 64; ++descriptor) {
        static_cast<void>(::write(descriptor, "garbage", 7));
      }
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
  /// Does harm only where the process has looked into other files.
  static Result<Extraction, ExtractionFailure> afterOthers(bool isAfterOthers,
                                                           const std::string& deed, int file) {
    Extraction extraction;
    extraction.text = "refused";
    if (isAfterOthers && deed == "garbage") writeToPipe(file, "garbage");
    if (isAfterOthers && deed != "garbage") tryMisdeed({deed, ""}, file);
    return extraction;
  }

  ConformingTypes types_;
  int files_ = 0;       // of the process
  std::string memory_;  // likewise
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
  return vt::worker::runExtractionWorker(argc, argv, misbehavers, {}, kLimit);
}
