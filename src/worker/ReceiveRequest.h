#pragma once

#include <optional>

#include "platform/linux/FileDescriptor.h"
#include "worker/WorkerProtocol.h"

namespace vt::worker {

/// A request with its descriptors.
struct ReceivedRequest {
  WorkerRequest request;
  FileDescriptor input;   ///< the file, open for reading
  FileDescriptor output;  ///< the writing end of a pipe
};

/// Waits for the next request. Nothing when the socket was closed, or what came is no request.
std::optional<ReceivedRequest> receiveRequest(int socket);

}  // namespace vt::worker
