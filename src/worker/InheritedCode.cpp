#include "worker/InheritedCode.h"

#include <link.h>
#include <sys/mman.h>
#include <sys/resource.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace vt::worker {
namespace {

constexpr std::uintptr_t kPage = 4096;
// What Linux maps at once around a page of a file that is missing, at multiples of its size.
constexpr std::uintptr_t kWindow = 16 * kPage;

// Larger ones are tables, of which most was never read from the disk.
constexpr std::uintptr_t kMostOfSegment = std::uintptr_t{16} << 20;

/// A part of a loaded file, as it lies in memory, that nobody writes to.
struct Segment {
  std::uintptr_t start = 0;
  std::uintptr_t end = 0;
  bool isCode = false;
};

std::uintptr_t roundedDown(std::uintptr_t address, std::uintptr_t unit) {
  return address / unit * unit;
}

int addSegments(dl_phdr_info* file, std::size_t /*size*/, void* to) {
  auto& segments = *static_cast<std::vector<Segment>*>(to);
  for (int i = 0; i < file->dlpi_phnum; ++i) {
    const ElfW(Phdr)& header = file->dlpi_phdr[i];
    if (header.p_type != PT_LOAD || (header.p_flags & PF_W) != 0) continue;
    if (header.p_memsz > kMostOfSegment) continue;
    const std::uintptr_t start = file->dlpi_addr + header.p_vaddr;
    segments.push_back({roundedDown(start, kPage),
                        roundedDown(start + header.p_memsz + kPage - 1, kPage),
                        (header.p_flags & PF_X) != 0});
  }
  return 0;
}

std::vector<Segment> segmentsOfLoadedFiles() {
  std::vector<Segment> segments;
  ::dl_iterate_phdr(addSegments, &segments);
  return segments;
}

void* at(std::uintptr_t address) {
  return reinterpret_cast<void*>(address);  // NOLINT(performance-no-int-to-ptr): it is arithmetic
}

long faultsUntilNow() {
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  return usage.ru_minflt;
}

void forget(std::uintptr_t start, std::uintptr_t end) {
  ::madvise(at(start), end - start, MADV_DONTNEED);
}

/// Whether the page is there. What it holds first may be what address sanitizers put around things.
[[gnu::no_sanitize_address]] bool isMapped(std::uintptr_t page) {
  const long before = faultsUntilNow();
  static_cast<void>(*static_cast<const volatile char*>(at(page)));
  return faultsUntilNow() == before;
}

/// The windows of which something is mapped; afterwards nothing is.
std::vector<Segment> takeMappedWindows(const Segment& segment) {
  std::vector<Segment> windows;
  for (std::uintptr_t start = segment.start; start < segment.end;) {
    const std::uintptr_t end = std::min(roundedDown(start, kWindow) + kWindow, segment.end);
    if (isMapped(start)) windows.push_back({start, end, segment.isCode});
    start = end;
  }
  forget(segment.start, segment.end);
  return windows;
}

/// Keeps Linux from mapping other pages of the window with the one that is missing: it does not
/// look beyond those that are treated alike.
void separatePages(const Segment& window) {
  for (std::uintptr_t page = window.start + kPage; page < window.end; page += 2 * kPage) {
    ::madvise(at(page), kPage, MADV_RANDOM);
  }
}

std::vector<std::uintptr_t> mappedPages(const Segment& window) {
  std::vector<std::uintptr_t> pages;
  for (std::uintptr_t page = window.start; page < window.end; page += kPage) {
    if (isMapped(page)) {
      pages.push_back(page);
    } else {
      forget(page, page + kPage);
    }
  }
  return pages;
}

/// Makes the pages the process's own: a fork then copies where they are.
[[gnu::no_sanitize_address]] void makeOwn(const Segment& segment,
                                          const std::vector<std::uintptr_t>& pages) {
  const int kept = segment.isCode ? PROT_READ | PROT_EXEC : PROT_READ;
  const std::size_t size = segment.end - segment.start;
  // As a whole, or else it is no longer one for the kernel; and this very code may be in it. Where
  // it is refused, nothing has changed.
  if (pages.empty() || ::mprotect(at(segment.start), size, kept | PROT_WRITE) != 0) return;
  for (const std::uintptr_t page : pages) {
    auto* const byte = static_cast<volatile char*>(at(page));
    *byte = *byte;
  }
  ::mprotect(at(segment.start), size, kept);
}

}  // namespace

void inheritCodeOf(FunctionRef<void()> work) {
  for (const Segment& segment : segmentsOfLoadedFiles()) forget(segment.start, segment.end);
  work();
  const std::vector<Segment> segments = segmentsOfLoadedFiles();
  std::vector<std::vector<Segment>> windows;
  windows.reserve(segments.size());
  for (const Segment& segment : segments) windows.push_back(takeMappedWindows(segment));
  for (const auto& each : windows) std::ranges::for_each(each, separatePages);
  work();
  for (std::size_t i = 0; i < segments.size(); ++i) {
    std::vector<std::uintptr_t> pages;
    for (const Segment& window : windows[i]) {
      const std::vector<std::uintptr_t> mapped = mappedPages(window);
      pages.insert(pages.end(), mapped.begin(), mapped.end());
    }
    ::madvise(at(segments[i].start), segments[i].end - segments[i].start, MADV_NORMAL);
    makeOwn(segments[i], pages);
  }
}

}  // namespace vt::worker
