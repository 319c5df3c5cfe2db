#include "vistaro/IndexingLine.h"

#include <fmt/format.h>

#include <cmath>

namespace vt::tool {

std::string indexingLine(const IndexingProgress& progress) {
  const std::uint64_t entries = progress.crawled.entries;
  if (progress.contents) {
    return fmt::format("looking into files: {} of {}", progress.contents->done,
                       progress.contents->expected);
  }
  if (progress.isPublishing) return fmt::format("writing the index of {} files", entries);
  std::string line =
      fmt::format("indexing: {} folders, {} files", progress.crawled.folders, entries);
  const double seconds = progress.elapsed.count();
  if (entries == 0 || seconds <= 0) return line;
  const double rate = static_cast<double>(entries) / seconds;
  line += fmt::format(", {:.0f} a second", rate);
  if (progress.expectedEntries && *progress.expectedEntries > entries) {
    const double left = static_cast<double>(*progress.expectedEntries - entries) / rate;
    line += fmt::format(", about {:.0f} s left", std::ceil(left));
  }
  return line;
}

}  // namespace vt::tool
