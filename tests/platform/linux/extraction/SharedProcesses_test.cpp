#include <fcntl.h>
#include <gtest/gtest.h>

#include <vector>

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

/// Documents that are looked into by processes that have looked into others, or have not.
class SharedProcesses : public testing::Test {
 protected:
  Result<Extraction, ExtractionFailure> found(const DocumentSample& sample, FileOrigin origin) {
    const std::string path = folder_ / sample.name;
    writeFile(path, sample.bytes);
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    const ContentTypeId type = types_.typeOfFile(sample.name);
    return extractors_.forType(type)->begin(file.get(), type, origin)->finish();
  }

  const TemporaryFolder folder_;
  const ContentTypes types_ = shippedTypes();
  const Extractors extractors_ =
      linuxExtractors(types_, extractionWorkers(FolderResources(resourceFolder()), types_));
};

TEST_F(SharedProcesses, FindWhatAProcessOfItsOwnFinds) {
  std::vector<DocumentSample> samples = documentSamples();
  samples.push_back({"a.eml", "Subject: caf\xC3\xA9\nFrom: Ann <ann@example.org>\n\nA letter.\n"});
  samples.push_back({"b.eml", "Subject: two\nTo: Ben <ben@example.org>\n\nAnother.\n"});
  samples.push_back({"bad.pdf", "%PDF-1.4 of nothing"});
  samples.push_back({"other.pdf", pdfOf("other words", "/Title (Other)")});
  // Each after all others of its program, itself among them.
  const auto foundInAll = [&](FileOrigin origin) {
    std::vector<Result<Extraction, ExtractionFailure>> all;
    for (int round = 0; round < 2; ++round) {
      for (const DocumentSample& sample : samples) all.push_back(found(sample, origin));
    }
    return all;
  };
  const auto shared = foundInAll(1);
  const auto alone = foundInAll(kOwnOrigin);
  for (std::size_t i = 0; i < shared.size(); ++i) {
    SCOPED_TRACE(samples[i % samples.size()].name);
    ASSERT_EQ(shared[i].hasValue(), alone[i].hasValue());
    if (!shared[i]) {
      EXPECT_EQ(shared[i].error().reason, alone[i].error().reason);
      continue;
    }
    EXPECT_EQ(shared[i]->text, alone[i]->text);
    EXPECT_EQ(shared[i]->attributes, alone[i]->attributes);
  }
}

}  // namespace
}  // namespace vt
