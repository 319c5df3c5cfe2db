#include "platform/linux/extraction/ConfinedExtractor.h"

#include <sys/stat.h>

#include <optional>

namespace vt {
namespace {

class ConfinedLook final : public Extractor::Look {
 public:
  ConfinedLook(std::shared_ptr<ExtractionWorkers> workers, ExtractionWorkers::Ticket ticket)
      : workers_(std::move(workers)), ticket_(ticket) {}
  ~ConfinedLook() override {
    if (ticket_) workers_->drop(*ticket_);
  }

  bool isDone(std::chrono::milliseconds patience) override {
    return workers_->isDone(*ticket_, patience);
  }
  Result<Extraction, ExtractionFailure> finish() override {
    return workers_->finish(*std::exchange(ticket_, std::nullopt));
  }

 private:
  std::shared_ptr<ExtractionWorkers> workers_;
  std::optional<ExtractionWorkers::Ticket> ticket_;
};

}  // namespace

std::unique_ptr<Extractor::Look> ConfinedExtractor::begin(int file, ContentTypeId type,
                                                          FileOrigin origin) {
  // There are many empty files, and each that a worker looks into takes a process.
  struct stat status{};
  if (::fstat(file, &status) == 0 && status.st_size == 0) return doneLook(Extraction());
  const std::optional<ExtractionWorkers::Ticket> ticket =
      workers_->begin(file, place_, type, origin);
  return ticket ? std::make_unique<ConfinedLook>(workers_, *ticket) : nullptr;
}

Result<Extraction, ExtractionFailure> ConfinedExtractor::extract(int file, ContentTypeId type) {
  const std::unique_ptr<Look> look = begin(file, type, kOwnOrigin);
  if (look) return look->finish();
  return ExtractionFailure{ExtractionFailure::Kind::kUnavailable,
                           "other files were being looked into"};
}

}  // namespace vt
