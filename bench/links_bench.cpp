// What the links of one page cost: the link that opens each of 25 items, among 10 search folders
// and 20 share points. The limit is 1 ms.

#include <benchmark/benchmark.h>

#include <filesystem>
#include <memory>
#include <string>

#include "Report.h"
#include "scopes/VTConcreteSearchFolder.h"
#include "search/VTSearchResult.h"
#include "settings/VTSettings.h"
#include "support/TestWorld.h"

namespace vt {
namespace {

constexpr int kItems = 25;
constexpr int kFolders = 10;
constexpr int kSharePoints = 20;
constexpr double kLimitMicros = 1000;

void OpenLinksOf25Items(benchmark::State& state) {
  const bool windowsClient = state.range(0) != 0;
  TestWorld world;
  const std::string root = world.root();
  for (int i = 0; i < kSharePoints; ++i) {
    const std::string name = "Share" + std::to_string(i);
    std::filesystem::create_directory(root + "/" + name);
    // Without AFP, so that a client that is not Windows has both protocols tried.
    world.share(root + "/" + name, nullptr, name.c_str());
  }
  VTSettings::sharedInstance()->setServerName("files.example.org");
  // The folders lie in the shares that are looked at last.
  const auto folders = VTSearchResult::Folders::make();
  for (int i = 0; i < kFolders; ++i) {
    const std::string title = std::to_string(kSharePoints - 1 - i);
    folders->append(VTConcreteSearchFolder::initWithPath(root + "/Share" + title, title));
  }
  const auto records = VTSearchResult::Records::make();
  for (int i = 0; i < kItems; ++i) {
    const std::string path = root + "/Share" + std::to_string(kSharePoints - 1 - i % kFolders) +
                             "/report " + std::to_string(i) + ".pdf";
    writeFile(path, "x");
    records->append(Dictionary::make({{"kMDItemPath", path}}));
  }
  const auto group = VTSearchResult::initWithGroupKind(nullptr, records, folders, {}, nullptr);
  for (auto _ : state) {
    for (int i = 0; i < kItems; ++i) {
      const auto link = group->openURLPathForItemAtIndex(i, windowsClient, /*localClient=*/false);
      if (!link) state.SkipWithError("an item has no link");
    }
  }
  setLimit(state, kLimitMicros);
}
BENCHMARK(OpenLinksOf25Items)
    ->ArgName("windows")
    ->Arg(0)
    ->Arg(1)
    ->Unit(benchmark::kMicrosecond)
    ->UseRealTime();

}  // namespace
}  // namespace vt

int main(int argc, char** argv) { return vt::runBenchmarks(argc, argv); }
