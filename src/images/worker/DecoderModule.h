#pragma once

#include "images/worker/Decoder.h"

/// What each module of decoders hands out: the decoder of a format, for which everything that it
/// needs is now loaded; nullptr when the module has none. Called before the first child is forked.
extern "C" vt::worker::Decode vtDecoderOf(vt::ImageFormat format);
