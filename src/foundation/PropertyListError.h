#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace vt {

/// Why a property list could not be read or written.
enum class PropertyListErrorKind : std::uint8_t {
  kSyntax,          ///< the bytes do not follow the format
  kTruncated,       ///< the bytes end too early; no bytes at all included
  kStructure,       ///< well-formed, but a key, value or element stands where none may
  kInvalidValue,    ///< a number, date or run of data that spells none, or that no type holds
  kInvalidText,     ///< text that is not Unicode, or that the format cannot hold
  kUnsupported,     ///< null, an object, a declared entity, a set, a UID
  kTooDeep,         ///< more containers in one another than allowed, or one inside itself
  kTooLarge,        ///< more bytes than allowed
  kTooManyObjects,  ///< more values than allowed
};

/// What is wrong with a property list, and where.
struct PropertyListError {
  PropertyListErrorKind kind = PropertyListErrorKind::kSyntax;
  /// Bytes before the offending piece. When writing: the bytes written before it.
  std::size_t offset = 0;
  /// The line of that byte, from 1; 0 for the binary format, which has none, and when writing.
  std::size_t line = 0;
  /// What is wrong, in English, the offending piece included; valid UTF-8.
  std::string text;

  /// One line for people: "line 3, byte 45: …".
  std::string description() const;
};

/// The error of a file of `size` bytes where only `limit` are allowed.
PropertyListError tooManyBytes(std::size_t size, std::size_t limit);

/// The line, from 1, of the byte at `offset`. CR, LF and CR LF each end a line.
std::size_t lineAtOffset(std::string_view bytes, std::size_t offset);

/// A piece of input as an error quotes it: valid UTF-8, control characters escaped, cut when long.
std::string quotedPiece(std::string_view piece);

}  // namespace vt
