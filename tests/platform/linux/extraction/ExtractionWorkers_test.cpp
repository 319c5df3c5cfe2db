#include "platform/linux/extraction/ExtractionWorkers.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <vector>

#include "extraction/BoundedText.h"
#include "metadata/live/Descriptor.h"
#include "metadata/types/ShippedTypes.h"
#include "platform/linux/FolderResources.h"
#include "platform/linux/extraction/LinuxExtractors.h"
#include "support/Descendants.h"
#include "support/MisdeedList.h"
#include "support/Places.h"
#include "support/ReadFile.h"
#include "support/TemporaryFolder.h"

namespace vt {
namespace {

using Kind = ExtractionFailure::Kind;

/// Workers that do what files tell them.
class HostileExtraction : public testing::Test {
 protected:
  void SetUp() override { start(testProgram("hostile_extractor")); }

  void start(const std::string& program) {
    extractors_.reset();
    workers_ = extractionWorkers(FolderResources(resourceFolder()), types_, {program});
    extractors_.emplace(linuxExtractors(types_, workers_));
    ASSERT_TRUE(workers_->walls());
  }

  Descriptor file(const std::string& deed) {
    const std::string path = folder_ / ("deed" + std::to_string(++files_));
    writeFile(path, deed);
    return Descriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  }
  Extractor& extractor() { return *extractors_->forType(text_); }
  Result<Extraction, ExtractionFailure> tell(const std::string& deed) {
    return extractor().extract(file(deed).get(), text_);
  }
  /// What was found: its text, or why none was.
  static std::string outcomeOf(Extractor::Look& look) {
    const auto found = look.finish();
    return found ? found->text.value_or("no text") : "failed: " + found.error().reason;
  }
  std::string toldOf(FileOrigin origin, const std::string& deed) {
    const Descriptor told = file(deed);
    return outcomeOf(*extractor().begin(told.get(), text_, origin));
  }
  std::string told(const std::string& deed) { return toldOf(kOwnOrigin, deed); }

  const ContentTypes types_ = shippedTypes();
  const ContentTypeId text_ = types_.typeOfFile("a.txt");
  const TemporaryFolder folder_;
  std::shared_ptr<ExtractionWorkers> workers_;
  std::optional<Extractors> extractors_;
  int files_ = 0;
};

TEST_F(HostileExtraction, DescribesWhatItTakes) {
  EXPECT_EQ(extractor().name(), "misbehaver");
  EXPECT_EQ(extractor().version(), 7U);
  EXPECT_TRUE(extractor().takes(types_.typeOfFile("page.html")));
  EXPECT_FALSE(extractor().takes(types_.typeOfFile("photo.jpg")));
}

TEST_F(HostileExtraction, CannotBreakOut) {
  const std::string readable = folder_ / "readable";
  writeFile(readable, "secret");
  chmod(readable.c_str(), 0666);
  for (const std::string& deed : refusedMisdeeds(readable, folder_ / "new")) {
    SCOPED_TRACE(deed);
    EXPECT_THAT(told(deed), testing::AnyOf("refused", testing::HasSubstr("ended in a crash")));
  }
  EXPECT_EQ(readFile(readable), "secret");
  EXPECT_FALSE(std::filesystem::exists(folder_ / "new"));
  EXPECT_EQ(told("behave"), "refused") << "and works on";
}

TEST_F(HostileExtraction, CostsABadFileAlone) {
  struct Case {
    const char* deed;
    Kind kind;
  };
  const Case cases[] = {
      {"crash", Kind::kCrashed},
      {"throw", Kind::kCrashed},
      {"garbage", Kind::kMalformed},
      {"fail", Kind::kMalformed},
      {"fail-as-crashed", Kind::kMalformed},
      {"unheard-of", Kind::kUnreadable},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.deed);
    const auto found = tell(c.deed);
    ASSERT_FALSE(found);
    EXPECT_EQ(found.error().kind, c.kind) << found.error().reason;
    EXPECT_EQ(told("behave"), "refused");
  }
}

TEST_F(HostileExtraction, BlamesAFileWithWhateverStatusItEndsItsProcess) {
  for (int status = 0; status < 5; ++status) {
    SCOPED_TRACE(status);
    const auto found = tell("exit " + std::to_string(status));
    ASSERT_FALSE(found);
    EXPECT_EQ(found.error().kind, Kind::kCrashed) << found.error().reason;
    EXPECT_TRUE(found.error().isLasting()) << "else it is looked into again in each run";
  }
}

TEST_F(HostileExtraction, EndsWhenAFileTakesTooLong) {
  start(testProgram("impatient_extractor"));
  for (const char* deed : {"wait", "spin"}) {
    SCOPED_TRACE(deed);
    const auto found = tell(deed);
    ASSERT_FALSE(found);
    EXPECT_EQ(found.error().kind, Kind::kTimedOut);
    EXPECT_EQ(told("behave"), "refused");
  }
}

TEST_F(HostileExtraction, SaysNothingThatIsNotItsToSay) {
  const auto found = tell("lie");
  ASSERT_TRUE(found);
  ASSERT_EQ(found->attributes.size(), 1U);
  EXPECT_EQ(found->attributes.at("kMDItemSubject"), Value("true"));
}

TEST_F(HostileExtraction, GivesTextThatIsText) {
  EXPECT_EQ(told("no-text"), "");
  EXPECT_EQ(told("much-text").size(), kMostExtractedText);
  EXPECT_THAT(told("much-garbage"), testing::StartsWith("failed: "));
  EXPECT_EQ(told("fail"), "failed: it is odd");
}

TEST_F(HostileExtraction, FindsNothingInAnEmptyFile) {
  const auto found = extractor().begin(file("").get(), text_, kOwnOrigin)->finish();
  ASSERT_TRUE(found);
  EXPECT_EQ(found->text, std::nullopt);
}

TEST_F(HostileExtraction, LooksIntoSeveralFilesAtOnce) {
  constexpr std::size_t kMost = ExtractionWorkers::kAtOnce * ExtractionWorkers::kHandedAtOnce;
  std::vector<Descriptor> files;
  std::vector<std::unique_ptr<Extractor::Look>> looks;
  for (std::size_t i = 0; i < kMost; ++i) {
    files.push_back(file(i == 1 ? "read /etc/ld.so.cache" : "behave"));
    looks.push_back(extractor().begin(files.back().get(), text_, kOwnOrigin));
    ASSERT_TRUE(looks.back());
  }
  const Descriptor last = file("behave");
  EXPECT_FALSE(extractor().begin(last.get(), text_, kOwnOrigin)) << "all have their files";
  EXPECT_EQ(*looks[1]->finish()->text, "got its way");
  const auto more = extractor().begin(last.get(), text_, kOwnOrigin);
  ASSERT_TRUE(more);
  for (const std::size_t i : {0, 2, 3}) EXPECT_EQ(*looks[i]->finish()->text, "refused");
  EXPECT_EQ(*more->finish()->text, "refused");
}

TEST_F(HostileExtraction, SharesAProcessAmongFilesOfOneOriginAlone) {
  // One after the other, so that all go to the worker whose last file was of their origin.
  EXPECT_EQ(toldOf(1, "remember secret"), "secret");
  EXPECT_EQ(toldOf(1, "recall"), "secret") << "else nothing is tested below";
  EXPECT_EQ(toldOf(2, "recall"), "");
  EXPECT_EQ(toldOf(kOwnOrigin, "remember mine"), "mine");
  EXPECT_EQ(toldOf(kOwnOrigin, "recall"), "");
  EXPECT_EQ(toldOf(1, "recall"), "") << "the process has ended with its origin";
}

TEST_F(HostileExtraction, HandsFilesOfOneOriginToOneWorkerUpToABound) {
  EXPECT_EQ(toldOf(1, "remember secret"), "secret");
  std::vector<Descriptor> files;
  std::vector<std::unique_ptr<Extractor::Look>> looks;
  for (int i = 0; i <= ExtractionWorkers::kHandedOfOneOrigin; ++i) {
    // The first is at work until all have been handed over.
    files.push_back(file(i == 0 ? "some-text" : "recall"));
    looks.push_back(extractor().begin(files.back().get(), text_, 1));
    ASSERT_TRUE(looks.back());
  }
  const std::string elsewhere = outcomeOf(*looks.back());
  looks.pop_back();
  for (std::size_t i = 1; i < looks.size(); ++i) EXPECT_EQ(outcomeOf(*looks[i]), "secret");
  EXPECT_EQ(elsewhere, "") << "the other worker would else have nothing to do";
}

TEST_F(HostileExtraction, BlamesTheFileAloneThatIsToBlame) {
  start(testProgram("impatient_extractor"));
  struct Case {
    const char* deed;
    const char* outcome;
  };
  const Case cases[] = {
      {"crash", "failed: looking into it ended in a crash"},
      {"wait", "failed: looking into it took too long"},
      {"garbage", "failed: what was found in it makes no sense"},
      {"answer-twice", "failed: what was found in it makes no sense"},
      {"garbage-everywhere", "failed: "},
      // What it holds open is closed at the end of a process of its own.
      {"keep-open", "refused"},
      {"after-others crash", "refused"},
      {"after-others wait", "refused"},
      {"after-others garbage", "refused"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.deed);
    const char* const deeds[] = {"remember before", c.deed, "behave", "behave"};
    const char* const outcomes[] = {"before", c.outcome, "refused", "refused"};
    std::vector<Descriptor> files;
    std::vector<std::unique_ptr<Extractor::Look>> looks;
    for (std::size_t i = 0; i < std::size(deeds); ++i) {
      // So each is handed over while the one before is looked into, to the same worker.
      if (i >= 2) {
        EXPECT_THAT(outcomeOf(*looks[i - 2]), testing::StartsWith(outcomes[i - 2]));
      }
      files.push_back(file(deeds[i]));
      looks.push_back(extractor().begin(files.back().get(), text_, 1));
      ASSERT_TRUE(looks.back());
    }
    EXPECT_EQ(outcomeOf(*looks[2]), outcomes[2]);
    EXPECT_EQ(outcomeOf(*looks[3]), outcomes[3]);
  }
}

TEST_F(HostileExtraction, DoesNotLookIntoTooManyFilesInOneProcess) {
  EXPECT_EQ(toldOf(1, "remember first"), "first");
  int files = 1;
  while (toldOf(1, "recall") == "first") ASSERT_LT(++files, 1000);
  EXPECT_EQ(files, 64);
}

TEST_F(HostileExtraction, CannotBreakOutOfASharedProcess) {
  const std::string readable = folder_ / "readable";
  writeFile(readable, "secret");
  chmod(readable.c_str(), 0666);
  for (const std::string& deed : refusedMisdeeds(readable, folder_ / "new")) {
    SCOPED_TRACE(deed);
    EXPECT_EQ(toldOf(1, "behave"), "refused");
    EXPECT_THAT(toldOf(1, deed), testing::AnyOf("refused", testing::HasSubstr("ended in a crash")));
  }
  EXPECT_EQ(readFile(readable), "secret");
  EXPECT_FALSE(std::filesystem::exists(folder_ / "new"));
}

TEST_F(HostileExtraction, LetsALongAnswerPassWhileAnotherFileIsWaitedFor) {
  start(testProgram("impatient_extractor"));
  const Descriptor slow = file("wait");
  const Descriptor large = file("some-text");
  const auto one = extractor().begin(slow.get(), text_, kOwnOrigin);
  const auto two = extractor().begin(large.get(), text_, kOwnOrigin);
  ASSERT_TRUE(one && two);
  EXPECT_FALSE(one->isDone(std::chrono::milliseconds(1)));
  EXPECT_EQ(one->finish().error().kind, Kind::kTimedOut);
  const auto found = two->finish();
  ASSERT_TRUE(found) << found.error().reason;
  EXPECT_EQ(found->text->size(), std::size_t{1} << 20);
}

TEST_F(HostileExtraction, TakesTheNextFileWhenOneIsGivenUp) {
  const Descriptor slow = file("behave");
  extractor().begin(slow.get(), text_, kOwnOrigin).reset();
  EXPECT_EQ(told("behave"), "refused");
}

TEST_F(HostileExtraction, IsStartedAgainOnceItHasEnded) {
  EXPECT_EQ(told("behave"), "refused");
  for (const pid_t worker : descendants("hostile_extractor")) kill(worker, SIGKILL);
  EXPECT_EQ(told("behave"), "refused");
}

TEST(ExtractionWorkers, AreOfSeveralPrograms) {
  const ContentTypes types = shippedTypes();
  const auto workers = extractionWorkers(
      FolderResources(resourceFolder()), types,
      {"/nonexistent", testProgram("impatient_extractor"), testProgram("hostile_extractor")});
  const auto described = workers->describe();
  ASSERT_EQ(described.size(), 2U);
  EXPECT_EQ(described[0].place.program, 1U);
  EXPECT_EQ(described[1].place.program, 2U);
  EXPECT_TRUE(workers->walls());
  const TemporaryFolder folder;
  writeFile(folder / "deed", "behave");
  const ContentTypeId text = types.typeOfFile("a.txt");
  std::vector<Descriptor> files;
  std::vector<ExtractionWorkers::Ticket> tickets;
  for (const auto& each : described) {
    constexpr std::size_t kMost = ExtractionWorkers::kAtOnce * ExtractionWorkers::kHandedAtOnce;
    for (std::size_t i = 0; i < kMost; ++i) {
      files.emplace_back(open((folder / "deed").c_str(), O_RDONLY | O_CLOEXEC));
      const auto ticket = workers->begin(files.back().get(), each.place, text, kOwnOrigin);
      ASSERT_TRUE(ticket);
      tickets.push_back(*ticket);
    }
    EXPECT_FALSE(workers->begin(files.back().get(), each.place, text, kOwnOrigin));
  }
  for (const auto ticket : tickets) EXPECT_EQ(*workers->finish(ticket)->text, "refused");
}

TEST(ExtractionWorkers, AreNoneWithoutTheirProgram) {
  const ContentTypes types = shippedTypes();
  for (const char* program : {"/nonexistent", "/bin/true"}) {
    const auto workers = extractionWorkers(FolderResources(resourceFolder()), types, {program});
    EXPECT_EQ(workers->walls(), std::nullopt);
    const Extractors extractors = linuxExtractors(types, workers);
    EXPECT_EQ(extractors.forType(types.typeOfFile("a.html"))->name(), "text");
    EXPECT_EQ(extractors.forType(types.typeOfFile("a.pdf")), nullptr);
  }
}

}  // namespace
}  // namespace vt
