#include "metadata/extract/Extractor.h"

#include <utility>

namespace vt {
namespace {

class DoneLook final : public Extractor::Look {
 public:
  explicit DoneLook(Result<Extraction, ExtractionFailure> found) : found_(std::move(found)) {}

  bool isDone(std::chrono::milliseconds /*patience*/) override { return true; }
  Result<Extraction, ExtractionFailure> finish() override { return std::move(found_); }

 private:
  Result<Extraction, ExtractionFailure> found_;
};

}  // namespace

std::unique_ptr<Extractor::Look> Extractor::doneLook(Result<Extraction, ExtractionFailure> found) {
  return std::make_unique<DoneLook>(std::move(found));
}

std::unique_ptr<Extractor::Look> Extractor::begin(int file, ContentTypeId type,
                                                  FileOrigin /*origin*/) {
  return doneLook(extract(file, type));
}

}  // namespace vt
