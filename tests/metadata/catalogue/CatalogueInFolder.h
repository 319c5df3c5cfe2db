#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include "metadata/catalogue/CatalogueFile.h"
#include "metadata/catalogue/CatalogueReader.h"
#include "metadata/catalogue/CatalogueWriter.h"
#include "support/TemporaryFolder.h"

namespace vt {

template <class T>
T valueOrThrow(Result<T, StoreError> result) {
  if (!result) throw std::runtime_error(result.error().reason);
  return std::move(result).value();
}

inline void throwIf(const StoreFailure& failure) {
  if (failure) throw std::runtime_error(failure->reason);
}

/// A folder with a catalogue in it.
class CatalogueInFolder {
 public:
  std::string path() const { return folder_.path(); }
  std::string file() const { return folder_ / kCatalogueName; }

  std::unique_ptr<CatalogueWriter> writer() const {
    return valueOrThrow(CatalogueWriter::open(path()));
  }
  /// Looks at the catalogue as it is now.
  std::unique_ptr<CatalogueReader> reader() const {
    auto reader = valueOrThrow(CatalogueReader::open(path()));
    throwIf(reader->lookAnew());
    return reader;
  }

  /// What a look into the file with that inode number gives.
  static ContentRecord recordOf(std::uint64_t inode) {
    ContentRecord record;
    record.identity = {.device = 7, .inode = inode};
    record.version = {.modified = 1'000'000, .sizeInBytes = 10};
    record.extractor = "text";
    record.extractorVersion = 1;
    return record;
  }

 private:
  TemporaryFolder folder_;
};

/// An Extraction of a text alone.
inline Extraction textAlone(std::string text) {
  Extraction extraction;
  extraction.text = std::move(text);
  return extraction;
}

}  // namespace vt
