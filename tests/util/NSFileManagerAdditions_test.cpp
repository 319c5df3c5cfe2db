#include "util/NSFileManagerAdditions.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <memory>

#include "metadata/live/ShippedSchema.h"
#include "metadata/types/ShippedTypes.h"
#include "platform/Platform.h"
#include "platform/linux/LinuxContentTypeTags.h"
#include "platform/linux/LiveMetadataIndex.h"
#include "platform/memory/MemoryContentTypeTags.h"
#include "platform/memory/MemoryIdentity.h"
#include "platform/memory/MemoryMetadataIndex.h"
#include "support/TemporaryFolder.h"

namespace vt {
namespace {

constexpr std::uint32_t kStranger = 54321;

/// Real files, and the table of types that ships.
class MimeTypeAtPath : public testing::Test {
 protected:
  MimeTypeAtPath() {
    const auto types = std::make_shared<const ContentTypes>(shippedTypes());
    Platform::Services services;
    services.metadataIndex = std::make_shared<LiveMetadataIndex>(
        types, std::make_shared<query::AttributeSchema>(shippedSchema()), identity_,
        [](std::uint32_t uid) { return Credentials(uid, uid, {}); });
    services.contentTypeTags = std::make_shared<LinuxContentTypeTags>(types);
    scope_ = std::make_unique<PlatformScope>(std::make_shared<Platform>(std::move(services)));
  }

  std::optional<std::string> mimeTypeOf(const std::string& name) const {
    return mimeTypeAtPath(folder_ / name);
  }
  void addFile(const std::string& name) const { std::ofstream(folder_ / name) << "x"; }

  TemporaryFolder folder_;
  std::shared_ptr<MemoryIdentity> identity_ = std::make_shared<MemoryIdentity>();

 private:
  std::unique_ptr<PlatformScope> scope_;
};

TEST_F(MimeTypeAtPath, GoesByTheExtension) {
  struct Case {
    const char* extension;
    const char* mimeType;
  };
  const Case cases[] = {
      {"txt", "text/plain"},
      {"text", "text/plain"},
      {"rtf", "text/rtf"},
      {"html", "text/html"},
      {"htm", "text/html"},
      {"css", "text/css"},
      {"js", "text/javascript"},
      {"json", "application/json"},
      {"xml", "text/xml"},
      {"csv", "text/csv"},
      {"md", "text/markdown"},
      {"plist", "application/x-plist"},
      {"eml", "message/rfc822"},
      {"vcf", "text/vcard"},
      {"ics", "text/calendar"},
      {"c", "text/x-c"},
      {"h", "text/x-chdr"},
      {"cpp", "text/x-c++src"},
      {"java", "text/x-java"},
      {"py", "text/x-python"},
      {"rb", "text/x-ruby"},
      {"sh", "text/x-shellscript"},
      {"sql", "application/sql"},
      {"pdf", "application/pdf"},
      {"ps", "application/postscript"},
      {"eps", "application/postscript"},
      {"doc", "application/msword"},
      {"docx", "application/vnd.openxmlformats-officedocument.wordprocessingml.document"},
      {"xls", "application/vnd.ms-excel"},
      {"xlsx", "application/vnd.openxmlformats-officedocument.spreadsheetml.sheet"},
      {"ppt", "application/vnd.ms-powerpoint"},
      {"pptx", "application/vnd.openxmlformats-officedocument.presentationml.presentation"},
      {"odt", "application/vnd.oasis.opendocument.text"},
      {"ods", "application/vnd.oasis.opendocument.spreadsheet"},
      {"odp", "application/vnd.oasis.opendocument.presentation"},
      {"epub", "application/epub+zip"},
      {"jpg", "image/jpeg"},
      {"jpeg", "image/jpeg"},
      {"png", "image/png"},
      {"gif", "image/gif"},
      {"tif", "image/tiff"},
      {"bmp", "image/bmp"},
      {"svg", "image/svg+xml"},
      {"heic", "image/heic"},
      {"webp", "image/webp"},
      {"psd", "image/vnd.adobe.photoshop"},
      {"ico", "image/vnd.microsoft.icon"},
      {"cr2", "image/x-canon-cr2"},
      {"mp3", "audio/mpeg"},
      {"m4a", "audio/x-m4a"},
      {"wav", "audio/vnd.wave"},
      {"aiff", "audio/aiff"},
      {"flac", "audio/flac"},
      {"ogg", "audio/ogg"},
      {"mp4", "video/mp4"},
      {"mov", "video/quicktime"},
      {"avi", "video/x-msvideo"},
      {"mkv", "video/x-matroska"},
      {"webm", "video/webm"},
      {"zip", "application/zip"},
      {"gz", "application/gzip"},
      {"tar", "application/x-tar"},
      {"7z", "application/x-7z-compressed"},
      {"PDF", "application/pdf"},
      {"unheard-of", "application/octet-stream"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.extension);
    const std::string name = std::string("file.") + c.extension;
    addFile(name);
    EXPECT_EQ(mimeTypeOf(name), c.mimeType);
  }
}

TEST_F(MimeTypeAtPath, IsNilWhereThereIsNoFile) {
  EXPECT_EQ(mimeTypeOf("missing.pdf"), std::nullopt);
  EXPECT_EQ(mimeTypeAtPath(""), std::nullopt);
  EXPECT_EQ(mimeTypeAtPath("relative.pdf"), std::nullopt);
}

TEST_F(MimeTypeAtPath, IsNilForAFolderWhateverItIsCalled) {
  std::filesystem::create_directory(folder_.path() / "folder");
  std::filesystem::create_directory(folder_.path() / "folder.pdf");
  EXPECT_EQ(mimeTypeOf("folder"), std::nullopt);
  EXPECT_EQ(mimeTypeOf("folder.pdf"), std::nullopt);
}

TEST_F(MimeTypeAtPath, IsNilForATypeWithoutOne) {
  addFile("page.webloc");
  EXPECT_EQ(mimeTypeOf("page.webloc"), std::nullopt);
  ASSERT_EQ(mkfifo((folder_ / "pipe.pdf").c_str(), 0644), 0);
  EXPECT_EQ(mimeTypeOf("pipe.pdf"), std::nullopt);
}

TEST_F(MimeTypeAtPath, TakesNamesOfAnyBytes) {
  for (const char* name : {"-.pdf", "odd\xff\n.pdf", "äöü.pdf", "a b.pdf"}) {
    SCOPED_TRACE(name);
    addFile(name);
    EXPECT_EQ(mimeTypeOf(name), "application/pdf");
  }
}

TEST_F(MimeTypeAtPath, IsNilForWhatTheEffectiveUserMayNotRead) {
  addFile("private.pdf");
  ASSERT_EQ(chmod((folder_ / "private.pdf").c_str(), 0600), 0);
  identity_->setIds(kStranger, kStranger);
  EXPECT_EQ(mimeTypeOf("private.pdf"), std::nullopt);
}

TEST(MimeTypeAtPathInMemory, IsNilForAMissingOrUnknownType) {
  const auto index = std::make_shared<MemoryMetadataIndex>();
  index->addHit({{"kMDItemPath", "/known"}, {"kMDItemContentType", "com.adobe.pdf"}});
  index->addHit({{"kMDItemPath", "/unknown"}, {"kMDItemContentType", "org.example.nothing"}});
  index->addHit({{"kMDItemPath", "/odd"}, {"kMDItemContentType", 7}});
  index->addHit({{"kMDItemPath", "/untyped"}});
  const auto tags = std::make_shared<MemoryContentTypeTags>();
  tags->add("com.adobe.pdf", kUTTagClassMIMEType, "application/pdf");
  Platform::Services services;
  services.metadataIndex = index;
  services.contentTypeTags = tags;
  const PlatformScope scope(std::make_shared<Platform>(std::move(services)));
  EXPECT_EQ(mimeTypeAtPath("/known"), "application/pdf");
  EXPECT_EQ(mimeTypeAtPath("/unknown"), std::nullopt);
  EXPECT_EQ(mimeTypeAtPath("/odd"), std::nullopt);
  EXPECT_EQ(mimeTypeAtPath("/untyped"), std::nullopt);
}

TEST(MimeTypeAtPathInMemory, IsNilWithoutAnIndex) {
  const PlatformScope scope(std::make_shared<Platform>(Platform::Services{}));
  EXPECT_EQ(mimeTypeAtPath("/etc/passwd"), std::nullopt);
}

}  // namespace
}  // namespace vt
