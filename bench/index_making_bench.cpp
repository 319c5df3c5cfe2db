// Is an index made as fast as a database of names alone? Crawls a large tree and publishes, from
// the beginning and once more, against updatedb over the same files in the same run, each as a
// process.
//
//   index_making_bench FOLDER [SMALLER]   that script/bench-corpus has printed; root only
//
// With a second, smaller tree: whether a file of the large one costs what one of the small one
// does.

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <optional>

#include "Corpus.h"
#include "Report.h"
#include "metadata/store/IndexFolder.h"

namespace vt {
namespace {

constexpr int kRounds = 5;

/// The least seconds and the most memory of several runs.
ProgramRun worstAndBest(const std::function<ProgramRun()>& run) {
  ProgramRun result = run();
  for (int round = 1; round < kRounds; ++round) {
    const ProgramRun next = run();
    result.seconds = std::min(result.seconds, next.seconds);
    result.mebibytes = std::max(result.mebibytes, next.mebibytes);
  }
  return result;
}

/// Folders cost what they cost, and count for nothing.
double bytesPerFile(const Corpus& corpus) {
  const IndexGeneration generation =
      IndexFolder::open(corpus.indexFolder()).value().current().value();
  const SegmentColumns& segment = generation.segment->columns();
  return static_cast<double>(generation.segment->identity().bytes) /
         static_cast<double>(segment.rowCount() - segment.foldersByRow.size());
}

/// What making an index takes for each file and folder.
struct CostPerEntry {
  double microseconds = 0;
  double bytes = 0;
};

CostPerEntry costOf(const Corpus& corpus, const ProgramRun& made) {
  const IndexGeneration generation =
      IndexFolder::open(corpus.indexFolder()).value().current().value();
  const auto entries = static_cast<double>(generation.segment->columns().rowCount());
  return {1e6 * made.seconds / entries,
          static_cast<double>(generation.segment->identity().bytes) / entries};
}

CostPerEntry costIn(const Corpus& corpus) {
  corpus.indexNames();
  return costOf(corpus, worstAndBest([&] { return corpus.indexNames(); }));
}

bool printGrowth(const CostPerEntry& cost, const CostPerEntry& smaller) {
  const bool isTimeReached =
      printFigure("TimePerEntry", cost.microseconds, "us", "smaller tree", smaller.microseconds, 2);
  return printFigure("SpacePerEntry", cost.bytes, "B", "smaller tree", smaller.bytes, 2) &&
         isTimeReached;
}

int run(const Corpus& corpus, const std::optional<CostPerEntry>& smaller) {
  // The first of each finds what is in the caches of the kernel for those that count.
  corpus.indexNames();
  corpus.updatedb();
  const ProgramRun made = worstAndBest([&] { return corpus.indexNames(); });
  const CostPerEntry cost = costOf(corpus, made);
  const ProgramRun peer = worstAndBest([&] { return corpus.updatedb(); });
  const ProgramRun again = worstAndBest([&] { return corpus.indexNamesAgain(); });
  const ProgramRun peerAgain = worstAndBest([&] { return corpus.updatedbAgain(); });
  const bool reached[] = {
      printFigure("CrawlAndPublish", 1000 * made.seconds, "ms", "updatedb", 1000 * peer.seconds, 1),
      printFigure("CrawlAndPublishAgain", 1000 * again.seconds, "ms", "updatedb",
                  1000 * peerAgain.seconds),
      printFigure("MemoryOfIndexer", std::max(made.mebibytes, again.mebibytes), "MiB", 250),
      printFigure("BytesPerFile", bytesPerFile(corpus), "B", 110),
      !smaller || printGrowth(cost, *smaller),
  };
  return std::ranges::all_of(reached, std::identity()) ? 0 : 1;
}

}  // namespace
}  // namespace vt

int main(int argc, char** argv) {
  if (argc < 2) {
    fmt::print(stderr, "usage: index_making_bench FOLDER [SMALLER]\n");
    return 2;
  }
  // One after the other: a corpus sets the environment of what it runs.
  std::optional<vt::CostPerEntry> smaller;
  if (argc > 2) smaller = vt::costIn(vt::Corpus(argv[2]));
  return vt::run(vt::Corpus(argv[1]), smaller);
}
