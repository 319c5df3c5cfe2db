#include "platform/linux/CatalogueSource.h"

#include <fcntl.h>

#include <optional>

#include "metadata/catalogue/CatalogueFile.h"

namespace vt {

Result<std::shared_ptr<const IndexedContents>, std::string> CatalogueSource::contentsOf(
    const OpenIndex& index) {
  StoreFailure failure = open();
  if (!failure) failure = take(index);
  if (failure) {
    reader_.reset();
    contents_.reset();
    if (failure->kind != StoreError::Kind::kMissing) return failure->reason;
  }
  if (contents_) return contents_;
  if (reader_) reader_->lookAway();
  return std::string("the index holds no text");
}

StoreFailure CatalogueSource::open() {
  const std::string path = folder_ + "/" + kCatalogueName;
  const std::optional<FileStatus> found = statusOf(AT_FDCWD, path.c_str());
  if (reader_ && found && found->isSameFileAs(file_)) return std::nullopt;
  contents_.reset();
  auto opened = CatalogueReader::open(folder_);
  if (!opened) return opened.error();
  reader_ = std::move(opened).value();
  if (found) file_ = *found;
  return std::nullopt;
}

StoreFailure CatalogueSource::take(const OpenIndex& index) {
  if (StoreFailure failure = reader_->lookAnew()) return failure;
  const Result<std::int64_t, StoreError> version = reader_->version();
  if (!version) return version.error();
  if (contents_ && version_ == *version && base_ == index.base && delta_ == index.delta) {
    return std::nullopt;
  }
  contents_.reset();
  auto taken = IndexedContents::of(reader_, index);
  if (!taken) return taken.error();
  if (*taken) contents_ = std::make_shared<const IndexedContents>(std::move(**taken));
  version_ = *version;
  base_ = index.base;
  delta_ = index.delta;
  return std::nullopt;
}

}  // namespace vt
