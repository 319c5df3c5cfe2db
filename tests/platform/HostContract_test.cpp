// What every Host promises, on this machine and in memory.

#include <gtest/gtest.h>

#include "platform/linux/LinuxHost.h"
#include "platform/memory/MemoryHost.h"

namespace vt {
namespace {

class HostContract : public testing::TestWithParam<std::shared_ptr<Host>> {};

INSTANTIATE_TEST_SUITE_P(, HostContract,
                         testing::Values(std::make_shared<LinuxHost>(),
                                         std::make_shared<MemoryHost>(std::vector<std::string>{
                                             "localhost", "srv"})));

TEST_P(HostContract, NamesItselfFirst) {
  const std::optional<std::string> name = GetParam()->name();
  ASSERT_TRUE(name);
  EXPECT_FALSE(name->empty());
  ASSERT_FALSE(GetParam()->names().empty());
  EXPECT_EQ(GetParam()->names().front(), *name);
}

TEST(MemoryHost, HasNoNameWithoutNames) {
  EXPECT_EQ(MemoryHost({}).name(), std::nullopt);
  EXPECT_TRUE(MemoryHost({}).names().empty());
}

}  // namespace
}  // namespace vt
