#include "runner/ProjectFile.h"

#include "tests/runner/TestActions.h"

#include <gmock/gmock.h>

namespace kx::tests {
namespace {

using testing::HasSubstr;

std::string Wrapped(std::string_view action) {
  return "<BuildProject>\n<Actions>\n<Action Type=\"STEP\">\n" + std::string(action) +
         "\n</Action></Actions></BuildProject>";
}

TEST(ProjectFile, ReadsEverything) {
  TEmbeddedHost host;
  const auto file = host.Write("nightly.kxproj", R"(<?xml version="1.0" encoding="utf-8"?>
<!-- head --><BuildProject Name="Nightly">
  <Variables><Variable Name="Root">/src &amp; x</Variable><Variable Name="Empty"/></Variables>
  <PropertySets>
    <PropertySet Name="Rel" Kind="win32"><Value Name="Major">3</Value></PropertySet>
    <PropertySet Name="Net" Kind="DotNet"/>
  </PropertySets>
  <Actions>
    <Action Type="loop" Name="All"><LoopVariable>P</LoopVariable><Values>
        a
        b c
      </Values>
      <Actions><Action Type="STEP" ContinueOnError="yes"/></Actions>
    </Action>
    <Action Type="STEP" Name="One">
      <Text><![CDATA[a<b]]> &quot;
 two</Text><Number> 12 </Number><flag>TRUE</flag><Colour Name="Blue">2</Colour>
      <Lines><Line> a </Line><!-- c --><Line/></Lines><Part>p</Part>
    </Action>
    <Action Type="STEP"><Colour>red</Colour></Action><Action Type="STEP"><Colour Name="Blue"/></Action>
  </Actions>
</BuildProject>)");
  TProject& project = host.Project();
  TProjectFile(project).Load(file);

  EXPECT_EQ(project.Name, u"Nightly");
  EXPECT_EQ(project.Directory() + u"/nightly.kxproj", file);
  ASSERT_EQ(project.Variables.size(), 2U);
  EXPECT_EQ(project.Variables[0].Value, u"/src & x");
  EXPECT_EQ(project.PropertySets.Find(u"REL")->GetValue(u"major"), u"3");
  EXPECT_EQ(project.PropertySets.GetNames(TPropertySetKind::DotNet), text::TStringList({u"Net"}));
  ASSERT_EQ(project.Actions().size(), 4U);
  const TActionNode& loop = *project.Actions()[0];
  EXPECT_EQ(loop.Iterator()->GetLoopVariable(), u"P");
  EXPECT_EQ(static_cast<const TLoopAction&>(loop.Action()).Values, text::TStringList({u"a", u"b c"}));
  ASSERT_EQ(loop.Children().size(), 1U);
  EXPECT_TRUE(loop.Children()[0]->ContinueOnError());
  EXPECT_EQ(project.Actions()[1]->Action().GetDescription(), u"One");
  const auto& step = static_cast<const TStepAction&>(project.Actions()[1]->Action());
  EXPECT_EQ(step.Text, u"a<b \"\r\n two");
  EXPECT_EQ(step.Number, 12);
  EXPECT_TRUE(step.Flag);
  EXPECT_EQ(step.Colour, TColour::Blue);
  EXPECT_EQ(step.Lines, text::TStringList({u" a ", u""}));
  EXPECT_EQ(step.Part, u"p");
  EXPECT_EQ(static_cast<const TStepAction&>(project.Actions()[2]->Action()).Colour, TColour::Red);
  EXPECT_EQ(static_cast<const TStepAction&>(project.Actions()[3]->Action()).Colour, TColour::Blue);
}

TEST(ProjectFile, SaysWhatIsWrongAndWhere) {
  const struct {
    std::string Text;
    const char* Message;
  } cases[] = {
      {"", "(1): The file is empty."},
      {"<BuildProject>\n<Actions>", "(2): "},
      {"<BuildProject>\n</Wrong>", "(2): Opening and ending tag mismatch"},
      {"<!DOCTYPE a [<!ENTITY x \"y\">]>\n<BuildProject/>",
       "(1): A document type declaration is not allowed."},
      {"<BuildProject Name=\"&x;\"/>", "(1): Entity 'x' not defined"},
      {"<?xml version=\"1.0\" encoding=\"iso-8859-1\"?><BuildProject/>",
       "(1): The file must be in UTF-8, not in"},
      {"<BuildProject>\n<!-- \xE9 --></BuildProject>", "(2): The file must be in UTF-8; this line is not."},
      {std::string("<BuildProject/>\n\0</x>", 21), "(2): The file holds a null character."},
      {"<Project/>", "(1): Not a build project: expected <BuildProject>, not <Project>."},
      {"<BuildProject Nam=\"x\"/>",
       "(1): Unknown attribute \"Nam\" of <BuildProject>. Did you mean \"Name\"?"},
      {"<BuildProject>\n<Action/></BuildProject>",
       "(2): Unknown element <Action> in <BuildProject>. Did you mean \"Actions\"?"},
      {"<BuildProject>\n<Actions/>\n<Actions/></BuildProject>",
       "(3): <Actions> stands twice in <BuildProject>."},
      {"<BuildProject><Actions>\nstray</Actions></BuildProject>",
       "(1): Unexpected text in <Actions>: \"stray\""},
      {"<BuildProject><Variables>\n<Variable>1</Variable></Variables></BuildProject>",
       "(2): <Variable> has no Name."},
      {"<BuildProject><Variables>\n<Variable Name=\"a b\"/></Variables></BuildProject>",
       "(2): The variable name \"a b\" may hold only"},
      {"<BuildProject><Variables><Variable Name=\"a\"/>\n<Variable Name=\"A\"/></Variables></BuildProject>",
       "(2): The variable \"A\" stands twice."},
      {"<BuildProject><PropertySets>\n<PropertySet Name=\"a\" Kind=\"Win64\"/></PropertySets></BuildProject>",
       "(2): The kind of a property set is Win32 or DotNet, not \"Win64\"."},
      {"<BuildProject><Actions>\n<Action Name=\"x\"/></Actions></BuildProject>",
       "(2): <Action> has no Type."},
      {"<BuildProject><Actions>\n<Action Type=\"STP\"/></Actions></BuildProject>",
       "(2): Unknown action type \"STP\". Did you mean \"STEP\"?"},
      {"<BuildProject><Actions>\n<Action Type=\"STEP\" ContinueOnError=\"ja\"/></Actions></BuildProject>",
       "(2): ContinueOnError takes True or False, not \"ja\"."},
      {Wrapped("<Numbr>1</Numbr>"),
       "(4): The action STEP has no property \"Numbr\". Did you mean \"Number\"?"},
      {Wrapped("<Number>1</Number>\n<number>2</number>"), "(5): <number> stands twice in <Action>."},
      {Wrapped("<Number>1x</Number>"), "(4): Number takes a number, not \"1x\"."},
      {Wrapped("<Flag/>"), "(4): Flag takes True or False, not \"\"."},
      {Wrapped("<Colour>Pink</Colour>"), "(4): Colour takes one of Red, Green, Blue, not \"Pink\"."},
      {Wrapped("<Colour Name=\"Red\">2</Colour>"),
       "(4): Colour says \"Red\" and \"2\", which are not the same."},
      {Wrapped("<Size>3</Size>"), "(4): The property \"Size\" is computed and cannot be set."},
      {Wrapped("<Text>\n<Line>a</Line></Text>"),
       "(5): <Text> holds text; the element <Line> cannot stand in it."},
      {Wrapped("<Lines>\n<Lin>a</Lin></Lines>"),
       "(5): Unknown element <Lin> in <Lines>. Did you mean \"Line\"?"},
      {Wrapped("<Lines>bare\n<Line>a</Line></Lines>"), "(4): Unexpected text in <Lines>: \"bare\""},
      {Wrapped("<Text Name=\"x\">a</Text>"), "(4): Unknown attribute \"Name\" of <Text>."},
      {Wrapped("<Actions/>"), "(4): The action STEP is no loop and cannot hold actions."},
  };
  for (const auto& row : cases) {
    TEmbeddedHost host;
    try {
      TProjectFile(host.Project()).LoadBytes(row.Text, u"/p/bad.kxproj");
      ADD_FAILURE() << row.Text;
    } catch (const EKxParseError& error) {
      EXPECT_THAT(error.what(), testing::StartsWith(std::string("/p/bad.kxproj") + row.Message)) << row.Text;
    }
  }
}

TEST(ProjectFile, DamageAnywhereIsReadOrRefused) {
  const std::string whole = "<?xml version='1.0'?><!--c--><BuildProject Name=\"a>b\"><Actions>"
                            "<Action Type='STEP'><Text><![CDATA[<x>]]></Text><Part/></Action></Actions>"
                            "</BuildProject><?p i?>";
  TEmbeddedHost host;
  const auto read = [&host](const std::string& bytes) {
    TProjectRunner runner(host.Services, host.Stop, {});
    TProjectFile file(runner.Project());
    try {
      file.LoadBytes(bytes, u"/p/p.kxproj");
    } catch (const EKxParseError&) {
      return;
    }
    EXPECT_EQ(file.Text(), bytes);
    for (const auto& node : runner.Project().Actions())
      node->Set(u"Text", u"changed");
    const std::string changed = file.Text();
    TProjectRunner again(host.Services, host.Stop, {});
    EXPECT_NO_THROW(TProjectFile(again.Project()).LoadBytes(changed, u"/p/p.kxproj")) << bytes << "\n"
                                                                                      << changed;
  };
  for (std::size_t at = 0; at < whole.size(); ++at) {
    read(whole.substr(0, at));
    for (const std::string_view damage : {"<", ">", "\"", "'", "/", "]]>", "<!--", "-->", " ", ""})
      read(std::string(whole).replace(at, 1, damage));
  }
}

TEST(ProjectFile, AFileThatCannotBeReadIsNamed) {
  TEmbeddedHost host;
  try {
    TProjectFile(host.Project()).Load(host.Path("missing.kxproj"));
    FAIL();
  } catch (const EKxParseError& error) {
    EXPECT_THAT(error.what(), HasSubstr("missing.kxproj"));
  }
}

} // namespace
} // namespace kx::tests
