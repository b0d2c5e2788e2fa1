#include "program/runner/ProjectText.h"

#include "foundation/text/Exceptions.h"

#include <gtest/gtest.h>

#include <functional>

namespace kx::tests {
namespace {

constexpr std::string_view Project = R"(<?xml version="1.0"?>
<BuildProject Name="p">
  <!-- all that is built -->
  <Actions>

    <Action Type="A" /> <!-- first -->
    <!-- why the loop is here,
         in two lines -->
    <Action Type="L" Name='Loop'>
      <Text>
    kept as it is</Text>
      <Actions>
        <Action Type="B">
          <Lines>
            <Line>x</Line>
          </Lines>
        </Action>
      </Actions>
    </Action>
    <Action Type="C"/><Action Type="D"/>
  </Actions>
</BuildProject>
)";
const std::string A = "    <Action Type=\"A\" /> <!-- first -->\n";
const std::string B = "    <Action Type=\"B\">\n      <Lines>\n        <Line>x</Line>\n      </Lines>\n"
                      "    </Action>\n";
const std::string InnerB = "        <Action Type=\"B\">\n          <Lines>\n            <Line>x</Line>\n"
                           "          </Lines>\n        </Action>\n";
const std::string Loop(Project.substr(Project.find("    <!-- why"),
                                      Project.find("    <Action Type=\"C\"") - Project.find("    <!-- why")));

// The project, or another text, with one part replaced.
std::string With(std::string_view before, const std::string& after, std::string text = std::string(Project)) {
  const std::size_t at = text.find(before);
  EXPECT_NE(at, std::string::npos) << before;
  return text.replace(at, before.size(), after);
}

TEST(ProjectText, ChangesWhatIsAskedForAndNothingElse) {
  using TEdit = std::function<void(TProjectText&)>;
  const auto move = [](const TRowPath& from, const TRowPath& to) -> TEdit {
    return [=](TProjectText& text) { text.MoveRow(from, to); };
  };
  const auto rename = [](std::size_t action, std::optional<std::u16string_view> name) -> TEdit {
    return [=](TProjectText& text) { text.SetAttribute({action}, u"Name", name); };
  };
  const std::string start = "<BuildProject Name=\"p\">\n";
  const std::tuple<const char*, TEdit, std::string> cases[] = {
      {"a loop takes along its comments and what it holds", move({1}, {0}),
       With(A, Loop + A, With(Loop, ""))},
      {"before itself", move({1}, {1}), std::string(Project)},
      {"behind itself", move({1}, {2}), std::string(Project)},
      {"into a loop, one step further in", move({0}, {1, 0}), With(InnerB, "    " + A + InnerB, With(A, ""))},
      {"out of a loop, to the front", move({1, 0}, {0}), With(A, B + A, With(InnerB, ""))},
      {"out of a loop, behind the last of a line", move({1, 0}, {4}),
       With("  </Actions>\n</", B + "  </Actions>\n</", With(InnerB, ""))},
      {"within a line", move({3}, {2}), With("\"C\"/><Action Type=\"D\"", "\"D\"/><Action Type=\"C\"")},
      {"an action goes, what is said above it stays", [](TProjectText& text) { text.RemoveRow({1}); },
       With(Loop.substr(Loop.find("    <Action Type=\"L\"")), "")},
      {"a copy beside the original", [](TProjectText& text) { text.CopyRow({0}, {1}); }, With(A, A + A)},
      {"another name", rename(1, u"a\"<b>\t\r\n"),
       With("Name='Loop'", "Name=\"a&quot;&lt;b&gt;&#9;&#13;&#10;\"")},
      {"no name", rename(1, std::nullopt), With(" Name='Loop'", "")},
      {"a first name", rename(0, u"é日本"), With("Type=\"A\"", "Type=\"A\" Name=\"é日本\"")},
      {"a variable where there are none", [](TProjectText& text) { text.SetVariable(u"Root", u"a & b"); },
       With(start, start + "  <Variables>\n    <Variable Name=\"Root\">a &amp; b</Variable>\n"
                           "  </Variables>\n")},
      {"a variable is changed and goes",
       [](TProjectText& text) {
         text.SetVariable(u"Root", u"");
         text.SetVariable(u"root", u"y");
         text.SetVariable(u"Root", std::nullopt);
       },
       With(start, start + "  <Variables>\n  </Variables>\n")},
      {"a property set with a value",
       [](TProjectText& text) {
         text.AddPropertySet(u"R", u"Win32");
         text.SetPropertySetValue(u"r", u"MajorVersion", u"3");
       },
       With(start, start + "  <PropertySets>\n    <PropertySet Name=\"R\" Kind=\"Win32\">\n"
                           "      <Value Name=\"MajorVersion\">3</Value>\n    </PropertySet>\n"
                           "  </PropertySets>\n")},
      {"of two property sets one",
       [](TProjectText& text) {
         text.AddPropertySet(u"R", u"Win32");
         text.AddPropertySet(u"S", u"DotNet");
         text.RemovePropertySet(u"r");
       },
       With(start, start + "  <PropertySets>\n    <PropertySet Name=\"S\" Kind=\"DotNet\"/>\n"
                           "  </PropertySets>\n")},
  };
  for (const auto& [name, edit, after] : cases) {
    TProjectText text{std::string(Project)};
    edit(text);
    EXPECT_EQ(text.Bytes(), after) << name;
  }
  TProjectText closed("<BuildProject><Variables><Variable Name='V' /></Variables></BuildProject>");
  closed.SetVariable(u"v", u"<x");
  EXPECT_EQ(closed.Bytes(),
            "<BuildProject><Variables><Variable Name='V'>&lt;x</Variable></Variables></BuildProject>");
  const TEdit refused[] = {move({1}, {1, 0}),
                           move({9}, {0}),
                           move({0}, {0, 0, 1}),
                           move({0}, {}),
                           [](TProjectText& text) {
                             text.RemoveRow({1, 1});
                           },
                           [](TProjectText& text) { text.RemovePropertySet(u"R"); },
                           [](TProjectText& text) { text.SetVariable(u"V", std::nullopt); }};
  for (const auto& edit : refused) {
    TProjectText text{std::string(Project)};
    EXPECT_THROW(edit(text), EKxException);
    EXPECT_EQ(text.Bytes(), Project);
  }
}

// Line ends are shown: "\\r" and "\\n".
std::string Edited(const std::string& before, const std::function<void(TProjectText&)>& edit) {
  TProjectText text(before);
  edit(text);
  std::string shown;
  for (const char c : text.Bytes())
    shown += c == '\r' ? std::string("\\r") : c == '\n' ? std::string("\\n") : std::string(1, c);
  return shown;
}

TEST(ProjectText, KeepsTheLayoutThatATextHas) {
  const auto variable = [](TProjectText& text) { text.SetVariable(u"V", u"\"a\nb\r\nc\rd"); };
  const auto front = [](TProjectText& text) { text.MoveRow({1}, {0}); };
  const std::tuple<std::string, std::function<void(TProjectText&)>, std::string> cases[] = {
      {"<BuildProject>\r\n\t<Actions/>\r\n</BuildProject>", variable,
       R"(<BuildProject>\r\n	<Variables>\r\n		<Variable Name="V">"a\r\nb\r\nc&#13;d</Variable>\r\n	</Variables>\r\n	<Actions/>\r\n</BuildProject>)"},
      {"<BuildProject  />", variable,
       R"(<BuildProject>\n  <Variables>\n    <Variable Name="V">"a\nb\nc&#13;d</Variable>\n  </Variables>\n</BuildProject>)"},
      {"<BuildProject><Variables><Variable Name='V'><![CDATA[x]]></Variable> <!-- v "
       "--></Variables></BuildProject>",
       variable,
       R"(<BuildProject><Variables><Variable Name='V'>"a\nb\nc&#13;d</Variable> <!-- v --></Variables></BuildProject>)"},
      {"<BuildProject><Actions>\n<!-- a -->\n<Action Type='A'/>\n x <!-- b -->\n<Action Type='B'\n  "
       "Name='x>\"y'><T>\n y</T>\n</Action>\n</Actions></BuildProject>",
       front,
       R"(<BuildProject><Actions>\n<Action Type='B'\n  Name='x>"y'><T>\n y</T>\n</Action>\n<!-- a -->\n<Action Type='A'/>\n x <!-- b -->\n</Actions></BuildProject>)"},
  };
  for (const auto& [before, edit, after] : cases)
    EXPECT_EQ(Edited(before, edit), after);
}

// "AB[CD]E" is four rows, one of them a group with two.
std::string Written(std::string_view shape) {
  std::string text = "<BuildProject>\n  <Actions>\n";
  std::string indent = "    ";
  for (const char c : shape) {
    if (c == ']') indent.resize(4);
    if (c == '[') {
      text.append(indent).append("<!-- g -->\n").append(indent).append("<Group Name=\"G\">\n");
      indent += "  ";
    } else {
      text += indent + (c == ']' ? "</Group>\n" : std::string("<Action Type=\"") + c + "\"/>\n");
    }
  }
  return text + "  </Actions>\n</BuildProject>\n";
}

TEST(ProjectText, RowsAreActionsAndGroups) {
  const TProjectText text(Written("A[BC]D[][E]"));
  const std::pair<std::size_t, TRowPath> rows[] = {{0, {0}}, {1, {1, 0}}, {2, {1, 1}}, {3, {2}}, {4, {4, 0}}};
  for (const auto& [action, row] : rows) {
    EXPECT_EQ(text.RowOfAction({action}), row) << action;
    EXPECT_EQ(text.ActionAt(row), TActionPath{action});
  }
  EXPECT_EQ(text.RowOfGroup(2), TRowPath{4});
  EXPECT_EQ(text.ActionAt({3}), std::nullopt);
  EXPECT_THROW(static_cast<void>(text.RowOfAction({5})), EKxException);
  const TProjectText loop{std::string(Project)};
  EXPECT_EQ(loop.RowOfAction({1, 0}), (TRowPath{1, 0}));
  EXPECT_EQ(loop.ActionAt({1, 0}), (TActionPath{1, 0}));
}

TEST(ProjectText, WhatNeedsAnActionOrAGroupFollowsItsName) {
  const auto project = [](const std::string& action, const std::string& group, const std::string& needs) {
    return "<BuildProject><Actions><Action Type='A' Name=\"" + action + "\"/><Group Name=\"" + group +
           "\" Needs='x'><Action Type='B' Needs=\"" + needs +
           "\"/></Group><Action Type='C' Needs='x, b c'/>"
           "</Actions></BuildProject>";
  };
  TProjectText text(project("a", "g", "A,g"));
  text.Rename({0}, u"new & one");
  text.Rename({1}, u"h");
  EXPECT_EQ(text.Bytes(), project("new &amp; one", "h", "new &amp; one,h"));
  text.Rename({0}, u"h"); // two of one name: what is meant is the user's to say
  text.Rename({1}, u"other");
  EXPECT_EQ(text.Bytes(), project("h", "other", "h,h"));
  EXPECT_THROW(text.Rename({1}, u""), EKxException);
}

// Every place that a variable is used in, and texts that only look like one.
std::string Using(const std::string& name, const std::string& inside) {
  return "<BuildProject>\n  <Variables>\n    <Variable Name='" + name + "'>1</Variable> <!-- %Root% -->\n" +
         "    <Variable Name=\"Other\">%" + inside + "%\\x</Variable>\n  </Variables>\n  <Actions>\n" +
         "    <Action Type=\"A\" Condition=\"%" + inside + "% == &quot;x&quot;\">\n      <Text><![CDATA[<$(" +
         inside + ")>]]>&#x1F511;&#37;" + inside + "%é日 %%Root% %RootX% Root $(F(\"%" + inside +
         "% $(G(\"\"%" + inside + "%\"\"))\"))</Text>\n      <List><Line>%" + inside +
         "%</Line></List>\n    </Action>\n" + "    <Action Type=\"L\"><LoopVariable> " +
         "</LoopVariable><Actions><Action Type=\"B\"><LoopVariable>" + inside +
         "</LoopVariable></Action></Actions></Action>\n  </Actions>\n</BuildProject>\n";
}

TEST(ProjectText, RenamesAVariableWhereverItIsUsed) {
  TProjectText text(Using("Root", "Root"));
  EXPECT_EQ(text.RenameVariable(u"ROOT", u"Base.Folder_2"), 8U);
  EXPECT_EQ(text.Bytes(), Using("Base.Folder_2", "Base.Folder_2"));
  EXPECT_EQ(text.RenameVariable(u"base.folder_2", u"root"), 8U);
  EXPECT_EQ(text.RenameVariable(u"root", u"Root"), 8U) << "another letter case is no other name";
  const std::string before = text.Bytes();
  for (const auto& [name, to] :
       {std::pair(u"None", u"X"), {u"Root", u"a b"}, {u"Root", u"other"}, {u"Root", u"RootX"}})
    EXPECT_THROW(text.RenameVariable(name, to), EKxException);
  EXPECT_EQ(text.Bytes(), before);
}

TEST(ProjectText, CallsFollowTheNameOfTheirAction) {
  const auto project = [](const std::string& name, const std::string& called) {
    return "<BuildProject><Actions><Action Type='A' Name=\"" + name + "\"/><Action Type='B'><T>$(" + called +
           ".F(\"x\")) $(" + called + ") %" + called + "% $(H(\"$(" + called +
           ".G())\"))</T></Action></Actions></BuildProject>";
  };
  TProjectText text(project("One", "One"));
  text.Rename({0}, u"A &1");
  std::string expected = project("A &amp;1", "A &amp;1");
  for (const std::string unread : {"$(A &amp;1)", "%A &amp;1%"}) // these name variables
    expected = With(unread, unread.front() == '$' ? "$(One)" : "%One%", expected);
  EXPECT_EQ(text.Bytes(), expected);
}

} // namespace
} // namespace kx::tests
