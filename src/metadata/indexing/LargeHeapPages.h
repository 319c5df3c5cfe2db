#pragma once

#include <cstddef>

namespace vt {

/// While this is alive, the heap of the process is ready to grow by so many bytes, in pages of
/// 2 MiB where the kernel gives them to those who ask.
///
/// For work that goes through much memory in no order: with pages of 4 KiB most of what it reads
/// takes a walk through page tables first. Memory is taken as it is used. One at a time, and for
/// processes that do such work and no other: others' threads get no more of it than before.
class LargeHeapPages {
 public:
  explicit LargeHeapPages(std::size_t bytes);
  LargeHeapPages(const LargeHeapPages&) = delete;
  LargeHeapPages& operator=(const LargeHeapPages&) = delete;
  /// Gives back what is free.
  ~LargeHeapPages();
};

}  // namespace vt
