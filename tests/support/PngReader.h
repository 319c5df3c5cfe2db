#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/Image.h"

namespace vt {

/// A PNG file taken apart.
struct ReadPng {
  Image image;
  bool hasAlpha = false;
  std::vector<std::string> chunks;  ///< the types, in order
};

/// Reads PNG files of 8 bits per channel, with or without alpha and not interlaced, and checks
/// every sum. Nothing for any other file. Follows the standard, not our encoder.
std::optional<ReadPng> readPng(const std::string& file);

}  // namespace vt
