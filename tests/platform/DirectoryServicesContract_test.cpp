// What any directory must do: run on the machine's own and on the one in memory.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "AccountFolder.h"
#include "platform/RecordRuntimeBundles.h"
#include "platform/linux/AccountRecords.h"
#include "platform/linux/FilePasswords.h"
#include "platform/linux/LinuxDirectoryServices.h"
#include "platform/linux/LinuxRuntimeBundles.h"
#include "platform/memory/MemoryDirectoryServices.h"
#include "platform/memory/MemoryRuntimeBundles.h"

namespace vt {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A directory with the users ann (with a full name) and bob (without), and the group staff.
struct World {
  std::unique_ptr<AccountFolder> folder;
  std::shared_ptr<RecordDirectoryServices> services;
  std::shared_ptr<RuntimeBundles> bundles;
};

World memoryWorld() {  // the fixture itself looks for what was kept
  auto records = std::make_shared<MemoryRecords>();
  records->add(userRecord("ann", "501", "20", "Ann Example"));
  DirectoryRecord bob = userRecord("bob", "502", "20", "");
  std::erase_if(bob.attributes, [](const auto& a) { return a.type == kDS1AttrDistinguishedName; });
  records->add(bob);
  records->add(groupRecord("staff", {"ann", "bob"}));
  records->setPassword("ann", "secret");
  return {nullptr, std::make_shared<MemoryDirectoryServices>(records, [](const std::string&) {}),
          std::make_shared<MemoryRuntimeBundles>(records)};
}

World linuxWorld() {
  auto folder = std::make_unique<AccountFolder>();
  folder->write("passwd",
                "ann:x:501:20:Ann Example,Room 1:/home/ann:/bin/sh\n"
                "bob:x:502:20::/home/bob:/bin/sh\n");
  folder->write("group", "staff:x:50:ann,bob\n");
  folder->write("shadow", "ann:" + hashed("secret", "$6$") + ":19000::::::\nbob:!:19000::::::\n");
  auto records = std::make_shared<AccountRecords>(accountsUnder(folder->root()),
                                                  passwordsUnder(folder->root()));
  return {std::move(folder), std::make_shared<LinuxDirectoryServices>(records),
          std::make_shared<LinuxRuntimeBundles>(records)};
}

struct Implementation {
  const char* name;
  World (*make)();
};

class DirectoryServicesContract : public testing::TestWithParam<Implementation> {
 protected:
  DirectoryServicesContract() : world_(GetParam().make()), services_(*world_.services) {
    EXPECT_EQ(services_.dsOpenDirService(&session_), kDSNoErr);
    const auto path = services_.dsBuildFromPath(session_, kDSLocalNodePath, kDSPathSeparator);
    EXPECT_EQ(services_.dsOpenDirNode(session_, path.get(), &node_), kDSNoErr);
    services_.dsDataListDeallocate(session_, path.get());
  }
  ~DirectoryServicesContract() override {
    EXPECT_EQ(services_.dsCloseDirNode(node_), kDSNoErr);
    EXPECT_EQ(services_.dsCloseDirService(session_), kDSNoErr);
    EXPECT_THAT(services_.outstanding(), IsEmpty());
  }

  struct Answer {
    DirStatus status;
    std::uint32_t count;
    std::vector<std::string> names;
  };

  /// One call of dsGetRecordList with a buffer of `size`.
  Answer ask(const char* type, const char* name, const char* attribute, std::uint32_t size,
             DirContinueData* continuation = nullptr, DirPatternMatch pattern = kDSExact) {
    const auto names = list(name);
    const auto types = list(type);
    const auto attributes = list(attribute);
    DataBuffer* buffer = services_.dsDataBufferAllocate(session_, size);
    Answer answer{0, 99, {}};
    answer.status = services_.dsGetRecordList(node_, buffer, names.get(), pattern, types.get(),
                                              attributes.get(), /*attributeInformationOnly=*/false,
                                              &answer.count, continuation);
    for (std::uint32_t i = 1; i <= answer.count; ++i) {
      DirAttributeListReference attributeList = 0;
      RecordEntry* entry = nullptr;
      if (services_.dsGetRecordEntry(node_, buffer, i, &attributeList, &entry) != kDSNoErr) break;
      answer.names.push_back(entry->name);
      services_.dsCloseAttributeList(attributeList);
      services_.dsDeallocRecordEntry(session_, entry);
    }
    services_.dsDataBufferDeAllocate(session_, buffer);
    for (const auto& used : {names.get(), types.get(), attributes.get()}) {
      services_.dsDataListDeallocate(session_, used);
    }
    return answer;
  }

  std::unique_ptr<DataList> list(const char* text) {
    return services_.dsBuildListFromStrings(session_, {&text, 1});
  }

  DirStatus authenticate(std::string_view step) {
    DataBuffer* buffer = services_.dsDataBufferAllocate(session_, 100);
    std::ranges::copy(step, buffer->bytes.begin());
    buffer->length = static_cast<std::uint32_t>(step.size());
    DataBuffer* response = services_.dsDataBufferAllocate(session_, 128);
    DataNode* method = services_.dsDataNodeAllocateString(session_, kDSStdAuthClearText);
    DirContinueData continuation = 0;
    const DirStatus status = services_.dsDoDirNodeAuth(node_, method, /*authenticationOnly=*/true,
                                                       buffer, response, &continuation);
    EXPECT_EQ(continuation, 0U);
    services_.dsDataNodeDeAllocate(session_, method);
    services_.dsDataBufferDeAllocate(session_, response);
    services_.dsDataBufferDeAllocate(session_, buffer);
    return status;
  }

  World world_;
  RecordDirectoryServices& services_;
  DirReference session_ = 0;
  DirNodeReference node_ = 0;
};

TEST_P(DirectoryServicesContract, FindsARecordByItsExactNameOnly) {
  EXPECT_THAT(ask(kDSStdRecordTypeUsers, "ann", kDSAttributesAll, 2048).names, ElementsAre("ann"));
  for (const char* name : {"an", "annn", "ANN", "", "staff", "a:b"}) {
    SCOPED_TRACE(name);
    const Answer answer = ask(kDSStdRecordTypeUsers, name, kDSAttributesAll, 2048);
    EXPECT_EQ(answer.status, kDSNoErr);
    EXPECT_EQ(answer.count, 0U);
  }
  EXPECT_EQ(ask("dsRecTypeStandard:Printers", "ann", kDSAttributesAll, 2048).count, 0U);
  EXPECT_NE(ask(kDSStdRecordTypeUsers, "ann", kDSAttributesAll, 2048, nullptr, 0x2002).status, 0);
}

TEST_P(DirectoryServicesContract, ListsAllRecordsInAsManyBuffersAsItTakes) {
  const auto oneRecord = static_cast<std::uint32_t>(8 + 23 + 3);
  struct Case {
    std::uint32_t size;
    std::size_t calls;
  };
  for (const Case& c : {Case{oneRecord, 2}, Case{2 * oneRecord - 1, 2}, Case{2 * oneRecord, 1}}) {
    SCOPED_TRACE(c.size);
    DirContinueData continuation = 0;
    std::vector<std::string> names;
    std::size_t calls = 0;
    do {
      const Answer answer =
          ask(kDSStdRecordTypeUsers, kDSRecordsAll, "absent", c.size, &continuation);
      EXPECT_EQ(answer.status, kDSNoErr);
      std::ranges::copy(answer.names, std::back_inserter(names));
    } while (continuation != 0 && ++calls < 10);
    EXPECT_THAT(names, ElementsAre("ann", "bob"));
    EXPECT_EQ(calls + 1, c.calls);
  }
}

TEST_P(DirectoryServicesContract, SaysWhenARecordFitsNoEmptyBufferAndGoesOnBehindIt) {
  DirContinueData continuation = 0;
  Answer answer = ask(kDSStdRecordTypeUsers, kDSRecordsAll, "absent", 20, &continuation);
  EXPECT_EQ(answer.status, kDSBufferTooSmall);
  EXPECT_EQ(answer.count, 0U);
  ASSERT_NE(continuation, 0U);
  answer = ask(kDSStdRecordTypeUsers, kDSRecordsAll, "absent", 100, &continuation);
  EXPECT_THAT(answer.names, ElementsAre("bob"));
  EXPECT_EQ(continuation, 0U);
}

TEST_P(DirectoryServicesContract, GivesAllOrNothingWithoutContinuation) {
  const Answer answer = ask(kDSStdRecordTypeUsers, kDSRecordsAll, "absent", 8 + 23 + 3);
  EXPECT_EQ(answer.status, kDSBufferTooSmall);
  EXPECT_EQ(answer.count, 0U);
}

TEST_P(DirectoryServicesContract, RefusesContinuationDataThatItDidNotGive) {
  DirContinueData continuation = 4711;
  EXPECT_EQ(ask(kDSStdRecordTypeUsers, kDSRecordsAll, "absent", 100, &continuation).status,
            kDSInvalidReference);
  EXPECT_EQ(continuation, 0U);
}

TEST_P(DirectoryServicesContract, HasNoFullNameForAUserWithoutOne) {
  const std::uint32_t withoutAttribute = 8 + 23 + 3;
  EXPECT_EQ(ask(kDSStdRecordTypeUsers, "bob", kDS1AttrDistinguishedName, withoutAttribute).count,
            1U);
  EXPECT_EQ(ask(kDSStdRecordTypeUsers, "ann", kDS1AttrDistinguishedName, withoutAttribute).status,
            kDSBufferTooSmall);
}

TEST_P(DirectoryServicesContract, ChecksPasswordsFromAWellFormedBuffer) {
  using namespace std::string_view_literals;
  EXPECT_EQ(authenticate("\3\0\0\0ann\6\0\0\0secret"sv), kDSNoErr);
  EXPECT_EQ(authenticate("\3\0\0\0ann\5\0\0\0wrong"sv), kDSAuthFailed);
  EXPECT_EQ(authenticate("\3\0\0\0bob\1\0\0\0!"sv), kDSAuthFailed);
  EXPECT_EQ(authenticate("\3\0\0\0ann"sv), kDSAuthInBuffFormatError);
  EXPECT_EQ(authenticate("\3\0\0\0ann\7\0\0\0secret"sv), kDSAuthInBuffFormatError);
  EXPECT_EQ(authenticate(""sv), kDSAuthInBuffFormatError);
}

TEST_P(DirectoryServicesContract, RefusesToTakeBackWhatIsNotOut) {
  DataBuffer* buffer = services_.dsDataBufferAllocate(session_, 1);
  EXPECT_EQ(services_.wrongReleases(), 0U);
  EXPECT_EQ(services_.dsDataBufferDeAllocate(session_, buffer), kDSNoErr);
  EXPECT_EQ(services_.dsDataBufferDeAllocate(session_, buffer), kDSInvalidReference);
  EXPECT_EQ(services_.dsReleaseContinueData(session_, 4711), kDSInvalidReference);
  EXPECT_EQ(services_.dsCloseDirNode(0), kDSInvalidReference);
  EXPECT_EQ(services_.wrongReleases(), 3U);
}

TEST_P(DirectoryServicesContract, AllocatesNothingWithoutASession) {
  EXPECT_EQ(services_.dsDataBufferAllocate(0, 10), nullptr);
  EXPECT_EQ(services_.dsDataNodeAllocateString(0, "x"), nullptr);
  EXPECT_EQ(services_.dsBuildFromPath(0, "/a", "/"), nullptr);
  EXPECT_EQ(services_.dsBuildFromPath(session_, "/", "/"), nullptr);
  EXPECT_EQ(services_.dsBuildListFromStrings(session_, {}), nullptr);
}

TEST_P(DirectoryServicesContract, VerifiesPasswordsThroughOpenDirectory) {
  EXPECT_EQ(world_.bundles->classNamed(kODNodeClassName), nullptr) << "before it is loaded";
  EXPECT_FALSE(world_.bundles->load("/System/Library/Frameworks/Other.framework"));
  ASSERT_TRUE(world_.bundles->load(kOpenDirectoryFrameworkPath));
  const auto sessions =
      std::dynamic_pointer_cast<ODSessionClass>(world_.bundles->classNamed(kODSessionClassName));
  const auto nodes =
      std::dynamic_pointer_cast<ODNodeClass>(world_.bundles->classNamed(kODNodeClassName));
  BundleError error;
  EXPECT_EQ(nodes->nodeWithSession(nullptr, 0x2201, &error), nullptr);
  EXPECT_EQ(nodes->nodeWithSession(sessions->defaultSession(), 0x2202, &error), nullptr);
  const auto node = nodes->nodeWithSession(sessions->defaultSession(), 0x2201, nullptr);
  EXPECT_EQ(node->recordWithRecordType(kDSStdRecordTypeUsers, "eve", {}, &error), nullptr);
  const auto ann = node->recordWithRecordType(kDSStdRecordTypeUsers, "ann", {}, nullptr);
  EXPECT_TRUE(ann->verifyPassword("secret", nullptr));
  EXPECT_FALSE(ann->verifyPassword("wrong", &error));
  EXPECT_EQ(world_.bundles->classNamed("NSObject"), nullptr);
}

INSTANTIATE_TEST_SUITE_P(Each, DirectoryServicesContract,
                         testing::Values(Implementation{"Linux", linuxWorld},
                                         Implementation{"Memory", memoryWorld}),
                         [](const auto& tested) { return tested.param.name; });

TEST(MemoryDirectoryServices, ReportsWhatItDidNotGetBackAndWhatItGotTwice) {
  std::string complaint;
  {
    MemoryDirectoryServices services(std::make_shared<MemoryRecords>(),
                                     [&](const std::string& text) { complaint = text; });
    DirReference session = 0;
    services.dsOpenDirService(&session);
    services.dsDataBufferAllocate(session, 1);
    services.dsCloseDirNode(0);
  }
  EXPECT_EQ(complaint, "1 sessions, 1 data buffers, 1 wrong releases");
}

}  // namespace
}  // namespace vt
