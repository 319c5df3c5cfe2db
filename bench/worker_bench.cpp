// What does a file take that has a child of its own? Has each program that looks into files do so
// with files of a tree, one after the other, each in a process of its own, and with the same ones
// in few processes, as files of one origin. The difference is what a process takes.
//
//   worker_bench FOLDER [PROGRAM]   that script/bench-corpus has printed, of files with content

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/types.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "Corpus.h"
#include "metadata/types/ShippedTypes.h"
#include "platform/linux/FileDescriptor.h"
#include "platform/linux/FolderResources.h"
#include "platform/linux/extraction/ExtractionWorkers.h"
#include "platform/linux/extraction/LinuxExtractors.h"
#include "support/Descendants.h"
#include "support/ReadFile.h"

namespace vt {
namespace {

constexpr std::size_t kMostFiles = 1000;  // of each program
constexpr FileOrigin kSomebody = 1;

struct Cost {
  double seconds = 0;  // of a processor
  double faults = 0;   // pages that were missing, or copied when they were written to

  Cost operator-(const Cost& other) const {
    return {seconds - other.seconds, faults - other.faults};
  }
};

/// What the process has taken up to now, with those of its children that have ended.
Cost costOfProcess(pid_t process) {
  const std::string status = readFile("/proc/" + std::to_string(process) + "/stat");
  std::istringstream fields(status.substr(status.rfind(')') + 1));
  std::string skipped;
  for (int i = 3; i < 10; ++i) fields >> skipped;
  double faults = 0;
  double faultsOfChildren = 0;
  double ofFiles = 0;
  std::array<double, 4> ticks{};  // user, system, and those of children
  fields >> faults >> faultsOfChildren >> ofFiles >> ofFiles;
  for (double& each : ticks) fields >> each;
  const auto perSecond = static_cast<double>(::sysconf(_SC_CLK_TCK));
  return {(ticks[0] + ticks[1] + ticks[2] + ticks[3]) / perSecond, faults + faultsOfChildren};
}

/// What all workers have taken up to now.
Cost costOfWorkers() {
  Cost sum;
  for (const pid_t process : descendants("vistaro-extract")) {
    const Cost cost = costOfProcess(process);
    sum = {sum.seconds + cost.seconds, sum.faults + cost.faults};
  }
  return sum;
}

struct File {
  std::string path;
  ContentTypeId type = 0;
};

/// One program that looks into files.
class Program {
 public:
  explicit Program(std::string path) : path_(std::move(path)) {}

  /// What looking into the files takes, once its workers run.
  Cost costOf(const std::vector<File>& files, FileOrigin origin) const {
    const auto workers = extractionWorkers(resources_, types_, {path_});
    const auto described = workers->describe();
    const auto lookInto = [&](const File& file) {
      const FileDescriptor open(::open(file.path.c_str(), O_RDONLY | O_CLOEXEC));
      const auto place = placeOf(described, file.type);
      const auto ticket = workers->begin(open.get(), *place, file.type, origin);
      if (ticket) static_cast<void>(workers->finish(*ticket));
    };
    lookInto(files.front());
    const Cost before = costOfWorkers();
    for (const File& file : files) lookInto(file);
    return costOfWorkers() - before;
  }

  /// Those of the files that it takes.
  std::vector<File> filesOf(const std::vector<std::string>& paths) const {
    const auto described = extractionWorkers(resources_, types_, {path_})->describe();
    std::vector<File> files;
    for (const std::string& path : paths) {
      const ContentTypeId type = types_.typeOfFile(std::filesystem::path(path).filename().native());
      if (placeOf(described, type)) files.push_back({path, type});
      if (files.size() == kMostFiles) break;
    }
    return files;
  }

 private:
  static std::optional<ExtractionWorkers::Place> placeOf(
      const std::vector<ExtractionWorkers::Described>& described, ContentTypeId type) {
    for (const auto& [place, description] : described) {
      if (description.types[type]) return place;
    }
    return std::nullopt;
  }

  std::string path_;
  FolderResources resources_{resourceFolder()};
  ContentTypes types_ = shippedTypes();
};

void print(const std::string& name, const Cost& cost, std::size_t files) {
  const double millis = 1000.0 / static_cast<double>(files);
  fmt::print("{:<40} {:>9.3f} ms  faults {:.0f}\n", name, cost.seconds * millis,
             cost.faults / static_cast<double>(files));
}

std::vector<std::string> filesWithContent(const std::string& tree) {
  std::vector<std::string> paths;
  for (const auto& file : std::filesystem::recursive_directory_iterator(tree)) {
    if (file.is_regular_file() && file.file_size() > 0) paths.push_back(file.path());
  }
  return paths;
}

int run(const Corpus& corpus, const std::string& wanted) {
  const std::vector<std::string> paths = filesWithContent(corpus.tree);
  for (const std::string& path : extractionPrograms()) {
    const std::string name = path.substr(path.rfind('-') + 1);
    if (!wanted.empty() && name != wanted) continue;
    const Program program(path);
    const std::vector<File> files = program.filesOf(paths);
    if (files.empty()) continue;
    print(name + ": each its own process", program.costOf(files, kOwnOrigin), files.size());
    print(name + ": of one origin", program.costOf(files, kSomebody), files.size());
  }
  return 0;
}

}  // namespace
}  // namespace vt

int main(int argc, char** argv) {
  if (argc < 2) {
    fmt::print(stderr, "usage: worker_bench FOLDER [PROGRAM]\n");
    return 2;
  }
  return vt::run(vt::Corpus(argv[1]), argc > 2 ? argv[2] : "");
}
