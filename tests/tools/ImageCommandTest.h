#pragma once

#include <string>
#include <vector>

#include "images/PngEncoder.h"
#include "support/Places.h"
#include "support/PngReader.h"
#include "support/ReadFile.h"
#include "tools/CommandTest.h"

namespace vt {

/// The commands that make pictures, with pictures to try them on.
class ImageCommandTest : public CommandTest {
 protected:
  /// A red picture below the tree.
  std::string addPicture(const std::string& name, std::uint32_t width = 300,
                         std::uint32_t height = 150) {
    Image image{width, height};
    for (std::uint32_t i = 0; i < width * height; ++i) image.pixels.append("\xff\0\0\xff", 4);
    std::string path = tree_ / name;
    write(path, *encodePng(image));
    return path;
  }
  /// The size of the PNG file that the command told of, as "128x64"; its output when there is none.
  static std::string sizeToldIn(const ProgramResult& result) {
    const auto png = readPng(readFile(result.output.substr(0, result.output.find('\n'))));
    if (!png) return result.output + result.errors;
    return std::to_string(png->image.width) + "x" + std::to_string(png->image.height);
  }
  ProgramResult qlmanage(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), builtProgram("qlmanage"));
    return runProgram(arguments, environment());
  }
};

}  // namespace vt
