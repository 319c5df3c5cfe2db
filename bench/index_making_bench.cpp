// Is an index made as fast as a database of names alone? Crawls a large tree and publishes, from
// the beginning and once more, against updatedb over the same files in the same run, each as a
// process.
//
//   index_making_bench FOLDER   that script/bench-corpus has printed; root only

#include <fmt/format.h>

#include <algorithm>
#include <functional>

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

int run(const Corpus& corpus) {
  // The first of each finds what is in the caches of the kernel for those that count.
  corpus.indexNames();
  corpus.updatedb();
  const ProgramRun made = worstAndBest([&] { return corpus.indexNames(); });
  const ProgramRun peer = worstAndBest([&] { return corpus.updatedb(); });
  const ProgramRun again = worstAndBest([&] { return corpus.indexNamesAgain(); });
  const ProgramRun peerAgain = worstAndBest([&] { return corpus.updatedbAgain(); });
  const bool reached[] = {
      printFigure("CrawlAndPublish", 1000 * made.seconds, "ms", "updatedb", 1000 * peer.seconds, 1),
      printFigure("CrawlAndPublishAgain", 1000 * again.seconds, "ms", "updatedb",
                  1000 * peerAgain.seconds),
      printFigure("MemoryOfIndexer", std::max(made.mebibytes, again.mebibytes), "MiB", 250),
      printFigure("BytesPerFile", bytesPerFile(corpus), "B", 110),
  };
  return std::ranges::all_of(reached, std::identity()) ? 0 : 1;
}

}  // namespace
}  // namespace vt

int main(int argc, char** argv) {
  if (argc < 2) {
    fmt::print(stderr, "usage: index_making_bench FOLDER\n");
    return 2;
  }
  return vt::run(vt::Corpus(argv[1]));
}
