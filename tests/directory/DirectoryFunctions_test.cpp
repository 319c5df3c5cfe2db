#include "directory/DirectoryFunctions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

#include "DirectoryWorld.h"

namespace vt {
namespace {

using testing::ElementsAre;

DirReference openSession(DirectoryWorld& world) {
  DirReference session = 0;
  EXPECT_EQ(world.services->dsOpenDirService(&session), kDSNoErr);
  world.services->forgetCalls();
  return session;
}

TEST(OpenSearchNode, OpensTheFirstNodeFoundAndGivesAllElseBackInOrder) {
  DirectoryWorld world;
  world.services->leaveContinueData();
  const DirReference session = openSession(world);
  DirNodeReference node = 0;
  EXPECT_EQ(OpenSearchNode(session, &node), kDSNoErr);
  EXPECT_NE(node, 0U);
  EXPECT_THAT(world.services->calls(),
              ElementsAre("dsDataBufferAllocate", "dsFindDirNodes", "dsGetDirNodeName",
                          "dsReleaseContinueData", "dsDataBufferDeAllocate", "dsOpenDirNode",
                          "dsDataListDeallocate"));
  EXPECT_THAT(world.services->bufferSizes(), ElementsAre(4096U));
  world.services->dsCloseDirNode(node);
  world.services->dsCloseDirService(session);
}

TEST(OpenSearchNode, AnswersWhyItFailedAndLeavesTheReferenceAlone) {
  struct Case {
    const char* refused;
    DirStatus status;
  };
  const Case cases[] = {
      {"dsDataBufferAllocate", kDSMemoryError},
      {"dsFindDirNodes", MemoryDirectoryServices::kRefused},
      {"dsGetDirNodeName", MemoryDirectoryServices::kRefused},
      {"dsOpenDirNode", MemoryDirectoryServices::kRefused},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.refused);
    DirectoryWorld world;
    world.services->leaveContinueData();
    const DirReference session = openSession(world);
    world.services->refuse(c.refused);
    DirNodeReference node = 7;
    EXPECT_EQ(OpenSearchNode(session, &node), c.status);
    EXPECT_EQ(node, 7U);
    world.services->dsCloseDirService(session);
  }
}

TEST(OpenSearchNode, AsksNothingWithoutASessionOrAPlaceForTheNode) {
  DirectoryWorld world;
  DirNodeReference node = 0;
  EXPECT_EQ(OpenSearchNode(0, &node), -14200);
  EXPECT_EQ(OpenSearchNode(1, nullptr), -14200);
  EXPECT_TRUE(world.services->calls().empty());
}

class DoPasswordAuthTest : public testing::Test {
 protected:
  DoPasswordAuthTest() : session_(openSession(world_)) {
    EXPECT_EQ(OpenSearchNode(session_, &node_), kDSNoErr);
    world_.services->forgetCalls();
  }
  ~DoPasswordAuthTest() override {
    world_.services->dsCloseDirNode(node_);
    world_.services->dsCloseDirService(session_);
  }

  DirStatus check(const char* method, const char* password = "secret") {
    return DoPasswordAuth(session_, node_, method, "ann", password);
  }

  DirectoryWorld world_;
  DirReference session_;
  DirNodeReference node_ = 0;
};

TEST_F(DoPasswordAuthTest, AcceptsThreeOfTheFourMethodsAndPassesTheFourthToTheDirectory) {
  EXPECT_EQ(check("dsAuthMethodStandard:dsAuthNodeNativeCannotUseClearText"), 0);
  EXPECT_EQ(check("dsAuthMethodStandard:dsAuthNodeNativeCanUseClearText"), 0);
  EXPECT_EQ(check("dsAuthMethodStandard:dsAuthClearText"), 0);
  world_.services->forgetCalls();
  EXPECT_EQ(check("dsAuthMethodStandard:dsAuthCrypt"), kDSAuthMethodNotSupported);
  EXPECT_THAT(world_.services->calls(), testing::Contains("dsDoDirNodeAuth"));
}

TEST_F(DoPasswordAuthTest, RefusesAnyOtherMethodBeforeItAllocates) {
  const char* const methods[] = {"dsAuthMethodStandard:dsAuthClearTextX",
                                 "dsAuthMethodStandard:dsAuthClearTex", "", nullptr};
  for (const char* method : methods) {
    SCOPED_TRACE(method ? method : "(null)");
    EXPECT_EQ(check(method), -14093);
  }
  EXPECT_TRUE(world_.services->calls().empty());
}

TEST_F(DoPasswordAuthTest, RefusesMissingArguments) {
  const char* const method = kDSStdAuthClearText;
  EXPECT_EQ(DoPasswordAuth(0, node_, method, "ann", "secret"), -14200);
  EXPECT_EQ(DoPasswordAuth(session_, 0, method, "ann", "secret"), -14200);
  EXPECT_EQ(DoPasswordAuth(session_, node_, method, nullptr, "secret"), -14200);
  EXPECT_EQ(DoPasswordAuth(session_, node_, method, "ann", nullptr), -14200);
  EXPECT_TRUE(world_.services->calls().empty());
}

TEST_F(DoPasswordAuthTest, SizesItsBuffersAndGivesThemBackInOrder) {
  world_.services->leaveContinueData();
  EXPECT_EQ(check(kDSStdAuthNodeNativeClearTextOK, "wrong"), kDSAuthFailed);
  EXPECT_THAT(
      world_.services->calls(),
      ElementsAre("dsDataNodeAllocateString", "dsDataBufferAllocate", "dsDataBufferAllocate",
                  "dsDoDirNodeAuth", "dsReleaseContinueData", "dsDataBufferDeAllocate",
                  "dsDataBufferDeAllocate", "dsDataNodeDeAllocate"));
  EXPECT_THAT(world_.services->bufferSizes(), ElementsAre(4096U, 3U + 5U + 38U, 128U));
  EXPECT_THAT(world_.services->releasedBufferSizes(), ElementsAre(4096U, 128U, 3U + 5U + 38U))
      << "the response goes before the step";
}

TEST_F(DoPasswordAuthTest, ReportsWhatCouldNotBeAllocated) {
  world_.services->refuse("dsDataNodeAllocateString");
  EXPECT_EQ(check(kDSStdAuthClearText), -14901);
  world_.services->refuse("dsDataBufferAllocate", 1);
  EXPECT_EQ(check(kDSStdAuthClearText), -14901);
  world_.services->refuse("dsDataBufferAllocate", 2);
  EXPECT_EQ(check(kDSStdAuthClearText), -14901);
  world_.services->refuse("dsDoDirNodeAuth");
  EXPECT_EQ(check(kDSStdAuthClearText), MemoryDirectoryServices::kRefused);
}

TEST(AppendStringToBuffer, TakesATextThatFitsExactlyAndRefusesOneByteMore) {
  DataBuffer buffer(10);
  EXPECT_EQ(AppendStringToBuffer(&buffer, "1234567", 7), -14260);
  EXPECT_EQ(buffer.length, 0U);
  EXPECT_EQ(AppendStringToBuffer(&buffer, "123456", 6), 0);
  EXPECT_EQ(buffer.length, 10U);
  EXPECT_EQ(AppendStringToBuffer(&buffer, "", 0), -14260);
}

TEST(AppendStringToBuffer, WritesTheLengthInHostOrderAndTheBytesBehindWhatIsThere) {
  DataBuffer buffer(20);
  EXPECT_EQ(AppendStringToBuffer(&buffer, "ab", 2), 0);
  EXPECT_EQ(AppendStringToBuffer(&buffer, "xyz", 3), 0);
  std::uint8_t expected[13];
  const std::uint32_t lengths[] = {2, 3};
  std::memcpy(expected, &lengths[0], 4);
  std::memcpy(expected + 4, "ab", 2);
  std::memcpy(expected + 6, &lengths[1], 4);
  std::memcpy(expected + 10, "xyz", 3);
  ASSERT_EQ(buffer.length, sizeof(expected));
  EXPECT_EQ(std::memcmp(buffer.bytes.data(), expected, sizeof(expected)), 0);
}

TEST(AppendStringToBuffer, RefusesNothingAndALengthThatWouldWrapAround) {
  DataBuffer buffer(10);
  EXPECT_EQ(AppendStringToBuffer(&buffer, nullptr, 1), -14200);
  EXPECT_EQ(AppendStringToBuffer(nullptr, "a", 1), -14200);
  EXPECT_EQ(AppendStringToBuffer(&buffer, "a", 0xFFFFFFFEU), -14260);
}

}  // namespace
}  // namespace vt
