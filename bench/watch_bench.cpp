// How soon is a change known, and what does it cost to watch? Makes files and folders of its own in
// the folder for temporary files and watches them, by fanotify where this process may, and by
// inotify.
//
//   watch_bench

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "Report.h"
#include "metadata/live/Descriptor.h"
#include "metadata/watch/FanotifyWatch.h"
#include "metadata/watch/InotifyWatch.h"
#include "support/TemporaryFolder.h"

namespace vt {
namespace {

constexpr int kChanges = 50;
constexpr int kEvents = 100'000;
constexpr int kFolders = 20'000;

void change(const std::string& path) {
  const Descriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600));
  if (::write(file.get(), "x", 1) != 1) fmt::print(stderr, "cannot write {}\n", path);
}

/// Waits for the next batch as the loop of the indexer does.
WatchBatch nextBatch(FileSystemWatch& watch) {
  while (true) {
    const WatchInstant now = WatchClock::now();
    watch.collect(now);
    if (std::optional<WatchBatch> batch = watch.take(now)) {
      watch.endLook();
      return *std::move(batch);
    }
    const WatchInstant until = watch.due().value_or(now + std::chrono::seconds(1));
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - WatchClock::now());
    pollfd file{watch.descriptor(), POLLIN, 0};
    const auto wait = std::max<std::int64_t>(left.count(), 0);
    // What is due is not put off by what happens.
    ::poll(&file, watch.due() ? 0 : 1, static_cast<int>(wait));
  }
}

/// Milliseconds from close() to the batch, the worst but one in fifty.
double latency(FileSystemWatch& watch, const TemporaryFolder& folder) {
  std::vector<double> times;
  for (int i = 0; i < kChanges; ++i) {
    const std::string path = folder / ("file" + std::to_string(i));
    change(path);
    const WatchInstant closed = WatchClock::now();
    while (true) {
      const WatchBatch batch = nextBatch(watch);
      const std::vector<std::string>& entries = batch.changes.entries;
      if (std::ranges::find(entries, path) != entries.end()) break;
    }
    times.push_back(std::chrono::duration<double, std::milli>(WatchClock::now() - closed).count());
  }
  std::ranges::sort(times);
  return times[times.size() - 2];
}

/// Seconds of the processor that `work` takes in this process and for it.
double processorSecondsOf(const std::function<void()>& work) {
  const std::clock_t start = std::clock();
  work();
  return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

/// Microseconds of the processor for reading each event, in a storm.
double costOfEvent(FileSystemWatch& watch, const TemporaryFolder& folder) {
  double seconds = 0;
  for (int i = 0; i < kEvents / 2; ++i) {  // each is two events, of making and of closing
    change(folder / ("storm" + std::to_string(i)));
    if (i % 1000 != 999) continue;
    seconds += processorSecondsOf([&] { watch.collect(WatchClock::now()); });
  }
  seconds += processorSecondsOf([&] { watch.take(WatchClock::now() + std::chrono::hours(1)); });
  watch.endLook();
  return 1e6 * seconds / kEvents;
}

/// Bytes that the process has in memory. What the kernel keeps for a watch comes on top.
double bytesInUse() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmRSS:")) return 1024 * std::stod(line.substr(line.find(':') + 1));
  }
  return 0;
}

bool measure(FileSystemWatch& watch, const std::string& name) {
  const TemporaryFolder folder;
  const Result<bool, std::string> started = watch.start({{folder.path()}, {}}, WatchClock::now());
  if (!started) {
    fmt::print("{:<40} not measured: {}\n", name, started.error());
    return true;
  }
  const bool reached[] = {
      // Half of what is promised for the whole: the rest is for publishing.
      printFigure(name + "CloseToBatch", latency(watch, folder), "ms", 250),
      // A core that is half busy follows 50,000 events a second.
      printFigure(name + "CostOfEvent", costOfEvent(watch, folder), "us", 10),
  };
  return std::ranges::all_of(reached, std::identity());
}

bool measureFolders() {
  const TemporaryFolder folder;
  for (int i = 0; i < kFolders; ++i) {
    const std::string above = folder / std::to_string(i / 100);
    if (i % 100 == 0) ::mkdir(above.c_str(), 0700);
    ::mkdir((above + "/" + std::to_string(i)).c_str(), 0700);
  }
  InotifyWatch watch;
  const double before = bytesInUse();
  std::string failure;
  const double seconds = processorSecondsOf([&] {
    const Result<bool, std::string> started = watch.start({{folder.path()}, {}}, WatchClock::now());
    if (!started) failure = started.error();
  });
  const WatchCounts counts = watch.counts();
  if (!failure.empty() || counts.unwatched > 0) {
    fmt::print("{:<40} not measured: {}\n", "InotifyOfFolders",
               failure.empty() ? watch.whyUnwatched() : failure);
    return true;
  }
  const bool reached[] = {
      printFigure("InotifyStart", 1e6 * seconds / kFolders, "us a folder", 50),
      printFigure("InotifyMemory", (bytesInUse() - before) / kFolders, "B a folder", 500),
  };
  return std::ranges::all_of(reached, std::identity());
}

int run() {
  FanotifyWatch fanotify;
  InotifyWatch inotify;
  const bool reached[] = {measure(fanotify, "Fanotify"), measure(inotify, "Inotify"),
                          measureFolders()};
  return std::ranges::all_of(reached, std::identity()) ? 0 : 1;
}

}  // namespace
}  // namespace vt

int main() { return vt::run(); }
