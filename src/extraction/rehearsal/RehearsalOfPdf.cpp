#include <fmt/format.h>

#include <cstddef>
#include <iterator>

#include "extraction/rehearsal/RehearsalFile.h"

namespace vt {
namespace {

constexpr const char* kPlainPage =
    "BT /F1 11 Tf 14 TL 56 780 Td\n"
    "(The quick brown fox jumps over the lazy dog, 0123456789 times.) Tj T*\n"
    "(\\311t\\351 \\(na\\357ve\\): d\\351j\\340 vu.) Tj T*\n"
    "/F2 11 Tf <00010002> Tj ET\n";

// "BT … (The quick brown fox, packed) Tj T* [(ker) -80 (ned)] TJ ET", deflated.
constexpr const char* kPackedPage =
    "78da730a51d077335430345208495330345108f15130355330333050084951d008c94855282ccd4cce56"
    "482aca2fcf5348cbafd05128484cce4e4dd15408c95208d15288d6c84e2dd254d0b53050d0c8030ac72a"
    "847829b88670010021201815"
    ">";

constexpr const char* kOwnFont =
    "<</Type/Font/Subtype/Type0/BaseFont/Own/Encoding/Identity-H/ToUnicode 10 0 R"
    "/DescendantFonts[9 0 R]>>";

constexpr const char* kShapesOfFont =
    "<</Type/Font/Subtype/CIDFontType2/BaseFont/Own"
    "/CIDSystemInfo<</Registry(Adobe)/Ordering(Identity)/Supplement 0>>>>";

constexpr const char* kProperties =
    "<</Title<FEFF0041004200E9>/Author(Somebody)/Subject(Nothing)/Keywords(a, b)"
    "/Creator(Vistaro)/Producer(Vistaro)/CreationDate(D:20200102030405+01'00')>>";

constexpr const char* kCharactersOfFont =
    "/CIDInit /ProcSet findresource begin 12 dict begin begincmap\n"
    "/CMapName /Adobe-Identity-UCS def /CMapType 2 def\n"
    "1 begincodespacerange <0000> <FFFF> endcodespacerange\n"
    "1 beginbfchar <0001> <0041> endbfchar\n"
    "1 beginbfrange <0002> <0010> <0042> endbfrange\n"
    "endcmap CMapName currentdict /CMap defineresource pop end end\n";

std::string stream(const char* bytes, const char* entries = "") {
  return fmt::format("<</Length {}{}>>\nstream\n{}\nendstream", std::string_view(bytes).size(),
                     entries, bytes);
}

std::string page(int contents) {
  return fmt::format(
      "<</Type/Page/Parent 2 0 R/MediaBox[0 0 595 842]/Contents {} 0 R"
      "/Resources<</Font<</F1 3 0 R/F2 4 0 R>>>>>>",
      contents);
}

std::string documentOf(const std::vector<std::string>& objects) {
  std::string bytes = "%PDF-1.4\n";
  std::string table = "0000000000 65535 f \n";
  for (std::size_t i = 0; i < objects.size(); ++i) {
    table += fmt::format("{:010} 00000 n \n", bytes.size());
    bytes += fmt::format("{} 0 obj\n{}\nendobj\n", i + 1, objects[i]);
  }
  const std::size_t count = objects.size() + 1;
  bytes += fmt::format(
      "xref\n0 {}\n{}trailer\n<</Size {}/Root 1 0 R/Info {} 0 R>>\nstartxref\n{}\n%%EOF\n", count,
      table, count, objects.size(), bytes.size());
  return bytes;
}

}  // namespace

std::vector<RehearsalFile> rehearsalOfPdf() {
  return {{"com.adobe.pdf",
           documentOf({
               "<</Type/Catalog/Pages 2 0 R>>",
               "<</Type/Pages/Count 2/Kids[5 0 R 6 0 R]>>",
               "<</Type/Font/Subtype/Type1/BaseFont/Helvetica/Encoding/WinAnsiEncoding>>",
               kOwnFont,
               page(7),
               page(8),
               stream(kPlainPage),
               stream(kPackedPage, "/Filter[/ASCIIHexDecode/FlateDecode]"),
               kShapesOfFont,
               stream(kCharactersOfFont),
               kProperties,
           })}};
}

}  // namespace vt
