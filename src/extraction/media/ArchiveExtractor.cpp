#include "extraction/media/ArchiveExtractor.h"

#include <archive.h>
#include <archive_entry.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <string>

#include "extraction/FoundAttributes.h"

namespace vt {
namespace {

constexpr std::size_t kMostEntries = 100'000;
constexpr std::size_t kMostNameBytes = std::size_t{4} << 20;
// Small, since time is looked at between blocks, and one may unfold to thousands of its size.
constexpr std::size_t kBlockSize = 4096;

double processorSeconds() {
  timespec time{};
  ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  constexpr double kNanosPerSecond = 1e9;
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / kNanosPerSecond;
}

/// The open file as the library reads it, until the time is up.
class ArchiveInput {
 public:
  ArchiveInput(int file, double mostSeconds)
      : file_(file), end_(processorSeconds() + mostSeconds) {}

  bool isOutOfTime() const { return isOutOfTime_; }
  bool isUnreadable() const { return isUnreadable_; }

  bool openWith(archive* reader) {
    archive_read_set_callback_data(reader, this);
    archive_read_set_read_callback(reader, read);
    archive_read_set_seek_callback(reader, seek);
    archive_read_set_skip_callback(reader, skip);
    return archive_read_open1(reader) == ARCHIVE_OK;
  }

 private:
  static la_ssize_t read(archive* reader, void* self, const void** block) {
    auto& input = *static_cast<ArchiveInput*>(self);
    if (input.hasBegun_ && processorSeconds() > input.end_) {
      input.isOutOfTime_ = true;
      archive_set_error(reader, ETIMEDOUT, "it takes too long");
      return -1;
    }
    input.hasBegun_ = true;
    const ssize_t count = ::read(input.file_, input.block_.data(), input.block_.size());
    *block = input.block_.data();
    if (count < 0) {
      input.isUnreadable_ = true;
      archive_set_error(reader, errno, "it can't be read");
    }
    return count;
  }

  static la_int64_t seek(archive* /*reader*/, void* self, la_int64_t offset, int whence) {
    const off_t at = ::lseek(static_cast<ArchiveInput*>(self)->file_, offset, whence);
    return at < 0 ? la_int64_t{ARCHIVE_FATAL} : la_int64_t{at};
  }

  static la_int64_t skip(archive* /*reader*/, void* self, la_int64_t request) {
    const int file = static_cast<ArchiveInput*>(self)->file_;
    const off_t before = ::lseek(file, 0, SEEK_CUR);
    struct stat status{};
    // Past the end nothing would fail: the archive would look whole.
    if (before < 0 || ::fstat(file, &status) != 0 || status.st_size - before < request) return 0;
    const off_t after = ::lseek(file, request, SEEK_CUR);
    return after < 0 ? 0 : after - before;
  }

  int file_;
  double end_;  // in seconds of this process
  bool hasBegun_ = false;
  bool isOutOfTime_ = false;
  bool isUnreadable_ = false;
  std::array<char, kBlockSize> block_;
};

using Reader = std::unique_ptr<archive, decltype(&archive_read_free)>;

/// None of what is supported here starts a program.
void support(archive* reader, bool mayHoldOneFile) {
  archive_read_support_filter_gzip(reader);
  archive_read_support_filter_bzip2(reader);
  archive_read_support_filter_xz(reader);
  archive_read_support_filter_lzma(reader);
  archive_read_support_filter_zstd(reader);
  archive_read_support_filter_lz4(reader);
  archive_read_support_filter_compress(reader);
  archive_read_support_filter_rpm(reader);
  archive_read_support_format_tar(reader);
  archive_read_support_format_cpio(reader);
  archive_read_support_format_zip(reader);
  archive_read_support_format_7zip(reader);
  archive_read_support_format_iso9660(reader);
  archive_read_support_format_rar(reader);
  archive_read_support_format_rar5(reader);
  archive_read_support_format_cab(reader);
  archive_read_support_format_lha(reader);
  archive_read_support_format_xar(reader);
  if (mayHoldOneFile) archive_read_support_format_raw(reader);
}

std::string nameOf(archive_entry* entry) {
  const char* name = archive_entry_pathname_utf8(entry);
  if (name == nullptr) name = archive_entry_pathname(entry);
  return name == nullptr ? std::string() : tidiedText(name);
}

/// Gathers names until the end, an error or a bound; answers how reading ended.
int gather(archive* reader, std::string& names) {
  archive_entry* entry = nullptr;
  for (std::size_t count = 0; count < kMostEntries && names.size() < kMostNameBytes; ++count) {
    const int result = archive_read_next_header(reader, &entry);
    if (result != ARCHIVE_OK && result != ARCHIVE_WARN) return result;
    // What is only packed, not archived, has no name but "data".
    if (archive_format(reader) == ARCHIVE_FORMAT_RAW) return ARCHIVE_EOF;
    const std::string name = nameOf(entry);
    if (!name.empty() && name != ".") names.append(name).append("\n");
  }
  return ARCHIVE_EOF;
}

}  // namespace

ArchiveExtractor::ArchiveExtractor(const ContentTypes& types, double mostSeconds)
    : mostSeconds_(mostSeconds),
      types_(
          types,
          {"com.pkware.zip-archive", "org.gnu.gnu-tar-archive", "org.gnu.gnu-zip-archive",
           "public.bzip2-archive", "org.tukaani.xz-archive", "org.tukaani.lzma-archive",
           "com.facebook.zstandard-archive", "org.lz4.lz4-archive", "public.z-archive",
           "org.7-zip.7-zip-archive", "com.rarlab.rar-archive", "com.microsoft.cab",
           "org.7-zip.lha-archive", "public.cpio-archive", "com.apple.bom-compressed-cpio",
           "com.apple.xar-archive", "com.apple.installer-package-archive", "com.redhat.rpm-archive",
           "public.iso-image"},
          // Documents that others look into.
          {"org.openxmlformats.openxml", "org.oasis-open.opendocument", "org.idpf.epub-container"}),
      filtered_(types, {"org.gnu.gnu-zip-archive", "public.bzip2-archive", "org.tukaani.xz-archive",
                        "org.tukaani.lzma-archive", "com.facebook.zstandard-archive",
                        "org.lz4.lz4-archive", "public.z-archive"}),
      unicode_(::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr)) {}

Result<Extraction, ExtractionFailure> ArchiveExtractor::extract(int file, ContentTypeId type) {
  using Kind = ExtractionFailure::Kind;
  const locale_t before = unicode_ ? ::uselocale(unicode_.get()) : nullptr;
  ArchiveInput input(file, mostSeconds_);
  const Reader reader(archive_read_new(), archive_read_free);
  Extraction extraction;
  extraction.text.emplace();
  int end = ARCHIVE_FATAL;
  if (reader) {
    support(reader.get(), filtered_.contains(type));
    if (input.openWith(reader.get())) end = gather(reader.get(), *extraction.text);
  }
  const bool isPlain = reader && archive_filter_count(reader.get()) <= 1;
  const bool isRaw = reader && archive_format(reader.get()) == ARCHIVE_FORMAT_RAW;
  if (before != nullptr) ::uselocale(before);
  if (input.isUnreadable()) return ExtractionFailure{Kind::kUnreadable, "it can't be read"};
  // Of an archive that is cut off, or too long, what stands at the beginning is told.
  const bool hasNone = extraction.text->empty();
  if (hasNone && input.isOutOfTime()) {
    return ExtractionFailure{Kind::kTimedOut, "it takes too long to come to its first name"};
  }
  if ((hasNone && end != ARCHIVE_EOF) || (isRaw && isPlain)) {
    return ExtractionFailure{Kind::kMalformed, "it is no archive that is known"};
  }
  return extraction;
}

}  // namespace vt
