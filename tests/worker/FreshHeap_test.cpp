#include "worker/FreshHeap.h"

#include <gmock/gmock.h>
#include <sys/prctl.h>
#include <sys/resource.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "support/InChildProcess.h"
#include "support/ReadFile.h"

namespace vt::worker {
namespace {

using Pieces = std::vector<std::unique_ptr<char[]>>;

Pieces piecesOf(std::size_t size, int count) {
  Pieces pieces;
  for (int i = 0; i < count; ++i) pieces.push_back(std::make_unique<char[]>(size));
  return pieces;
}

/// Leaves holes of many sizes, between pieces that stay.
Pieces leaveHoles() {
  Pieces kept;
  for (std::size_t size = 16; size < 40'000; size += size / 4) {
    Pieces pieces = piecesOf(size, 40);
    for (std::size_t i = 0; i < pieces.size(); i += 2) kept.push_back(std::move(pieces[i]));
  }
  return kept;
}

#ifndef __SANITIZE_ADDRESS__  // which brings a heap of its own
long faultsOf(const std::function<void()>& work) {
  rusage before{};
  rusage after{};
  ::getrusage(RUSAGE_SELF, &before);
  work();
  ::getrusage(RUSAGE_SELF, &after);
  return after.ru_minflt - before.ru_minflt;
}

TEST(FreshHeap, IsBehindAllThatWasUsed) {
  EXPECT_EQ(inChildProcess([] {
              const Pieces kept = leaveHoles();
              const char* last = nullptr;
              for (const auto& piece : kept) last = std::max<const char*>(last, piece.get());
              keepHeapFresh();
              // Some of each size that glibc keeps lists of are its own.
              for (std::size_t size = 16; size < 30'000; size += size / 3) {
                for (const auto& piece : piecesOf(size, 20)) {
                  if (piece.get() < last) return "in a hole: " + std::to_string(size);
                }
              }
              return std::string("behind");
            }),
            "behind");
}

/// How many pages a child is given for five megabytes.
long faultsOfMegabytes(bool hasHugePages) {
  return std::stol(inChildProcess([&] {
    if (!hasHugePages) ::prctl(PR_SET_THP_DISABLE, 1, 0, 0, 0);
    keepHeapFresh();
    return inChildProcess([] {
      return std::to_string(faultsOf([] {
        for (auto& piece : piecesOf(10'000, 500)) std::fill_n(piece.get(), 10'000, 'x');
      }));
    });
  }));
}

TEST(FreshHeap, IsOfSmallPagesWhereHugeOnesAreOff) {
  EXPECT_GE(faultsOfMegabytes(/*hasHugePages=*/false), 5'000'000 / 4096);
}

TEST(FreshHeap, IsOfHugePagesWhereThereAreSuch) {
  const std::string setting = readFile("/sys/kernel/mm/transparent_hugepage/enabled");
  if (setting.empty() || setting.find("[never]") != setting.npos) GTEST_SKIP() << setting;
  EXPECT_LT(faultsOfMegabytes(/*hasHugePages=*/true), 5'000'000 / 4096);
}

TEST(FreshHeap, GrowsBeyondWhatWasSetAside) {
  EXPECT_EQ(inChildProcess([] {
              keepHeapFresh();
              return inChildProcess([] {
                Pieces pieces = piecesOf(100'000, 500);
                for (auto& piece : pieces) std::fill_n(piece.get(), 100'000, 'x');
                return std::string(pieces.back().get(), 3);
              });
            }),
            "xxx");
}
#endif

TEST(FreshHeap, MayBeAskedForAgain) {
  EXPECT_EQ(inChildProcess([] {
              for (int i = 0; i < 3; ++i) {
                keepHeapFresh();
                leaveHoles();
              }
              return std::string("well");
            }),
            "well");
}

}  // namespace
}  // namespace vt::worker
