#include "platform/linux/images/ImageWorker.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <vector>

#include "support/MisdeedList.h"
#include "support/Places.h"
#include "support/ReadFile.h"
#include "support/TemporaryFolder.h"

namespace vt {
namespace {

using worker::ImageRequest;

const Image kRefused{1, 1, std::string("\0\xff\0\xff", 4)};
const Image kGotItsWay{1, 1, std::string("\xff\0\0\xff", 4)};

/// A worker that does what files tell it, behind the walls of the test's parameter.
class ConfinedWorker : public testing::TestWithParam<WorkerConfinement> {
 protected:
  void SetUp() override { start(testProgram("hostile_worker")); }

  void start(const std::string& program) {
    worker_ = ImageWorker::start(program, GetParam());
    if (!worker_ && GetParam() == WorkerConfinement::kBubblewrap) {
      GTEST_SKIP() << "bubblewrap cannot make namespaces here";
    }
    ASSERT_TRUE(worker_);
  }

  MadePicture tell(const std::string& deed) {
    writeFile(folder_ / "deed", deed);
    const FileDescriptor file(open((folder_ / "deed").c_str(), O_RDONLY | O_CLOEXEC));
    return worker_->make(file.get(), ImageRequest{ImageFormat::kPixels, 16, 16, 0});
  }

  TemporaryFolder folder_;
  std::unique_ptr<ImageWorker> worker_;
};

INSTANTIATE_TEST_SUITE_P(Behind, ConfinedWorker,
                         testing::Values(WorkerConfinement::kBubblewrap,
                                         WorkerConfinement::kOwnWalls),
                         [](const auto& confinement) {
                           return confinement.param == WorkerConfinement::kBubblewrap ? "Bubblewrap"
                                                                                      : "OwnWalls";
                         });

TEST_P(ConfinedWorker, StandsBehindItsWalls) {
  EXPECT_TRUE(worker_->walls() & worker::kSeccomp);
  if (GetParam() == WorkerConfinement::kOwnWalls) {
    EXPECT_TRUE(worker_->walls() & worker::kLandlock);
  } else {
    EXPECT_TRUE(worker_->walls() & worker::kBubblewrap);
  }
}

TEST_P(ConfinedWorker, GivesAPicture) { EXPECT_EQ(tell("behave").image, kRefused); }

TEST_P(ConfinedWorker, CannotBreakOut) {
  const std::string readable = folder_ / "readable";
  writeFile(readable, "secret");
  chmod(readable.c_str(), 0666);
  std::vector<std::string> deeds = refusedMisdeeds(readable, folder_ / "new");
  deeds.push_back("read " + (folder_ / "deed"));
  for (const std::string& deed : deeds) {
    SCOPED_TRACE(deed);
    const MadePicture made = tell(deed);
    EXPECT_TRUE(!made.image || made.image == kRefused);
    EXPECT_TRUE(worker_->isUsable());
  }
  EXPECT_EQ(readFile(readable), "secret");
  EXPECT_FALSE(std::filesystem::exists(folder_ / "new"));
  EXPECT_EQ(tell("behave").image, kRefused) << "and works on";
}

TEST_P(ConfinedWorker, ReadsWhatItsLibrariesNeed) {
  EXPECT_EQ(tell("read /etc/ld.so.cache").image, kGotItsWay);
}

TEST_P(ConfinedWorker, MayUseThreads) { EXPECT_EQ(tell("threads").image, kRefused); }

TEST_P(ConfinedWorker, LosesNothingButThePictureToABadFile) {
  std::vector<std::string> deeds = {"crash",    "exit",     "throw",   "nothing",   "short",
                                    "too-wide", "too-much", "garbage", "unheard-of"};
#ifndef __SANITIZE_ADDRESS__  // under which address space is not limited
  deeds.emplace_back("memory");
#endif
  for (const std::string& deed : deeds) {
    SCOPED_TRACE(deed);
    const MadePicture made = tell(deed);
    EXPECT_EQ(made.image, std::nullopt);
    EXPECT_TRUE(made.isFinal);
    EXPECT_TRUE(worker_->isUsable());
    EXPECT_EQ(tell("behave").image, kRefused);
  }
}

TEST_P(ConfinedWorker, IsStoppedWhenItTakesTooLong) {
  start(testProgram("impatient_worker"));
  const auto began = std::chrono::steady_clock::now();
  for (const char* deed : {"wait", "spin"}) {
    SCOPED_TRACE(deed);
    const MadePicture made = tell(deed);
    EXPECT_EQ(made.image, std::nullopt);
    EXPECT_TRUE(made.isFinal);
    EXPECT_EQ(tell("behave").image, kRefused);
  }
  EXPECT_LT(std::chrono::steady_clock::now() - began, worker::kFileLimit / 2);
}

TEST_P(ConfinedWorker, IsStoppedWhenItTakesTooMuchOfTheProcessor) {
  const auto began = std::chrono::steady_clock::now();
  EXPECT_EQ(tell("spin").image, std::nullopt);
  EXPECT_LT(std::chrono::steady_clock::now() - began, worker::kFileLimit + std::chrono::seconds(3));
  EXPECT_EQ(tell("behave").image, kRefused);
}

TEST(ImageWorker, LimitsAFile) {
  EXPECT_EQ(worker::kFileLimit, std::chrono::seconds(20));
  EXPECT_EQ(worker::kProcessorSeconds, 10U);
  EXPECT_EQ(worker::kAddressSpace, UINT64_C(2147483648));
  EXPECT_EQ(worker::kMostSourcePixels, 200'000'000U);
}

TEST(ImageWorker, IsNotThereWithoutItsProgram) {
  for (const auto confinement : {WorkerConfinement::kBubblewrap, WorkerConfinement::kOwnWalls,
                                 WorkerConfinement::kOwnFilesOnly}) {
    EXPECT_FALSE(ImageWorker::start("/nonexistent", confinement));
    EXPECT_FALSE(ImageWorker::start("/bin/true", confinement));
  }
}

}  // namespace
}  // namespace vt
