#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <unordered_set>
#include <vector>

#include "foundation/Result.h"
#include "metadata/catalogue/CatalogueWriter.h"
#include "metadata/catalogue/ContentRecord.h"
#include "metadata/crawl/CrawlSink.h"
#include "metadata/extract/Extractors.h"
#include "metadata/store/SegmentIdentity.h"

namespace vt {

/// Finds out which content each entry of a crawl has, by what the catalogue knew when the crawl
/// began: a file that has changed since, or was never looked into, is still to be looked into. So
/// it finds out of which other files the extended attributes are to be looked at.
class RowContents {
 public:
  /// Borrows `extractors`. Takes a second for a million contents, and 40 bytes for each.
  /// `earlier` are the segments that the crawl remembers.
  static Result<RowContents, StoreError> of(CatalogueWriter& catalogue,
                                            const Extractors& extractors,
                                            std::span<const SegmentIdentity> earlier);

  /// Takes the next entry.
  void add(const CrawledEntry& entry);

  /// What the entries have, `rows` being their numbers, counted from 0 as they were added.
  std::vector<ContentNumber> contentsOf(std::span<const std::uint32_t> rows) const;

  /// The places among `rows` of the files whose extended attributes are to be looked at, though
  /// their content is not: their inode has changed, or nobody looked.
  std::vector<std::uint32_t> withUnseenAttributes(std::span<const std::uint32_t> rows) const;

  /// The contents that no entry has, of the file systems that any entry is on: another one may have
  /// been taken away, and come back.
  std::vector<ContentNumber> unseen() const;

 private:
  struct Known {
    ContentIdentity identity;
    ContentVersion version;
    ContentNumber number = kWithoutContent;
    const Extractor* extractor = nullptr;  // nullptr when it is to be looked into again
    bool isSeen = false;
  };

  explicit RowContents(const Extractors& extractors) : extractors_(&extractors) {}
  static Known* findIn(std::vector<Known>& known, const ContentIdentity& identity);
  /// What the entry has; the other tells whether its extended attributes are to be looked at.
  ContentNumber contentOf(const CrawledEntry& entry, bool& isUnseen);

  const Extractors* extractors_;
  bool hasSeenAttributes_ = false;  // of all that the crawl remembers
  std::vector<Known> known_;        // by identity: files that were looked into
  std::vector<Known> tagged_;       // likewise: those that have extended attributes alone
  std::vector<ContentNumber> contents_;
  std::vector<bool> areUnseen_;                // like contents_
  std::unordered_set<std::uint64_t> devices_;  // that entries are on
};

}  // namespace vt
