// How long a save of the settings of 1,000 users takes: making the XML and writing the file,
// without the sync, whose time is the disk's. The limit is 20 ms.

#include <benchmark/benchmark.h>

#include <filesystem>
#include <memory>
#include <string>
#include <utility>

#include "Report.h"
#include "foundation/Array.h"
#include "platform/Platform.h"
#include "platform/memory/FaultyFiles.h"
#include "platform/memory/MemoryDirectoryServices.h"
#include "platform/memory/MemoryProcess.h"
#include "platform/memory/MemoryRecords.h"
#include "settings/VTSettings.h"
#include "support/TemporaryFolder.h"

namespace vt {
namespace {

constexpr int kUsers = 1000;
constexpr int kSavedSearchesPerUser = 5;
constexpr double kLimitMillis = 20;

std::shared_ptr<Dictionary> userStorage(int user) {
  auto searches = Array::make();
  for (int i = 0; i < kSavedSearchesPerUser; ++i) {
    const std::string number = std::to_string(user) + "-" + std::to_string(i);
    searches->append(Dictionary::make(
        {{"query", "kMDItemDisplayName == \"*report " + number + "*\"cd && kMDItemFSSize > 1000"},
         {"title", "Reports " + number},
         {"searchFolderTitle", "Projects"}}));
  }
  return Dictionary::make({{"resultsPerPage", 25},
                           {"defaultSearchKindTitle", "Documents"},
                           {"deaultSearchFolderTitle", "Projects"},
                           {"SavedSearches", searches}});
}

void SaveTheSettingsOf1000Users(benchmark::State& state) {
  const TemporaryFolder root;
  std::filesystem::create_directories(root.path() / "Library/Application Support");
  Platform::Services services;
  const auto files = std::make_shared<FaultyFiles>();
  files->skipSyncs();
  services.files = files;
  services.process = std::make_shared<MemoryProcess>();
  services.directoryServices =
      std::make_shared<MemoryDirectoryServices>(std::make_shared<MemoryRecords>());
  services.rootPrefix = root.path();
  const PlatformScope scope(std::make_shared<Platform>(std::move(services)));
  const auto settings = VTSettings::sharedInstance();
  auto users = Dictionary::make();
  for (int user = 0; user < kUsers; ++user) users->set(std::to_string(user), userStorage(user));
  // Under a global setting, which takes as long to write as the top level's own "Users".
  settings->globalSettings()->set("Users", users);
  for (auto _ : state) {
    if (!settings->saveStorage()) state.SkipWithError("the settings could not be saved");
  }
  setLimit(state, kLimitMillis);
}
BENCHMARK(SaveTheSettingsOf1000Users)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace vt

int main(int argc, char** argv) { return vt::runBenchmarks(argc, argv); }
