#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vt {

// A file of each format that has pictures of its own.

/// What a sample's picture shows.
enum class SampleShows {
  kQuarters,  ///< quarters(): a picture, a cover or a frame
  kLeftHalf,  ///< red on the left, white on the right
  kWords,     ///< dark letters on white
};

struct SampleFormat {
  std::string_view ending;  ///< of the name, without the dot
  SampleShows shows = SampleShows::kQuarters;
  void (*write)(const std::string& path, std::string_view ending) = nullptr;
};

/// Every format that writeSample() makes.
const std::vector<SampleFormat>& sampleFormats();

/// Makes a file of the format that the ending of `path` names, beside which it leaves others
/// behind. Those that have a size are of 200 by 100.
void writeSample(const std::string& path);

}  // namespace vt
