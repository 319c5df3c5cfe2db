#include "extraction/documents/DocumentExtractors.h"

#include <gmock/gmock.h>

#include <chrono>

#include "extraction/BoundedText.h"
#include "extraction/documents/DocumentSamples.h"
#include "extraction/documents/ExtractedHere.h"
#include "extraction/documents/ZipPackage.h"
#include "metadata/query/AttributeSchema.h"
#include "support/Places.h"

namespace vt {
namespace {

using testing::HasSubstr;
using testing::Not;
using Kind = ExtractionFailure::Kind;

class DocumentExtractorsTest : public testing::Test {
 protected:
  Extraction found(const std::string& name, std::string_view bytes) const {
    auto result = extract_(name, bytes);
    if (!result) ADD_FAILURE() << name << ": " << result.error().reason;
    return result ? *result : Extraction();
  }
  Extraction foundInSample(const std::string& name) const {
    return found(name, documentSample(name));
  }
  std::optional<ExtractionFailure::Kind> failure(const std::string& name,
                                                 std::string_view bytes) const {
    const auto result = extract_(name, bytes);
    return result ? std::nullopt : std::optional(result.error().kind);
  }

  const ExtractedHere extract_;
};

TEST_F(DocumentExtractorsTest, FindTextTitleAndAuthorInEachFormat) {
  for (const DocumentSample& sample : documentSamples()) {
    SCOPED_TRACE(sample.name);
    const Extraction extraction = found(sample.name, sample.bytes);
    EXPECT_THAT(extraction.text.value_or("none"), HasSubstr(kSampleText));
    EXPECT_EQ(attributeText(extraction, "kMDItemTitle"), kSampleTitle);
    if (sample.name == "a.xml") continue;  // which has no place for an author
    EXPECT_THAT(attributeText(extraction, "kMDItemAuthors"), HasSubstr("Ada Lovelace"));
  }
}

TEST_F(DocumentExtractorsTest, GiveValuesOfTheTypesOfTheSchema) {
  const auto schema = query::AttributeSchema::parse(readFile(resourcePath("attributes.tsv")));
  ASSERT_TRUE(schema);
  for (const DocumentSample& sample : documentSamples()) {
    for (const auto& [name, value] : foundInSample(sample.name).attributes) {
      SCOPED_TRACE(sample.name + " " + name);
      const query::Attribute* attribute = schema->find(name);
      ASSERT_TRUE(attribute);
      EXPECT_EQ(attribute->isMultiValued, value.array() != nullptr);
      const Value& one = value.array() ? value.array()->at(0) : value;
      EXPECT_EQ(attribute->type == query::AttributeType::kNumber, one.isNumber());
      EXPECT_EQ(attribute->type == query::AttributeType::kDate, one.kind() == ValueKind::kDate);
    }
  }
}

TEST_F(DocumentExtractorsTest, FindWhatDocumentsSayOfThemselves) {
  struct Case {
    const char* name;
    const char* attribute;
    const char* value;
  };
  const Case cases[] = {
      {"a.html", "kMDItemKeywords", "north | light"},
      {"a.html", "kMDItemDescription", "For the board"},
      {"a.html", "kMDItemLanguages", "en"},
      {"a.pdf", "kMDItemNumberOfPages", "1"},
      {"a.pdf", "kMDItemPageWidth", "300"},
      {"a.pdf", "kMDItemPageHeight", "200"},
      {"a.pdf", "kMDItemVersion", "1.4"},
      {"a.pdf", "kMDItemCreator", "Some Writer"},
      {"a.pdf", "kMDItemEncodingApplications", "Some Printer"},
      {"a.pdf", "kMDItemKeywords", "north | light"},
      {"a.pdf", "kMDItemSecurityMethod", "None"},
      {"a.docx", "kMDItemAuthors", "Ada Lovelace | Grace Hopper"},
      {"a.docx", "kMDItemSubject", "Money"},
      {"a.docx", "kMDItemKeywords", "north | light"},
      {"a.docx", "kMDItemDescription", "For the board"},
      {"a.docx", "kMDItemEditors", "Ben"},
      {"a.docx", "kMDItemLanguages", "en-GB"},
      {"a.docx", "kMDItemCreator", "Some Writer"},
      {"a.docx", "kMDItemNumberOfPages", "12"},
      {"a.docx", "kMDItemOrganizations", "Observatory"},
      {"a.docx", "kMDItemContentCreationDate", "1709296200"},
      {"a.docx", "kMDItemSecurityMethod", "None"},
      {"a.pptx", "kMDItemNumberOfPages", "7"},
      {"a.odt", "kMDItemAuthors", "Ada Lovelace"},
      {"a.odt", "kMDItemEditors", "Ben"},
      {"a.odt", "kMDItemKeywords", "north | light"},
      {"a.odt", "kMDItemCreator", "Some Office"},
      {"a.odt", "kMDItemNumberOfPages", "3"},
      {"a.fodt", "kMDItemNumberOfPages", "3"},
      {"a.epub", "kMDItemLanguages", "en"},
      {"a.epub", "kMDItemKeywords", "Sky"},
      {"a.epub", "kMDItemPublishers", "Press"},
      {"a.rtf", "kMDItemKeywords", "north | light"},
      {"a.rtf", "kMDItemNumberOfPages", "2"},
      {"a.rtf", "kMDItemCreator", "Some Writer"},
      {"a.rtf", "kMDItemContentCreationDate", "1709296200"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.name) + " " + c.attribute);
    EXPECT_EQ(attributeText(foundInSample(c.name), c.attribute), c.value);
  }
}

TEST_F(DocumentExtractorsTest, LeaveOutWhatPeopleDoNotRead) {
  struct Case {
    const char* name;
    std::vector<const char*> absent;
  };
  const Case cases[] = {
      {"a.html", {"color", "hidden"}},
      {"a.docx", {"PAGEREF", "Heading"}},
      {"a.xlsx", {"phonetic", " 0"}},
      {"a.odt", {"deleted", "Ben"}},
      {"a.epub", {"color"}},
      {"a.rtf", {"hidden", "secret", "Times", "Some Writer", "Annual"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    for (const char* absent : c.absent) {
      EXPECT_THAT(*foundInSample(c.name).text, Not(HasSubstr(absent)));
    }
  }
}

TEST_F(DocumentExtractorsTest, FindEveryPartOfOfficeDocuments) {
  EXPECT_EQ(*foundInSample("a.docx").text, "Budget of the northern lights\nsecond line\na note");
  EXPECT_EQ(*foundInSample("a.xlsx").text,
            "Costs\nBudget of the northern lights\n4711 computed inline");
  EXPECT_EQ(*foundInSample("a.pptx").text, "Budget of the northern lights\nspoken words");
}

TEST_F(DocumentExtractorsTest, SayWhatIsEncrypted) {
  const std::string office = std::string(kCompoundFileMagic) + std::string(4096, '\0');
  const std::string odt = zipOf({{"content.xml", "\x01\x02 no XML"},
                                 {"META-INF/manifest.xml",
                                  "<manifest><file-entry><encryption-data/></file-entry>"
                                  "</manifest>"}});
  const std::string keys = std::string(32, 'A');
  const std::string pdf =
      pdfOf("secret", "",
            "/Encrypt << /Filter /Standard /V 1 /R 2 /P -4 /O (" + keys + ") /U (" + keys +
                ") >> /ID [(0123456789abcdef) (0123456789abcdef)]");
  const std::pair<const char*, std::string> cases[] = {
      {"a.docx", office}, {"a.odt", odt}, {"a.pdf", pdf}};
  for (const auto& [name, bytes] : cases) {
    SCOPED_TRACE(name);
    const Extraction extraction = found(name, bytes);
    EXPECT_EQ(attributeText(extraction, "kMDItemSecurityMethod"), "Password Encrypted");
    EXPECT_EQ(extraction.text, std::nullopt);
  }
}

TEST_F(DocumentExtractorsTest, RefuseWhatIsNotOfItsType) {
  for (const char* name : {"a.pdf", "a.docx", "a.odt", "a.epub", "a.rtf", "a.xml", "a.webloc"}) {
    SCOPED_TRACE(name);
    EXPECT_EQ(failure(name, "some words"), Kind::kMalformed);
    EXPECT_EQ(failure(name, ""), Kind::kMalformed);
    EXPECT_EQ(failure(name, std::string(5000, '\0')), Kind::kMalformed);
  }
  const std::string zip = zipOf({{"something.txt", "else"}});
  for (const char* name : {"a.docx", "a.odt", "a.epub"}) {
    SCOPED_TRACE(name);
    EXPECT_EQ(failure(name, zip), Kind::kMalformed);
  }
}

TEST_F(DocumentExtractorsTest, RefusePackagesOfTooManyParts) {
  const ZipEntries entries(ZipPackage::kMostEntries + 1, {"word/document.xml", "<a/>"});
  EXPECT_EQ(failure("a.docx", zipOf(entries)), Kind::kTooLarge);
}

TEST_F(DocumentExtractorsTest, KeepNoMoreTextThanABound) {
  std::string words;
  while (words.size() < kMostExtractedText) words += "<w:t>many words </w:t>";
  const std::string docx =
      zipOf({{"word/document.xml", "<w:d xmlns:w='w'>" + words + words + words + "</w:d>"},
             {"docProps/core.xml", "<c><title>Long</title></c>"}});
  const Extraction extraction = found("a.docx", docx);
  EXPECT_LE(extraction.text->size(), kMostExtractedText);
  EXPECT_GT(extraction.text->size(), kMostExtractedText - 100);
  EXPECT_EQ(attributeText(extraction, "kMDItemTitle"), "Long") << "which comes behind the text";
}

TEST_F(DocumentExtractorsTest, UnfoldNoEntitiesWithoutEnd) {
  std::string bomb = "<!DOCTYPE a [<!ENTITY e0 'boom boom boom'>";
  for (int i = 1; i < 12; ++i) {
    bomb += "<!ENTITY e" + std::to_string(i) + " '";
    for (int j = 0; j < 10; ++j) bomb += "&e" + std::to_string(i - 1) + ";";
    bomb += "'>";
  }
  bomb += "]><a>&e11;</a>";
  const Extraction extraction = found("a.xml", bomb);
  EXPECT_LE(extraction.text->size(), kMostExtractedText);
  const auto document = extract_("a.docx", zipOf({{"word/document.xml", bomb}}));
  ASSERT_TRUE(document);
  EXPECT_LE(document->text->size(), kMostExtractedText);
}

TEST_F(DocumentExtractorsTest, ReadNoFileThatADocumentNames) {
  const TemporaryFolder folder;
  writeFile(folder / "secret", "secret words");
  const std::string xml = "<!DOCTYPE a [<!ENTITY e SYSTEM 'file://" + (folder / "secret") +
                          "'>]><a>before &e; after</a>";
  EXPECT_EQ(*found("a.xml", xml).text, "before  after");
}

TEST_F(DocumentExtractorsTest, EndureDeepNesting) {
  constexpr int kDepth = 20'000;
  std::string html;
  std::string xml;
  std::string rtf = "{\\rtf1 ";
  for (int i = 0; i < kDepth; ++i) {
    html += "<i>";
    xml += "<a>";
    rtf += "{";
  }
  EXPECT_EQ(*found("a.html", html + "deep").text, "deep");
  EXPECT_THAT(*found("a.xml", xml + "deep").text, HasSubstr("deep"));
  EXPECT_EQ(*found("a.rtf", "{\\rtf1 shallow " + rtf.substr(7) + "deep").text, "shallow deep");
}

TEST_F(DocumentExtractorsTest, FindAttributesOfXMLThatPeopleRead) {
  EXPECT_EQ(*found("a.opml",
                   "<opml><outline id='x1' text='milk'><outline text='eggs' "
                   "title='six'/></outline></opml>")
                 .text,
            "milk eggs six");
}

TEST_F(DocumentExtractorsTest, TakeXMLThatIsNoneAsText) {
  EXPECT_THAT(*found("a.xml", "<p>words & <br> more").text, HasSubstr("words & <br> more"));
}

TEST_F(DocumentExtractorsTest, ReadTheAddressOfLinks) {
  const std::string plist =
      "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>URL</key>"
      "<string>https://example.org/page</string></dict></plist>";
  EXPECT_EQ(attributeText(found("a.webloc", plist), "kMDItemURL"), "https://example.org/page");
  EXPECT_EQ(attributeText(found("a.url", "[InternetShortcut]\r\nURL=https://example.org/\r\n"),
                          "kMDItemURL"),
            "https://example.org/");
}

}  // namespace
}  // namespace vt
