// How fast are thumbnails made, and served from the cache? Needs vipsthumbnail (libvips-tools).
//
// The photographs are made here: 25 of 12 megapixels, with noise as a camera's have.

#include <fmt/format.h>
#include <sys/resource.h>

#include <chrono>
#include <filesystem>
#include <memory>

#include "images/PngEncoder.h"
#include "platform/Attributes.h"
#include "platform/Images.h"
#include "platform/linux/LinuxPlatform.h"
#include "platform/linux/LinuxTasks.h"
#include "search/VTSearchResult.h"
#include "settings/VTSettings.h"
#include "support/TemporaryFolder.h"

namespace {

using namespace vt;
using Clock = std::chrono::steady_clock;

double millisecondsOf(const std::function<void()>& work) {
  const auto start = Clock::now();
  work();
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

bool run(const std::string& program, std::vector<std::string> arguments) {
  LinuxTasks tasks;
  return tasks.run({program, std::move(arguments), std::chrono::minutes(5)}).succeeded();
}

std::vector<std::string> makePhotographs(const TemporaryFolder& folder, int count) {
  std::vector<std::string> paths;
  for (int i = 0; i < count; ++i) {
    paths.push_back(folder / fmt::format("photo-{}.jpg", i));
    const std::string noise = folder / "noise.v";
    // Smooth enough that the file is of the size of a photograph.
    run("vips", {"gaussnoise", noise, "4000", "3000", "--seed", std::to_string(i)});
    run("vips", {"gaussblur", noise, folder / "smooth.v", "2"});
    run("vips", {"cast", folder / "smooth.v", folder / "bytes.v", "uchar"});
    run("vips", {"bandjoin", fmt::format("{0} {0} {0}", folder / "bytes.v"), folder / "rgb.v"});
    run("vips", {"copy", folder / "rgb.v", paths.back() + "[Q=85]", "--interpretation", "srgb"});
  }
  for (const char* name : {"noise.v", "smooth.v", "bytes.v", "rgb.v"}) {
    std::filesystem::remove(folder / name);
  }
  return paths;
}

std::shared_ptr<VTSearchResult> groupOf(const std::vector<std::string>& paths) {
  auto records = VTSearchResult::Records::make();
  for (const std::string& path : paths) records->append(Dictionary::make({{kMDItemPath, path}}));
  return VTSearchResult::initWithGroupKind(nullptr, records, nullptr, {}, nullptr);
}

void report(const char* what, double ours, double limit, const char* unit) {
  fmt::print("{:<58} {:8.2f} {} (limit {:.2f}) {}\n", what, ours, unit, limit,
             ours <= limit ? "ok" : "MISSED");
}

double megabytesOfChildren() {
  rusage usage{};
  getrusage(RUSAGE_CHILDREN, &usage);
  return static_cast<double>(usage.ru_maxrss) / 1024;
}

}  // namespace

int main() {
  const TemporaryFolder folder;
  const TemporaryFolder root;
  std::filesystem::create_directories(root.path() / "Library/Caches");
  std::filesystem::create_directories(root.path() / "Library/Application Support");
  Environment environment{root.path(), root / "index", VT_RESOURCES, {"en"}};
  const std::vector<std::string> photographs = makePhotographs(folder, 25);

  auto platform = linuxPlatform(environment);
  const double start = millisecondsOf([&] {
    const PlatformScope installed(platform);
    Platform::current().images().icon(root.path(), 16);
  });
  report("start of the worker, one icon included", start, 60, "ms");

  const PlatformScope installed(platform);
  const auto group = groupOf(photographs);
  std::vector<std::string> arguments = photographs;
  arguments.insert(arguments.end(), {"--size", "128x128", "-o", folder / "peer-%s.png"});
  // The faster of three turns each, in turns.
  double ours = 1e9;
  double peer = 1e9;
  for (int turn = 0; turn < 3; ++turn) {
    std::filesystem::remove_all(VTSettings::sharedInstance()->thumbnailCacheDirectory());
    ours = std::min(ours, millisecondsOf([&] { group->buildThumbnails(); }));
    peer = std::min(peer, millisecondsOf([&] { run("vipsthumbnail", arguments); }));
  }
  fmt::print("25 JPEGs of 12 MP: ours {:.0f} ms, vipsthumbnail {:.0f} ms\n", ours, peer);
  report("25 JPEGs of 12 MP, ratio to vipsthumbnail", ours / peer, 1.2, "x ");
  report("page of 25 valid thumbnails", millisecondsOf([&] { group->buildThumbnails(); }), 1, "ms");

  platform.reset();
  report("peak memory of any process that was started", megabytesOfChildren(), 300, "MB");
  return 0;
}
