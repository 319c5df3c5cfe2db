// From a share of Samba to a file that an SMB client fetched by the link of a hit, with nothing
// replaced: smbd, its configuration as testparm reads it, and the clients are the real ones.

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <iterator>
#include <thread>

#include "platform/Attributes.h"
#include "platform/linux/Environment.h"
#include "platform/linux/LinuxPlatform.h"
#include "scopes/VTConcreteSearchFolder.h"
#include "search/VTSearchResult.h"
#include "settings/VTSettings.h"
#include "support/Places.h"
#include "support/Program.h"
#include "support/ReadFile.h"
#include "support/RunningProgram.h"
#include "support/TemporaryFolder.h"

namespace vt {
namespace {

using testing::StartsWith;

/// A port of the loopback address that nothing listens to.
int freePort() {
  const int probe = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  if (::bind(probe, reinterpret_cast<sockaddr*>(&address), size) != 0) address.sin_port = 0;
  ::getsockname(probe, reinterpret_cast<sockaddr*>(&address), &size);
  ::close(probe);
  return ntohs(address.sin_port);
}

bool isAnswering(int port) {
  const int client = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  const bool answers =
      ::connect(client, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
  ::close(client);
  return answers;
}

/// As a client of URLs needs the path of one: all but letters, digits and slashes escaped.
std::string percentEscaped(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    const bool isPlain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                         (c >= '0' && c <= '9') || c == '/' || c == '.' || c == '-';
    char code[4];
    std::snprintf(code, sizeof code, "%%%02X", static_cast<unsigned char>(c));
    escaped += isPlain ? std::string(1, c) : code;
  }
  return escaped;
}

/// smbd on the loopback address while it lives, which shares one folder as "Docs" to guests.
class SambaServer {
 public:
  SambaServer() : port_(freePort()) {
    std::filesystem::permissions(files_.path(), std::filesystem::perms(0755));
    const std::string root = root_.path();
    for (const char* folder : {"etc/samba", "tmp", "run", "Library/Application Support"}) {
      std::filesystem::create_directories(root_.path() / folder);
    }
    std::ofstream configuration(root + "/etc/samba/smb.conf");
    configuration << "[global]\n  map to guest = Bad User\n  server role = standalone\n"
                  << "  interfaces = lo\n  bind interfaces only = yes\n"
                  << "  smb ports = " << port_ << "\n  disable netbios = yes\n"
                  << "  load printers = no\n  usershare max shares = 0\n";
    for (const char* folder : {"private dir", "lock directory", "state directory",
                               "cache directory", "pid directory", "ncalrpc dir"}) {
      configuration << "  " << folder << " = " << root << "/run/" << folder << "\n";
      std::filesystem::create_directories(root_.path() / "run" / folder);
    }
    configuration << "[Docs]\n  path = " << files_.path().string() << "\n  guest ok = yes\n";
    configuration.close();
    server_.emplace(std::vector<std::string>{"smbd", "--foreground", "--debug-stdout", "-s",
                                             root + "/etc/samba/smb.conf"});
  }

  /// Whether it takes connections, once it does or half a minute has passed.
  bool isReady() const {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!isAnswering(port_)) {
      if (std::chrono::steady_clock::now() > end) return false;
      std::this_thread::yield();
    }
    return true;
  }

  std::string log() {
    return server_->waitForLine("\n", std::chrono::seconds(1)) + server_->output();
  }
  int port() const { return port_; }
  const TemporaryFolder& files() const { return files_; }
  std::string root() const { return root_.path(); }

 private:
  TemporaryFolder root_;
  TemporaryFolder files_;
  int port_;
  std::optional<RunningProgram> server_;
};

class SmbLinks : public testing::Test {
 protected:
  static constexpr const char* kNames[] = {
      "plain.txt",      "with blanks.txt", "\xc3\xa4rger caf\xc3\xa9.txt",    "hash #1.txt",
      "100% of it.txt", "it's.txt",        "all of it, \xc3\xbc #%20 'x'.txt"};

  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "only root can share folders";
    server_.emplace();
    ASSERT_TRUE(server_->isReady()) << server_->log();
    std::filesystem::create_directories(server_->files() / "sub");
    auto records = VTSearchResult::Records::make();
    for (const char* name : kNames) {
      const std::string path = server_->files() / ("sub/" + std::string(name));
      writeFile(path, "the bytes of " + std::string(name));
      records->append(Dictionary::make({{kMDItemPath, path}}));
    }
    std::filesystem::permissions(server_->files() / "sub", std::filesystem::perms(0755));
    scope_.emplace(linuxPlatform(Environment{.rootPrefix = server_->root(),
                                             .indexFolder = server_->root() + "/index",
                                             .resourceFolder = resourceFolder(),
                                             .languages = {}}));
    const auto settings = VTSettings::sharedInstance();
    settings->setServerName("127.0.0.1");
    const auto folders = VTSearchResult::Folders::make(
        {VTConcreteSearchFolder::initWithPath(server_->files() / "sub", "Documents")});
    group_ = VTSearchResult::initWithGroupKind(nullptr, std::move(records), folders, {}, nullptr);
  }

  std::string nameOf(std::uint64_t index) const {
    return std::filesystem::path(*group_->pathForItemAtIndex(index)).filename().string();
  }

  std::optional<SambaServer> server_;
  std::optional<PlatformScope> scope_;
  std::shared_ptr<VTSearchResult> group_;
  TemporaryFolder fetched_;
};

TEST_F(SmbLinks, LeadToTheFilesWhateverTheyAreCalled) {
  ASSERT_EQ(group_->count(), std::size(kNames));
  for (std::uint64_t i = 0; i < group_->count(); ++i) {
    SCOPED_TRACE(nameOf(i));
    const std::optional<std::string> link =
        group_->smbURLPathForItemAtIndex(i, /*windowsClient=*/false);
    ASSERT_TRUE(link);
    const std::string start = "smb://127.0.0.1/Docs/sub/";
    ASSERT_THAT(*link, StartsWith(start));
    EXPECT_EQ(link->substr(start.size()), nameOf(i));

    // A client that takes addresses wants them escaped and the port told.
    const std::string address =
        "smb://127.0.0.1:" + std::to_string(server_->port()) + "/" +
        percentEscaped(link->substr(std::string_view("smb://127.0.0.1/").size()));
    const std::string target = fetched_ / std::to_string(i);
    const ProgramResult get = runProgram({"smbget", "-a", "-q", "-o", target, address});
    EXPECT_EQ(get.exitCode, 0) << get.output << get.errors;
    EXPECT_EQ(readFile(target), "the bytes of " + nameOf(i));
  }
}

TEST_F(SmbLinks, NameShareAndPathAsAClientOfSharesTakesThem) {
  for (std::uint64_t i = 0; i < group_->count(); ++i) {
    SCOPED_TRACE(nameOf(i));
    const std::string link =
        group_->smbURLPathForItemAtIndex(i, /*windowsClient=*/false).value_or("");
    const std::string share = "//127.0.0.1/Docs";
    ASSERT_THAT(link, StartsWith("smb:" + share + "/"));
    const std::string path = link.substr(("smb:" + share + "/").size());
    const std::string target = fetched_ / std::to_string(i);
    const ProgramResult get = runProgram(
        {"smbclient", "-s", server_->root() + "/etc/samba/smb.conf", "-N", "-p",
         std::to_string(server_->port()), share, "-c", "get \"" + path + "\" \"" + target + "\""});
    EXPECT_EQ(get.exitCode, 0) << get.output << get.errors;
    EXPECT_EQ(readFile(target), "the bytes of " + nameOf(i));
  }
}

TEST_F(SmbLinks, SendWindowsToTheFolderOfTheFile) {
  EXPECT_EQ(group_->smbURLPathForItemAtIndex(0, /*windowsClient=*/true),
            "file://///127.0.0.1/Docs/sub");
}

}  // namespace
}  // namespace vt
