#include "worker/FreshHeap.h"

#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace vt::worker {
namespace {

#ifdef __SANITIZE_ADDRESS__  // which brings a heap of its own
constexpr bool kIsGlibcs = false;
#else
constexpr bool kIsGlibcs = true;
#endif

constexpr std::size_t kPage = 4096;
constexpr std::size_t kHugePage = std::size_t{2} << 20;
// Of address space, before the heap must grow.
constexpr std::size_t kReserve = 4 * kHugePage;
// Larger pieces are mapped one by one, and given back.
constexpr int kMostInHeap = kHugePage;
// For small files, and what the worker itself allocates between forks. Emptying a huge page takes
// as long as making so many small ones.
constexpr std::size_t kSmallPages = std::size_t{320} << 10;
// No hole is larger but at the end of the heap.
constexpr std::size_t kMostHole = std::size_t{64} << 10;
// Pieces up to this size glibc keeps for the next ones of their size when they are freed.
constexpr std::size_t kMostKept = 1032;
constexpr std::size_t kGrain = 16;  // sizes of pieces are multiples of it

/// std::malloc() that no compiler leaves out for nobody using what it gives.
void* allocate(std::size_t size) {
  void* volatile piece = std::malloc(size);
  return piece;
}

std::uintptr_t roundedUp(std::uintptr_t address, std::uintptr_t unit) {
  return (address + unit - 1) / unit * unit;
}

void* at(std::uintptr_t address) {
  return reinterpret_cast<void*>(address);  // NOLINT(performance-no-int-to-ptr): it is arithmetic
}

std::uintptr_t endOfHeap() { return reinterpret_cast<std::uintptr_t>(::sbrk(0)); }

std::uintptr_t startOfFreeEnd() { return endOfHeap() - ::mallinfo2().keepcost; }

/// Takes memory from the end of the heap, for ever.
void take(std::size_t size) {
  void* volatile kept = std::malloc(size);
  static_cast<void>(kept);
}  // NOLINT(clang-analyzer-unix.Malloc): so it is meant

/// Allocates what is free before `end`.
void fillHolesBefore(std::uintptr_t end) {
  for (std::size_t size = kMostHole; size >= kGrain;) {
    void* const piece = allocate(size);
    if (piece && reinterpret_cast<std::uintptr_t>(piece) < end) continue;
    if (size > kMostKept) std::free(piece);
    size -= size > kMostKept ? size / kGrain : kGrain;
  }
}

}  // namespace

void keepHeapFresh() {
  if (!kIsGlibcs) return;
  ::mallopt(M_MMAP_THRESHOLD, kMostInHeap);
  ::mallopt(M_TRIM_THRESHOLD, 4 * kReserve);
  fillHolesBefore(startOfFreeEnd());
  const std::uintptr_t start = startOfFreeEnd();
  const std::uintptr_t touched = endOfHeap();
  const std::uintptr_t huge = roundedUp(start + kSmallPages, kHugePage);
  if (touched > huge) return;
  // The heap grows by what it lacks, and this.
  ::mallopt(M_TOP_PAD, static_cast<int>(huge + kReserve - touched));
  std::free(allocate(touched - start));
  ::mallopt(M_TOP_PAD, kReserve);
  if (endOfHeap() < huge + kReserve) return;
  const std::uintptr_t small = huge - kSmallPages;
  if (small > start + kMostKept) take(small - start - 2 * kGrain);
  // What lies free is new once more.
  const std::uintptr_t firstFree = roundedUp(startOfFreeEnd() + kGrain, kPage);
  ::madvise(at(firstFree), huge - firstFree, MADV_DONTNEED);
  ::madvise(at(huge), endOfHeap() - huge, MADV_HUGEPAGE);
}

}  // namespace vt::worker
