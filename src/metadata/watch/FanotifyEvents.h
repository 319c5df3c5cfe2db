#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "foundation/FunctionRef.h"

namespace vt {

/// A name in a folder, as fanotify tells it. Borrows from the bytes that were read.
struct FanotifyName {
  /// What the folder is known by: its file system's number and its handle, as the kernel gives
  /// them.
  std::string_view folder;
  std::string_view name;  ///< bytes; "." is the folder itself
};

/// One event of a group that reports folders and names.
struct FanotifyEvent {
  std::uint64_t mask = 0;
  std::optional<FanotifyName> name;     ///< where it happened; of a rename: what it was before
  std::optional<FanotifyName> newName;  ///< of a rename: what it is now
};

/// Hands each event in the bytes that one read() gave to `visit`. False when they are no such
/// events; what came before was handed over.
bool readFanotifyEvents(std::span<const char> bytes, FunctionRef<void(const FanotifyEvent&)> visit);

/// The parts of FanotifyName::folder. `fileSystem` are 8 bytes, as statfs() has them; `handle` is a
/// struct file_handle.
struct FanotifyFolder {
  std::string_view fileSystem;
  std::string_view handle;
};
FanotifyFolder partsOf(std::string_view folder);

}  // namespace vt
