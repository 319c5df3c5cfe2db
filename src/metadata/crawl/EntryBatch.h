#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "metadata/crawl/CrawlSink.h"

namespace vt {

/// Gathers entries of one folder and owns what they borrow.
class EntryBatch {
 public:
  /// Keeps the memory of a thread small in the largest folder, and is rarely reached in others.
  static constexpr std::size_t kMostEntries = 1024;

  bool isEmpty() const { return entries_.empty(); }
  bool isFull() const { return entries_.size() >= kMostEntries; }
  void clear();

  /// Copies name and list; the views in `entry` need not outlive the call.
  void add(const CrawledEntry& entry);

  /// What was added, in that order; good until the next change.
  std::span<CrawledEntry> entries();

 private:
  std::vector<CrawledEntry> entries_;
  std::string names_;
  std::vector<std::uint8_t> lists_;
};

}  // namespace vt
