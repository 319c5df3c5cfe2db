#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "extraction/ExtractorDescription.h"
#include "metadata/extract/Extractor.h"
#include "platform/linux/extraction/ExtractionWorkers.h"

namespace vt {

/// An extractor whose files are looked into by another process, behind walls.
class ConfinedExtractor final : public Extractor {
 public:
  /// `described` is one of those that the workers describe.
  ConfinedExtractor(std::shared_ptr<ExtractionWorkers> workers,
                    ExtractionWorkers::Described described)
      : workers_(std::move(workers)),
        place_(described.place),
        description_(std::move(described.description)) {}

  std::string_view name() const override { return description_.name; }
  std::uint32_t version() const override { return description_.version; }
  bool takes(ContentTypeId type) const override { return description_.types[type]; }
  Result<Extraction, ExtractionFailure> extract(int file, ContentTypeId type) override;
  std::unique_ptr<Look> begin(int file, ContentTypeId type, FileOrigin origin) override;
  bool isOtherProcess() const override { return true; }

 private:
  std::shared_ptr<ExtractionWorkers> workers_;
  ExtractionWorkers::Place place_;
  ExtractorDescription description_;
};

}  // namespace vt
