#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/FunctionRef.h"
#include "metadata/extract/Extractor.h"

struct archive;

namespace vt {

/// The entries of a ZIP archive of anyone's making, one after the other.
class ZipPackage {
 public:
  /// What a package may unfold to, of the entries that are read, and how many it may have.
  static constexpr std::uint64_t kMostUnfolded = std::uint64_t{512} << 20;
  static constexpr int kMostEntries = 20'000;

  /// Reads the open file from where it stands.
  explicit ZipPackage(int file);
  ZipPackage(const ZipPackage&) = delete;
  ZipPackage& operator=(const ZipPackage&) = delete;
  ~ZipPackage();

  /// The name of the next entry; nothing at the end, or where the archive is damaged.
  std::optional<std::string> next();

  /// Hands out the entry's content in pieces, until `take` answers false. False when the entry is
  /// damaged or encrypted.
  bool read(FunctionRef<bool(std::string_view piece)> take);
  /// The first `most` bytes of the entry's content, or as many as can be read.
  std::string beginning(std::size_t most);

  bool isEmpty() const { return count_ == 0; }
  /// Whether a bound ended the reading.
  bool isTooLarge() const { return isTooLarge_; }
  bool isEncrypted() const { return isEncrypted_; }

 private:
  archive* archive_;
  int count_ = 0;
  std::uint64_t unfolded_ = 0;
  bool isTooLarge_ = false;
  bool isEncrypted_ = false;
};

/// The failure that a package's bounds or its being none amount to; nothing when it could be read.
std::optional<ExtractionFailure> failureOf(const ZipPackage& package);

/// Whether the open file begins with these bytes.
bool startsWith(int file, std::string_view bytes);

/// The beginnings of a ZIP archive, and of the files that older office programs write, who also put
/// encrypted documents of any sort into one.
inline constexpr std::string_view kZipMagic = "PK";
inline constexpr std::string_view kCompoundFileMagic = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1";

}  // namespace vt
