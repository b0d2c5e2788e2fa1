#include "program/runner/ProjectFile.h"

#include "tests/runner/TestActions.h"
#include "tests/support/Failure.h"

#include <gmock/gmock.h>

namespace kx::tests {
namespace {

std::string Wrapped(std::string_view action) {
  return "<BuildProject>\n<Actions>\n<Action Type=\"STEP\">\n" + std::string(action) +
         "\n</Action></Actions></BuildProject>";
}

std::string In(const std::string& element, std::string_view content) {
  return "<BuildProject><" + element + ">\n" + std::string(content) + "</" + element + "></BuildProject>";
}

std::string InLoop(std::string_view content) {
  return In("Actions", "<Action Type=\"LOOP\"><Actions>\n" + std::string(content) + "</Actions></Action>");
}

// Each attribute as it is read, and as an action that is added is written with it.
TEST(ProjectFile, ReadsAndWritesHowActionsAreRun) {
  TEmbeddedHost host;
  const std::string terms = "Needs=\"A,B\" Condition=\"%x% &lt; 3\" Retries=\"100\" TimeLimit=\"8784h\" "
                            "IdleLimit=\"90s\" Parallel=\"true\"";
  TProjectFile(host.Project())
      .LoadBytes(In("Actions",
                    "<Action Type=\"LOOP\" Needs=\" A , B,\" Condition=\"%x% &lt; 3\" Retries=\" 100\" "
                    "TimeLimit=\"31622400\" IdleLimit=\" 90s \" Parallel=\"yes\"/>\n"
                    "<Group Name=\"G\" Needs=\"\"><Action Type=\"STEP\" Needs=\"\" Retries=\"0\"/></Group>"),
                 host.Path("a.kxproj"));
  const auto& actions = host.Project().Actions();
  ASSERT_EQ(actions.size(), 2U);
  EXPECT_EQ(actions[1]->Group()->Name, u"G");
  EXPECT_TRUE(actions[1]->Terms().Needs && actions[1]->Terms().Needs->empty() && actions[1]->Group()->Needs);
  TEmbeddedHost other;
  TProjectFile empty(other.Project());
  empty.LoadBytes(In("Actions", ""), other.Path("b.kxproj"));
  other.Project().AddAction(u"LOOP").SetTerms(actions[0]->Terms());
  EXPECT_THAT(empty.Text(), testing::HasSubstr("<Action Type=\"LOOP\" " + terms + "/>"));
}

TEST(ProjectFile, SaysWhatIsWrongAndWhere) {
  const std::pair<std::string, std::string> cases[] = {
      {"", "(1): The file is empty."},
      {{"<a>\n\0", 5}, "(2): The file holds a null character."},
      {"<Project/>", "(1): Not a build project: expected <BuildProject>, not <Project>."},
      {"<BuildProject><Rules/>\n<Rules/></BuildProject>", "(2): <Rules> stands twice in <BuildProject>."},
      {In("Variables", "<Variable Name=\"a\"/>\n<Variable Name=\"A\"/>"),
       "(3): The variable \"A\" stands twice."},
      {In("PropertySets",
          "<PropertySet Name=\"S\" Kind=\"Win32\"><Value Name=\"a\"/>\n<Value Name=\"A\"/></PropertySet>"),
       "(3): The value \"A\" stands twice."},
      {"<BuildProject>\n<Gates FailOn=\"x\"/></BuildProject>",
       "(2): A gate is never, error, warning or new-warning"},
      {In("Actions", "<Action Type=\"STEP\" Retries=\"101\"/>"), "(2): Retries takes a number from 0 to 100"},
      {"<BuildProject>\n</Wrong>", "(2): Opening and ending tag mismatch"},
      {"<!DOCTYPE a [<!ENTITY x \"y\">]>\n<BuildProject/>",
       "(1): A document type declaration is not allowed."},
      {"<?xml version=\"1.0\" encoding=\"iso-8859-1\"?><a/>", "(1): The file must be in UTF-8, not in"},
      {"<BuildProject>\n<!-- \xE9 --></BuildProject>", "(2): The file must be in UTF-8; this line is not."},
      {"<BuildProject>\n<Action/></BuildProject>",
       "(2): Unknown element <Action> in <BuildProject>. Did you mean \"Actions\"?"},
      {In("Variables", "<Variable Name=\"a b\"/>"), "(2): The variable name \"a b\" may hold only"},
      {In("Actions", "<Action Type=\"STP\"/>"), "(2): Unknown action type \"STP\". Did you mean \"STEP\"?"},
      {In("Actions", "<Action Type=\"STEP\" ContinueOnError=\"ja\"/>"),
       "(2): ContinueOnError takes true, false or ignore, not \"ja\"."},
      {In("Rules", "<Rule Name=\"nothing-buildt\">off</Rule>"),
       "(2): There is no rule \"nothing-buildt\". Did you mean \"nothing-built\"?"},
      {In("Rules", "<Rule Name=\"no-tests\">of</Rule>"),
       "(2): The rule \"no-tests\" takes error, warning or off, not \"of\". Did you mean \"off\"?"},
      {In("Rules", "<Rule Name=\"no-tests\">off</Rule>\n<Rule Name=\"No-Tests\">off</Rule>"),
       "(3): The rule"},
      {Wrapped("<Numbr>1</Numbr>"),
       "(4): The action STEP has no property \"Numbr\". Did you mean \"Number\"?"},
      {Wrapped("<Number>1</Number>\n<number>2</number>"), "(5): <number> stands twice in <Action>."},
      {Wrapped("<Number>1x</Number>"), "(4): Number takes a number, not \"1x\"."},
      {In("Actions", "<Group>\n</Group>"), "(2): <Group> has no Name."},
      {In("Actions", "<Group Name=\"a\">\n<Group Name=\"b\"/></Group>"),
       "(3): A <Group> holds actions; another <Group> cannot stand in it."},
      {InLoop("<Group Name=\"a\"/>"), "(3): A <Group> stands in the outermost <Actions>, not in a loop."},
      {InLoop("<Action Type=\"STEP\" Needs=\"a\"/>"), "(3): Needs has no meaning inside a loop"},
      {In("Actions", "<Action Type=\"STEP\" Parallel=\"true\"/>"),
       "(2): Parallel is for loops, and the action STEP is none."},
      {In("Actions", "<Action Type=\"STEP\" Retries=\"-1\"/>"),
       "(2): Retries takes a number from 0 to 100, not \"-1\"."},
      {In("Actions", "<Action Type=\"STEP\" IdleLimit=\"-1h\"/>"),
       "(2): IdleLimit takes a time of up to a year, such as 90s, 30m or 2h, not \"-1h\"."},
      {In("Actions", "<Action Type=\"STEP\" TimeLimit=\"8785h\"/>"),
       "(2): TimeLimit takes a time of up to a year"},
      {In("Actions", "<Action Type=\"STEP\" Nam=\"x\"/>"),
       "(2): Unknown attribute \"Nam\" of <Action>. Did you mean \"Name\"?"},
      {In("Actions", "x"), "(1): Unexpected text in <Actions>: \"x\""},
      {In("Variables", "<Variable Name=\"a\">x<b/></Variable>"),
       "(2): <Variable> holds text; the element <b>"},
      {Wrapped("<Number><b/></Number>"), "(4): <Number> holds text; the element <b>"},
      {In("PropertySets", "<PropertySet Name=\"S\" Kind=\"x\"/>"),
       "(2): The kind of a property set is Win32 or DotNet, not \"x\"."},
      {In("PropertySets",
          "<PropertySet Name=\"S\" Kind=\"Win32\"/>\n<PropertySet Name=\"s\" Kind=\"DotNet\"/>"),
       "(3): The property set \"s\" stands twice."},
      {In("Actions", "<Action Type=\"STEP\">\n<Actions/></Action>"),
       "(3): The action STEP is no loop and cannot hold actions."},
      {Wrapped("<Colour Name=\"Red\">1</Colour>"),
       "(4): Colour says \"Red\" and \"1\", which are not the same."},
      {Wrapped("<Colour>Pink</Colour>"), "(4): Colour takes one of Red, Green, Blue, not \"Pink\"."},
  };
  for (const auto& row : cases) {
    TEmbeddedHost host;
    EXPECT_THAT(FailureOf([&] { TProjectFile(host.Project()).LoadBytes(row.first, u"/p/bad.kxproj"); }),
                testing::StartsWith("/p/bad.kxproj" + row.second));
  }
}

TEST(ProjectFile, HoldsNothingThatItDoesNotKnow) {
  const std::string whole =
      "<BuildProject Name=''><Variables><Variable "
      "Name='V'>x</Variable></Variables><PropertySets><PropertySet Name='S' "
      "Kind='DotNet'><Value Name='N'>1</Value></PropertySet></PropertySets><Rules><Rule "
      "Name='no-tests'>off</Rule></Rules>"
      "<Gates></Gates><Actions><Group Name='G'><Action "
      "Type='STEP'><Text>t</Text><Colour>Red</Colour><Lines><Line>l</Line>"
      "</Lines></Action></Group><Action Type='LOOP'><Actions><Action "
      "Type='STEP'></Action></Actions></Action></Actions>"
      "</BuildProject>";
  const auto failure = [&whole](std::size_t at, std::string_view inserted) {
    TEmbeddedHost host;
    return FailureOf(
        [&] { TProjectFile(host.Project()).LoadBytes(std::string(whole).insert(at, inserted), u"p"); });
  };
  EXPECT_EQ(failure(0, ""), "");
  for (std::size_t at = whole.find('<'); at != whole.npos; at = whole.find('<', at + 1)) {
    if (whole[at + 1] == '/') continue;
    const std::size_t end = whole.find('>', at), behind = whole.find_first_of(" >", at);
    const std::string tag = whole.substr(at, behind - at) + ">";
    EXPECT_THAT(failure(behind, " Odd=''"), testing::HasSubstr("Unknown attribute \"Odd\" of " + tag));
    EXPECT_THAT(failure(end + 1, "<Odd/>"), testing::HasSubstr("Odd")) << tag;
    if (whole[end + 1] == '<') {
      EXPECT_THAT(failure(end + 1, "odd"), testing::HasSubstr("Unexpected text in " + tag));
    }
  }
}

} // namespace
} // namespace kx::tests
