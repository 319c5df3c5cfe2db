// How fast are thumbnails made, and served from the cache, and what memory do decoders take? The
// peer is vipsthumbnail (libvips-tools), which like us is given one thread.
//
// All files are made here: the photographs have 12 megapixels, with noise as a camera's have.

#include <fcntl.h>
#include <fmt/format.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <memory>

#include "ProgramRun.h"
#include "Report.h"
#include "images/FormatSamples.h"
#include "images/Samples.h"
#include "images/TestImages.h"
#include "platform/Attributes.h"
#include "platform/Images.h"
#include "platform/linux/LinuxPlatform.h"
#include "platform/linux/images/ContentFormat.h"
#include "platform/linux/images/ImageWorker.h"
#include "search/VTSearchResult.h"
#include "settings/VTSettings.h"
#include "support/Places.h"
#include "support/ReadFile.h"
#include "support/TemporaryFolder.h"

namespace vt {
namespace {

namespace fs = std::filesystem;

constexpr int kPhotographs = 25;
constexpr int kMixed = 1000;
constexpr int kRounds = 5;

/// A folder of files and a system of its own to look at them with.
class Desk {
 public:
  Desk() {
    fs::create_directories(root_.path() / "Library/Caches");
    fs::create_directories(root_.path() / "Library/Application Support");
  }

  std::string at(const std::string& name) const { return files_ / name; }
  std::shared_ptr<Platform> platform() const {
    return linuxPlatform(Environment{root_.path(), root_ / "index", resourceFolder(), {"en"}});
  }

 private:
  TemporaryFolder files_;
  TemporaryFolder root_;
};

void makePhotograph(const Desk& desk, const std::string& path, int seed) {
  const std::string noise = desk.at("noise.v");
  // Smooth enough that the file is of the size of a photograph.
  make({"vips", "gaussnoise", noise, "4000", "3000", "--seed", std::to_string(seed)});
  make({"vips", "gaussblur", noise, desk.at("smooth.v"), "2"});
  make({"vips", "cast", desk.at("smooth.v"), desk.at("bytes.v"), "uchar"});
  make({"vips", "bandjoin", fmt::format("{0} {0} {0}", desk.at("bytes.v")), desk.at("rgb.v")});
  make({"vips", "copy", desk.at("rgb.v"), path + "[Q=85]", "--interpretation", "srgb"});
  for (const char* name : {"noise.v", "smooth.v", "bytes.v", "rgb.v"}) fs::remove(desk.at(name));
}

std::vector<std::string> makePhotographs(const Desk& desk) {
  std::vector<std::string> paths;
  for (int i = 0; i < kPhotographs; ++i) {
    paths.push_back(desk.at(fmt::format("photograph-{}.jpg", i)));
    makePhotograph(desk, paths.back(), i);
  }
  return paths;
}

/// A small file of each format, and then a large one of each that is decoded as a whole.
std::vector<std::string> makeOriginals(const Desk& desk, const std::string& photograph) {
  std::vector<std::string> originals;
  for (const SampleFormat& format : sampleFormats()) {
    originals.push_back(desk.at(fmt::format("sample.{}", format.ending)));
    writeSample(originals.back());
  }
  for (const char* ending : {"png", "gif", "webp", "tiff", "heic", "avif"}) {
    originals.push_back(desk.at(fmt::format("large.{}", ending)));
    make({"vips", "copy", photograph, originals.back()});
  }
  originals.push_back(desk.at("large.mp4"));
  make({"ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc2=size=3840x2160:duration=1",
        "-pix_fmt", "yuv420p", originals.back()});
  return originals;
}

/// The files again and again under other names; each tenth is cut off.
std::vector<std::string> makeMixedFiles(const Desk& desk,
                                        const std::vector<std::string>& originals) {
  std::vector<std::string> paths;
  // The large ones take most of the time and need not be seen often.
  const std::size_t small = sampleFormats().size();
  for (std::size_t i = 0; paths.size() < kMixed; ++i) {
    const std::string& original = originals[i < originals.size() ? i : i % small];
    paths.push_back(desk.at(std::to_string(i) + fs::path(original).extension().string()));
    fs::copy_file(original, paths.back());
    if (i % 10 == 9) fs::resize_file(paths.back(), fs::file_size(paths.back()) / 2);
  }
  return paths;
}

std::shared_ptr<VTSearchResult> groupOf(const std::vector<std::string>& paths) {
  auto records = VTSearchResult::Records::make();
  for (const std::string& path : paths) records->append(Dictionary::make({{kMDItemPath, path}}));
  return VTSearchResult::initWithGroupKind(nullptr, records, nullptr, {}, nullptr);
}

bool benchStart(const Desk& desk, const std::string& photograph) {
  const auto startWith = [&](const std::function<void(Images&)>& work) {
    return bestOf(kRounds, [&] {
      const auto platform = desk.platform();
      return secondsOf([&] { work(platform->images()); });
    });
  };
  const double icon = startWith([&](Images& images) { images.icon(photograph, 65); });
  const double picture = startWith([&](Images& images) {
    const auto source = images.open(photograph);
    if (source) images.thumbnail(**source, {128, 128, /*iconMode=*/true});
  });
  fmt::print("{:<40} {:>9.2f} ms\n", "StartOfWorkerAndFirstPhotograph", 1000 * picture);
  return printFigure("StartOfWorkerAndFirstIcon", 1000 * icon, "ms", 60);
}

bool benchPhotographs(const Desk& desk, const std::vector<std::string>& photographs) {
  const auto group = groupOf(photographs);
  std::vector<std::string> peer = photographs;
  peer.insert(peer.begin(), "vipsthumbnail");
  peer.insert(peer.end(), {"--size", "128x128", "-o", desk.at("peer-%s.png")});
  double ours = std::numeric_limits<double>::infinity();
  double theirs = ours;
  for (int round = 0; round < kRounds; ++round) {
    fs::remove_all(VTSettings::sharedInstance()->thumbnailCacheDirectory());
    ours = std::min(ours, secondsOf([&] { group->buildThumbnails(); }));
    theirs = std::min(theirs, secondsOfProgram(peer));
  }
  const double valid =
      bestOf(kRounds, [&] { return secondsOf([&] { group->buildThumbnails(); }); });
  const bool isFast = printFigure("TwentyFiveJpegsOf12Megapixels", 1000 * ours, "ms",
                                  "vipsthumbnail", 1000 * theirs, 1.2);
  return printFigure("PageOfTwentyFiveValidThumbnails", 1000 * valid, "ms", 1) && isFast;
}

/// What `work` answers in a process of its own, whose children are those that it starts.
bool inProcessOfItsOwn(const std::function<bool()>& work) {
  std::fflush(stdout);
  const pid_t child = fork();
  if (child == 0) _exit(work() ? 0 : 1);
  int status = -1;
  return child > 0 && waitpid(child, &status, 0) == child && status == 0;
}

/// How much memory in RAM the worker or one of its children took at most. Not in bubblewrap, which
/// would be between us and what the kernel knows of them.
bool benchMemory(const std::vector<std::string>& originals) {
  const std::shared_ptr<const ContentTypes> types = testImages().types;
  auto worker = ImageWorker::start(builtProgram("vistaro-images"), WorkerConfinement::kOwnWalls);
  for (const std::string& path : originals) {
    const auto format = formatOf(*types, types->typeOfFile(fs::path(path).filename().string()));
    const FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    for (const std::uint32_t side : {128, 1024}) {
      if (!worker || !format || !worker->make(file.get(), {*format, side, side}).image) {
        fmt::print(stderr, "FAILED: no picture of {}\n", path);
        return false;
      }
    }
  }
  worker.reset();
  rusage usage{};
  getrusage(RUSAGE_CHILDREN, &usage);
  return printFigure("MemoryOfLargestDecoder", static_cast<double>(usage.ru_maxrss) / 1024, "MiB",
                     300);
}

bool benchMixed(const std::vector<std::string>& paths) {
  const auto group = groupOf(paths);
  const double seconds = secondsOf([&] { group->buildThumbnails(); });
  std::size_t made = 0;
  for (std::size_t i = 0; i < paths.size(); ++i) {
    made += group->thumbnailFileExistsForItemAtIndex(i) ? 1 : 0;
  }
  fmt::print("{:<40} {:>9} of {} in {:.1f} s{}\n", "MixedFilesInOneProcess", made, paths.size(),
             seconds, made == paths.size() ? "  ok" : "  MISSED");
  return made == paths.size();
}

int run() {
  // As many as a decoder of ours has.
  setenv("VIPS_CONCURRENCY", "1", /*overwrite=*/1);
  const Desk desk;
  const std::vector<std::string> photographs = makePhotographs(desk);
  bool isReached = benchStart(desk, photographs[0]);
  {
    const PlatformScope installed(desk.platform());
    isReached = benchPhotographs(desk, photographs) && isReached;
  }
  const std::vector<std::string> originals = makeOriginals(desk, photographs[0]);
  isReached = inProcessOfItsOwn([&] { return benchMemory(originals); }) && isReached;
  const PlatformScope installed(desk.platform());
  return benchMixed(makeMixedFiles(desk, originals)) && isReached ? 0 : 1;
}

}  // namespace
}  // namespace vt

int main() { return vt::run(); }
