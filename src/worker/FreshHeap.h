#pragma once

namespace vt::worker {

/// Has children that are forked later allocate in memory that this process has never touched: a
/// page that was touched must be copied when a child writes to it, which takes longer than a new
/// one. What a child needs beyond some 300 KiB it gets in huge pages where the kernel has such,
/// since one takes less time than a hundred of 4 KiB.
///
/// Uses up what is free in between, for ever, so that all memory comes from the end of the heap. To
/// be called with a single thread, once everything is loaded, before the first fork. Where memory
/// does not come from glibc, or huge pages are off, children allocate as ever.
void keepHeapFresh();

}  // namespace vt::worker
