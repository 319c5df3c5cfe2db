#pragma once

#include <chrono>
#include <functional>

#include "images/worker/Decoder.h"
#include "images/worker/WorkerProtocol.h"

namespace vt::worker {

/// The decoder of a format, loaded when it is first asked for; nullptr when there is none.
using DecoderSource = std::function<Decode(ImageFormat)>;

/// What an image worker does once its decoders are loaded: gives up its rights, raises the walls,
/// greets and serves until its standard input is closed. Gives the exit status of the program:
/// other than 0, and nothing was decoded, when the walls that `arguments` promise do not stand.
/// A file may take `fileLimit` by the clock.
int runWorker(int argc, char** argv, const DecoderSource& decoders,
              std::chrono::milliseconds fileLimit = kFileLimit);

}  // namespace vt::worker
