#include <fcntl.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

#include "extraction/BoundedText.h"
#include "extraction/documents/DocumentSamples.h"
#include "metadata/live/Descriptor.h"
#include "metadata/types/ShippedTypes.h"
#include "platform/linux/FolderResources.h"
#include "platform/linux/extraction/LinuxExtractors.h"
#include "support/Places.h"
#include "support/ReadFile.h"
#include "support/TemporaryFolder.h"

namespace vt {
namespace {

/// Documents that are not what they should be, looked into by the workers of this build.
class HostileDocuments : public testing::Test {
 protected:
  using Kind = ExtractionFailure::Kind;

  /// Why nothing is found in a file; nothing when something is. Whatever comes of it is said of
  /// this file: the workers go on.
  std::optional<Kind> look(const std::string& name, const std::string& bytes) {
    const std::string path = folder_ / name;
    writeFile(path, bytes);
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    const ContentTypeId type = types_.typeOfFile(name);
    const auto found = extractors_.forType(type)->extract(file.get(), type);
    if (found) {
      EXPECT_LE(found->text.value_or("").size(), kMostExtractedText);
      return std::nullopt;
    }
    EXPECT_TRUE(found.error().isLasting()) << found.error().reason;
    EXPECT_NE(found.error().kind, Kind::kTimedOut);
    return found.error().kind;
  }

  /// How many ways each sample is tried in.
  static std::size_t ways() {
    const char* asked = std::getenv("VISTARO_MANGLES");
    return asked ? std::strtoul(asked, nullptr, 10) : 12;
  }

  const TemporaryFolder folder_;
  const ContentTypes types_ = shippedTypes();
  const std::shared_ptr<ExtractionWorkers> workers_ =
      extractionWorkers(FolderResources(resourceFolder()), types_);
  const Extractors extractors_ = linuxExtractors(types_, workers_);
};

TEST_F(HostileDocuments, AreLookedIntoOrRefusedWhereverTheyAreCutOff) {
  for (const DocumentSample& sample : documentSamples()) {
    const std::size_t step = sample.bytes.size() / ways() + 1;
    for (std::size_t size = 0; size < sample.bytes.size(); size += step) {
      SCOPED_TRACE(sample.name + " of " + std::to_string(size) + " bytes");
      look(sample.name, sample.bytes.substr(0, size));
    }
  }
}

TEST_F(HostileDocuments, AreLookedIntoOrRefusedWhateverTheyHold) {
  for (const DocumentSample& sample : documentSamples()) {
    for (std::size_t seed = 0; seed < ways(); ++seed) {
      SCOPED_TRACE(sample.name + " with seed " + std::to_string(seed));
      std::mt19937 random(static_cast<unsigned>(seed));
      std::string bytes = sample.bytes;
      for (std::size_t i = 0; i < 1 + bytes.size() / 200; ++i) {
        bytes[random() % bytes.size()] = static_cast<char>(random());
      }
      look(sample.name, bytes);
    }
  }
}

TEST_F(HostileDocuments, AreRefusedWhenTheyUnfoldToTooMuch) {
  EXPECT_EQ(look("a.odt", zipOfBlanks("content.xml", std::size_t{513} << 20)), Kind::kTooLarge);
}

TEST_F(HostileDocuments, AreNestedAsDeepAsTheyLike) {
  constexpr int kDepth = 200'000;
  std::string array;
  std::string xml;
  for (int i = 0; i < kDepth; ++i) {
    array += '[';
    xml += "<a>";
  }
  look("a.pdf", pdfOf("words", "/Title " + array));
  look("a.docx", zipOf({{"word/document.xml", xml}}));
  look("a.html", xml);
  EXPECT_EQ(look("b.pdf", pdfOf("words")), std::nullopt) << "and works on";
}

TEST_F(HostileDocuments, NameHugeObjects) {
  std::string bytes = pdfOf("words");
  const std::size_t length = bytes.find("/Length ");
  bytes.replace(length, 10, "/Length 99999999999");
  look("a.pdf", bytes);
  look("b.pdf", pdfOf("words", "", "/Prev 99999999999 /XRefStm 5"));
}

}  // namespace
}  // namespace vt
