#include "extraction/documents/DocumentSamples.h"

#include <archive.h>
#include <archive_entry.h>
#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <stdexcept>

namespace vt {
namespace {

/// Writes a ZIP archive into memory.
class ZipWriter {
 public:
  ZipWriter() {
    ::archive_write_set_format_zip(zip_.get());
    ::archive_write_set_options(zip_.get(), "compression-level=1");
    ::archive_write_open(zip_.get(), &bytes_, nullptr, append, nullptr);
  }

  void begin(const std::string& name, std::size_t size) {
    const std::unique_ptr<archive_entry, decltype(&archive_entry_free)> entry(::archive_entry_new(),
                                                                              ::archive_entry_free);
    ::archive_entry_set_pathname(entry.get(), name.c_str());
    ::archive_entry_set_size(entry.get(), static_cast<la_int64_t>(size));
    ::archive_entry_set_filetype(entry.get(), AE_IFREG);
    ::archive_entry_set_perm(entry.get(), 0644);
    ::archive_write_header(zip_.get(), entry.get());
  }
  void add(std::string_view content) {
    ::archive_write_data(zip_.get(), content.data(), content.size());
  }
  std::string take() {
    if (::archive_write_close(zip_.get()) != ARCHIVE_OK) {
      throw std::runtime_error(::archive_error_string(zip_.get()));
    }
    return std::move(bytes_);
  }

 private:
  static la_ssize_t append(archive* /*zip*/, void* bytes, const void* block, std::size_t size) {
    static_cast<std::string*>(bytes)->append(static_cast<const char*>(block), size);
    return static_cast<la_ssize_t>(size);
  }

  std::unique_ptr<archive, decltype(&archive_write_free)> zip_{::archive_write_new(),
                                                               ::archive_write_free};
  std::string bytes_;
};

std::string docx() {
  return zipOf({
      {"[Content_Types].xml", "<Types/>"},
      {"word/document.xml",
       "<w:document xmlns:w='w'><w:body><w:p><w:r><w:t>Budget of the nor</w:t></w:r>"
       "<w:r><w:t>thern lights</w:t></w:r><w:r><w:instrText>PAGEREF</w:instrText></w:r></w:p>"
       "<w:p><w:r><w:t>second</w:t><w:tab/><w:t>line</w:t></w:r></w:p></w:body></w:document>"},
      {"word/footnotes.xml", "<w:footnotes xmlns:w='w'><w:p><w:t>a note</w:t></w:p></w:footnotes>"},
      {"word/styles.xml", "<w:styles xmlns:w='w'><w:t>Heading</w:t></w:styles>"},
      {"docProps/core.xml",
       "<cp:coreProperties xmlns:cp='c' xmlns:dc='d' xmlns:dcterms='t'>"
       "<dc:title>Annual Report</dc:title><dc:creator>Ada Lovelace; Grace Hopper</dc:creator>"
       "<dc:subject>Money</dc:subject><cp:keywords>north, light</cp:keywords>"
       "<dc:description>For the board</dc:description><cp:lastModifiedBy>Ben</cp:lastModifiedBy>"
       "<dc:language>en-GB</dc:language>"
       "<dcterms:created>2024-03-01T12:30:00Z</dcterms:created></cp:coreProperties>"},
      {"docProps/app.xml",
       "<Properties><Application>Some Writer</Application><Pages>12</Pages>"
       "<Company>Observatory</Company></Properties>"},
  });
}

std::string xlsx() {
  return zipOf({
      {"xl/workbook.xml", "<workbook><sheets><sheet name='Costs'/></sheets></workbook>"},
      {"xl/sharedStrings.xml",
       "<sst><si><t>Budget of the northern lights</t><rPh><t>phonetic</t></rPh></si></sst>"},
      {"xl/worksheets/sheet1.xml",
       "<worksheet><sheetData><row><c t='s'><v>0</v></c><c><v>4711</v></c>"
       "<c t='str'><v>computed</v></c><c t='inlineStr'><is><t>inline</t></is></c></row>"
       "</sheetData></worksheet>"},
      {"docProps/core.xml", "<c><title>Annual Report</title><creator>Ada Lovelace</creator></c>"},
  });
}

std::string pptx() {
  return zipOf({
      {"ppt/slides/slide1.xml",
       "<p:sld xmlns:p='p' xmlns:a='a'><a:p><a:t>Budget of the northern "
       "lights</a:t></a:p></p:sld>"},
      {"ppt/notesSlides/notesSlide1.xml", "<p:notes xmlns:p='p'><t>spoken words</t></p:notes>"},
      {"docProps/core.xml", "<c><title>Annual Report</title><creator>Ada Lovelace</creator></c>"},
      {"docProps/app.xml", "<Properties><Slides>7</Slides></Properties>"},
  });
}

constexpr std::string_view kOpenDocumentMeta =
    "<office:meta><dc:title>Annual Report</dc:title>"
    "<meta:initial-creator>Ada Lovelace</meta:initial-creator><dc:creator>Ben</dc:creator>"
    "<meta:keyword>north</meta:keyword><meta:keyword>light</meta:keyword>"
    "<meta:generator>Some Office</meta:generator><meta:document-statistic meta:page-count='3'/>"
    "</office:meta>";
constexpr std::string_view kOpenDocumentBody =
    "<office:body><office:text><text:tracked-changes><text:p>deleted</text:p>"
    "</text:tracked-changes><text:p>Budget of the<text:s/><text:span>nor</text:span>thern lights"
    "</text:p><text:h>second</text:h></office:text></office:body>";
constexpr std::string_view kOpenDocumentRoot =
    "office:document xmlns:office='o' xmlns:text='t' xmlns:meta='m' xmlns:dc='d'";

std::string odt() {
  return zipOf({
      {"mimetype", "application/vnd.oasis.opendocument.text"},
      {"content.xml",
       fmt::format("<{}>{}</office:document>", kOpenDocumentRoot, kOpenDocumentBody)},
      {"meta.xml", fmt::format("<{}>{}</office:document>", kOpenDocumentRoot, kOpenDocumentMeta)},
      {"META-INF/manifest.xml", "<manifest/>"},
  });
}

std::string epub() {
  return zipOf({
      {"mimetype", "application/epub+zip"},
      {"OEBPS/content.opf",
       "<package xmlns:dc='d'><metadata><dc:title>Annual Report</dc:title>"
       "<dc:creator>Ada Lovelace</dc:creator><dc:language>en</dc:language>"
       "<dc:subject>Sky</dc:subject><dc:publisher>Press</dc:publisher></metadata></package>"},
      {"OEBPS/one.xhtml",
       "<html><head><title>One</title></head><body><p>Budget of the <i>nor</i>thern lights</p>"
       "</body></html>"},
      {"OEBPS/style.css", "p { color: red }"},
  });
}

constexpr std::string_view kHtml =
    "<!DOCTYPE html><html lang='en'><head><meta charset='utf-8'><title>Annual Report</title>"
    "<meta name='Author' content='Ada Lovelace'><meta name='keywords' content='north, light'>"
    "<meta name='description' content='For the board'><style>p { color: red }</style></head>"
    "<body><p>Budget of the <b>nor</b>thern lights</p><script>var hidden = 1;</script>"
    "<img alt='a chart'></body></html>";

constexpr std::string_view kRtf =
    "{\\rtf1\\ansi\\ansicpg1252\\deff0{\\fonttbl{\\f0\\fcharset0 Times;}{\\f1\\fcharset204 Arial;}}"
    "{\\colortbl;\\red1\\green2\\blue3;}{\\*\\generator Some Writer;}"
    "{\\info{\\title Annual Report}{\\author Ada Lovelace}{\\keywords north, light}"
    "{\\creatim\\yr2024\\mo3\\dy1\\hr12\\min30}\\nofpages2}"
    "\\pard Budget of the nor\\b thern\\b0  lights\\par gr\\'fc\\'df {\\f1 \\'ef\\'f0}\\par "
    "\\u8364?\\u-10179?\\u-8704? {\\v hidden}{\\*\\unknown secret}}";

}  // namespace

std::string zipOf(const ZipEntries& entries) {
  ZipWriter zip;
  for (const auto& [name, content] : entries) {
    zip.begin(name, content.size());
    zip.add(content);
  }
  return zip.take();
}

std::string zipOfBlanks(const std::string& name, std::size_t count) {
  ZipWriter zip;
  zip.begin(name, count);
  const std::string blanks(std::size_t{1} << 20, ' ');
  for (; count > 0; count -= std::min(count, blanks.size())) {
    zip.add(std::string_view(blanks).substr(0, count));
  }
  return zip.take();
}

std::string pdfOf(std::string_view text, std::string_view head, std::string_view trailer) {
  const std::string page = fmt::format("BT /F1 12 Tf 20 150 Td ({}) Tj ET", text);
  const std::string objects[] = {
      "<< /Type /Catalog /Pages 2 0 R >>",
      "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
      "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 300 200] /Contents 4 0 R "
      "/Resources << /Font << /F1 5 0 R >> >> >>",
      fmt::format("<< /Length {} >>\nstream\n{}\nendstream", page.size(), page),
      "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>",
      fmt::format("<< {} >>", head),
  };
  std::string bytes = "%PDF-1.4\n";
  std::string table = "0000000000 65535 f \n";
  int number = 0;
  for (const std::string& object : objects) {
    table += fmt::format("{:010} 00000 n \n", bytes.size());
    bytes += fmt::format("{} 0 obj\n{}\nendobj\n", ++number, object);
  }
  return bytes + fmt::format(
                     "xref\n0 {}\n{}trailer\n<< /Size {} /Root 1 0 R /Info 6 0 R {} >>\n"
                     "startxref\n{}\n%%EOF\n",
                     number + 1, table, number + 1, trailer, bytes.size());
}

std::vector<DocumentSample> documentSamples() {
  return {
      {"a.html", std::string(kHtml)},
      {"a.xhtml", std::string(kHtml)},
      {"a.pdf", pdfOf("Budget of the northern lights",
                      "/Title (Annual Report) /Author (Ada Lovelace) /Keywords (north, light) "
                      "/Creator (Some Writer) /Producer (Some Printer)")},
      {"a.docx", docx()},
      {"a.xlsx", xlsx()},
      {"a.pptx", pptx()},
      {"a.odt", odt()},
      {"a.fodt", fmt::format("<{}>{}{}</office:document>", kOpenDocumentRoot, kOpenDocumentMeta,
                             kOpenDocumentBody)},
      {"a.epub", epub()},
      {"a.rtf", std::string(kRtf)},
      {"a.xml",
       "<?xml version='1.0'?><book year='1'><title>Annual Report</title>"
       "<p>Budget of the northern lights</p></book>"},
  };
}

std::string documentSample(std::string_view name) {
  const std::vector<DocumentSample> samples = documentSamples();
  return std::ranges::find(samples, name, &DocumentSample::name)->bytes;
}

}  // namespace vt
