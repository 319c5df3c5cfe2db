#include "vistaro/SearchProgress.h"

#include <fmt/format.h>
#include <unistd.h>

#include "platform/MetadataIndex.h"
#include "platform/Platform.h"
#include "vistaro/Terminal.h"

namespace vt::tool {

SearchProgress::SearchProgress(bool wanted)
    : isShown_(wanted && Terminal::obeysEscapes(STDERR_FILENO)), line_(ProgressLine::Clock::now()) {
  if (!isShown_) return;
  Platform::current().metadataIndex().setProgress(
      [this](std::uint64_t folders, std::uint64_t entries) {
        showOnTerminal(line_.update(ProgressLine::Clock::now(), [&] {
          return fmt::format("searching: {} folders, {} files", folders, entries);
        }));
      });
}

SearchProgress::~SearchProgress() {
  if (!isShown_) return;
  Platform::current().metadataIndex().setProgress({});
  showOnTerminal(line_.remove());
}

}  // namespace vt::tool
