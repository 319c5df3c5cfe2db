#include "vistaro/SearchProgress.h"

#include <unistd.h>

#include <cstdio>
#include <string>

#include "platform/MetadataIndex.h"
#include "platform/Platform.h"
#include "vistaro/Terminal.h"

namespace vt::tool {
namespace {

// Standard error has no buffer. What fails to be shown is of no consequence.
void show(const std::string& bytes) {
  if (!bytes.empty()) std::fwrite(bytes.data(), 1, bytes.size(), stderr);
}

}  // namespace

SearchProgress::SearchProgress(bool wanted)
    : isShown_(wanted && Terminal::obeysEscapes(STDERR_FILENO)), line_(ProgressLine::Clock::now()) {
  if (!isShown_) return;
  Platform::current().metadataIndex().setProgress(
      [this](std::uint64_t folders, std::uint64_t entries) {
        show(line_.update(folders, entries, ProgressLine::Clock::now()));
      });
}

SearchProgress::~SearchProgress() {
  if (!isShown_) return;
  Platform::current().metadataIndex().setProgress({});
  show(line_.remove());
}

}  // namespace vt::tool
