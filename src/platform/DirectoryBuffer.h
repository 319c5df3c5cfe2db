#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "platform/DirectoryRecord.h"
#include "platform/DirectoryServices.h"

namespace vt {

// How records lie in a data buffer, one behind the other, numbers in host byte order:
//   record     u16 length of the type, u16 length of the name, u32 number of attributes,
//              type, name, then each attribute
//   attribute  u32 length of the name, u32 number of values, name, then each value
//   value      u32 length, bytes
// So a record costs 8 bytes and its texts, an attribute 8 and its name, a value 4 and its bytes.

/// How many bytes of a buffer `record` takes.
std::size_t encodedSize(const DirectoryRecord& record);

/// Puts `record` behind what the buffer holds. False, and the buffer as it was, when there is no
/// room, or when its type or name is longer than 65,535 bytes.
bool appendRecord(DataBuffer& buffer, const DirectoryRecord& record);

/// The record number `index`, counted from 1; nothing when the buffer holds fewer or is damaged.
std::optional<DirectoryRecord> recordAt(const DataBuffer& buffer, std::uint32_t index);

/// The texts of a buffer of texts, each a u32 length and its bytes; nothing when the buffer does
/// not consist of exactly such texts.
std::optional<std::vector<std::string>> textsIn(const DataBuffer& buffer);

}  // namespace vt
