#include "platform/linux/Environment.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <map>

#include "support/TemporaryFolder.h"

namespace vt {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

constexpr std::uint64_t kRoot = 0;
constexpr std::uint64_t kSomebody = 1000;

EnvironmentLookup variables(std::map<std::string, std::string> values) {
  return [values = std::move(values)](const char* variable) {
    const auto found = values.find(variable);
    return found == values.end() ? nullptr : found->second.c_str();
  };
}

TEST(Environment, IsTheMachineItselfWhenNothingIsSet) {
  const auto environment = readEnvironment(variables({{"VISTARO_ROOT", ""}}), kRoot);
  ASSERT_TRUE(environment);
  EXPECT_EQ(environment->rootPrefix, "");
  EXPECT_EQ(environment->indexFolder, "/var/lib/vistaro/index");
  EXPECT_THAT(environment->resourceFolder, StartsWith("/"));
}

TEST(Environment, PutsTheIndexBehindTheRootPrefix) {
  const auto environment = readEnvironment(variables({{"VISTARO_ROOT", "/srv/test//"}}), kSomebody);
  ASSERT_TRUE(environment);
  EXPECT_EQ(environment->rootPrefix, "/srv/test");
  EXPECT_EQ(environment->indexFolder, "/srv/test/var/lib/vistaro/index");
}

TEST(Environment, TakesTheRootFolderAsNoPrefix) {
  EXPECT_EQ(readEnvironment(variables({{"VISTARO_ROOT", "/"}}), kSomebody)->rootPrefix, "");
}

TEST(Environment, TakesEachVariable) {
  const auto environment = readEnvironment(
      variables({{"VISTARO_ROOT", "/r"}, {"VISTARO_INDEX", "/i"}, {"VISTARO_RESOURCES", "/s"}}),
      kSomebody);
  ASSERT_TRUE(environment);
  EXPECT_EQ(environment->indexFolder, "/i");
  EXPECT_EQ(environment->resourceFolder, "/s");
}

TEST(Environment, RefusesARelativePath) {
  for (const char* variable : {"VISTARO_ROOT", "VISTARO_INDEX", "VISTARO_RESOURCES"}) {
    SCOPED_TRACE(variable);
    const auto environment = readEnvironment(variables({{variable, "here"}}), kSomebody);
    ASSERT_FALSE(environment);
    EXPECT_THAT(environment.error().text, HasSubstr("not an absolute path"));
    EXPECT_THAT(environment.error().text, StartsWith(variable));
  }
}

TEST(Environment, RefusesAsRootWhatOthersCanWrite) {
  if (::geteuid() != 0) GTEST_SKIP() << "needs a folder owned by root";
  for (const mode_t mode : {0775U, 0757U, 0777U}) {
    const TemporaryFolder folder;
    ASSERT_EQ(::chmod(folder.path().c_str(), mode), 0);
    for (const char* variable : {"VISTARO_ROOT", "VISTARO_INDEX", "VISTARO_RESOURCES"}) {
      SCOPED_TRACE(testing::Message() << variable << ", mode " << mode);
      const auto lookup = variables({{variable, folder.path()}});
      EXPECT_TRUE(readEnvironment(lookup, kSomebody));
      const auto environment = readEnvironment(lookup, kRoot);
      ASSERT_FALSE(environment);
      EXPECT_THAT(environment.error().text, HasSubstr("can be written by others"));
    }
  }
}

TEST(Environment, RefusesAsRootWhatAnotherOwns) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can give a folder away";
  const TemporaryFolder folder;
  EXPECT_TRUE(readEnvironment(variables({{"VISTARO_ROOT", folder.path()}}), kRoot));
  ASSERT_EQ(::chown(folder.path().c_str(), 1, 0), 0);
  const auto environment = readEnvironment(variables({{"VISTARO_ROOT", folder.path()}}), kRoot);
  ASSERT_FALSE(environment);
  EXPECT_THAT(environment.error().text, HasSubstr("not owned by root"));
}

TEST(Environment, LetsOnlyTheIndexBeMissing) {
  if (::geteuid() != 0) GTEST_SKIP() << "needs a folder owned by root";
  const TemporaryFolder folder;
  const std::string missing = folder / "missing";
  EXPECT_TRUE(readEnvironment(variables({{"VISTARO_INDEX", missing}}), kRoot));
  EXPECT_FALSE(readEnvironment(variables({{"VISTARO_INDEX", missing + "/below"}}), kRoot));
  EXPECT_FALSE(readEnvironment(variables({{"VISTARO_ROOT", missing}}), kRoot));
  EXPECT_FALSE(readEnvironment(variables({{"VISTARO_RESOURCES", missing}}), kRoot));
  ASSERT_EQ(::chmod(folder.path().c_str(), 0777), 0);
  EXPECT_FALSE(readEnvironment(variables({{"VISTARO_INDEX", missing}}), kRoot));
}

}  // namespace
}  // namespace vt
