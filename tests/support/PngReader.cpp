#include "support/PngReader.h"

#include <zlib.h>

#include <cstdlib>

namespace vt {
namespace {

std::uint32_t bigEndian(const std::string& bytes, std::size_t at) {
  std::uint32_t number = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    number = number << 8 | static_cast<std::uint8_t>(bytes.at(at + i));
  }
  return number;
}

int paeth(int a, int b, int c) {
  const int p = a + b - c;
  const int pa = std::abs(p - a);
  const int pb = std::abs(p - b);
  const int pc = std::abs(p - c);
  if (pa <= pb && pa <= pc) return a;
  return pb <= pc ? b : c;
}

bool unfilter(std::string& rows, std::size_t rowSize, std::size_t pixelSize) {
  for (std::size_t start = 0; start < rows.size(); start += rowSize + 1) {
    const int filter = rows[start];
    for (std::size_t i = 1; i <= rowSize; ++i) {
      const auto at = [&](std::size_t index) { return static_cast<std::uint8_t>(rows[index]); };
      const std::size_t here = start + i;
      const int a = i > pixelSize ? at(here - pixelSize) : 0;
      const int b = start > 0 ? at(here - rowSize - 1) : 0;
      const int c = start > 0 && i > pixelSize ? at(here - rowSize - 1 - pixelSize) : 0;
      int predicted = 0;
      switch (filter) {
        case 0:
          break;
        case 1:
          predicted = a;
          break;
        case 2:
          predicted = b;
          break;
        case 3:
          predicted = (a + b) / 2;
          break;
        case 4:
          predicted = paeth(a, b, c);
          break;
        default:
          return false;
      }
      rows[here] = static_cast<char>(rows[here] + predicted);
    }
  }
  return true;
}

}  // namespace

std::optional<ReadPng> readPng(const std::string& file) {
  if (!file.starts_with("\x89PNG\r\n\x1a\n")) return std::nullopt;
  ReadPng png;
  std::string header;
  std::string data;
  for (std::size_t at = 8; at < file.size();) {
    if (file.size() - at < 12) return std::nullopt;
    const std::size_t length = bigEndian(file, at);
    if (file.size() - at - 12 < length) return std::nullopt;
    const std::string type = file.substr(at + 4, 4);
    const std::string summed = file.substr(at + 4, length + 4);
    const auto* bytes = reinterpret_cast<const Bytef*>(summed.data());
    if (crc32_z(0, bytes, summed.size()) != bigEndian(file, at + 8 + length)) return std::nullopt;
    if (type == "IHDR") header = summed.substr(4);
    if (type == "IDAT") data += summed.substr(4);
    png.chunks.push_back(type);
    at += length + 12;
  }
  if (header.size() != 13 || header[8] != 8 || header[12] != 0) return std::nullopt;
  if (header[9] != 2 && header[9] != 6) return std::nullopt;
  png.hasAlpha = header[9] == 6;
  png.image.width = bigEndian(header, 0);
  png.image.height = bigEndian(header, 4);
  const std::size_t pixelSize = png.hasAlpha ? 4 : 3;
  const std::size_t rowSize = png.image.width * pixelSize;
  std::string rows((rowSize + 1) * png.image.height, '\0');
  uLongf size = rows.size();
  if (uncompress(reinterpret_cast<Bytef*>(rows.data()), &size,
                 reinterpret_cast<const Bytef*>(data.data()), data.size()) != Z_OK ||
      size != rows.size() || !unfilter(rows, rowSize, pixelSize)) {
    return std::nullopt;
  }
  for (std::size_t start = 0; start < rows.size(); start += rowSize + 1) {
    for (std::size_t x = 0; x < png.image.width; ++x) {
      png.image.pixels += rows.substr(start + 1 + x * pixelSize, pixelSize);
      if (!png.hasAlpha) png.image.pixels += '\xff';
    }
  }
  return png;
}

}  // namespace vt
