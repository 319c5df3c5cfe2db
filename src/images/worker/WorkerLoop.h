#pragma once

#include <chrono>
#include <functional>

#include "images/worker/Decoder.h"

namespace vt::worker {

/// What each child may do.
struct ChildRules {
  std::chrono::milliseconds fileLimit;  ///< by the clock; it is then killed
  bool mustBeConfined = true;           ///< and else decodes nothing
};

/// Answers the requests that come over the socket `socket` until it is closed, each in a child
/// process of its own that is limited and can do nothing but decode.
///
/// `prepare` is called in this process before the child of a format is made, to load what its
/// decoder needs, so that it is loaded once; it gives the decoder, or nullptr.
void serveRequests(int socket, const ChildRules& rules,
                   const std::function<Decode(ImageFormat)>& prepare);

}  // namespace vt::worker
