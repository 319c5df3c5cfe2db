#pragma once

#include <chrono>
#include <functional>

#include "images/worker/Decoder.h"

namespace vt::worker {

/// Answers the requests that come over the socket `socket` until it is closed, each in a child
/// process of its own that is limited and can do nothing but decode.
///
/// A child that has not ended after `fileLimit` by the clock is killed.
///
/// `prepare` is called in this process before the child of a format is made, to load what its
/// decoder needs, so that it is loaded once; it gives the decoder, or nullptr.
void serveRequests(int socket, std::chrono::milliseconds fileLimit,
                   const std::function<Decode(ImageFormat)>& prepare);

}  // namespace vt::worker
