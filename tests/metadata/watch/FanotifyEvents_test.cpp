#include "metadata/watch/FanotifyEvents.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/fanotify.h>

#include <string>
#include <vector>

namespace vt {
namespace {

using testing::ElementsAre;

template <class Record>
std::string bytesOf(const Record& record) {
  return {reinterpret_cast<const char*>(&record), sizeof record};
}

/// An information record as the kernel makes it: head, file system, handle of four bytes, name.
std::string information(std::uint8_t type, const std::string& name) {
  const std::string body = std::string("fsfsfsfs") + std::string("\4\0\0\0\1\0\0\0hand", 12) +
                           name + std::string(4 - name.size() % 4, '\0');
  fanotify_event_info_header head{};
  head.info_type = type;
  head.len = static_cast<std::uint16_t>(sizeof head + body.size());
  return bytesOf(head) + body;
}

std::string event(std::uint64_t mask, const std::string& information) {
  fanotify_event_metadata head{};
  head.event_len = static_cast<std::uint32_t>(sizeof head + information.size());
  head.vers = FANOTIFY_METADATA_VERSION;
  head.metadata_len = sizeof head;
  head.mask = mask;
  return bytesOf(head) + information;
}

/// Each event as words; "?" behind them when what follows is no event.
std::vector<std::string> read(const std::string& bytes) {
  std::vector<std::string> words;
  const bool isWhole = readFanotifyEvents(bytes, [&](const FanotifyEvent& event) {
    words.push_back(std::to_string(event.mask));
    if (event.name) words.push_back(std::string(event.name->name));
    if (event.newName) words.push_back("to " + std::string(event.newName->name));
  });
  if (!isWhole) words.emplace_back("?");
  return words;
}

TEST(FanotifyEvents, TellWhatHappenedWhere) {
  EXPECT_THAT(read(event(2, information(FAN_EVENT_INFO_TYPE_DFID_NAME, "file")) +
                   event(4, information(FAN_EVENT_INFO_TYPE_DFID_NAME, "."))),
              ElementsAre("2", "file", "4", "."));
}

TEST(FanotifyEvents, TellBothNamesOfARename) {
  EXPECT_THAT(read(event(1, information(FAN_EVENT_INFO_TYPE_OLD_DFID_NAME, "a") +
                                information(FAN_EVENT_INFO_TYPE_NEW_DFID_NAME, "bcd"))),
              ElementsAre("1", "a", "to bcd"));
}

TEST(FanotifyEvents, MayTellNoName) {
  EXPECT_THAT(read(event(FAN_Q_OVERFLOW, "")), ElementsAre(std::to_string(FAN_Q_OVERFLOW)));
  EXPECT_THAT(read(""), ElementsAre());
  EXPECT_THAT(read(event(3, information(FAN_EVENT_INFO_TYPE_FID, "x"))), ElementsAre("3"));
}

TEST(FanotifyEvents, GiveTheHandleOfTheFolder) {
  std::string fileSystem;
  std::string handle;
  const std::string bytes = event(2, information(FAN_EVENT_INFO_TYPE_DFID_NAME, "file"));
  readFanotifyEvents(bytes, [&](const FanotifyEvent& each) {
    const FanotifyFolder parts = partsOf(each.name->folder);
    fileSystem = parts.fileSystem;
    handle = parts.handle;
  });
  EXPECT_EQ(fileSystem, "fsfsfsfs");
  EXPECT_EQ(handle, std::string("\4\0\0\0\1\0\0\0hand", 12));
}

TEST(FanotifyEvents, EndWhereBytesMakeNoSense) {
  const std::string whole = event(2, information(FAN_EVENT_INFO_TYPE_DFID_NAME, "file"));
  for (std::size_t length = 1; length < whole.size(); ++length) {
    // On the heap and of that very size, so that a sanitizer sees a read behind its end.
    const std::vector<char> cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
    EXPECT_FALSE(readFanotifyEvents(cut, [](const FanotifyEvent&) {})) << length;
  }
  // Whatever one byte becomes, nothing is read that is not there.
  for (std::size_t at = 0; at < whole.size(); ++at) {
    for (int value = 0; value < 256; ++value) {
      std::vector<char> changed(whole.begin(), whole.end());
      changed[at] = static_cast<char>(value);
      readFanotifyEvents(changed, [](const FanotifyEvent& each) {
        const std::size_t length = each.name ? each.name->name.size() : 0;
        EXPECT_LT(length, 64U);
      });
    }
  }
}

}  // namespace
}  // namespace vt
