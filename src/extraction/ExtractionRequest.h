#pragma once

#include <cstdint>

#include "worker/WorkerProtocol.h"

// What an extraction worker and its client tell each other, besides what any worker and its client
// do. The first message that a worker gets, before it raises its walls, comes with the table of
// content types.

namespace vt {

enum class ExtractionJob : std::uint32_t {
  kDescribe,  ///< tell which extractors there are; the file is not looked at
  kExtract,   ///< look into the file
};

/// As WorkerRequest::job and its arguments.
struct ExtractionRequest {
  ExtractionJob job = ExtractionJob::kDescribe;
  std::uint32_t extractor = 0;  ///< its place among those that were described
  std::uint32_t type = 0;       ///< by its place in the table of content types
  worker::FileOrigin origin = worker::kOwnOrigin;
};

inline worker::WorkerRequest workerRequest(const ExtractionRequest& request) {
  return {static_cast<std::uint32_t>(request.job),
          {request.extractor, request.type, 0},
          request.origin};
}

}  // namespace vt
