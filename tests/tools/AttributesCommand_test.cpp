#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "support/Places.h"
#include "tools/CommandTest.h"

namespace vt {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

class AttributesCommand : public CommandTest {
 protected:
  ProgramResult inLanguage(const std::string& language, std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), builtProgram("vistaro"));
    std::map<std::string, std::string> variables = environment();
    variables["LC_ALL"] = language;
    return runProgram(arguments, variables);
  }
  static std::vector<std::string> namesIn(const ProgramResult& result) {
    std::vector<std::string> names;
    const json report = json::parse(result.output);
    for (const json& attribute : report["attributes"]) {
      names.push_back(attribute["name"]);
    }
    return names;
  }
};

TEST_F(AttributesCommand, ListsEveryAttributeWithItsNames) {
  const ProgramResult result = vistaro({"attributes"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(std::ranges::count(result.output, '\n'), 167);
  EXPECT_THAT(result.output, StartsWith("kMDItemFSName "));
  EXPECT_THAT(result.output, HasSubstr("\nkMDItemAuthors                     Authors               "
                                       "         author, from, by\n"));
  EXPECT_THAT(result.output, Not(HasSubstr(" \n")));
  EXPECT_THAT(result.errors, IsEmpty());
}

TEST_F(AttributesCommand, FindsTheAttributesOfAShortNameInAnyCase) {
  EXPECT_THAT(namesIn(vistaro({"attributes", "--short", "DATE", "--json"})),
              ElementsAre("kMDItemContentCreationDate", "kMDItemContentModificationDate",
                          "kMDItemLastUsedDate"));
  EXPECT_THAT(vistaro({"attributes", "--short", "author"}).output, StartsWith("kMDItemAuthors "));
  EXPECT_THAT(namesIn(vistaro({"attributes", "--short", "Logical Size", "--json"})),
              ElementsAre("kMDItemLogicalSize"));
}

TEST_F(AttributesCommand, SaysWhenNoAttributeGoesByAShortName) {
  const ProgramResult text = vistaro({"attributes", "--short", "no\nsuch"});
  EXPECT_EQ(text.exitCode, 1);
  EXPECT_THAT(text.output, IsEmpty());
  EXPECT_EQ(text.errors, "vistaro: no attribute goes by \"no\\x0asuch\"\n");
  const ProgramResult report = vistaro({"attributes", "--short", "", "--json"});
  EXPECT_EQ(report.exitCode, 1);
  EXPECT_THAT(namesIn(report), IsEmpty());
}

TEST_F(AttributesCommand, SpeaksTheLanguageOfTheProcess) {
  const ProgramResult german =
      inLanguage("de_AT.UTF-8", {"attributes", "--short", "AUTOR", "--json"});
  const json authors = json::parse(german.output)["attributes"][0];
  EXPECT_EQ(authors["displayName"], "Autoren");
  EXPECT_EQ(authors["shortNames"], json({"autor", "von", "author", "from", "by"}));
  EXPECT_THAT(namesIn(inLanguage("de_DE.UTF-8", {"attributes", "--short", "GRÖSSE", "--json"})),
              IsEmpty());
  EXPECT_THAT(namesIn(inLanguage("de_DE.UTF-8", {"attributes", "--short", "GRÖẞE", "--json"})),
              ElementsAre("kMDItemFSSize"));
  EXPECT_THAT(inLanguage("fr_FR.UTF-8", {"attributes"}).output, HasSubstr(" Authors "));
}

TEST_F(AttributesCommand, TakesShortNamesFromAMetadataBundleOfThisMachine) {
  const std::string resources =
      root_ /
      "System/Library/Frameworks/CoreServices.framework/Frameworks/Metadata.framework/"
      "Resources/English.lproj";
  std::filesystem::create_directories(resources);
  write(resources + "/schema.strings", "\"kMDItemKind.ShortName\" = \"kind,type\";");
  EXPECT_THAT(namesIn(vistaro({"attributes", "--short", "TYPE", "--json"})),
              ElementsAre("kMDItemKind"));
  EXPECT_EQ(vistaro({"attributes", "--short", "author"}).exitCode, 1);
  EXPECT_THAT(namesIn(vistaro({"attributes", "--short", "authors", "--json"})),
              ElementsAre("kMDItemAuthors"));
}

TEST_F(AttributesCommand, FailsWithoutTheTableOfAttributes) {
  std::map<std::string, std::string> variables = environment();
  variables["VISTARO_RESOURCES"] = tree_.path();
  const ProgramResult result = runProgram({builtProgram("vistaro"), "attributes"}, variables);
  EXPECT_EQ(result.exitCode, 3);
  EXPECT_THAT(result.errors, HasSubstr("the attributes could not be read"));
}

}  // namespace
}  // namespace vt
