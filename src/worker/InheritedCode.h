#pragma once

#include "foundation/FunctionRef.h"

namespace vt::worker {

/// Does the work twice, and has children that are forked later find the pages of programs and
/// libraries in place that it has needed the second time. Else each child finds them anew, with a
/// fault and fifteen pages that nobody needs for each: a fork does not copy where pages of files
/// are, unless the process has some of its own among them. So those that are needed become its own:
/// their bytes stay what they are, and what they may be used for.
///
/// To be called before walls are raised, since code is writable for a moment, and with a single
/// thread. Where that is refused, all is as it was.
void inheritCodeOf(FunctionRef<void()> work);

}  // namespace vt::worker
