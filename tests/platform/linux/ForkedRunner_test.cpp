#include "platform/linux/ForkedRunner.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <string>

#include "metadata/live/Descriptor.h"
#include "metadata/update/SharedMemory.h"
#include "support/Eventually.h"

namespace vt {
namespace {

class ForkedRunnerTest : public testing::Test {
 protected:
  /// How the work ended, waited for.
  std::string ending() {
    std::optional<std::string> ending;
    EXPECT_TRUE(eventually([&] { return (ending = runner_.ended()).has_value(); }));
    return ending.value_or("never");
  }
  /// A number that the work leaves.
  std::byte& left() { return shared_.bytes().front(); }

  SharedMemory shared_ = SharedMemory::of(1).value();
  Descriptor folder_{open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
  ForkedRunner runner_;
};

TEST_F(ForkedRunnerTest, RunsWorkWhoseResultIsShared) {
  int own = 1;
  ASSERT_FALSE(runner_.start(
      [&] {
        left() = std::byte{7};
        own = 2;
      },
      folder_.get()));
  EXPECT_EQ(ending(), "");
  EXPECT_EQ(left(), std::byte{7});
  EXPECT_EQ(own, 1) << "the rest is a copy";
}

TEST_F(ForkedRunnerTest, SaysWhatSignalEndedIt) {
  ASSERT_FALSE(runner_.start([] { pause(); }, folder_.get()));
  EXPECT_FALSE(runner_.ended());
  kill(runner_.process(), SIGKILL);
  EXPECT_EQ(ending(), "ended by signal 9");
}

TEST_F(ForkedRunnerTest, LeavesNoProcessWhenItIsEnded) {
  ASSERT_FALSE(runner_.start([] { pause(); }, folder_.get()));
  const pid_t process = runner_.process();
  runner_.end();
  EXPECT_EQ(kill(process, 0), -1) << "not even one that waits to be waited for";
  EXPECT_EQ(runner_.ended(), "ended by signal 9");
}

TEST_F(ForkedRunnerTest, KeepsOneDescriptorOpenAndHasTheLowestPriority) {
  const Descriptor other(open("/", O_RDONLY | O_CLOEXEC));
  ASSERT_FALSE(runner_.start(
      [&] {
        const bool isKept = fcntl(folder_.get(), F_GETFD) >= 0;
        const bool isOtherOpen = fcntl(other.get(), F_GETFD) >= 0;
        const bool isLast = getpriority(PRIO_PROCESS, 0) == 19;
        left() = std::byte(isKept && !isOtherOpen && isLast ? 1 : 2);
      },
      folder_.get()));
  EXPECT_EQ(ending(), "");
  EXPECT_EQ(left(), std::byte{1});
}

TEST_F(ForkedRunnerTest, EndsWithTheProcessThatStartedIt) {
  ASSERT_EQ(prctl(PR_SET_CHILD_SUBREAPER, 1), 0);  // what is left comes to this process
  const pid_t parent = fork();
  ASSERT_GE(parent, 0);
  if (parent == 0) {
    ForkedRunner runner;
    static_cast<void>(runner.start([] { pause(); }, folder_.get()));
    _exit(0);  // without a word to the other
  }
  int status = 0;
  ASSERT_EQ(waitpid(parent, &status, 0), parent);
  EXPECT_GT(waitpid(-1, &status, 0), 0) << "what would have waited for ever has ended";
}

}  // namespace
}  // namespace vt
