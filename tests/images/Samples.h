#pragma once

#include <string>
#include <vector>

#include "platform/Image.h"

namespace vt {

// Files to make pictures of. All are made here, by the tests or a program of the system.

/// A picture whose quarters are red, green (above), blue and white (below).
Image quarters(std::uint32_t width, std::uint32_t height);

/// A file of the format that the ending of `path` names, which holds quarters().
void writeQuarters(const std::string& path, std::uint32_t width, std::uint32_t height);

/// A page of 200 by 100 points whose left half is red.
std::string pdf();

/// A ZIP archive at `path` that holds the file `content` under the name `entry`.
void writeZip(const std::string& path, const std::string& entry, const std::string& content);

/// Runs a program of the system; the test fails when it does.
void make(const std::vector<std::string>& arguments);

/// The colour at a place of the image, from 0 to 1 each way, as "red", "green", "blue", "white",
/// "black", "clear" or its numbers.
std::string colourAt(const Image& image, double x, double y);

/// The colours in the middle of the quarters, from left to right and from above: "red green blue
/// white" for quarters().
std::string coloursOf(const Image& image);

}  // namespace vt
