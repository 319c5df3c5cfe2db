#include "metadata/indexing/FileOrigins.h"

#include <gtest/gtest.h>

#include <array>
#include <optional>
#include <vector>

#include "metadata/rights/AclBytes.h"

namespace vt {
namespace {

constexpr std::uint32_t kFile = 0100000;
constexpr std::uint32_t kFolder = 0040000;

struct Access {
  FileOwnership ownership;
  AclReading acl;

  AclPresence presence() const {
    if (!acl.isKnown) return AclPresence::kUnknown;
    return acl.list ? AclPresence::kPresent : AclPresence::kNone;
  }
};

Access classOf(std::uint32_t uid, std::uint32_t gid, std::uint32_t mode) {
  return {{uid, gid, mode}, {/*isKnown=*/true, std::nullopt}};
}

Access withList(Access access) {
  access.acl.list =
      AccessControlList::parse(aclBytes({{1, 6}, {2, 4, 1001}, {4, 4}, {16, 4}, {32, 0}})).value();
  return access;
}

Access withUnknownList(Access access) {
  access.acl = {};
  return access;
}

Access open() { return classOf(0, 0, kFolder | 0755); }

/// Two files of uid 2001 or as told, each in a folder of its own below the same open folder.
struct TwoFiles {
  Access oneFolder = open();
  Access one = classOf(2001, 3001, kFile | 0640);
  Access otherFolder = open();
  Access other = classOf(2001, 3001, kFile | 0640);

  FileStatus statusOf(const Access& access) const {
    FileStatus status;
    status.ownership = access.ownership;
    status.device = 1;
    return status;
  }
  FileOrigin originOfOne(const FileStatus& status) { return origins().originOf(0, status); }
  FileOrigin originOfOther(const FileStatus& status) { return origins().originOf(1, status); }

  /// Whether both are of one origin.
  bool areOfOne() {
    const FileOrigin first = originOfOne(statusOf(one));
    return first != kOwnOrigin && first == originOfOther(statusOf(other));
  }

 private:
  // As the store numbers them: equal classes are one.
  std::uint32_t numberOf(const Access& access) {
    for (std::uint32_t i = 0; i < classes_.size(); ++i) {
      if (classes_[i].ownership == access.ownership &&
          classes_[i].acl.isKnown == access.acl.isKnown &&
          classes_[i].acl.list.has_value() == access.acl.list.has_value()) {
        return i;
      }
    }
    classes_.push_back(access);
    return static_cast<std::uint32_t>(classes_.size() - 1);
  }

  FileOrigins& origins() {
    if (origins_) return *origins_;
    folderClasses_ = {numberOf(open()), numberOf(oneFolder), numberOf(otherFolder)};
    rowClasses_ = {numberOf(one), numberOf(other)};
    columns_.parents = parents_;
    columns_.folderAccessClasses = folderClasses_;
    columns_.folders = folders_;
    columns_.accessClasses = rowClasses_;
    columns_.attributesChanged = changed_;
    columns_.modified = changed_;
    for (const Access& access : classes_) {
      if (access.acl.list) {
        lists_.listed.push_back(static_cast<std::uint32_t>(uids_.size()));
        lists_.readings.push_back(access.acl);
      }
      uids_.push_back(access.ownership.uid);
      gids_.push_back(access.ownership.gid);
      modes_.push_back(access.ownership.mode);
      presences_.push_back(static_cast<std::uint8_t>(access.presence()));
    }
    columns_.classes = ClassColumns(uids_, gids_, modes_, presences_, lists_);
    return origins_.emplace(columns_);
  }

  std::vector<Access> classes_;
  std::vector<std::uint32_t> uids_;
  std::vector<std::uint32_t> gids_;
  std::vector<std::uint32_t> modes_;
  std::vector<std::uint8_t> presences_;
  ClassColumns::Lists lists_;
  std::array<std::uint32_t, 3> parents_{kNoFolder, 0, 0};
  std::array<std::uint32_t, 3> folderClasses_{};
  std::array<std::uint32_t, 2> folders_{1, 2};
  std::array<std::uint32_t, 2> rowClasses_{};
  std::array<std::int64_t, 2> changed_{};
  SegmentColumns columns_;
  std::optional<FileOrigins> origins_;
};

TEST(FileOrigins, AreOneWhereTheSamePeopleMayReadAndChange) {
  TwoFiles same;
  EXPECT_TRUE(same.areOfOne());

  TwoFiles inFoldersOfEverybody;
  inFoldersOfEverybody.otherFolder = classOf(2002, 3002, kFolder | 0777);
  EXPECT_TRUE(inFoldersOfEverybody.areOfOne());

  TwoFiles inLikeFolders;
  inLikeFolders.oneFolder = inLikeFolders.otherFolder = classOf(2002, 3002, kFolder | 0750);
  EXPECT_TRUE(inLikeFolders.areOfOne());

  TwoFiles withGroupsThatMayDoWhatAllMay;
  withGroupsThatMayDoWhatAllMay.one = classOf(2001, 3001, kFile | 0644);
  withGroupsThatMayDoWhatAllMay.other = classOf(2001, 3002, kFile | 0644);
  EXPECT_TRUE(withGroupsThatMayDoWhatAllMay.areOfOne());

  TwoFiles thatTheOwnerMayRunOrNotWrite;
  thatTheOwnerMayRunOrNotWrite.one = classOf(2001, 3001, kFile | 0750);
  thatTheOwnerMayRunOrNotWrite.other = classOf(2001, 3001, kFile | 0440);
  EXPECT_TRUE(thatTheOwnerMayRunOrNotWrite.areOfOne());
}

TEST(FileOrigins, DifferWithOwnerGroupModeAndList) {
  const Access others[] = {
      classOf(2002, 3001, kFile | 0640), classOf(2001, 3002, kFile | 0640),
      classOf(2001, 3001, kFile | 0600), classOf(2001, 3001, kFile | 0660),
      classOf(2001, 3001, kFile | 0644), withList(classOf(2001, 3001, kFile | 0640)),
  };
  for (const Access& other : others) {
    SCOPED_TRACE(testing::Message() << other.ownership.uid << ':' << other.ownership.gid << ' '
                                    << std::oct << other.ownership.mode);
    TwoFiles files;
    files.other = other;
    EXPECT_FALSE(files.areOfOne());
  }
}

TEST(FileOrigins, DifferWithTheRestrictingFoldersAbove) {
  const Access folders[] = {
      classOf(2002, 3002, kFolder | 0750),
      classOf(2002, 3002, kFolder | 0711),
      classOf(2001, 3001, kFolder | 0700),
      withList(classOf(2002, 3002, kFolder | 0755)),
  };
  for (const Access& folder : folders) {
    SCOPED_TRACE(testing::Message() << std::oct << folder.ownership.mode);
    TwoFiles below;
    below.otherFolder = folder;
    EXPECT_FALSE(below.areOfOne());
    TwoFiles belowDifferent;
    belowDifferent.oneFolder = classOf(2003, 3003, kFolder | 0750);
    belowDifferent.otherFolder = folder;
    EXPECT_FALSE(belowDifferent.areOfOne());
  }
}

TEST(FileOrigins, AreTheirOwnWhereNobodyKnowsWhoMayDoWhat) {
  struct Case {
    const char* what;
    Access folder;
    Access file;
  };
  const Case cases[] = {
      {"root's", open(), classOf(0, 3001, kFile | 0640)},
      {"nobody's", open(), classOf(65534, 3001, kFile | 0640)},
      {"with a list that is not known", open(), withUnknownList(classOf(2001, 3001, kFile | 0640))},
      {"below a folder with a list that is not known",
       withUnknownList(classOf(2002, 3002, kFolder | 0755)), classOf(2001, 3001, kFile | 0640)},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    TwoFiles files;
    files.oneFolder = files.otherFolder = c.folder;
    files.one = files.other = c.file;
    EXPECT_EQ(files.originOfOne(files.statusOf(c.file)), kOwnOrigin);
  }
}

TEST(FileOrigins, AreTheirOwnOnceTheFileIsNotAsTheCrawlHasSeenIt) {
  TwoFiles files;
  FileStatus status = files.statusOf(files.one);
  EXPECT_NE(files.originOfOne(status), kOwnOrigin);
  status.attributesChanged += std::chrono::microseconds(1);
  EXPECT_EQ(files.originOfOne(status), kOwnOrigin);
  status = files.statusOf(files.one);
  status.ownership.uid = 2002;
  EXPECT_EQ(files.originOfOne(status), kOwnOrigin);
}

TEST(FileOrigins, DifferWithTheFileSystem) {
  TwoFiles files;
  FileStatus status = files.statusOf(files.one);
  const FileOrigin here = files.originOfOne(status);
  status.device = 2;
  EXPECT_NE(files.originOfOne(status), here);
}

}  // namespace
}  // namespace vt
