#include "images/PngEncoder.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <string_view>
#include <utility>
#include <vector>

namespace vt {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::string_view kSignature = "\x89PNG\r\n\x1a\n";
constexpr char kBitsPerChannel = 8;
constexpr char kTrueColour = 2;
constexpr char kTrueColourWithAlpha = 6;

// Level 6 takes four times as long for files that are a twentieth smaller.
constexpr int kCompressionLevel = 3;

void appendBigEndian(std::string& bytes, std::uint32_t number) {
  for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(number >> shift);
}

void appendChunk(std::string& file, std::string_view type, std::string_view data) {
  appendBigEndian(file, static_cast<std::uint32_t>(data.size()));
  const std::size_t start = file.size();
  file.append(type).append(data);
  const auto* summed = reinterpret_cast<const Bytef*>(file.data() + start);
  const uLong sum = ::crc32_z(0, summed, file.size() - start);
  appendBigEndian(file, static_cast<std::uint32_t>(sum));
}

std::uint8_t paeth(int left, int above, int corner) {
  const int guess = left + above - corner;
  const int toLeft = std::abs(guess - left);
  const int toAbove = std::abs(guess - above);
  const int toCorner = std::abs(guess - corner);
  if (toLeft <= toAbove && toLeft <= toCorner) return static_cast<std::uint8_t>(left);
  return static_cast<std::uint8_t>(toAbove <= toCorner ? above : corner);
}

/// Appends `row` with the filter in front that leaves the smallest sum of differences, the rule
/// that the PNG standard recommends. `above` is the row before, or zeros.
class RowFilter {
 public:
  RowFilter(std::size_t rowSize, std::size_t pixelSize) : pixelSize_(pixelSize) {
    for (Bytes& filtered : filtered_) filtered.resize(rowSize);
  }

  void append(const Bytes& row, const Bytes& above, Bytes& output) {
    std::array<std::uint64_t, 3> cost{};
    for (std::size_t i = 0; i < row.size(); ++i) {
      const std::uint8_t left = i < pixelSize_ ? std::uint8_t{0} : row[i - pixelSize_];
      const std::uint8_t corner = i < pixelSize_ ? std::uint8_t{0} : above[i - pixelSize_];
      const std::array<std::uint8_t, 3> predicted{left, above[i], paeth(left, above[i], corner)};
      for (std::size_t f = 0; f < predicted.size(); ++f) {
        const auto difference = static_cast<std::uint8_t>(row[i] - predicted[f]);
        filtered_[f][i] = difference;
        cost[f] += std::min<unsigned>(difference, 256U - difference);
      }
    }
    const std::size_t best =
        static_cast<std::size_t>(std::ranges::min_element(cost) - cost.begin());
    static constexpr std::array<std::uint8_t, 3> kNumbers{1, 2, 4};  // sub, up, Paeth
    output.push_back(kNumbers[best]);
    output.insert(output.end(), filtered_[best].begin(), filtered_[best].end());
  }

 private:
  std::size_t pixelSize_;
  std::array<Bytes, 3> filtered_;
};

bool isOpaque(const Image& image) {
  for (std::size_t i = 3; i < image.pixels.size(); i += Image::kBytesPerPixel) {
    if (image.pixels[i] != '\xff') return false;
  }
  return true;
}

Bytes filteredRows(const Image& image, std::size_t channels) {
  const std::size_t rowSize = image.width * channels;
  Bytes output;
  output.reserve((rowSize + 1) * image.height);
  Bytes above(rowSize);
  Bytes row(rowSize);
  RowFilter filter(rowSize, channels);
  const char* pixel = image.pixels.data();
  for (std::uint32_t y = 0; y < image.height; ++y) {
    for (std::size_t x = 0; x < image.width; ++x, pixel += Image::kBytesPerPixel) {
      std::copy_n(pixel, channels, row.begin() + static_cast<std::ptrdiff_t>(x * channels));
    }
    filter.append(row, above, output);
    std::swap(row, above);
  }
  return output;
}

std::optional<std::string> compressed(const Bytes& bytes) {
  uLongf size = ::compressBound(bytes.size());
  std::string output(size, '\0');
  if (::compress2(reinterpret_cast<Bytef*>(output.data()), &size, bytes.data(), bytes.size(),
                  kCompressionLevel) != Z_OK) {
    return std::nullopt;
  }
  output.resize(size);
  return output;
}

}  // namespace

std::optional<std::string> encodePng(const Image& image) {
  if (!image.isWhole()) return std::nullopt;
  const bool opaque = isOpaque(image);
  const std::optional<std::string> data = compressed(filteredRows(image, opaque ? 3 : 4));
  // A chunk tells its length in 31 bits.
  if (!data || data->size() > std::numeric_limits<std::int32_t>::max()) return std::nullopt;

  std::string header;
  appendBigEndian(header, image.width);
  appendBigEndian(header, image.height);
  header += kBitsPerChannel;
  header += opaque ? kTrueColour : kTrueColourWithAlpha;
  header.append(3, '\0');  // compression, filter and interlace: the only or the plain one

  std::string file(kSignature);
  appendChunk(file, "IHDR", header);
  appendChunk(file, "IDAT", *data);
  appendChunk(file, "IEND", "");
  return file;
}

}  // namespace vt
