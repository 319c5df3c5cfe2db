#include "metadata/store/FileWriter.h"

#include <xxhash.h>

#include <algorithm>
#include <cerrno>
#include <new>
#include <utility>

namespace vt {

void FileWriter::FreeChecksum::operator()(XXH3_state_s* state) const { XXH3_freeState(state); }

FileWriter::FileWriter(StoreCalls& calls, int file, std::string shownPath)
    : calls_(calls),
      file_(file),
      shownPath_(std::move(shownPath)),
      buffer_(std::make_unique_for_overwrite<char[]>(kBufferBytes)),
      checksum_(XXH3_createState()) {
  if (!checksum_) throw std::bad_alloc();
  XXH3_64bits_reset(checksum_.get());
}

FileWriter::FileWriter(const FileWriter& whole, std::uint64_t begin, std::uint64_t count)
    : FileWriter(whole.calls_, whole.file_, whole.shownPath_) {
  flushed_ = begin;
  reserved_ = begin + count;  // by the whole, where it pays
}

FileWriter::~FileWriter() = default;

FileWriter FileWriter::leaveOut(std::uint64_t count) {
  flush();
  const std::uint64_t begin = flushed_;
  flushed_ += count;
  while (count > kBufferBytes && reserved_ < flushed_) reserve();
  reserved_ = std::max(reserved_, flushed_);
  return {*this, begin, count};
}

void FileWriter::take(const FileWriter& part) {
  if (part.error_) fail(*part.error_);
}

void FileWriter::appendLarge(std::string_view bytes) {
  while (!bytes.empty()) {
    if (room() == 0) flush();
    const std::size_t count = std::min(bytes.size(), room());
    bytes.copy(buffer_.get() + used_, count);
    used_ += count;
    bytes.remove_prefix(count);
  }
}

void FileWriter::align(std::uint64_t alignment) {
  constexpr std::string_view kZeros("\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0", 16);
  while (position() % alignment != 0) {
    append(kZeros.substr(
        0, std::min<std::uint64_t>(kZeros.size(), alignment - position() % alignment)));
  }
}

void FileWriter::beginChecksum() {
  summed_ = used_;
  XXH3_64bits_reset(checksum_.get());
}

std::uint64_t FileWriter::endChecksum() {
  updateChecksum();
  return XXH3_64bits_digest(checksum_.get());
}

void FileWriter::writeAt(std::uint64_t offset, std::string_view bytes) {
  flush();
  writeAll(offset, bytes);
}

void FileWriter::startSync() {
  flush();
  calls_.startSync(file_);
}

std::optional<StoreError> FileWriter::sync() {
  flush();
  if (!error_ && reserved_ > flushed_ && calls_.truncate(file_, flushed_) != 0) {
    fail(systemError(errno, "write", shownPath_));
  }
  if (!error_ && calls_.sync(file_) != 0) fail(systemError(errno, "write", shownPath_));
  return error_;
}

void FileWriter::fail(StoreError error) {
  if (!error_) error_ = std::move(error);
}

void FileWriter::flush() {
  updateChecksum();
  if (room() == 0 && position() > reserved_) reserve();
  writeAll(flushed_, {buffer_.get(), used_});
  flushed_ += used_;
  used_ = 0;
  summed_ = 0;
}

void FileWriter::reserve() {
  // Where it can't be done, for want of space or in that file system, the writes will say so or
  // find their own.
  calls_.reserve(file_, reserved_, kReservedBytes);
  reserved_ += kReservedBytes;
}

void FileWriter::updateChecksum() {
  XXH3_64bits_update(checksum_.get(), buffer_.get() + summed_, used_ - summed_);
  summed_ = used_;
}

void FileWriter::writeAll(std::uint64_t offset, std::string_view bytes) {
  while (!bytes.empty() && !error_) {
    const ssize_t count = calls_.write(file_, bytes.data(), bytes.size(), offset);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) {
      fail(systemError(errno, "write", shownPath_));
      return;
    }
    offset += static_cast<std::uint64_t>(count);
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
}

std::uint64_t checksumOf(std::string_view bytes) { return XXH3_64bits(bytes.data(), bytes.size()); }

}  // namespace vt
