// What every Process promises, on this machine and in memory.

#include <gtest/gtest.h>
#include <stdlib.h>

#include "platform/linux/LinuxProcess.h"
#include "platform/memory/MemoryProcess.h"

namespace vt {
namespace {

class ProcessContract : public testing::TestWithParam<std::shared_ptr<Process>> {};

INSTANTIATE_TEST_SUITE_P(, ProcessContract,
                         testing::Values(std::make_shared<LinuxProcess>(),
                                         std::make_shared<MemoryProcess>()));

TEST_P(ProcessContract, NeverGoesBackInTime) {
  const Date before = GetParam()->now();
  EXPECT_LE(before, GetParam()->now());
  EXPECT_GE(before, kReferenceDate);
}

TEST_P(ProcessContract, KeepsItsNumber) {
  EXPECT_GT(GetParam()->processIdentifier(), 0);
  EXPECT_EQ(GetParam()->processIdentifier(), GetParam()->processIdentifier());
}

TEST_P(ProcessContract, ChecksPasswordsTheNewerWayUnlessToldOtherwise) {
  EXPECT_GT(GetParam()->appKitVersionNumber(), 949);
}

TEST_P(ProcessContract, LoadsTheApplicationAsOftenAsAsked) {
  GetParam()->loadApplication();
  GetParam()->loadApplication();
}

TEST(LinuxProcess, SeedsTheRandomGeneratorAnewEachTime) {
  LinuxProcess process;
  ::srandom(1);
  const long fixed = ::random();
  process.seedRandom();
  const long first = ::random();
  process.seedRandom();
  const long second = ::random();
  // Two of 2^31 values fall together once in a blue moon; all three never do.
  EXPECT_FALSE(first == fixed && second == fixed);
}

TEST(MemoryProcess, StandsAtTheTimeItIsSetTo) {
  MemoryProcess process;
  const Date noon = kReferenceDate + std::chrono::hours(12);
  process.setNow(noon);
  EXPECT_EQ(process.now(), noon);
  EXPECT_EQ(process.now(), noon);
}

TEST(MemoryProcess, CountsWhatItIsAskedToDo) {
  MemoryProcess process;
  process.seedRandom();
  process.loadApplication();
  process.loadApplication();
  EXPECT_EQ(process.seedRandomCalls(), 1);
  EXPECT_EQ(process.loadApplicationCalls(), 2);
}

}  // namespace
}  // namespace vt
