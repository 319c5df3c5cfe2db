#pragma once

// Ruby's headers, without those of their macros that other libraries trip over.
#include <ruby.h>
#include <ruby/encoding.h>
#include <ruby/thread.h>

#undef int128_t
#undef uint128_t
