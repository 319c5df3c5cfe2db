#include "images/Samples.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cstdint>

#include "images/PngEncoder.h"
#include "support/Program.h"
#include "support/ReadFile.h"

namespace vt {

Image quarters(std::uint32_t width, std::uint32_t height) {
  Image image{width, height};
  for (std::uint32_t y = 0; y < height; ++y) {
    for (std::uint32_t x = 0; x < width; ++x) {
      const bool left = x < width / 2;
      const char* above = left ? "\xff\0\0\xff" : "\0\xff\0\xff";
      const char* below = left ? "\0\0\xff\xff" : "\xff\xff\xff\xff";
      image.pixels.append(y < height / 2 ? above : below, 4);
    }
  }
  return image;
}

void make(const std::vector<std::string>& arguments) {
  const ProgramResult result = runProgram(arguments);
  ASSERT_EQ(result.exitCode, 0) << arguments[0] << ": " << result.errors;
}

void writeQuarters(const std::string& path, std::uint32_t width, std::uint32_t height) {
  const std::string png = path.ends_with(".png") ? path : path + ".png";
  writeFile(png, *encodePng(quarters(width, height)));
  if (png == path) return;
  // Without alpha there is one path for all formats.
  make({"vips", "copy", png, path});
  std::remove(png.c_str());
}

std::string pdf() {
  const std::string drawing = "1 0 0 rg 0 0 100 100 re f";
  const std::string objects[] = {
      "<< /Type /Catalog /Pages 2 0 R >>",
      "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
      "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 200 100] /Contents 4 0 R >>",
      fmt::format("<< /Length {} >>\nstream\n{}\nendstream", drawing.size(), drawing),
  };
  std::string file = "%PDF-1.4\n";
  std::string table = "0000000000 65535 f \n";
  int number = 0;
  for (const std::string& object : objects) {
    table += fmt::format("{:010} 00000 n \n", file.size());
    file += fmt::format("{} 0 obj\n{}\nendobj\n", ++number, object);
  }
  return fmt::format("{}xref\n0 5\n{}trailer\n<< /Size 5 /Root 1 0 R >>\nstartxref\n{}\n%%EOF\n",
                     file, table, file.size());
}

void writeZip(const std::string& path, const std::string& entry, const std::string& content) {
  make({"python3", "-c",
        "import sys,zipfile\n"
        "with zipfile.ZipFile(sys.argv[1], 'w', zipfile.ZIP_DEFLATED) as z:\n"
        "  z.writestr('mimetype', 'application/zip')\n"
        "  z.write(sys.argv[3], sys.argv[2])\n",
        path, entry, content});
}

std::string colourAt(const Image& image, double x, double y) {
  const auto column = static_cast<std::size_t>(x * image.width);
  const auto row = static_cast<std::size_t>(y * image.height);
  const std::size_t start = (row * image.width + column) * Image::kBytesPerPixel;
  const auto channel = [&](std::size_t i) {
    return static_cast<std::uint8_t>(image.pixels.at(start + i));
  };
  if (channel(3) < 40) return "clear";
  const auto is = [&](int red, int green, int blue) {
    // Lossy formats and colour profiles keep colours roughly.
    return std::abs(channel(0) - red) < 60 && std::abs(channel(1) - green) < 60 &&
           std::abs(channel(2) - blue) < 60;
  };
  if (is(255, 0, 0)) return "red";
  if (is(0, 255, 0)) return "green";
  if (is(0, 0, 255)) return "blue";
  if (is(255, 255, 255)) return "white";
  if (is(0, 0, 0)) return "black";
  return fmt::format("{},{},{}", channel(0), channel(1), channel(2));
}

std::string coloursOf(const Image& image) {
  return fmt::format("{} {} {} {}", colourAt(image, 0.25, 0.25), colourAt(image, 0.75, 0.25),
                     colourAt(image, 0.25, 0.75), colourAt(image, 0.75, 0.75));
}

}  // namespace vt
