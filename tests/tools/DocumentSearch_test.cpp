#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "extraction/documents/DocumentSamples.h"
#include "support/Places.h"
#include "tools/CommandTest.h"

namespace vt {
namespace {

using testing::AllOf;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

/// Searches for what is in documents, from the index of them.
class DocumentSearch : public CommandTest {
 protected:
  void addSamples() const {
    for (const DocumentSample& sample : documentSamples()) {
      write(tree_ / sample.name, sample.bytes);
    }
  }
  ProgramResult index() const { return vistaro({"index", "--once", tree_.path()}); }
  ProgramResult status() const { return vistaro({"index", "--status"}); }
  std::string found(const std::vector<std::string>& words) const { return search(words).output; }

  /// Runs the command as on a machine that lacks what walls are made of.
  ProgramResult vistaroWithoutWalls(const std::vector<std::string>& arguments) const {
    std::vector<std::string> command = {testProgram("without_walls"), "namespaces", "landlock",
                                        "--", builtProgram("vistaro")};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return runProgram(command, environment());
  }
};

TEST_F(DocumentSearch, FindsWordsInsideEveryFormat) {
  addSamples();
  const ProgramResult indexed = index();
  EXPECT_EQ(indexed.exitCode, 0) << indexed.errors;
  EXPECT_THAT(indexed.output, Not(HasSubstr("in vain")));
  const std::string hits = found({"northern lights"});
  for (const DocumentSample& sample : documentSamples()) {
    EXPECT_THAT(hits, HasSubstr(tree_ / sample.name));
  }
  EXPECT_THAT(found({"southern"}), HasSubstr("0 files"));
}

TEST_F(DocumentSearch, FindsWhatDocumentsSayOfThemselves) {
  addSamples();
  ASSERT_EQ(index().exitCode, 0);
  const std::string byAuthor = found({"--raw", "kMDItemAuthors == \"Ada Lovelace\""});
  for (const char* name : {"a.docx", "a.pdf", "a.html", "a.odt", "a.epub", "a.rtf"}) {
    EXPECT_THAT(byAuthor, HasSubstr(tree_ / name));
  }
  EXPECT_THAT(found({"--raw", "kMDItemNumberOfPages > 10"}),
              AllOf(HasSubstr("a.docx"), Not(HasSubstr("a.pdf"))));
  EXPECT_THAT(
      found({"--raw", "kMDItemTitle == \"annual*\"c && kMDItemContentType == com.adobe.pdf"}),
      HasSubstr("a.pdf"));
}

TEST_F(DocumentSearch, ShowsNothingOfWhatAUserMayNotRead) {
  if (!canRunAs(2001)) GTEST_SKIP() << "only root can search on behalf of others";
  addSamples();
  for (const DocumentSample& sample : documentSamples()) {
    const std::string path = tree_ / sample.name;
    ASSERT_EQ(chown(path.c_str(), 2001, 2001), 0);
    ASSERT_EQ(chmod(path.c_str(), 0600), 0);
  }
  ASSERT_EQ(index().exitCode, 0);
  for (const std::string query :
       {"kMDItemTextContent == northern", "kMDItemAuthors == \"Ada Lovelace\"",
        "kMDItemTitle == \"Annual Report\""}) {
    SCOPED_TRACE(query);
    EXPECT_THAT(found({"--user", "ann", "--raw", query}), HasSubstr("a.docx"));
    EXPECT_THAT(found({"--user", "ben", "--raw", query}), HasSubstr("0 files"));
  }
}

TEST_F(DocumentSearch, TellsWhyNothingWasFoundInAFile) {
  write(tree_ / "broken.docx", "no archive");
  const ProgramResult indexed = index();
  EXPECT_EQ(indexed.exitCode, 0);
  EXPECT_THAT(indexed.output, HasSubstr("1 files looked into in"));
  EXPECT_THAT(indexed.output, HasSubstr("1 of them in vain"));
  EXPECT_THAT(status().output, HasSubstr(tree_ / "broken.docx" + ": it is no ZIP archive\n"));
  EXPECT_THAT(index().output, Not(HasSubstr("looked into"))) << "not before it has changed";
}

TEST_F(DocumentSearch, LooksIntoDocumentsOnceThereAreWalls) {
  write(tree_ / "a.pdf", documentSample("a.pdf"));
  write(tree_ / "a.txt", "northern words");
  const ProgramResult indexed = vistaroWithoutWalls({"index", "--once", tree_.path()});
  EXPECT_EQ(indexed.exitCode, 0) << indexed.errors;
  EXPECT_THAT(found({"northern"}), AllOf(HasSubstr("a.txt"), Not(HasSubstr("a.pdf"))));
  EXPECT_THAT(status().output, ContainsRegex("a.pdf: files of its sort are only looked into behind "
                                             "walls, which could not be raised\n"));
  EXPECT_THAT(index().output, HasSubstr("1 files looked into"));
  EXPECT_THAT(found({"northern"}), AllOf(HasSubstr("a.txt"), HasSubstr("a.pdf")));
}

TEST_F(DocumentSearch, IsDoctoredByTellingOfWalls) {
  EXPECT_THAT(vistaro({"doctor"}).output,
              ContainsRegex("ok     documents are looked into behind (bubblewrap, )?(Landlock, "
                            ")?seccomp\n"));
  EXPECT_THAT(vistaroWithoutWalls({"doctor"}).output,
              HasSubstr("note   documents: files cannot be looked into behind walls here: only the "
                        "words of plain text are indexed\n"));
}

}  // namespace
}  // namespace vt
