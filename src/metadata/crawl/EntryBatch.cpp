#include "metadata/crawl/EntryBatch.h"

namespace vt {

void EntryBatch::clear() {
  entries_.clear();
  names_.clear();
  lists_.clear();
}

void EntryBatch::add(const CrawledEntry& entry) {
  entries_.push_back(entry);
  names_ += entry.name;
  lists_.insert(lists_.end(), entry.aclBytes.begin(), entry.aclBytes.end());
}

std::span<CrawledEntry> EntryBatch::entries() {
  // The storage has moved while it grew, so only now do the views get their places.
  const std::string_view names = names_;
  const std::span<const std::uint8_t> lists = lists_;
  std::size_t name = 0;
  std::size_t list = 0;
  for (CrawledEntry& entry : entries_) {
    entry.name = names.substr(name, entry.name.size());
    entry.aclBytes = lists.subspan(list, entry.aclBytes.size());
    name += entry.name.size();
    list += entry.aclBytes.size();
  }
  return entries_;
}

}  // namespace vt
