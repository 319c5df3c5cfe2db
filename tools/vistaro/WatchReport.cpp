#include "vistaro/WatchReport.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "vistaro/LocalTime.h"
#include "vistaro/Terminal.h"

namespace vt::tool {

void showStatusLine(std::string_view label, const std::string& text) {
  fmt::print("{:<12}{}\n", label, text);
}

std::string countOf(std::uint64_t count, std::string_view units) {
  if (count == 1) units.remove_suffix(1);
  return fmt::format("{} {}", count, units);
}

void showWatch(const WatcherRecord& record, std::chrono::microseconds age) {
  showStatusLine("Watched",
                 fmt::format("by {}, {}, {} waiting; up to date {:.0f} s ago", record.watch,
                             countOf(record.watched, record.unit), countOf(record.waiting, "names"),
                             std::chrono::duration<double>(age).count()));
  if (!record.why.empty()) fmt::print("  since {}\n", printable(record.why));
  if (!record.whyUnwatched.empty()) {
    const std::string count =
        record.unwatched == 0 ? "" : countOf(record.unwatched, record.unit) + ": ";
    showStatusLine("Not watched", count + printable(record.whyUnwatched));
  }
  if (record.lastBatch) {
    showStatusLine("Last change",
                   fmt::format("{}, {} places, {:.2f} s", localTimeText(*record.lastBatch),
                               record.lastBatchSize, record.lastBatchSeconds));
  }
  if (record.isMerging != 0) showStatusLine("Merging", "base and delta, beside updates");
  if (!record.failure.empty()) showStatusLine("Trouble", printable(record.failure));
  if (!record.contentFailure.empty()) showStatusLine("Trouble", printable(record.contentFailure));
  if (!record.mergeFailure.empty()) {
    showStatusLine("Trouble", "base and delta were not merged: " + printable(record.mergeFailure));
  }
}

nlohmann::ordered_json watchAsJson(const WatcherRecord& record) {
  nlohmann::ordered_json watch = {{"by", record.watch},
                                  {"unit", record.unit},
                                  {"watched", record.watched},
                                  {"unwatched", record.unwatched},
                                  {"waiting", record.waiting},
                                  {"overflows", record.overflows},
                                  {"merging", record.isMerging != 0}};
  const auto add = [&](const char* key, const std::string& text) {
    if (!text.empty()) watch[key] = text;
  };
  add("why", record.why);
  add("whyUnwatched", record.whyUnwatched);
  add("error", record.failure);
  add("contentError", record.contentFailure);
  add("mergeError", record.mergeFailure);
  if (record.lastBatch) {
    watch["lastChange"] = instantText(*record.lastBatch);
    watch["lastChangePlaces"] = record.lastBatchSize;
    watch["lastChangeSeconds"] = record.lastBatchSeconds;
  }
  return watch;
}

}  // namespace vt::tool
