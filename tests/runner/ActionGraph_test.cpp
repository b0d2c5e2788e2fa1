#include "program/runner/ActionGraph.h"

#include "tests/runner/TestActions.h"
#include "tests/support/Failure.h"

#include <gmock/gmock.h>

namespace kx::tests {
namespace {

std::string Action(const std::string& name, const std::string& attributes = "") {
  return "<Action Type=\"STEP\" Name=\"" + name + "\" " + attributes + "/>\n";
}
std::string Group(const std::string& attributes, const std::string& actions) {
  return "<Group " + attributes + ">\n" + actions + "</Group>\n";
}

// The first action stands in line 2.
void Load(TEmbeddedHost& host, const std::string& actions) {
  TProjectFile(host.Project())
      .LoadBytes("<BuildProject><Actions>\n" + actions + "</Actions></BuildProject>", u"/p/g.kxproj");
}

// "A B:a! C:ab!": each action with those that it needs, "!" behind those that must have succeeded.
std::string Needs(const std::string& actions) {
  TEmbeddedHost host;
  Load(host, actions);
  const TActionGraph graph(host.Project());
  const auto nameOf = [&](std::size_t place) {
    return text::ToUtf8(host.Project().Actions()[place]->Name());
  };
  std::string text = graph.IsPlain() ? "plain" : "";
  for (std::size_t i = 0; i < host.Project().Actions().size(); ++i) {
    text += " " + nameOf(i);
    for (const auto& need : graph.NeedsOf(i))
      text += (&need == &graph.NeedsOf(i).front() ? ":" : ",") + nameOf(need.Action) +
              (need.MustSucceed ? "!" : "");
  }
  return text;
}

TEST(ActionGraph, KnowsWhatComesBehindWhat) {
  const std::string a = Action("A"), b = Action("B"), c = Action("C"), d = Action("D");
  const std::tuple<const char*, std::string, std::string> cases[] = {
      {"one behind the other", a + b + c, "plain A B:A C:B"},
      {"limits are no needs", a + Action("B", "Retries='1' TimeLimit='2h' Condition='1'"), "plain A B:A"},
      {"names, of later ones too, once each", Action("A", "Needs='C, c'") + Action("B", "Needs=''") + c,
       " A:C! B C:B"},
      {"what is behind and named must succeed", a + Action("B", "Needs='A'"), " A B:A!"},
      {"a group comes behind what stands before, and before what stands behind",
       a + Group("Name='G'", b + Action("C", "Needs=''")) + d, " A B:A C:A D:B,C"},
      {"a group is behind a whole group", Group("Name='G'", a + b) + Group("Name='H'", c + d),
       " A B:A C:A,B D:A,B,C"},
      {"a group that needs nothing", a + Group("Name='G' Needs=''", b + c) + d, " A B C:B D:B,C"},
      {"a group's needs are those of all in it",
       a + b + Group("Name='G' Needs='A'", c + Action("D", "Needs='B'")), " A B:A C:A! D:A!,B!"},
      {"a group is needed by name", Group("Name='G'", a + b) + c + Action("D", "Needs='g'"),
       " A B:A C:A,B D:A!,B!"},
      {"an empty group is not there", a + Group("Name='G'", "") + b + Action("C", "Needs='G'"), " A B:A C"},
  };
  for (const auto& [name, actions, needs] : cases)
    EXPECT_EQ(Needs(actions), needs) << name;
}

TEST(ActionGraph, SaysWhichNeedsMeanNothing) {
  const std::string a = Action("A"), b = Action("Build"), c = Action("C");
  const std::string loop =
      "<Action Type=\"LOOP\" Name=\"L\"><Actions>" + Action("Inner") + "</Actions></Action>\n";
  const std::pair<std::string, std::string> cases[] = {
      {b + Action("X", "Needs='Biuld'"),
       "(3): No action outside loops and no group is named \"Biuld\". Did you mean \"Build\"?"},
      {b + Group("Name='G' Needs='Bild'", a),
       "(3): No action outside loops and no group is named \"Bild\". Did"},
      {loop + Action("X", "Needs='inner'"),
       "(4): \"inner\" stands in a loop: only what stands outside loops can be named; name the loop."},
      {a + a + Action("X", "Needs='A'"),
       "(4): \"A\" stands for two things: one in line 2 and one in line 3."},
      {a + Group("Name='a'", c) + Action("X", "Needs='A'"), "(6): \"A\" stands for two things"},
      {Action("A", "Needs='A'"),
       "(2): No action of a circle of needs can begin: \"A\" (line 2) needs \"A\"."},
      {Group("Name='G'", a + Action("B", "Needs='G'")),
       "(4): No action of a circle of needs can begin: \"B\" (line 4) needs \"B\"."},
      {Action("Z", "Needs=''") + Action("A", "Needs='C'") + Action("B", "Needs='A'") +
           Action("C", "Needs='B,Z'"),
       "(3): No action of a circle of needs can begin: \"A\" (line 3) needs \"C\" (line 5), which needs "
       "\"B\" (line 4), which needs \"A\"."},
      {Action("X", "Needs='C'") + Action("B", "Needs='C'") + Action("C", "Needs='B'"),
       "(3): No action of a circle of needs can begin: \"B\" (line 3) needs \"C\" (line 4), which needs "
       "\"B\"."},
      {Action("A", "Needs='C'") + b + c,
       "(2): No action of a circle of needs can begin: \"A\" (line 2) needs \"C\" (line 4), which needs "
       "\"Build\" (line 3), which needs \"A\". An action without Needs needs the one before it."},
  };
  for (const auto& [actions, message] : cases) {
    TEmbeddedHost host;
    Load(host, actions);
    EXPECT_THAT(FailureOf([&] { TActionGraph(host.Project()).IsPlain(); }),
                testing::StartsWith("/p/g.kxproj" + message));
  }
}

TEST(ActionGraph, SelectsWhatIsNamedAndAllThatItNeeds) {
  TEmbeddedHost host;
  Load(host, Action("A") + Action("B", "Needs=''") +
                 Group("Name='G' Needs='A'", Action("C") + Action("D", "Needs=''")) +
                 Action("E", "Needs='B'") + Action("E", "Needs=''"));
  const TActionGraph graph(host.Project());
  const std::pair<std::vector<std::u16string>, std::vector<std::size_t>> cases[] = {
      {{u"d"}, {0, 3}}, {{u"G"}, {0, 2, 3}}, {{u"G", u"b", u"B"}, {0, 1, 2, 3}}, {{}, {}}};
  for (const auto& [names, places] : cases)
    EXPECT_EQ(graph.Select(names), places);
  const std::pair<std::u16string, std::string> refused[] = {
      {u"GG", "No action outside loops and no group is named \"GG\". Did you mean \"G\"?"},
      {u"e", "\"e\" stands for two things: one in line 8 and one in line 9. Give one of them another name."}};
  for (const auto& row : refused)
    EXPECT_EQ(FailureOf([&] { static_cast<void>(graph.Select(std::vector{row.first})); }), row.second);
}

} // namespace
} // namespace kx::tests
