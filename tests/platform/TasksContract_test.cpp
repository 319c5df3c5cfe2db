// What every Tasks promises, on this machine and in memory, and what only real programs show.

#include <errno.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <thread>

#include "platform/linux/FileDescriptor.h"
#include "platform/linux/LinuxTasks.h"
#include "platform/memory/MemoryTasks.h"
#include "support/InChildProcess.h"
#include "support/ReadFile.h"
#include "support/TemporaryFolder.h"

namespace vt {
namespace {

using testing::HasSubstr;
using namespace std::chrono_literals;

TaskResult exited(int status, std::string output = {}, std::string errors = {}) {
  return {TaskEnd::kExited, status, std::move(output), std::move(errors)};
}

// As much of each program as the contract uses.
std::shared_ptr<Tasks> memoryTasks() {
  auto tasks = std::make_shared<MemoryTasks>();
  tasks->setScript("printf", [](const Task& task) { return exited(0, task.arguments.at(1)); });
  tasks->setScript("false", [](const Task&) { return exited(1); });
  tasks->setScript("/bin/ls", [](const Task&) { return exited(2, {}, "ls: cannot access\n"); });
  tasks->setScript("head", [](const Task& task) {
    return exited(0, std::string(std::stoul(task.arguments.at(1)), '\0'));
  });
  return tasks;
}

class TasksContract : public testing::TestWithParam<std::shared_ptr<Tasks>> {};

INSTANTIATE_TEST_SUITE_P(, TasksContract,
                         testing::Values(std::make_shared<LinuxTasks>(), memoryTasks()));

TEST_P(TasksContract, HandsArgumentsOverAsTheyAre) {
  const std::string argument = "a b  $HOME `id` 'q' \"q\" * \n\xFF;|";
  EXPECT_EQ(GetParam()->run({.program = "printf", .arguments = {"%s", argument}}),
            exited(0, argument));
}

TEST_P(TasksContract, AnswersTheExitStatus) {
  const TaskResult result = GetParam()->run({.program = "false"});
  EXPECT_EQ(result, exited(1));
  EXPECT_FALSE(result.succeeded());
}

TEST_P(TasksContract, KeepsStandardErrorApart) {
  const TaskResult result = GetParam()->run({.program = "/bin/ls", .arguments = {"/missing"}});
  EXPECT_EQ(result.end, TaskEnd::kExited);
  EXPECT_EQ(result.output, "");
  EXPECT_THAT(result.errors, HasSubstr("cannot access"));
}

TEST_P(TasksContract, TellsThatThereIsNoSuchProgram) {
  for (const char* program : {"no-such-program", "/no/such/program", ""}) {
    SCOPED_TRACE(program);
    const TaskResult result = GetParam()->run({.program = program});
    EXPECT_EQ(result.end, TaskEnd::kNotStarted);
    EXPECT_EQ(result.status, ENOENT);
  }
}

TEST_P(TasksContract, TakesOutputUpToItsLimitAndNotAByteMore) {
  Task task{.program = "head", .arguments = {"-c", "100000", "/dev/zero"}};
  task.outputLimit = 100000;
  EXPECT_EQ(GetParam()->run(task), exited(0, std::string(100000, '\0')));
  task.outputLimit = 99999;
  EXPECT_EQ(GetParam()->run(task),
            (TaskResult{TaskEnd::kTooMuchOutput, 0, std::string(99999, '\0'), {}}));
}

TaskResult runShell(const std::string& script, std::chrono::milliseconds limit = 10s) {
  return LinuxTasks().run({.program = "/bin/sh", .arguments = {"-c", script}, .limit = limit});
}

/// Whether the process, which is not ours, is gone or dead within half a minute.
bool endsSoon(pid_t pid) {
  const auto deadline = std::chrono::steady_clock::now() + 30s;
  while (std::chrono::steady_clock::now() < deadline) {
    std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
    std::string state;
    stat >> state >> state >> state;
    if (state.empty() || state == "Z" || state == "X") return true;
    std::this_thread::yield();
  }
  return false;
}

TEST(LinuxTasks, GivesTheProgramNothingOfOurs) {
  const FileDescriptor open(::open("/etc/passwd", O_RDONLY));  // without O_CLOEXEC
  ::setenv("VT_SECRET", "1", /*overwrite=*/1);
  const TaskResult result = runShell("pwd; ls /proc/self/fd | wc -l; wc -c; env | sort");
  ::unsetenv("VT_SECRET");
  // The fourth descriptor is the folder that ls reads.
  EXPECT_EQ(result.output,
            "/\n4\n0\nLC_ALL=C.UTF-8\nPATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:"
            "/sbin:/bin\nPWD=/\n");
}

TEST(LinuxTasks, GivesTheProgramDefaultSignalsAndAGroupOfItsOwn) {
  const std::string answer = inChildProcess([] {
    ::signal(SIGTERM, SIG_IGN);
    sigset_t all;
    ::sigfillset(&all);
    ::sigprocmask(SIG_BLOCK, &all, nullptr);
    const TaskResult result = runShell("kill -TERM 0; echo alive");
    return result.end == TaskEnd::kSignalled ? std::to_string(result.status) : "not signalled";
  });
  EXPECT_EQ(answer, std::to_string(SIGTERM));
}

TEST(LinuxTasks, KillsAProgramThatTakesTooLong) {
  const auto start = std::chrono::steady_clock::now();
  const TaskResult result = runShell("echo begun; exec sleep 60", 100ms);
  EXPECT_EQ(result, (TaskResult{TaskEnd::kTimedOut, 0, "begun\n", {}}));
  EXPECT_LT(std::chrono::steady_clock::now() - start, 30s);
}

TEST(LinuxTasks, LeavesNothingRunningThatHoldsTheOutputOpen) {
  TemporaryFolder folder;
  const auto start = std::chrono::steady_clock::now();
  const TaskResult result = runShell("sleep 60 & echo $! > " + (folder / "pid") + "; echo done");
  EXPECT_EQ(result, exited(0, "done\n"));
  EXPECT_LT(std::chrono::steady_clock::now() - start, 30s);
  EXPECT_TRUE(endsSoon(std::stoi(readFile(folder / "pid"))));
}

TEST(LinuxTasks, EndsAProgramThatNeverStopsWriting) {
  Task task{.program = "yes"};
  task.outputLimit = 1000;
  const TaskResult result = LinuxTasks().run(task);
  EXPECT_EQ(result.end, TaskEnd::kTooMuchOutput);
  EXPECT_EQ(result.output.size(), 1000U);
}

TEST(LinuxTasks, ThrowsErrorsPastTheFirst65536BytesAway) {
  const TaskResult result = runShell("head -c 1000000 /dev/zero >&2; echo done");
  EXPECT_EQ(result.errors.size(), Tasks::kKeptErrorBytes);
  EXPECT_EQ(result.output, "done\n");
}

TEST(LinuxTasks, GoesOnAfterTheProgramClosedItsOutput) {
  const TaskResult result = runShell("exec >&-; exec 2>&-; sleep 0.1; exit 7");
  EXPECT_EQ(result, exited(7));
}

TEST(LinuxTasks, LooksForProgramsInTheSystemsFoldersOnly) {
  TemporaryFolder folder;
  writeFile(folder / "vt-own-program", "#!/bin/sh\necho own\n");
  ::chmod((folder / "vt-own-program").c_str(), 0755);
  const std::string answer = inChildProcess([&] {
    ::setenv("PATH", folder.path().c_str(), /*overwrite=*/1);
    ::chdir(folder.path().c_str());
    const bool found = LinuxTasks().run({.program = "vt-own-program"}).succeeded() ||
                       LinuxTasks().run({.program = "./vt-own-program"}).succeeded();
    const bool byPath = LinuxTasks().run({.program = folder / "vt-own-program"}).succeeded();
    return std::string(found ? "found" : "not found") + (byPath ? ", runs" : ", does not run");
  });
  EXPECT_EQ(answer, "not found, runs");
}

TEST(LinuxTasks, RefusesWhatCannotBeHandedOver) {
  const std::string nul("a\0b", 3);
  EXPECT_EQ(LinuxTasks().run({.program = "echo", .arguments = {nul}}).status, EINVAL);
  EXPECT_EQ(LinuxTasks().run({.program = "/etc/passwd"}).status, EACCES);
}

TEST(LinuxTasks, AdmitsThatTheStatusWentToSomebodyElse) {
  const std::string answer = inChildProcess([] {
    ::signal(SIGCHLD, SIG_IGN);
    const TaskResult result = runShell("echo said; exit 3");
    return result.output + (result.end == TaskEnd::kUnknown ? "unknown" : "known");
  });
  EXPECT_EQ(answer, "said\nunknown");
}

TEST(MemoryTasks, RemembersWhatWasRun) {
  MemoryTasks tasks;
  tasks.run({.program = "a", .arguments = {"1"}});
  tasks.run({.program = "b"});
  ASSERT_EQ(tasks.runs().size(), 2U);
  EXPECT_EQ(tasks.runs()[0].arguments, std::vector<std::string>{"1"});
  EXPECT_EQ(tasks.runs()[1].program, "b");
}

}  // namespace
}  // namespace vt
