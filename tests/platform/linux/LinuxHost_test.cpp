#include "platform/linux/LinuxHost.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "support/ReadFile.h"
#include "support/TemporaryFolder.h"

namespace vt {
namespace {

using testing::ElementsAre;

LinuxHost hostWith(const TemporaryFolder& root, const std::string& hostname,
                   const std::string& hosts) {
  std::filesystem::create_directory(root.path() / "etc");
  writeFile(root / "etc/hostname", hostname);
  writeFile(root / "etc/hosts", hosts);
  return LinuxHost(root.path());
}

TEST(LinuxHost, HasTheNameOfThePrefixedConfiguration) {
  const TemporaryFolder root;
  EXPECT_EQ(hostWith(root, "files\n", "").name(), "files");
}

TEST(LinuxHost, HasTheMachinesNameWhereThePrefixHasNone) {
  const TemporaryFolder root;
  char name[256] = {};
  ASSERT_EQ(::gethostname(name, sizeof name - 1), 0);
  EXPECT_EQ(LinuxHost(root.path()).name(), name);
  EXPECT_EQ(hostWith(root, " \n# none\n", "").name(), name);
  EXPECT_EQ(LinuxHost().name(), name);
}

TEST(LinuxHost, FindsFurtherNamesInTheHostsFile) {
  struct Case {
    const char* what;
    const char* hostname;
    const char* hosts;
    std::vector<std::string> names;
  };
  const Case cases[] = {
      {"no entry", "files", "192.0.2.1 other\n", {"files"}},
      {"own line", "files", "192.0.2.1 files.example.org files\n", {"files", "files.example.org"}},
      {"loopback", "localhost", "127.0.0.1 localhost\n127.0.1.1 srv\n", {"localhost", "srv"}},
      {"case ignored",
       "Files",
       "192.0.2.1 files FILES.example.org\n",
       {"Files", "FILES.example.org"}},
      {"address families", "localhost", "::1 localhost ip6-localhost\n", {"localhost"}},
      {"comments", "files", "# 127.0.0.1 a\n127.0.0.1 b # c\n\n \t\n", {"files", "b"}},
      {"no line end", "files", "127.0.0.1\tb", {"files", "b"}},
      {"address alone", "files", "127.0.0.1\n", {"files"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const TemporaryFolder root;
    EXPECT_EQ(hostWith(root, c.hostname, c.hosts).names(), c.names);
  }
}

TEST(LinuxHost, KnowsItselfUnderItsNameFirst) {
  const LinuxHost host;
  ASSERT_TRUE(host.name());
  ASSERT_FALSE(host.names().empty());
  EXPECT_EQ(host.names().front(), *host.name());
}

}  // namespace
}  // namespace vt
