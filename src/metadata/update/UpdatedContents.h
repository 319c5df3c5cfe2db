#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <unordered_set>
#include <vector>

#include "metadata/catalogue/CatalogueReader.h"
#include "metadata/catalogue/CatalogueWriter.h"
#include "metadata/extract/Extractors.h"
#include "metadata/indexing/ContentIndexer.h"
#include "metadata/store/IndexFolder.h"
#include "metadata/types/ContentTypes.h"
#include "metadata/update/KnownIndex.h"

namespace vt {

/// Which content each row has of an index that changes are made to.
class UpdatedContents {
 public:
  /// What the catalogue in the folder says of the generation that `index` has published or read
  /// last. What it does not say of the delta is found out again; kMissing when it says nothing of
  /// the base, though it can be written to: then a crawl is due.
  static Result<UpdatedContents, StoreError> of(const IndexFolder& folder,
                                                const Extractors& extractors,
                                                const KnownIndex& index);

  /// Says what is known of the rows of `delta`, which is about to come into force: `rows` are those
  /// that `index` calls them by.
  StoreFailure announce(const SegmentIdentity& delta, const KnownIndex& index,
                        std::span<const std::uint32_t> rows);
  /// Goes on from a merged base of `baseRowCount` rows, which is about to come into force, alone or
  /// with a delta that is to be announced: `before` tells of each row, and of each of the delta's,
  /// what KnownIndex called it before.
  StoreFailure rebase(const SegmentIdentity& base, std::size_t baseRowCount,
                      std::span<const std::uint32_t> before);

  /// Takes what was announced for what is in force.
  void take(const IndexGeneration& generation);

  /// Looks into the files that nobody has looked into, those of the delta first, and at the
  /// extended attributes of those that have changed.
  Result<ContentCounts, StoreError> lookIntoFiles(const IndexGeneration& generation,
                                                  const ContentTypes& types,
                                                  ContentIndexer::Progress progress);

 private:
  UpdatedContents(std::unique_ptr<CatalogueWriter> catalogue, const Extractors& extractors)
      : catalogue_(std::move(catalogue)), extractors_(&extractors) {}

  /// Takes what the catalogue says of the delta, or finds out what it should.
  StoreFailure takeDelta(CatalogueReader& catalogue, const KnownIndex& index);
  /// What the rows beside the base have, as far as that is known.
  Result<std::vector<ContentNumber>, StoreError> contentsOf(const KnownIndex& index,
                                                            std::span<const std::uint32_t> rows);
  /// What the file has; the other tells whether its extended attributes are to be looked at, though
  /// its content is not.
  Result<ContentNumber, StoreError> contentOf(const FileStatus& status, ContentTypeId type,
                                              bool& isUnseen);
  /// Looks at the extended attributes that nobody has looked at. False when `progress` ended it.
  Result<bool, StoreError> lookAtAttributes(const IndexGeneration& generation,
                                            const GenerationColumns& columns,
                                            ContentIndexer::Progress progress);
  /// Keeps which contents rows had that were removed.
  void noteGone(const KnownIndex& index);
  /// Forgets those that no row has any more, once they are many.
  StoreFailure forgetGone(const IndexGeneration& generation);
  /// What the rows beside the base have, by what the index calls them, the first of them first.
  std::vector<ContentNumber> newerContents() const;
  /// What each row of the index has, by what it is called there.
  std::vector<ContentNumber> contentsByRow() const;

  std::unique_ptr<CatalogueWriter> catalogue_;
  const Extractors* extractors_;
  std::vector<SegmentIdentity> segments_;  // in force
  std::vector<ContentNumber> base_;
  std::vector<ContentNumber> delta_;
  std::vector<std::uint32_t> deltaRows_;  // what the index calls the rows of the delta
  std::vector<ContentNumber> announced_;
  std::vector<std::uint32_t> announcedRows_;
  // Rows of the base, and what the index calls those of the delta, of whose files the extended
  // attributes are to be looked at.
  std::vector<std::uint32_t> unseenOfBase_;
  std::unordered_set<std::uint32_t> unseenOfDelta_;
  std::vector<ContentNumber> gone_;  // contents of rows that were removed; others may have them
  std::uint64_t newTexts_ = 0;       // since all texts were merged
  bool hasSeenRest_ = false;         // the attributes of all other files
};

}  // namespace vt
