#include "metadata/indexing/LargeHeapPages.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace vt {
namespace {

constexpr std::size_t kBytes = std::size_t{16} << 20;

/// Whether large pages were asked for where the address is.
bool isInLargePages(std::uintptr_t address) {
  std::ifstream mappings("/proc/self/smaps");
  bool isHere = false;
  for (std::string line; std::getline(mappings, line);) {
    std::uintptr_t begin = 0;
    std::uintptr_t end = 0;
    if (std::sscanf(line.c_str(), "%lx-%lx ", &begin, &end) == 2) {
      isHere = begin <= address && address < end;
    } else if (isHere && line.starts_with("VmFlags:")) {
      return (line + ' ').find(" hg ") != std::string::npos;
    }
  }
  return false;
}

std::uintptr_t endOfHeap() { return reinterpret_cast<std::uintptr_t>(::sbrk(0)); }

class LargeHeapPagesTest : public testing::Test {
 protected:
  void SetUp() override {
    if (!std::filesystem::exists("/sys/kernel/mm/transparent_hugepage")) {
      GTEST_SKIP() << "the kernel has no large pages";
    }
    const std::uintptr_t begin = endOfHeap();
    const LargeHeapPages pages(kBytes);
    if (endOfHeap() == begin) GTEST_SKIP() << "memory is not from the heap";
  }
};

TEST_F(LargeHeapPagesTest, AreWhereTheHeapGrows) {
  const LargeHeapPages pages(kBytes);
  std::vector<std::unique_ptr<std::string>> pieces;
  std::size_t large = 0;
  constexpr std::size_t kPieces = 100;
  for (std::size_t i = 0; i < kPieces; ++i) {
    pieces.push_back(std::make_unique<std::string>(kBytes / (2 * kPieces), 'x'));
    large += isInLargePages(reinterpret_cast<std::uintptr_t>(pieces.back()->data())) ? 1 : 0;
  }
  EXPECT_GT(large, kPieces * 9 / 10);
}

TEST_F(LargeHeapPagesTest, AreGivenBack) {
  const std::uintptr_t before = endOfHeap();
  {
    const LargeHeapPages pages(kBytes);
    EXPECT_GE(endOfHeap(), before + kBytes / 2);
  }
  EXPECT_LT(endOfHeap(), before + kBytes / 2);
}

}  // namespace
}  // namespace vt
