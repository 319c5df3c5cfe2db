#include "metadata/indexing/LargeHeapPages.h"

#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>

namespace vt {
namespace {

// Those that the C library begins with.
constexpr int kUsualTopPad = 128 * 1024;
constexpr int kUsualMapThreshold = 128 * 1024;

// Texts up to that size come from the heap, too, rather than from the kernel each time.
constexpr int kMapThreshold = 4 * 1024 * 1024;

char* endOfHeap() { return static_cast<char*>(::sbrk(0)); }

}  // namespace

LargeHeapPages::LargeHeapPages(std::size_t bytes) {
  // From the end of what is in use on, so that the next piece is what the heap grows by.
  ::malloc_trim(0);
  ::mallopt(M_TOP_PAD, static_cast<int>(bytes));
  ::mallopt(M_MMAP_THRESHOLD, kMapThreshold);
  char* const begin = endOfHeap();
  constexpr std::size_t kMoreThanIsLeft = std::size_t{1} << 20;
  // Volatile, or the compiler leaves out what seems to be for nothing.
  void* volatile const grown = std::malloc(kMoreThanIsLeft);
  std::free(grown);
  char* const end = endOfHeap();
  const auto page = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
  char* const first = begin + (page - reinterpret_cast<std::uintptr_t>(begin) % page) % page;
  // A kernel without large pages, or one that gives none, refuses.
  if (first < end) ::madvise(first, static_cast<std::size_t>(end - first), MADV_HUGEPAGE);
}

LargeHeapPages::~LargeHeapPages() {
  ::mallopt(M_TOP_PAD, kUsualTopPad);
  ::mallopt(M_MMAP_THRESHOLD, kUsualMapThreshold);
  ::malloc_trim(0);
}

}  // namespace vt
