#include "foundation/TextDecoding.h"

#include <gtest/gtest.h>
#include <iconv.h>

#include <string>
#include <vector>

namespace vt {
namespace {

std::string bytes(std::initializer_list<int> numbers) {
  std::string text;
  for (const int number : numbers) text += static_cast<char>(number);
  return text;
}

TEST(TextDecoding, TellsEncodingsByMarkThenByForm) {
  const struct {
    const char* what;
    std::string bytes;
    std::string text;
  } cases[] = {
      {"nothing", "", ""},
      {"ASCII", "plain", "plain"},
      {"UTF-8",
       "Gr\xC3\xB6\xC3\x9F"
       "e",
       "Größe"},
      {"UTF-8 with mark", "\xEF\xBB\xBFx", "x"},
      {"UTF-8 cut in a character", "x\xE6\x97", "x"},
      {"UTF-8 cut after a lead byte", "x\xF0", "x"},
      {"Latin-1",
       "Gr\xF6\xDF"
       "e",
       "Größe"},
      {"Windows-1252", "\x93x\x94 \x80 5 \x96 \xE6\x97 y", "“x” € 5 – æ— y"},
      {"a byte that Windows-1252 has not", "\xE4\x81 y", "ä\xC2\x81 y"},
      {"UTF-16, little endian", bytes({0xFF, 0xFE, 'H', 0, 0xF6, 0}), "Hö"},
      {"UTF-16, big endian", bytes({0xFE, 0xFF, 0, 'H', 0, 0xF6}), "Hö"},
      {"UTF-16 pair", bytes({0xFE, 0xFF, 0xD8, 0x3D, 0xDE, 0x00}), "😀"},
      {"UTF-16 cut in a pair", bytes({0xFE, 0xFF, 0, 'x', 0xD8, 0x3D}), "x"},
      {"UTF-16 cut in a unit", bytes({0xFE, 0xFF, 0, 'x', 0xD8}), "x"},
      {"UTF-16 lone high", bytes({0xFE, 0xFF, 0xD8, 0x3D, 0, 'x'}), "\xEF\xBF\xBDx"},
      {"UTF-16 lone low", bytes({0xFE, 0xFF, 0xDE, 0x00, 0, 'x'}), "\xEF\xBF\xBDx"},
      {"mark alone", bytes({0xFF, 0xFE}), ""},
      {"UTF-16 without mark, little endian", bytes({'H', 0, 0xF6, 0, 'c', 0, 0x7D, 0x59}), "Höc好"},
      {"UTF-16 without mark, big endian", bytes({0, 'H', 0, 0xF6, 0, 'c', 0x59, 0x7D}), "Höc好"},
      {"UTF-32, little endian", bytes({0xFF, 0xFE, 0, 0, 'H', 0, 0, 0, 0, 0xF6, 1, 0}), "H😀"},
      {"UTF-32, big endian", bytes({0, 0, 0xFE, 0xFF, 0, 0, 0, 'H', 0, 1, 0xF6, 0}), "H😀"},
      {"UTF-32 without mark", bytes({'H', 0, 0, 0, 0xF6, 0, 0, 0, 'x', 0, 0, 0, 'y'}), "Höx"},
      {"UTF-32 of no character", bytes({0xFF, 0xFE, 0, 0, 0, 0xD8, 0, 0, 0, 0, 0x11, 0}),
       "\xEF\xBF\xBD\xEF\xBF\xBD"},
      {"zeros behind words", std::string("one\0two two\0three\0", 18),
       std::string("one\0two two\0three\0", 18)},
      {"a zero at the end", std::string("abcdefghijk\0", 12), std::string("abcdefghijk\0", 12)},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(decodePlainText(c.bytes), c.text);
  }
}

// `text`, which is UTF-8, in another character set.
std::string inCharset(const std::string& text, const char* charset) {
  const iconv_t handle = iconv_open(charset, "UTF-8");
  std::string out(text.size() * 4, '\0');
  char* from = const_cast<char*>(text.data());
  char* to = out.data();
  std::size_t left = text.size();
  std::size_t room = out.size();
  EXPECT_EQ(iconv(handle, &from, &left, &to, &room), 0U) << charset << " lacks a character";
  iconv(handle, nullptr, nullptr, &to, &room);  // back to ASCII
  iconv_close(handle);
  out.resize(out.size() - room);
  return out;
}

TEST(TextDecoding, TellsCharacterSetsByTheLanguage) {
  const struct {
    const char* text;
    std::vector<const char*> charsets;
  } cases[] = {
      {"Größe für München: Schöne Grüße aus Köln, Jürgen", {"ISO-8859-1", "WINDOWS-1252"}},
      {"L'été dernier, la forêt était très belle et le café délicieux", {"ISO-8859-1"}},
      {"Proszę sprawdzić załączoną fakturę i odpowiedzieć do końca września. Dziękuję, Łódź.",
       {"ISO-8859-2", "WINDOWS-1250"}},
      {"Счёт за прошлый месяц прилагается. Пожалуйста, проверьте его до пятницы.",
       {"WINDOWS-1251", "KOI8-R", "ISO-8859-5"}},
      {"Παρακαλώ ελέγξτε το τιμολόγιο μέχρι την Παρασκευή. Ευχαριστώ πολύ, καλημέρα.",
       {"ISO-8859-7", "WINDOWS-1253"}},
      {"נא לבדוק את החשבונית עד יום שישי. תודה רבה ושבת שלום לכולם בירושלים.",
       {"ISO-8859-8", "WINDOWS-1255"}},
      {"يرجى مراجعة الفاتورة حتى يوم الجمعة. شكرا جزيلا والسلام عليكم من القاهرة.",
       {"ISO-8859-6", "WINDOWS-1256"}},
      {"Lütfen faturayı cuma gününe kadar kontrol edin. Teşekkür ederim, hoşça kalın.",
       {"ISO-8859-9", "WINDOWS-1254"}},
      {"金曜日までに請求書を確認してください。よろしくお願いします。",
       {"SHIFT_JIS", "EUC-JP", "ISO-2022-JP"}},
      {"请在星期五之前检查发票。非常感谢,来自北京的问候。", {"GB2312", "GBK", "GB18030"}},
      {"請在星期五之前檢查發票。非常感謝,來自台北的問候。", {"BIG5"}},
      {"금요일까지 송장을 확인해 주세요. 대단히 감사합니다.", {"EUC-KR", "UHC", "ISO-2022-KR"}},
  };
  for (const auto& c : cases) {
    for (const char* const charset : c.charsets) {
      SCOPED_TRACE(charset);
      EXPECT_EQ(decodePlainText(inCharset(c.text, charset)), c.text);
    }
  }
}

TEST(TextDecoding, TakesShortWordsForWesternOnes) {
  for (const char* const text :
       {"Größe", "Jürgen Müller", "Björk Guðmundsdóttir", "Käse", "São Paulo", "Måneskin", "ßß",
        "öö üü ää", "ÄÖÜ", "éèêëàâçîïôûù", "Köln;Düsseldorf;München", "naïve café résumé",
        "int größe = 5; // Länge der Tür"}) {
    EXPECT_EQ(decodePlainText(inCharset(text, "ISO-8859-1")), text);
  }
}

TEST(TextDecoding, LeavesTerminalSequencesInUtf8Alone) {
  const std::string text = "\x1B$x\x1B[0m größer als je zuvor, und ohne ein anderes Zeichen";
  EXPECT_EQ(decodePlainText(text), text);
}

}  // namespace
}  // namespace vt
