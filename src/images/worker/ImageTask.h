#pragma once

#include <functional>

#include "images/worker/Decoder.h"
#include "worker/WorkerMain.h"

namespace vt::worker {

/// The decoder of a format, loaded when it is first asked for; nullptr when there is none.
using DecoderSource = std::function<Decode(ImageFormat)>;

/// What an image worker does with each request, which is an ImageRequest. Icons are this program's
/// own files; they are drawings.
TaskSource imageTasks(DecoderSource decoders);

}  // namespace vt::worker
