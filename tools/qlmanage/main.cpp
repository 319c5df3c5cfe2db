// Makes the thumbnail of one file: qlmanage -t [-i] FILE -s SIZE -o FOLDER writes FOLDER/NAME.png,
// where NAME is the whole name of the file.

#include <fmt/format.h>

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>

#include "platform/Files.h"
#include "platform/Images.h"
#include "platform/Platform.h"
#include "platform/linux/LinuxPlatform.h"

namespace {

struct Order {
  std::string file;
  double size = 128;
  std::string folder = ".";
  bool iconMode = false;
};

std::optional<double> numberIn(const char* text) {
  char* end = nullptr;
  const double number = std::strtod(text, &end);
  return end != text && *end == '\0' ? std::optional(number) : std::nullopt;
}

/// Nothing when the arguments are not those above, in any order.
std::optional<Order> parse(int argc, char** argv) {
  Order order;
  bool isThumbnail = false;
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    const bool hasNext = i + 1 < argc;
    if (argument == "-t") {
      isThumbnail = true;
    } else if (argument == "-i") {
      order.iconMode = true;
    } else if (argument == "-s" && hasNext) {
      const std::optional<double> size = numberIn(argv[++i]);
      if (!size) return std::nullopt;
      order.size = *size;
    } else if (argument == "-o" && hasNext) {
      order.folder = argv[++i];
    } else if (argument.starts_with('-') || !order.file.empty()) {
      return std::nullopt;
    } else {
      order.file = argument;
    }
  }
  if (!isThumbnail || order.file.empty()) return std::nullopt;
  return order;
}

int fail(std::string_view reason) {
  fmt::print(stderr, "qlmanage: {}\n", reason);
  return 1;
}

int makeThumbnail(const Order& order) {
  const vt::Platform& platform = vt::Platform::current();
  const auto source = platform.images().open(order.file);
  if (!source) return fail("the file cannot be opened, or has no content to show");
  const auto image =
      platform.images().thumbnail(**source, {order.size, order.size, order.iconMode});
  const auto png = image ? platform.images().png(*image) : std::nullopt;
  if (!png) return fail("there is no thumbnail of the file");
  const std::string name = order.file.substr(order.file.rfind('/') + 1);
  const auto error = platform.files().writeAtomically(order.folder + "/" + name + ".png", *png);
  return error ? fail(error->text) : 0;
}

}  // namespace

int main(int argc, char** argv) {
  const std::optional<Order> order = parse(argc, argv);
  if (!order) {
    fmt::print(stderr, "usage: qlmanage -t [-i] FILE -s SIZE -o FOLDER\n");
    return 2;
  }
  const auto environment = vt::readEnvironment();
  if (!environment) return fail(environment.error().text);
  const vt::PlatformScope installed(vt::linuxPlatform(*environment));
  return makeThumbnail(*order);
}
