#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <string>

#include "metadata/extract/Extractor.h"
#include "metadata/live/FileStatus.h"

namespace vt {

/// What was found out of a file's content has a number, which is never given again: another one for
/// each look into the file.
using ContentNumber = std::uint32_t;

/// What a row has in the place of a number: nobody looks into such files.
inline constexpr ContentNumber kWithoutContent = 0;
/// The same: the file is still to be looked into.
inline constexpr ContentNumber kPendingContent = std::numeric_limits<ContentNumber>::max();

/// The file whatever it is called: several names may be of one.
struct ContentIdentity {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;

  bool operator==(const ContentIdentity&) const = default;
};

struct ContentIdentityHash {
  std::size_t operator()(const ContentIdentity& identity) const {
    // Numbers of inodes are near each other, those of devices few.
    return std::hash<std::uint64_t>{}(identity.inode ^ identity.device << 32);
  }
};

/// What tells a content from what the same file held before.
struct ContentVersion {
  std::int64_t modified = 0;  ///< microseconds since 1970
  std::uint64_t sizeInBytes = 0;
  /// When the inode was changed last, likewise: with other extended attributes, or only with other
  /// rights. 0 when nobody has looked at extended attributes.
  std::int64_t attributesChanged = 0;

  bool operator==(const ContentVersion&) const = default;
  /// Whether the file holds the same bytes.
  bool hasSameBytesAs(const ContentVersion& other) const {
    return modified == other.modified && sizeInBytes == other.sizeInBytes;
  }
};

/// What the status says that a content is of.
ContentIdentity identityOf(const FileStatus& status);
ContentVersion versionOf(const FileStatus& status);

/// What is known of a file whose content was looked into.
struct ContentRecord {
  ContentNumber number = kWithoutContent;
  ContentIdentity identity;
  ContentVersion version;
  std::string extractor;  ///< "" when nobody looked into it: it has extended attributes alone
  std::uint32_t extractorVersion = 0;
  bool hasText = false;
  /// Why nothing is known but that; the path is what the file was called then, bytes.
  std::optional<ExtractionFailure> failure;
  std::string path;
};

}  // namespace vt
