// What a segment that is not as it was written does to its reader.

#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "metadata/store/ResealedSegment.h"
#include "metadata/store/Segment.h"
#include "metadata/store/SegmentVerifier.h"
#include "metadata/store/StoredFiles.h"
#include "metadata/store/TouchSegment.h"

namespace vt {
namespace {

/// Opens, reads everything and verifies; whether the damage was found.
bool findsDamage(const SegmentFile& file) {
  const auto segment = file.open();
  if (!segment) return segment.error().kind != StoreError::Kind::kFailed;
  touch(**segment);  // what is read outside is for the address sanitizer to see
  return verifySegment(**segment).has_value();
}

TEST(SegmentDamage, IsFoundWhereverABitFlips) {
  const SegmentFile file(randomFiles(5, 40).built);
  ASSERT_FALSE(findsDamage(file));
  for (std::size_t at = 0; at < file.bytes.size(); ++at) {
    std::string bytes = file.bytes;
    bytes[at] = static_cast<char>(bytes[at] ^ (1 << at % 8));
    file.replace(bytes);
    ASSERT_TRUE(findsDamage(file)) << "byte " << at;
  }
}

TEST(SegmentDamage, IsFoundWhereverTheFileEnds) {
  const SegmentFile file(randomFiles(6, 40).built);
  for (std::size_t length = 0; length < file.bytes.size(); ++length) {
    file.replace(file.bytes.substr(0, length));
    ASSERT_FALSE(file.open()) << length << " bytes";
  }
  file.replace(file.bytes + '\0');
  EXPECT_FALSE(file.open());
}

TEST(SegmentDamage, OfAWrongWriterGivesWrongAnswersAtWorst) {
  const SegmentFile file(randomFiles(8, 60).built);
  std::mt19937 random(20261121);
  int opened = 0;
  for (int round = 0; round < 3000; ++round) {
    file.replace(resealed(file.bytes, [&](std::string& bytes, SegmentHead&) {
      for (std::size_t changes = 1 + random() % 8; changes > 0; --changes) {
        bytes[sizeof(SegmentHead) + random() % (bytes.size() - sizeof(SegmentHead))] =
            static_cast<char>(random());
      }
    }));
    const auto segment = file.open();
    if (!segment) continue;
    ++opened;
    touch(**segment);
    verifySegment(**segment);
  }
  EXPECT_GT(opened, 1000);
}

template <class Number>
void setNumber(std::string& bytes, const SegmentHead& head, ColumnId id, std::size_t at,
               Number number) {
  std::memcpy(bytes.data() + head.columns[static_cast<std::size_t>(id)].offset + at * sizeof number,
              &number, sizeof number);
}

/// Four files in two folders, the newest first: "zeTa", "alpha", the folder "sub" and "sub/Beta".
SegmentFile fourFiles() {
  StoredFiles files;
  files.add(0, "zeTa", 400);
  files.add(0, "alpha", 300);
  files.addFolder(0, "sub", 200);
  files.add(1, "Beta", 100);
  return SegmentFile(files.built);
}

TEST(SegmentDamage, OfAWrongWriterIsFoundByVerifying) {
  struct Case {
    const char* what;
    ColumnId column;
    std::size_t at;
    std::uint64_t number;
    int bytes;
  };
  const Case cases[] = {
      {"order of dates", ColumnId::kModified, 1, 500, 8},
      {"order of paths", ColumnId::kModified, 1, 400, 8},
      {"folder of a row", ColumnId::kFolders, 0, 2, 4},
      {"entries of a folder", ColumnId::kFolders, 0, 1, 4},
      {"class of a row", ColumnId::kAccessClasses, 0, 9, 4},
      {"type of a row", ColumnId::kTypes, 0, 9, 2},
      {"case in a folded name", ColumnId::kFoldedNames, 0, 'Z', 1},
      {"another name", ColumnId::kOtherNames, 0, 'Y', 1},
      {"end within a name", ColumnId::kFoldedNames, 1, 0, 1},
      {"start of a name", ColumnId::kFoldedNameOffsets, 1, 4, 4},
      {"a folder before its parent", ColumnId::kParents, 1, 1, 4},
      {"two at the top", ColumnId::kParents, 1, kNoFolder, 4},
      {"name of a folder", ColumnId::kFolderNames, 1, 'x', 1},
      {"class of a folder", ColumnId::kFolderAccessClasses, 1, 9, 4},
      {"row of a folder", ColumnId::kFolderRows, 1, 1, 4},
      {"a row for the top", ColumnId::kFolderRows, 0, 1, 4},
      {"folder of no row", ColumnId::kFoldersByRow, 0, 0, 4},
      {"number of entries", ColumnId::kEntryCounts, 0, 7, 4},
      {"neither root nor not", ColumnId::kAreRoots, 0, 2, 1},
      {"missing allocation", ColumnId::kAllocatedBlocks, 0, kNotInBlocks, 4},
  };
  const SegmentFile file = fourFiles();
  ASSERT_FALSE(verifySegment(**file.open()));
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    file.replace(resealed(file.bytes, [&](std::string& bytes, const SegmentHead& head) {
      if (c.bytes == 1) setNumber(bytes, head, c.column, c.at, static_cast<char>(c.number));
      if (c.bytes == 2)
        setNumber(bytes, head, c.column, c.at, static_cast<std::uint16_t>(c.number));
      if (c.bytes == 4)
        setNumber(bytes, head, c.column, c.at, static_cast<std::uint32_t>(c.number));
      if (c.bytes == 8) setNumber(bytes, head, c.column, c.at, c.number);
    }));
    const auto segment = file.open();
    ASSERT_TRUE(segment) << segment.error().reason;
    const auto damage = verifySegment(**segment);
    ASSERT_TRUE(damage);
    EXPECT_EQ(damage->kind, StoreError::Kind::kDamaged);
    EXPECT_TRUE(damage->reason.starts_with("segment is damaged: ")) << damage->reason;
  }
}

TEST(SegmentDamage, OfTheHeadIsFoundOnOpening) {
  struct Case {
    const char* what;
    void (*change)(SegmentHead&);
    StoreError::Kind kind = StoreError::Kind::kDamaged;
  };
  const Case cases[] = {
      {"later version", [](SegmentHead& head) { ++head.version; }, StoreError::Kind::kOtherKind},
      {"one column less", [](SegmentHead& head) { --head.columnCount; }},
      {"one row more", [](SegmentHead& head) { ++head.rowCount; }},
      {"most rows", [](SegmentHead& head) { head.rowCount = UINT32_MAX; }},
      {"one folder less", [](SegmentHead& head) { --head.folderCount; }},
      {"one class more", [](SegmentHead& head) { ++head.classCount; }},
      {"one type less", [](SegmentHead& head) { --head.typeCount; }},
      {"column off its place", [](SegmentHead& head) { head.columns[3].offset += 64; }},
      {"column beyond the end", [](SegmentHead& head) { head.columns[0].bytes = UINT64_MAX; }},
      {"column before the end", [](SegmentHead& head) { head.columns[0].bytes -= 1; }},
      {"offset beyond all", [](SegmentHead& head) { head.columns[35].offset = UINT64_MAX - 63; }},
      {"another size", [](SegmentHead& head) { head.fileBytes += 64; }},
  };
  const SegmentFile file = fourFiles();
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    file.replace(resealed(file.bytes, [&](std::string&, SegmentHead& head) { c.change(head); }));
    const auto segment = file.open();
    if (segment) {
      // A column of bytes that is one shorter is for verifying to find.
      EXPECT_TRUE(verifySegment(**segment));
      continue;
    }
    EXPECT_EQ(segment.error().kind, c.kind) << segment.error().reason;
  }
}

}  // namespace
}  // namespace vt
