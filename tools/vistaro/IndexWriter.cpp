#include "vistaro/IndexWriter.h"

#include <fmt/format.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <utility>

#include "platform/Platform.h"
#include "platform/linux/ContentTypeTable.h"
#include "platform/linux/extraction/LinuxExtractors.h"
#include "scopes/FolderPaths.h"
#include "vistaro/CanonicalFolder.h"
#include "vistaro/CommandError.h"
#include "vistaro/IndexingLine.h"
#include "vistaro/ProgressLine.h"
#include "vistaro/SettingsChange.h"
#include "vistaro/Terminal.h"

namespace vt::tool {
namespace {

template <class T>
T orThrow(Result<T, StoreError> result) {
  if (!result) throw CommandError{kFailure, printable(result.error().reason)};
  return std::move(result).value();
}

/// A line on a terminal, while this is alive, that tells how far indexing has come.
class ShownProgress {
 public:
  ShownProgress() = default;
  ShownProgress(const ShownProgress&) = delete;
  ShownProgress& operator=(const ShownProgress&) = delete;
  ~ShownProgress() { showOnTerminal(line_.remove()); }

  void update(const IndexingProgress& at) {
    if (!shows_) return;
    showOnTerminal(line_.update(ProgressLine::Clock::now(), [&] { return indexingLine(at); }));
  }

 private:
  const bool shows_ = Terminal::obeysEscapes(STDERR_FILENO);
  ProgressLine line_{ProgressLine::Clock::now()};
};

}  // namespace

IndexWriter::IndexWriter(const IndexOptions& options, const std::string& indexFolder)
    : folder_(orThrow(IndexFolder::make(indexFolder))),
      lock_(orThrow(folder_.lock())),
      types_(contentTypesIn(Platform::current().resources())) {
  if (!types_) {
    throw CommandError{kFailure, "the table of types cannot be read; `vistaro doctor` tells more"};
  }
  if (!options.namesOnly) {
    extractors_.emplace(
        linuxExtractors(*types_, extractionWorkers(Platform::current().resources(), *types_)));
  }
  for (const std::string& folder : options.folders) named_.push_back(canonicalFolder(folder));
}

std::vector<std::string> IndexWriter::wishedFolders() const {
  if (!named_.empty()) return named_;
  const std::shared_ptr<VTSettings> settings = readableSettings();
  settings->reloadConfig();
  return pathsCoveredBy(*settings->searchFolders());
}

std::vector<std::string> IndexWriter::presentFolders(const std::vector<std::string>& wished,
                                                     FunctionRef<void(const std::string&)> tell) {
  std::vector<std::string> folders;
  for (const std::string& path : wished) {
    try {
      folders.push_back(canonicalFolder(path));
    } catch (const CommandError& error) {
      tell(error.text);
    }
  }
  return folders;
}

Result<std::optional<IndexingReport>, StoreError> IndexWriter::run(
    const std::vector<std::string>& roots, Indexer::Progress progress) const {
  const Indexer indexer(folder_, lock_, *types_, extractors_ ? &*extractors_ : nullptr);
  ShownProgress shown;
  return indexer.run(roots, [&](const IndexingProgress& at) {
    shown.update(at);
    return progress(at);
  });
}

Result<ContentCounts, StoreError> IndexWriter::lookIntoFiles(IndexUpdater& updater,
                                                             Indexer::Progress progress) {
  ShownProgress shown;
  IndexingProgress at;
  return updater.lookIntoFiles([&](const ContentCounts& counts) {
    at.contents = counts;
    shown.update(at);
    return progress(at);
  });
}

void IndexWriter::tell(const IndexingReport& report) {
  if (report.distrusted) {
    printError(fmt::format("note: {}; all was read anew", printable(report.distrusted->reason)));
  }
  const std::chrono::duration<double> crawling = report.manifest.duration;
  fmt::print("generation {}: {} files in {} folders, crawled in {:.2f} s, written in {:.2f} s\n",
             report.manifest.generation, report.crawled.entries, report.crawled.folders,
             crawling.count(), report.publishing.count());
  if (report.crawled.leftOut > 0) {
    fmt::print("  {} of the folders could not be read, or not to the end\n",
               report.crawled.leftOut);
  }
  std::fflush(stdout);  // a log that this may go to is to be read while it runs on
}

bool IndexWriter::tellOfTrouble(const IndexingReport& report) {
  if (report.distrustedCatalogue) {
    printError(fmt::format("note: {}; all files are looked into anew",
                           printable(report.distrustedCatalogue->reason)));
  }
  if (!report.contentError) return false;
  printError(fmt::format("note: files were not looked into, or not all: {}",
                         printable(report.contentError->reason)));
  return true;
}

void IndexWriter::tellOfContents(const ContentCounts& contents,
                                 std::chrono::duration<double> time) {
  if (contents.expected == 0) return;
  fmt::print("  {} files looked into in {:.2f} s", contents.done, time.count());
  if (contents.failures > 0) fmt::print(", {} of them in vain", contents.failures);
  if (contents.done < contents.expected) {
    fmt::print("; {} are left for the next time", contents.expected - contents.done);
  }
  fmt::print("\n");
  std::fflush(stdout);
}

}  // namespace vt::tool
