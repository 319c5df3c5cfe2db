#include "extraction/media/ArchiveExtractor.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include "extraction/media/Extracted.h"
#include "extraction/media/Samples.h"
#include "images/Samples.h"
#include "metadata/live/Descriptor.h"
#include "metadata/types/ShippedTypes.h"
#include "support/ReadFile.h"
#include "support/TemporaryFolder.h"

namespace vt {
namespace {

constexpr const char* kNames = "folder/Bericht M\xc3\xa4rz.txt\n\xe6\x97\xa5\xe6\x9c\xac.txt\n";

struct Format {
  const char* ending;
  const char* format;
  const char* filter = "";
};
constexpr Format kFormats[] = {
    {"zip", "zip"},
    {"tar", "pax"},
    {"tgz", "pax", "gzip"},
    {"tar.gz", "pax", "gzip"},
    {"tar.bz2", "pax", "bzip2"},
    {"tar.xz", "pax", "xz"},
    {"zst", "pax", "zstd"},
    {"lz4", "pax", "lz4"},
    {"lzma", "pax", "lzma"},
    {"z", "pax", "compress"},
    {"7z", "7zip"},
    {"cpio", "cpio"},
    {"xar", "xar"},
};

TEST(ArchiveExtractor, NamesWhatIsInAnArchive) {
  const TemporaryFolder folder;
  for (const Format& format : kFormats) {
    SCOPED_TRACE(format.ending);
    const std::string path = folder / ("archive." + std::string(format.ending));
    writeArchive(path, format.format, format.filter);
    EXPECT_EQ(textIn(path), kNames);
    EXPECT_TRUE(attributesIn(path).empty());
  }
}

TEST(ArchiveExtractor, NamesWhatIsOnADisk) {
  const TemporaryFolder folder;
  writeArchive(folder / "disk.iso", "iso9660");
  EXPECT_EQ(textIn(folder / "disk.iso"), "folder\n" + std::string(kNames));
}

TEST(ArchiveExtractor, TakesNamesThatAreNotUTF8ForLatin1) {
  const TemporaryFolder folder;
  make({"python3", "-c",
        "import sys,zipfile\n"
        "with zipfile.ZipFile(sys.argv[1],'w') as z: z.writestr('cafe.txt','x')\n",
        folder / "old.zip"});
  std::string bytes = readFile(folder / "old.zip");
  for (std::size_t at; (at = bytes.find("cafe")) != std::string::npos;) bytes[at + 3] = '\xe9';
  writeFile(folder / "old.zip", bytes);
  EXPECT_EQ(textIn(folder / "old.zip"), "caf\xc3\xa9.txt\n");
}

TEST(ArchiveExtractor, NamesWhatStandsBeforeTheEndOfAnArchiveThatIsCutOff) {
  const TemporaryFolder folder;
  writeArchive(folder / "whole.tar", "ustar");
  const std::string whole = readFile(folder / "whole.tar");
  writeFile(folder / "cut.tar", whole.substr(0, 1100));
  EXPECT_EQ(textIn(folder / "cut.tar"), "folder/Bericht M\xc3\xa4rz.txt\n");
}

TEST(ArchiveExtractor, FindsNoNamesInWhatIsOnlyPacked) {
  const TemporaryFolder folder;
  make({"python3", "-c", "import gzip,sys; gzip.open(sys.argv[1],'wb').write(b'words')",
        folder / "one.txt.gz"});
  EXPECT_EQ(textIn(folder / "one.txt.gz"), "");
}

TEST(ArchiveExtractor, FailsWhereThereIsNoArchive) {
  const TemporaryFolder folder;
  for (const char* name : {"none.zip", "none.gz", "none.tar", "none.7z", "none.iso"}) {
    SCOPED_TRACE(name);
    writeFile(folder / name, "This is no archive.");
    EXPECT_EQ(textIn(folder / name), "(it is no archive that is known)");
    writeFile(folder / name, "");
    EXPECT_EQ(textIn(folder / name), "(it is no archive that is known)");
  }
}

TEST(ArchiveExtractor, GoesOnWithTheFirstNamesOfAnArchiveThatUnfoldsWithoutEnd) {
  const TemporaryFolder folder;
  make({"python3", "-c",
        "import sys,tarfile\n"
        "class Zeros:\n"
        "  def read(self, count): return bytes(count)\n"
        "with tarfile.open(sys.argv[1],'w:gz',compresslevel=1) as t:\n"
        "  for name, size in (('first',0),('huge',1<<26),('last',0)):\n"
        "    i=tarfile.TarInfo(name); i.size=size; t.addfile(i,Zeros())\n",
        folder / "bomb.tgz"});
  const ContentTypes types = shippedTypes();
  ArchiveExtractor extractor(types, /*mostSeconds=*/0);
  const Descriptor file(::open((folder / "bomb.tgz").c_str(), O_RDONLY | O_CLOEXEC));
  const auto found = extractor.extract(file.get(), types.typeOfFile("bomb.tgz"));
  ASSERT_TRUE(found);
  EXPECT_EQ(found->text, "first\nhuge\n");
}

TEST(ArchiveExtractor, BoundsHowManyNamesItTakes) {
  const TemporaryFolder folder;
  make({"python3", "-c",
        "import sys,tarfile\n"
        "with tarfile.open(sys.argv[1],'w',format=tarfile.USTAR_FORMAT) as t:\n"
        "  for i in range(50000): t.addfile(tarfile.TarInfo('n%d'%i + 'x'*90))\n",
        folder / "many.tar"});
  const std::string text = textIn(folder / "many.tar");
  constexpr std::size_t kMostNameBytes = std::size_t{4} << 20;
  EXPECT_GE(text.size(), kMostNameBytes);
  EXPECT_LE(text.size(), kMostNameBytes + 100);
}

TEST(ArchiveExtractor, ComesToAnEndWithDamagedArchives) {
  const TemporaryFolder folder;
  unsigned seed = 300;
  for (const Format& format : kFormats) {
    SCOPED_TRACE(format.ending);
    const std::string path = folder / ("damage." + std::string(format.ending));
    writeArchive(path, format.format, format.filter);
    EXPECT_EQ(outcomeOfMangled(path, ++seed), "");
  }
}

}  // namespace
}  // namespace vt
