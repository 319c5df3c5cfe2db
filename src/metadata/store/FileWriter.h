#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "metadata/store/StoreCalls.h"
#include "metadata/store/StoreError.h"

struct XXH3_state_s;  // of libxxhash

namespace vt {

/// Writes a new file from its beginning to its end, through a buffer, and checksums parts of it.
///
/// Once a write has failed, all further ones do nothing; error() tells of the first.
class FileWriter {
 public:
  /// Writes to the open `file`, which stays the caller's. `shownPath` is for errors.
  FileWriter(StoreCalls& calls, int file, std::string shownPath);
  FileWriter(const FileWriter&) = delete;
  FileWriter& operator=(const FileWriter&) = delete;
  ~FileWriter();

  /// Where the next byte goes.
  std::uint64_t position() const { return flushed_ + used_; }

  void append(std::string_view bytes) {
    if (bytes.size() > room()) {
      appendLarge(bytes);
      return;
    }
    bytes.copy(buffer_.get() + used_, bytes.size());
    used_ += bytes.size();
  }
  /// Appends the bytes of a number as they lie in memory.
  template <class Number>
  void appendNumber(Number number) {
    append({reinterpret_cast<const char*>(&number), sizeof number});
  }
  /// Appends zeros up to a multiple of `alignment`.
  void align(std::uint64_t alignment);

  /// Starts a checksum with the next byte; gives that of all bytes from there on.
  void beginChecksum();
  std::uint64_t endChecksum();

  /// Leaves the next `count` bytes out: what is returned writes them, on another thread if need be,
  /// and must do so before this is synced. Then take() tells of its errors here.
  FileWriter leaveOut(std::uint64_t count);
  void take(const FileWriter& part);

  /// Writes over bytes that were appended before, past all checksums.
  void writeAt(std::uint64_t offset, std::string_view bytes);

  /// Writes what is in the buffer.
  void flush();

  /// The same, and has all that was written begin to reach the disk.
  void startSync();

  /// Writes what is in the buffer, and has it all reach the disk. What went wrong since the
  /// beginning.
  std::optional<StoreError> sync();

  /// What went wrong first.
  const std::optional<StoreError>& error() const { return error_; }
  /// Has the file fail for a reason of the caller's, unless it has failed already.
  void fail(StoreError error);

 private:
  // A whole large page, written at once where one begins: the kernel then keeps the file in large
  // pages, where its file system can, and whoever maps it needs one page fault in place of 32.
  static constexpr std::size_t kBufferBytes = std::size_t{1} << 21;
  // Writing into space that was set aside takes half the time of finding space write by write.
  static constexpr std::uint64_t kReservedBytes = std::uint64_t{1} << 24;

  struct FreeChecksum {
    void operator()(XXH3_state_s* state) const;
  };

  FileWriter(const FileWriter& whole, std::uint64_t begin, std::uint64_t count);

  /// What the buffer still takes: it is full where a large page of the file ends.
  std::size_t room() const {
    return kBufferBytes - static_cast<std::size_t>(flushed_ % kBufferBytes) - used_;
  }
  void appendLarge(std::string_view bytes);
  void reserve();
  void updateChecksum();
  void writeAll(std::uint64_t offset, std::string_view bytes);

  StoreCalls& calls_;
  int file_;
  std::string shownPath_;
  std::unique_ptr<char[]> buffer_;
  std::size_t used_ = 0;
  std::size_t summed_ = 0;  // bytes of the buffer that the checksum has seen or does not ask for
  std::uint64_t flushed_ = 0;
  std::uint64_t reserved_ = 0;  // up to where space was set aside
  std::unique_ptr<XXH3_state_s, FreeChecksum> checksum_;
  std::optional<StoreError> error_;
};

/// The checksum that FileWriter takes: XXH3, 64 bits.
std::uint64_t checksumOf(std::string_view bytes);

}  // namespace vt
