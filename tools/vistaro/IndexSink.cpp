#include "vistaro/IndexSink.h"

#include <optional>

namespace vt::tool {

Result<bool, StoreError> IndexSink::crawl(Meanwhile goesOn) {
  areContentsToBeTold_ = true;
  return publishNames(goesOn, /*isTold=*/true);
}

Result<bool, StoreError> IndexSink::apply(const FileChanges& /*changes*/, Meanwhile goesOn) {
  return publishNames(goesOn, /*isTold=*/false);
}

Result<bool, StoreError> IndexSink::publishNames(Meanwhile goesOn, bool isTold) {
  const auto report = writer_.run(
      roots_, [&](const IndexingProgress& progress) { return goesOn() && !progress.contents; });
  if (!report) return report.error();
  if (!*report) return false;
  if (isTold) IndexWriter::tell(**report);
  const std::optional<ContentCounts>& contents = (*report)->contents;
  areContentsLeft_ = contents && contents->done < contents->expected;
  return true;
}

Result<bool, StoreError> IndexSink::lookIntoFiles(Meanwhile goesOn) {
  if (!areContentsLeft_) {
    areContentsToBeTold_ = false;
    return true;
  }
  const auto report =
      writer_.run(roots_, [&](const IndexingProgress& /*progress*/) { return goesOn(); });
  if (!report) return report.error();
  if (!*report) return false;
  if ((*report)->contentError) return *(*report)->contentError;
  const std::optional<ContentCounts>& contents = (*report)->contents;
  areContentsLeft_ = contents && contents->done < contents->expected;
  if (areContentsLeft_) return false;
  if (std::exchange(areContentsToBeTold_, false)) IndexWriter::tellOfContents(**report);
  return true;
}

}  // namespace vt::tool
