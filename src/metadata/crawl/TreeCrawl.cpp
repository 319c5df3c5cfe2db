#include "metadata/crawl/TreeCrawl.h"

#include <chrono>
#include <thread>
#include <utility>

namespace vt {
namespace {

constexpr std::chrono::milliseconds kProgressInterval{100};

}  // namespace

TreeCrawl::End TreeCrawl::run(const std::vector<CrawlRoot>& roots, Progress progress) {
  {
    const MutexLock lock(mutex_);
    for (const CrawlRoot& root : roots) addRoot(root);
    working_ = threads_;
  }
  std::vector<std::jthread> workers;  // joined on every way out
  workers.reserve(threads_);
  try {
    for (std::size_t i = 0; i < threads_; ++i) workers.emplace_back([this] { work(); });
  } catch (...) {
    const MutexLock lock(mutex_);
    isStopped_ = true;
    changed_.notifyAll();
    throw;
  }

  mutex_.lock();
  while (working_ > 0) {
    finished_.waitFor(mutex_, kProgressInterval);
    const CrawlCounts counts = counts_;
    mutex_.unlock();
    const bool goesOn = progress(counts);
    mutex_.lock();
    if (!goesOn && !isStopped_) {
      isStopped_ = true;
      changed_.notifyAll();
    }
  }
  const std::exception_ptr failure = failure_;
  const End end = isSinkFull_ ? End::kSinkFull : isStopped_ ? End::kStopped : End::kDone;
  mutex_.unlock();
  if (failure) std::rethrow_exception(failure);
  return end;
}

CrawlCounts TreeCrawl::counts() {
  const MutexLock lock(mutex_);
  return counts_;
}

void TreeCrawl::addRoot(const CrawlRoot& root) {
  const Descriptor folder = FolderOpener().find(root.path);
  const std::optional<FileStatus> status = folder.isOpen() ? statusOf(folder.get()) : std::nullopt;
  if (!status) {
    sink_.finishFolder(root.folder, {}, /*isComplete=*/false);
    ++counts_.leftOut;
    return;
  }
  PendingFolder pending;
  pending.id = root.folder;
  if (memory_ != nullptr) pending.before = memory_->folderAt(root.path);
  pending.device = status->device;
  pending.inode = status->inode;
  pending.isMountPoint = true;  // for all that is known
  pending.path = root.path;
  pending_.addRoot(pending);
}

void TreeCrawl::work() {
  FolderScanner scanner(types_, memory_);
  mutex_.lock();
  while (!isStopped_ && (!pending_.isEmpty() || scanning_ > 0)) {
    if (pending_.isEmpty()) {
      changed_.wait(mutex_);  // another thread may be about to find some
      continue;
    }
    ++scanning_;
    const PendingFolder folder = pending_.take();
    mutex_.unlock();
    try {
      scanOne(scanner, folder);
      mutex_.lock();
    } catch (...) {
      mutex_.lock();
      failure_ = std::current_exception();
      isStopped_ = true;
    }
    --scanning_;
    if (isStopped_ || (scanning_ == 0 && pending_.isEmpty())) changed_.notifyAll();
  }
  if (--working_ == 0) finished_.notifyAll();
  mutex_.unlock();
}

void TreeCrawl::scanOne(FolderScanner& scanner, const PendingFolder& folder) {
  const FolderScanner::Outcome outcome = scanner.scan(folder, [&](std::span<CrawledEntry> entries) {
    const MutexLock lock(mutex_);
    if (isStopped_) return false;
    if (!sink_.addEntries(folder.id, entries)) {
      isSinkFull_ = isStopped_ = true;
      return false;
    }
    counts_.entries += entries.size();
    pending_.addFolders(folder, entries);
    if (!pending_.isEmpty()) changed_.notifyOne();
    return true;
  });
  const MutexLock lock(mutex_);
  sink_.finishFolder(folder.id, outcome.stamp, outcome.isComplete);
  ++counts_.folders;
  if (!outcome.isComplete) ++counts_.leftOut;
}

}  // namespace vt
