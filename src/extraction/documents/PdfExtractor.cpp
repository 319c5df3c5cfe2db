#include "extraction/documents/PdfExtractor.h"

#include <fmt/format.h>
#include <poppler-document.h>
#include <poppler-global.h>
#include <poppler-page.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <memory>
#include <string>

#include "extraction/BoundedText.h"
#include "extraction/FoundAttributes.h"
#include "extraction/LookTime.h"

namespace vt {
namespace {

constexpr std::size_t kMostBytes = std::size_t{1} << 30;

constexpr char kEmptyDocument[] =
    "%PDF-1.4\n"
    "1 0 obj<</Type/Catalog/Pages 2 0 R>>endobj\n"
    "2 0 obj<</Type/Pages/Kids[]/Count 0>>endobj\n"
    "trailer<</Root 1 0 R>>\n";

/// The bytes of an open file, mapped while this object lives. One that is cut short meanwhile ends
/// the process, and so the looking into it.
class MappedBytes {
 public:
  explicit MappedBytes(int file) {
    struct stat status{};
    if (::fstat(file, &status) != 0 || status.st_size <= 0) return;
    size_ = static_cast<std::size_t>(status.st_size);
    if (size_ > kMostBytes) return;
    void* start = ::mmap(nullptr, size_, PROT_READ, MAP_PRIVATE, file, 0);
    if (start != MAP_FAILED) start_ = static_cast<const char*>(start);
  }
  MappedBytes(const MappedBytes&) = delete;
  MappedBytes& operator=(const MappedBytes&) = delete;
  ~MappedBytes() {
    // munmap() does not write to what it takes away.
    if (start_) ::munmap(const_cast<char*>(start_), size_);  // NOLINT(*-const-cast)
  }

  const char* start() const { return start_; }
  std::size_t size() const { return size_; }

 private:
  const char* start_ = nullptr;
  std::size_t size_ = 0;
};

std::string utf8(const poppler::ustring& text) {
  const poppler::byte_array bytes = text.to_utf8();
  return {bytes.data(), bytes.size()};
}

std::string info(const poppler::document& document, const char* key) {
  return utf8(document.info_key(key));
}

void readProperties(const poppler::document& document, FoundAttributes& attributes) {
  int major = 0;
  int minor = 0;
  document.get_pdf_version(&major, &minor);
  if (major > 0) attributes.setText("kMDItemVersion", fmt::format("{}.{}", major, minor));
  attributes.setText("kMDItemTitle", info(document, "Title"));
  attributes.addTexts("kMDItemAuthors", info(document, "Author"), ";");
  attributes.setText("kMDItemSubject", info(document, "Subject"));
  attributes.addTexts("kMDItemKeywords", info(document, "Keywords"), ",;");
  attributes.setText("kMDItemCreator", info(document, "Creator"));
  attributes.addText("kMDItemEncodingApplications", info(document, "Producer"));
  if (const auto created = document.info_date_t("CreationDate"); created > 0) {
    attributes.setDate("kMDItemContentCreationDate", Date{std::chrono::seconds{created}});
  }
}

void readPages(const poppler::document& document, BoundedText& text, FoundAttributes& attributes) {
  const int count = document.pages();
  if (count > 0) attributes.setNumber("kMDItemNumberOfPages", count);
  for (int number = 0; number < count && !text.isFull() && !isTimeShort(); ++number) {
    const std::unique_ptr<poppler::page> page(document.create_page(number));
    if (!page) continue;
    if (number == 0) {
      const poppler::rectf box = page->page_rect(poppler::crop_box);
      const bool isTurned = page->orientation() == poppler::page::landscape ||
                            page->orientation() == poppler::page::seascape;
      attributes.setNumber("kMDItemPageWidth", isTurned ? box.height() : box.width());
      attributes.setNumber("kMDItemPageHeight", isTurned ? box.width() : box.height());
    }
    text.append(utf8(page->text(poppler::rectf(), poppler::page::non_raw_non_physical_layout)));
    text.newLine();
  }
}

}  // namespace

PdfExtractor::PdfExtractor(const ContentTypes& types) : types_(types, {"com.adobe.pdf"}) {
  // What poppler thinks of a file is nobody's to read.
  poppler::set_debug_error_function([](const std::string&, void*) {}, nullptr);
  keptOpen_.reset(poppler::document::load_from_raw_data(kEmptyDocument, sizeof kEmptyDocument - 1));
}

PdfExtractor::~PdfExtractor() = default;

Result<Extraction, ExtractionFailure> PdfExtractor::extract(int file, ContentTypeId /*type*/) {
  using Kind = ExtractionFailure::Kind;
  const MappedBytes bytes(file);
  if (bytes.size() > kMostBytes) return ExtractionFailure{Kind::kTooLarge, "it exceeds 1 GiB"};
  if (!bytes.start()) return ExtractionFailure{Kind::kMalformed, "it is no PDF document"};
  const std::unique_ptr<poppler::document> document(
      poppler::document::load_from_raw_data(bytes.start(), static_cast<int>(bytes.size())));
  if (!document) return ExtractionFailure{Kind::kMalformed, "it is no PDF document"};
  Extraction extraction;
  FoundAttributes attributes(extraction);
  attributes.setText("kMDItemSecurityMethod", document->is_locked() || document->is_encrypted()
                                                  ? "Password Encrypted"
                                                  : "None");
  if (document->is_locked()) return extraction;  // of which nothing more may be asked
  readProperties(*document, attributes);
  BoundedText text;
  readPages(*document, text, attributes);
  extraction.text = text.take();
  return extraction;
}

std::vector<std::unique_ptr<Extractor>> pdfExtractors(const ContentTypes& types) {
  std::vector<std::unique_ptr<Extractor>> extractors;
  extractors.push_back(std::make_unique<PdfExtractor>(types));
  return extractors;
}

}  // namespace vt
