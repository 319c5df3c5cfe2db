#include "metadata/store/FileWriter.h"

#include <fcntl.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "metadata/live/Descriptor.h"
#include "support/ReadFile.h"
#include "support/TemporaryFolder.h"

namespace vt {
namespace {

using ::testing::ElementsAre;
using ::testing::Pair;

constexpr std::uint64_t kMebibyte = std::uint64_t{1} << 20;

class RecordingCalls final : public StoreCalls {
 public:
  std::vector<std::pair<std::uint64_t, std::uint64_t>> writes;  ///< from where to before where

  ssize_t write(int file, const void* bytes, std::size_t count, std::uint64_t offset) override {
    writes.emplace_back(offset, offset + count);
    return StoreCalls::write(file, bytes, count, offset);
  }
};

std::string someBytes(std::size_t count) {
  std::string bytes(count, '\0');
  for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<char>(i * 7 + i / 251);
  return bytes;
}

class FileWriterTest : public ::testing::Test {
 protected:
  const TemporaryFolder place_;
  const std::string path_ = place_ / "file";
  const Descriptor file_{::open(path_.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600)};
  RecordingCalls calls_;
  FileWriter writer_{calls_, file_.get(), path_};
};

TEST_F(FileWriterTest, WritesWholeLargePages) {
  const std::string bytes = someBytes(5 * kMebibyte);
  for (std::size_t at = 0; at < bytes.size(); at += 777) {
    writer_.append(std::string_view(bytes).substr(at, 777));
  }
  ASSERT_FALSE(writer_.sync());
  EXPECT_THAT(calls_.writes, ElementsAre(Pair(0, 2 * kMebibyte), Pair(2 * kMebibyte, 4 * kMebibyte),
                                         Pair(4 * kMebibyte, 5 * kMebibyte)));
  EXPECT_EQ(readFile(path_), bytes);
}

TEST_F(FileWriterTest, EndsAtALargePageFromWhereverItGoesOn) {
  const std::string bytes = someBytes(5 * kMebibyte);
  const std::string_view all = bytes;
  writer_.append(all.substr(0, 100));
  writer_.flush();
  writer_.append(all.substr(100));
  ASSERT_FALSE(writer_.sync());
  EXPECT_THAT(calls_.writes,
              ElementsAre(Pair(0, 100), Pair(100, 2 * kMebibyte),
                          Pair(2 * kMebibyte, 4 * kMebibyte), Pair(4 * kMebibyte, 5 * kMebibyte)));
  EXPECT_EQ(readFile(path_), bytes);
}

TEST_F(FileWriterTest, LeavesOutWhatAPartWritesByItself) {
  const std::string bytes = someBytes(7 * kMebibyte);
  const std::string_view all = bytes;
  writer_.append(all.substr(0, kMebibyte));
  FileWriter part = writer_.leaveOut(4 * kMebibyte);
  part.append(all.substr(kMebibyte, 4 * kMebibyte));
  part.flush();
  writer_.append(all.substr(5 * kMebibyte));
  writer_.take(part);
  ASSERT_FALSE(writer_.sync());
  std::ranges::sort(calls_.writes);
  EXPECT_THAT(calls_.writes,
              ElementsAre(Pair(0, kMebibyte), Pair(kMebibyte, 2 * kMebibyte),
                          Pair(2 * kMebibyte, 4 * kMebibyte), Pair(4 * kMebibyte, 5 * kMebibyte),
                          Pair(5 * kMebibyte, 6 * kMebibyte), Pair(6 * kMebibyte, 7 * kMebibyte)));
  EXPECT_EQ(readFile(path_), bytes);
}

}  // namespace
}  // namespace vt
