#include "platform/linux/RunningServer.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utime.h>

#include <ctime>
#include <filesystem>

#include "support/Program.h"
#include "support/ReadFile.h"
#include "support/RunningProgram.h"
#include "support/TemporaryFolder.h"

namespace vt {
namespace {

using State = RunningServer::State;

class RunningServerTest : public testing::Test {
 protected:
  State stateWith(const std::string& bytes) const {
    writeFile(file_, bytes);
    return runningServer(file_).state;
  }
  /// A process that waits, whose program is called `name`.
  std::unique_ptr<RunningProgram> waiting(const std::string& name) const {
    const std::string program = folder_ / name;
    std::filesystem::copy_file("/bin/cat", program, std::filesystem::copy_options::skip_existing);
    return std::make_unique<RunningProgram>(std::vector<std::string>{program});
  }

  TemporaryFolder folder_;
  std::string file_ = folder_ / "vistaro.pid";
};

TEST_F(RunningServerTest, WasNeverStartedWithoutAFile) {
  const RunningServer server = runningServer(file_);
  EXPECT_EQ(server.state, State::kNoFile);
  EXPECT_EQ(server.processId, 0);
  EXPECT_EQ(server.since, std::nullopt);
  EXPECT_EQ(runningServer(folder_ / "no/such/folder").state, State::kNoFile);
}

TEST_F(RunningServerTest, RunsAsTheProcessThatWroteTheFile) {
  const auto process = waiting("vistaro-of-a-test");
  EXPECT_EQ(stateWith(std::to_string(process->pid())), State::kRunning);
  const RunningServer server = runningServer(file_);
  EXPECT_EQ(server.processId, process->pid());
  struct stat status{};
  ASSERT_EQ(stat(file_.c_str(), &status), 0);
  EXPECT_EQ(server.since, dateFromTimespec(status.st_mtim));
  EXPECT_EQ(stateWith(std::to_string(process->pid()) + "\n"), State::kRunning);
}

TEST_F(RunningServerTest, IsKnownByAnArgumentOrALibraryToo) {
  const RunningProgram interpreter(
      std::vector<std::string>{"sh", "-c", "read x", folder_ / "VISTARO.ru"});
  EXPECT_EQ(stateWith(std::to_string(interpreter.pid())), State::kRunning);
  const std::string library = folder_ / "libVistaroRuby.so";
  std::filesystem::copy_file("/lib/x86_64-linux-gnu/libm.so.6", library);
  RunningProgram host({"cat"}, {{"LD_PRELOAD", library}});
  // The loader maps the library in its own time.
  State state = State::kStale;
  for (const time_t end = time(nullptr) + 20; state != State::kRunning && time(nullptr) < end;) {
    state = stateWith(std::to_string(host.pid()));
  }
  EXPECT_EQ(state, State::kRunning);
}

TEST_F(RunningServerTest, IsStaleWhenTheProcessEnded) {
  const auto process = waiting("vistaro-of-a-test");
  const std::string id = std::to_string(process->pid());
  process->end();
  EXPECT_EQ(stateWith(id), State::kStale);
  EXPECT_EQ(std::to_string(runningServer(file_).processId), id);
}

TEST_F(RunningServerTest, IsStaleWhenTheNumberBelongsToAnotherProgram) {
  const auto process = waiting("something-else");
  EXPECT_EQ(stateWith(std::to_string(process->pid())), State::kStale);
}

TEST_F(RunningServerTest, IsStaleWhenTheProcessStartedAfterTheFileWasWritten) {
  const auto process = waiting("vistaro-of-a-test");
  EXPECT_EQ(stateWith(std::to_string(process->pid())), State::kRunning);
  const utimbuf times{time(nullptr) - 60, time(nullptr) - 60};
  ASSERT_EQ(utime(file_.c_str(), &times), 0);
  EXPECT_EQ(runningServer(file_).state, State::kStale);
}

TEST_F(RunningServerTest, IsStaleWhenSomebodyElseWroteTheFile) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can give a file away";
  const auto process = waiting("vistaro-of-a-test");
  writeFile(file_, std::to_string(process->pid()));
  ASSERT_EQ(chown(file_.c_str(), 61501, 61501), 0);
  EXPECT_EQ(runningServer(file_).state, State::kStale);
}

TEST_F(RunningServerTest, TellsGarbageFromAnOldFile) {
  for (const char* bytes : {"", "\n", "x", "12x", "-1", "0", " 1", "+1", "1\n\n", "99999999999",
                            "1 2", "12345678901234567", "\xFF\xFE"}) {
    SCOPED_TRACE(bytes);
    EXPECT_EQ(stateWith(bytes), State::kGarbage);
  }
  EXPECT_EQ(stateWith(std::string(1 << 20, '1')), State::kGarbage);
}

TEST_F(RunningServerTest, NeverFollowsALinkOrWaitsForAPipe) {
  const auto process = waiting("vistaro-of-a-test");
  writeFile(folder_ / "other", std::to_string(process->pid()));
  std::filesystem::create_symlink(folder_ / "other", file_);
  EXPECT_EQ(runningServer(file_).state, State::kGarbage);
  std::filesystem::remove(file_);
  ASSERT_EQ(mkfifo(file_.c_str(), 0600), 0);
  EXPECT_EQ(runningServer(file_).state, State::kGarbage);
  EXPECT_EQ(runningServer(folder_.path()).state, State::kGarbage);
}

}  // namespace
}  // namespace vt
