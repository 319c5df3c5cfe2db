#include "extraction/media/MailExtractor.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include "extraction/media/Extracted.h"
#include "extraction/media/Samples.h"
#include "support/ReadFile.h"
#include "support/TemporaryFolder.h"

namespace vt {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

class MailExtractorTest : public testing::Test {
 protected:
  std::string at(std::string_view name) const { return folder_ / name; }
  std::string written(std::string_view name, const std::string& bytes) const {
    writeFile(at(name), bytes);
    return at(name);
  }

 private:
  TemporaryFolder folder_;
};

constexpr const char* kWords =
    "Der Text mit \xc3\xbc"
    "ber\n"
    "Angebot M\xc3\xa4rz.pdf\n"
    "Inner subject\nInner\ninner@example.org\n"
    "\xd0\xbc\xd0\xb8\xd1\x80 inner words\n";

TEST_F(MailExtractorTest, TellsWhoWroteWhatToWhom) {
  EXPECT_THAT(
      attributesIn(written("mail.eml", message())),
      ElementsAre("kMDItemAuthorAddresses ['jurgen@example.org']",
                  "kMDItemAuthorEmailAddresses ['jurgen@example.org']", "kMDItemAuthors ['Jürgen']",
                  "kMDItemContentCreationDate 2024-05-01T08:20:30.000000Z",
                  "kMDItemCreator 'Mailer 1'", "kMDItemIdentifier '1@example.org'",
                  "kMDItemIsLikelyJunk no", "kMDItemKeywords ['one', 'two']",
                  "kMDItemRecipientAddresses ['anna@example.org', 'bob@example.org', "
                  "'carl@example.org', 'dora@example.org']",
                  "kMDItemRecipientEmailAddresses ['anna@example.org', "
                  "'bob@example.org', 'carl@example.org', 'dora@example.org']",
                  "kMDItemRecipients ['Anna', 'Bob, B.', 'carl@example.org', "
                  "'dora@example.org']",
                  "kMDItemSubject 'Grüße aus Berlin'", "kMDItemTitle 'Grüße aus Berlin'"));
}

TEST_F(MailExtractorTest, TakesPlainTextRatherThanHTMLAndTheNamesOfAttachments) {
  EXPECT_EQ(textIn(written("mail.eml", message())), kWords);
}

TEST_F(MailExtractorTest, HandsHTMLOverWhereThereIsNothingElse) {
  EXPECT_EQ(textIn(written("mail.eml", "From: a@b.c\nContent-Type: text/html\n\n<p>only")),
            "<<p>only>\n");
}

TEST_F(MailExtractorTest, ReadsTextInWhateverCharset) {
  struct Case {
    const char* charset;
    const char* bytes;
    const char* text;
  };
  const Case cases[] = {
      {"utf-8", "\xc3\xbc", "\xc3\xbc"},
      {"iso-8859-1", "\xfc", "\xc3\xbc"},
      {"us-ascii", "\xe9t\xe9", "\xc3\xa9t\xc3\xa9"},
      {"us-ascii", "\xfc", "\xc3\xbc"},
      {"windows-1252", "\x80", "\xe2\x82\xac"},
      {"shift_jis", "\x93\xfa", "\xe6\x97\xa5"},
      {"no-such-charset", "\xfc", "\xc3\xbc"},
      {"\"\"", "\xc3\xbc", "\xc3\xbc"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.charset);
    const std::string path = written(
        "mail.eml",
        fmt::format("From: a@b.c\nContent-Type: text/plain; charset={}\n\n{}", c.charset, c.bytes));
    EXPECT_EQ(textIn(path), c.text + std::string("\n"));
  }
}

TEST_F(MailExtractorTest, ReadsAMailboxAsText) {
  const std::string mailbox =
      "From x Wed May  1 10:20:30 2024\nFrom: Ann <a@b.c>\nSubject: first\n\nbody one\n\n"
      "From y Wed May  1 10:20:30 2024\nFrom: d@e.f\nTo: g@h.i\nSubject: second\n\nbody two\n";
  const std::string path = written("box.mbox", mailbox);
  EXPECT_EQ(textIn(path), "first\nAnn\na@b.c\nbody one\n\nsecond\nd@e.f\ng@h.i\nbody two\n\n");
  EXPECT_TRUE(attributesIn(path).empty());
}

TEST_F(MailExtractorTest, ReadsNoFurtherThanTheCountAtTheBeginning) {
  const std::string path =
      written("mail.emlx", fmt::format("{:<11}\n{}<?xml?><plist/>\n", message().size(), message()));
  EXPECT_EQ(textIn(path), kWords);
  EXPECT_THAT(attributesIn(written("bad.emlx", message())),
              ElementsAre("it does not begin with a count"));
}

TEST_F(MailExtractorTest, FailsWhereThereIsNoMessage) {
  EXPECT_THAT(attributesIn(written("none.eml", "not a mail")), ElementsAre("it holds no message"));
  EXPECT_THAT(attributesIn(written("none.eml", "")), ElementsAre("it holds no message"));
  EXPECT_THAT(attributesIn(written("none.mbox", "")), ElementsAre("it holds no message"));
}

TEST_F(MailExtractorTest, ComesToAnEndWithPartsThatLieDeepInEachOther) {
  std::string mail = "From: a@b.c\n";
  for (int i = 0; i < 5000; ++i) {
    mail += fmt::format("Content-Type: multipart/mixed; boundary=b{}\n\n--b{}\n", i, i);
  }
  mail += "Content-Type: text/plain\n\ndeep\n";
  const std::string path = written("deep.eml", mail);
  EXPECT_EQ(outcomeOfMangled(path, 400), "");
}

TEST_F(MailExtractorTest, BoundsItsText) {
  std::string mail = "From: a@b.c\nContent-Type: multipart/mixed; boundary=b\n\n";
  const std::string words(1 << 20, 'x');
  for (int i = 0; i < 20; ++i) mail += "--b\nContent-Type: text/plain\n\n" + words + "\n";
  EXPECT_EQ(textIn(written("long.eml", mail)).size(), std::size_t{16} << 20);
}

TEST_F(MailExtractorTest, ComesToAnEndWithDamagedMail) {
  EXPECT_EQ(outcomeOfMangled(written("damage.eml", message()), 401), "");
  EXPECT_EQ(outcomeOfMangled(
                written("damage.mbox", "From x Wed May  1 10:20:30 2024\n" + message()), 402),
            "");
}

}  // namespace
}  // namespace vt
