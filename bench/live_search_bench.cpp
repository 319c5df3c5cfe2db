// Is answering by a walk worth having? A search by name over 100,000 files, records gathered,
// against find(1) printing path, size and time of the same files in the same run. Limit: 1.5 times
// find.
//
//   live_search_bench [FOLDER]   uses FOLDER, filling it when it is empty; else a temporary one

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "Report.h"
#include "foundation/Dictionary.h"
#include "metadata/query/AttributeSchema.h"
#include "metadata/types/ContentTypes.h"
#include "platform/linux/LiveMetadataIndex.h"
#include "platform/linux/ScriptedIdentity.h"
#include "support/Places.h"
#include "support/TemporaryFolder.h"

extern char** environ;

namespace vt {
namespace {

constexpr int kFiles = 100'000;
constexpr int kFilesInAFolder = 30;
constexpr int kRounds = 5;
constexpr double kMostTimesFind = 1.5;
constexpr std::uint32_t kSeed = 42;
constexpr const char* kQuery = "kMDItemFSName == \"*report*\"cd";

void fill(const std::string& root) {
  constexpr auto kWords = std::to_array<const char*>(
      {"annual",  "Budget", "draft",   "final", "invoice", "Letter",  "meeting",
       "minutes", "notes",  "Offer",   "photo", "plan",    "project", "Q3",
       "Report",  "scan",   "summary", "Team",  "travel",  "version"});
  constexpr auto kExtensions = std::to_array<const char*>(
      {"pdf", "docx", "xlsx", "txt", "jpg", "png", "odt", "eml", "zip", "html"});
  std::mt19937 random(kSeed);
  const auto pick = [&](const auto& list) { return std::string(list[random() % list.size()]); };
  std::vector<std::string> folders = {root};
  for (int i = 0; i < kFiles; ++i) {
    if (i % kFilesInAFolder == 0) {
      // Among the last folders, so that the tree grows deep as well as wide.
      const std::size_t last = std::min<std::size_t>(folders.size(), 40);
      const std::string& holder = folders[folders.size() - 1 - random() % last];
      folders.push_back(holder + "/" + pick(kWords) + " " + std::to_string(i));
      mkdir(folders.back().c_str(), 0755);
      if (std::ranges::count(folders.back(), '/') > 12) folders.back() = root;
    }
    const std::string name = pick(kWords) + "_" + std::to_string(random() % 100'000) + " " +
                             pick(kWords) + "." + pick(kExtensions);
    if (mknod((folders.back() + "/" + name).c_str(), S_IFREG | 0644, 0) != 0) --i;
  }
}

/// Answers whether it ran.
bool runFind(const std::string& root) {
  std::string command[] = {"find", root, "-printf", "%p %s %T@\n"};
  char* arguments[] = {command[0].data(), command[1].data(), command[2].data(), command[3].data(),
                       nullptr};
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  pid_t child = 0;
  int status = 1;
  if (posix_spawnp(&child, "find", &actions, nullptr, arguments, environ) == 0) {
    waitpid(child, &status, 0);
  }
  posix_spawn_file_actions_destroy(&actions);
  return status == 0;
}

std::string resource(const char* name) {
  std::ifstream file(resourcePath(name), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// Runs the query and builds the records of the first 10,000 hits; answers how many hits there are.
std::size_t search(LiveMetadataIndex& index, const std::string& root) {
  static const std::vector<std::string> kValues = {
      "kMDItemDisplayName", "kMDItemContentModificationDate", "kMDItemContentTypeTree",
      "kMDItemFSSize", "kMDItemLastUsedDate"};
  static const std::vector<Key> kKeys(kValues.begin(), kValues.end());
  const auto query = index.MDQueryCreate(kQuery, kValues, {});
  index.MDQuerySetSearchScope(*query, {root}, 0);
  index.MDQueryExecute(*query, kMDQuerySynchronous);
  const std::int32_t count = index.MDQueryGetResultCount(*query);
  std::vector<std::shared_ptr<Dictionary>> records;
  static const Key kPath("kMDItemPath");
  for (std::int32_t i = 0; i < std::min(count, 10'000); ++i) {
    const auto record = std::make_shared<Dictionary>();
    const auto item = index.MDQueryGetResultAtIndex(*query, i);
    record->append(kPath, *index.MDItemCopyAttribute(*item, "kMDItemPath"));
    for (std::size_t v = 0; v < kValues.size(); ++v) {
      record->append(kKeys[v],
                     *index.MDQueryGetAttributeValueOfResultAtIndex(*query, kValues[v], i));
    }
    records.push_back(record);
  }
  benchmark::DoNotOptimize(records);
  return static_cast<std::size_t>(count);
}

void liveSearch(benchmark::State& state, const std::string& root) {
  if (std::filesystem::is_empty(root)) fill(root);
  auto identity = std::make_shared<ScriptedIdentity>();
  // As a user without rights of his own, so that every hit is really judged.
  identity->uid = 54321;
  LiveMetadataIndex index(
      std::make_shared<ContentTypes>(ContentTypes::parse(resource("types.tsv")).value()),
      std::make_shared<query::AttributeSchema>(
          query::AttributeSchema::parse(resource("attributes.tsv")).value()),
      identity, [](std::uint32_t uid) { return Credentials(uid, uid, {}); });

  for (auto _ : state) {
    if (!runFind(root)) state.SkipWithError("find failed");  // and warms the caches
    double find = std::numeric_limits<double>::infinity();
    double live = find;
    for (int round = 0; round < kRounds; ++round) {
      find = std::min(find, secondsOf([&] { runFind(root); }));
      live = std::min(live, secondsOf([&] {
                        if (search(index, root) == 0) state.SkipWithError("nothing was found");
                      }));
    }
    state.SetIterationTime(live);
    setPeer(state, "find", find, kMostTimesFind);
  }
}

}  // namespace
}  // namespace vt

int main(int argc, char** argv) {
  const vt::TemporaryFolder folder;
  const bool named = argc > 1 && argv[1][0] != '-';
  const std::string root = named ? argv[1] : folder.path().string();
  benchmark::RegisterBenchmark("LiveSearchByNameIn100000Files", vt::liveSearch, root)
      ->Unit(benchmark::kMillisecond)
      ->Iterations(1)
      ->UseManualTime();
  return vt::runBenchmarks(argc, argv);
}
