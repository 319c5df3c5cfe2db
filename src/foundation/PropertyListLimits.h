#pragma once

#include <cstddef>

namespace vt {

/// What readers of property lists accept at most, and so what the writer writes at most.
struct PropertyListLimits {
  /// Containers in one another, the root included.
  std::size_t depth = 512;

  /// Bytes of a file; also the bytes of text and data that one file may unfold to, since a binary
  /// file can name the same text many times.
  std::size_t bytes = std::size_t{256} << 20;

  /// Values in one file, each counted as often as it is referred to. At some 180 bytes for the most
  /// wasteful (an empty dictionary under a key of its own) this bounds the memory of a tree to
  /// about 700 MiB however small the file.
  std::size_t objects = 4'000'000;
};

}  // namespace vt
