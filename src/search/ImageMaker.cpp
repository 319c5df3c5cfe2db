#include "search/ImageMaker.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "platform/Files.h"
#include "platform/Platform.h"
#include "platform/SystemPaths.h"
#include "platform/Tasks.h"
#include "search/ItemAccess.h"

namespace vt {
namespace {

// One file may take the tool 20 seconds, and a machine with much else to do some more.
constexpr std::chrono::seconds kToolLimit{60};

using OpenedSource = Result<std::unique_ptr<Images::Source>, Images::Refusal>;

OpenedSource openFor(const VTUser* user, const std::string& path) {
  const ItemAccess access(user, path);
  if (!access.isGranted()) return Images::Refusal::kForbidden;
  return Platform::current().images().open(path);
}

/// A length as a whole number of pixels; 0 for what is none.
std::int64_t wholePixels(double length) {
  if (!(length >= 1)) return 0;
  return static_cast<std::int64_t>(std::min(length, double{1 << 30}));
}

std::string folderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return path.substr(0, std::max<std::size_t>(slash, 1));
}

bool writePng(const Image& image, const std::string& target) {
  const Platform& platform = Platform::current();
  // An image that cannot be encoded leaves an empty file, which counts as written.
  const std::string bytes = platform.images().png(image).value_or("");
  return !platform.files().writeAtomically(target, bytes);
}

bool writeIcon(const ImageOrder& order, std::int64_t maxPixelSize) {
  const std::optional<Image> icon = Platform::current().images().icon(order.source, maxPixelSize);
  return icon && writePng(*icon, order.target);
}

bool makeInProcess(const ImageOrder& order, const OpenedSource& source) {
  std::optional<Image> image;
  if (source) image = Platform::current().images().thumbnail(**source, order.size);
  return image ? writePng(*image, order.target) : writeIcon(order, wholePixels(order.size.width));
}

/// Has the tool write the picture beside the target, under a name of the tool's choice.
bool runTool(const ImageOrder& order, double length, const std::string& folder) {
  const Platform& platform = Platform::current();
  Task task{.program = platform.systemPath(kThumbnailTool), .limit = kToolLimit};
  task.arguments = {"-t"};
  if (order.size.iconMode) task.arguments.emplace_back("-i");
  for (const std::string& argument :
       {order.source, std::string("-s"), fmt::format("{:f}", length), std::string("-o"), folder}) {
    task.arguments.push_back(argument);
  }
  return platform.tasks().run(task).succeeded();
}

bool makeWithTool(const ImageOrder& order) {
  const double length = order.size.height > order.size.width ? order.size.height : order.size.width;
  const std::string folder = folderOf(order.target);
  if (runTool(order, length, folder)) {
    Files& files = Platform::current().files();
    const std::string name = order.source.substr(order.source.rfind('/') + 1);
    if (files.exists(order.target)) files.removeFile(order.target);
    if (files.moveFile(folder + "/" + name + ".png", order.target)) return true;
  }
  return writeIcon(order, wholePixels(length));
}

}  // namespace

bool makeImage(const ImageOrder& order, const VTUser* user) {
  const OpenedSource source = openFor(user, order.source);
  // No icon either: it would stay in the cache and keep those who may read the file from its
  // picture.
  if (!source && source.error() == Images::Refusal::kForbidden) return false;
  if (Platform::current().images().isAskedInProcess()) return makeInProcess(order, source);
  return makeWithTool(order);
}

bool mayReadSource(const std::string& path, const VTUser* user) {
  const ItemAccess access(user, path);
  if (!access.isGranted()) return false;
  const Platform& platform = Platform::current();
  const OpenedSource source = platform.images().open(path);
  if (source) return true;
  return source.error() == Images::Refusal::kNoContent && platform.files().exists(path);
}

}  // namespace vt
