#include "program/plan/PartIds.h"
#include "program/plan/PlanFormats.h"

#include "tests/runner/TestActions.h"
#include "tests/support/Failure.h"
#include "tests/support/Written.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <regex>

namespace kx::tests {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::HasSubstr;

// Writes the file that its text names, and reads "solution".
class TMakeAction : public TStepAction {
public:
  void GetFilesToRead(text::TStringList& files) override { files.Add(u"solution"); }
  void GetFilesToWrite(text::TStringList& files) override { files.Add(ExpandExpression(Text)); }
  void GetRequirements(text::TStringList& words) const override { words.Add(u"vs2008"); }
};

// A pass for each value; each behind the first.
class TSideBySide : public TLoopAction {
public:
  std::optional<std::vector<TKxPass>> Passes() override {
    std::vector<TKxPass> passes;
    for (const auto& value : Values)
      passes.push_back({value, passes.empty() ? std::vector<std::size_t>() : std::vector<std::size_t>{0}});
    return passes;
  }
};

std::string Make(const std::string& name, const std::string& attributes = "", const std::string& file = "f") {
  return "<Action Type=\"MAKE\" Name=\"" + name + "\" " + attributes + "><Text>" + file +
         "</Text></Action>\n";
}

const std::string Loop = "<Action Type=\"SIDE\" Name=\"Each\" "
                         "Parallel=\"true\"><LoopVariable>P</LoopVariable><Values><Line>C:\\s\\Lib.csproj</"
                         "Line><Line>Lib</Line><Line>App</Line></Values><Actions>" +
                         Make("Inner", "", "%P%.out") + "</Actions></Action>\n";

class TPlanOf {
public:
  explicit TPlanOf(const std::string& actions, const history::TUsualTimes& usual = {}) {
    host_.Services.RegisterAction(u"MAKE", u"Tests", ClassNamed<TMakeAction>(u"TMakeAction"));
    host_.Services.RegisterAction(u"SIDE", u"Tests", ClassNamed<TSideBySide>(u"TSideBySide"));
    TProjectFile(host_.Project())
        .LoadBytes("<BuildProject Name=\"night\"><Actions>\n" + actions + "</Actions></BuildProject>",
                   u"/p/n.kxproj");
    std::vector<std::size_t> all(host_.Project().Actions().size());
    for (std::size_t i = 0; i < all.size(); ++i)
      all[i] = i;
    Plan = MakePlan(host_.Runner, usual, all);
    finder_.emplace(host_.Project());
  }
  std::pair<std::size_t, int> Find(const std::u16string& id) {
    const auto part = finder_->Find(id);
    return part ? std::pair(part->Place, part->Pass) : std::pair(std::size_t{99}, 0);
  }
  TPlan Plan;

private:
  TEmbeddedHost host_;
  std::optional<TPartFinder> finder_;
};

std::string Id(const TPlan& plan, std::size_t part) {
  return text::ToUtf8(plan.Parts.at(part).Id);
}

// "A; B<A!": each part with those behind which it comes, "!" behind those that must have succeeded.
std::string Shape(const TPlan& plan) {
  std::string shape;
  for (std::size_t i = 0; i < plan.Parts.size(); ++i) {
    shape += (i == 0 ? "" : "; ") + Id(plan, i);
    for (const auto& need : plan.Parts[i].Needs)
      shape += "<" + Id(plan, need.Action) + (MustSucceed(plan, need) ? "!" : "");
  }
  return shape;
}

TEST(Plan, HasAPartForEachActionAndPass) {
  const std::tuple<const char*, std::string, std::string> cases[] = {
      {"one behind the other; what fails ends the run", Make("A") + Make("B"), "A; B<A!"},
      {"or does not", Make("A", "ContinueOnError='true'") + Make("B") + Make("C", "Needs='A'"),
       "A; B<A; C<A!"},
      {"names that come twice, in any letters", Make("A") + Make("a (2)") + Make("a") + Make("A"),
       "A; a (2)<A!; a (3)<a (2)!; A (4)<a (3)!"},
      {"a group", Make("A") + "<Group Name='G' Needs=''>" + Make("B") + Make("C") + "</Group>" + Make("D"),
       "A; B; C<B!; D<B!<C!"},
      {"passes are behind what the loop needs; what needs it is behind all", Make("A") + Loop + Make("D"),
       "A; Each/Lib<A!; Each/Lib (2)<Each/Lib!<A!; Each/App<Each/Lib!<A!; D<Each/Lib!<Each/Lib "
       "(2)!<Each/App!"},
      {"a loop whose passes run one after the other",
       std::regex_replace(Loop, std::regex("Parallel=\"true\"|%P%"), ""), "Each"},
      {"a loop that cannot say its passes",
       "<Action Type='LOOP' Name='L' Parallel='true'><Actions>" + Make("I") + "</Actions></Action>", "L"},
      {"a name of several lines", "<Action Type='MAKE' Name='a&#10;b'/>", "a b"},
  };
  for (const auto& [name, actions, shape] : cases)
    EXPECT_EQ(Shape(TPlanOf(actions).Plan), shape) << name;
}

TEST(Plan, KnowsWhatPartsReadWriteAndTake) {
  TPlanOf planned(Make("A") + Loop,
                  {.Actions = {{u"A", milliseconds(5)}, {u"Inner (App)", milliseconds(7)}}});
  const TPlan& plan = planned.Plan;
  const TPart& app = plan.Parts.at(3);
  EXPECT_EQ(app.PassValue, u"App");
  EXPECT_EQ(app.Pass, 3);
  EXPECT_EQ(app.Place, 1U);
  EXPECT_THAT(*app.Inputs, ElementsAre(u"solution"));
  EXPECT_THAT(app.Outputs, ElementsAre(u"App.out"));
  EXPECT_THAT(app.Capabilities, ElementsAre(u"vs2008"));
  EXPECT_EQ(app.Usual, milliseconds(7));
  EXPECT_EQ(plan.Parts[0].Usual, milliseconds(5));
  EXPECT_EQ(plan.Parts[1].Usual, std::nullopt);
  const auto each = [](int pass) { return std::pair(std::size_t{1}, pass); };
  EXPECT_EQ(planned.Find(u"each/app"), each(3));
  EXPECT_EQ(planned.Find(u"Each/Lib (2)"), each(2));
  EXPECT_EQ(planned.Find(u"a"), std::pair(std::size_t{0}, 0));
  EXPECT_EQ(planned.Find(u"each"), std::pair(std::size_t{99}, 0));
}

TEST(Plan, RefusesToLeaveAFileToChance) {
  const std::tuple<const char*, std::string, std::string> cases[] = {
      {"one behind the other", Make("A") + Make("B"), ""},
      {"by way of another", Make("A", "", "x") + Make("B", "", "y") + Make("C", "", "x"), ""},
      {"needs of later ones", Make("A", "Needs='B'") + Make("B", "Needs=''"), ""},
      {"different files", Make("A", "Needs=''", "x") + Make("B", "Needs=''", "y"), ""},
      {"side by side, as systems of any kind name files",
       Make("A", "Needs=''", "d/x") + Make("B", "Needs=''", "D\\X"), "A B D\\X "},
      {"one of three", Make("A", "Needs=''") + Make("B", "Needs='A'") + Make("C", "Needs='A'"), "B C f "},
  };
  for (const auto& [name, actions, clashes] : cases) {
    const TPlan plan = TPlanOf(actions).Plan;
    std::string found;
    for (const TClash& clash : FindClashes(plan))
      found += Id(plan, clash.First) + " " + Id(plan, clash.Second) + " " + text::ToUtf8(clash.File) + " ";
    EXPECT_EQ(found, clashes) << name;
  }
  const TPlan plan = TPlanOf(Make("A", "Needs=''") + Make("B", "Needs=''")).Plan;
  EXPECT_EQ(DescribeClash(plan, FindClashes(plan).at(0)),
            u"\"A\" and \"B\" both write f, and neither waits for the other. Say in the Needs of one that it "
            u"needs the other, or let them write different files.");
}

TEST(PartCommand, QuotesForEachShell) {
  const std::tuple<std::vector<std::u16string>, std::u16string, std::u16string> cases[] = {
      {{u"kxhost", u"a/b.kxproj", u"--part", u"Build"},
       u"kxhost a/b.kxproj --part Build",
       u"kxhost a/b.kxproj --part Build"},
      {{u"All projects/Lib (2)", u""}, u"'All projects/Lib (2)' ''", u"\"All projects/Lib (2)\" \"\""},
      {{u"it's $HOME"}, u"'it'\\''s $HOME'", u"\"it's $HOME\""},
      {{u"a\"b\\"}, u"'a\"b\\'", u"\"a\\\"b\\\\\""},
      {{u"a&b"}, u"'a&b'", u"\"a&b\""},
  };
  for (const auto& [arguments, posix, windows] : cases) {
    EXPECT_EQ(ShellLine(arguments, false), posix);
    EXPECT_EQ(ShellLine(arguments, true), windows);
  }
}

TEST(PartCommand, NamesPartsWhereFewLettersAreAllowed) {
  TPlan plan;
  for (const auto* id : {u"Build (2)", u"build_2", u"\u00e4", u"All projects/Lib", u"${{ x }}"})
    plan.Parts.emplace_back().Id = id;
  plan.Parts.resize(10);
  const auto names = NarrowNames(plan);
  EXPECT_THAT(std::vector(names.begin(), names.begin() + 6),
              ElementsAre(u"Build_2", u"build_2_2", u"part", u"All_projects_Lib", u"x", u"part_2"));
  EXPECT_EQ(LogOf(plan, 1, names[1]), u"part-02-build_2_2.jsonl");
}

std::string Written(std::u16string_view format, const TPlan& plan) {
  std::string out;
  const auto row = std::ranges::find(PlanFormats(), format, &TPlanFormat::Name);
  row->Write(plan, {u"n.kxproj", {u"--set", u"A=${{ b }}"}}, [&out](std::string_view utf8) { out += utf8; });
  return out;
}

TPlan Small() {
  return TPlanOf("<Group Name='G'>" + Make("A", "ContinueOnError='true'") + "</Group>" + Make("B") +
                     Make("C", "Needs='A'"),
                 {.Actions = {{u"A", milliseconds(1'500)}, {u"B", milliseconds(61'000)}}})
      .Plan;
}

TEST(PlanFormats, AreAsTheirReadersWantThem) {
  const std::pair<std::u16string_view, std::string> cases[] = {
      {u"text",
       "night: 3 parts, 1 min 02 s one after the other, 1 min 02 s at least; 1 part of unknown time\n* 1. A  "
       "1.50 s\n* 2. B  1 min 01 s\n  3. C  -             behind 1\n* on the way that takes longest\n"},
      {u"dot",
       "digraph \"night\" {\n  rankdir=LR;\n  node [shape=box, style=rounded, fontname=\"sans-serif\"];\n  "
       "p1 [label=\"A - 1.50 s\", color=red];\n  p2 [label=\"B - 1 min 01 s\", color=red];\n  p3 "
       "[label=\"C\"];\n  p1 -> p2 [color=red, style=dashed];\n  p1 -> p3 [style=solid];\n}\n"},
      {u"mermaid",
       "flowchart LR\n  p1(\"A #45; 1#46;50 s\"):::critical\n  p2(\"B #45; 1 min 01 s\"):::critical\n  "
       "p3(\"C\")\n  p1 ==> p2\n  p1 --> p3\n  classDef critical stroke:red\n"},
      {u"buildbot",
       "{\"name\":\"night\",\"parts\":[{\"id\":\"A\",\"action\":\"A\",\"type\":\"MAKE\",\"group\":\"G\","
       "\"pass\":\"\",\"needs\":[],\"after\":[],\"capabilities\":[\"vs2008\"],\"expectedMs\":1500,"
       "\"command\":[\"kxhost\",\"run\",\"n.kxproj\",\"--part\",\"A\",\"--set\",\"A=${{ b "
       "}}\",\"--log\",\"part-1-A.jsonl\"],\"log\":\"part-1-A.jsonl\"},{\"id\":\"B\",\"action\":\"B\","
       "\"type\":\"MAKE\",\"group\":\"\",\"pass\":\"\",\"needs\":[],\"after\":[\"A\"],\"capabilities\":["
       "\"vs2008\"],\"expectedMs\":61000,\"command\":[\"kxhost\",\"run\",\"n.kxproj\",\"--part\",\"B\",\"--"
       "set\",\"A=${{ b "
       "}}\",\"--log\",\"part-2-B.jsonl\"],\"log\":\"part-2-B.jsonl\"},{\"id\":\"C\",\"action\":\"C\","
       "\"type\":\"MAKE\",\"group\":\"\",\"pass\":\"\",\"needs\":[\"A\"],\"after\":[],\"capabilities\":["
       "\"vs2008\"],\"expectedMs\":null,\"command\":[\"kxhost\",\"run\",\"n.kxproj\",\"--part\",\"C\",\"--"
       "set\",\"A=${{ b }}\",\"--log\",\"part-3-C.jsonl\"],\"log\":\"part-3-C.jsonl\"}]}\n"},
  };
  for (const auto& [format, text] : cases)
    EXPECT_EQ(Written(format, Small()), text);
}

// What is not of the golden ones: who waits for whom, and how.
TEST(PlanFormats, TellEnginesWhoWaitsForWhom) {
  const std::pair<std::u16string_view, const char*> cases[] = {
      {u"json", "\"expectedMs\":62500,\"criticalPath\":[\"A\",\"B\"],\"criticalPathMs\":62500}"},
      {u"json", "\"inputs\":[\"solution\"],\"outputs\":[\"f\"],\"onCriticalPath\":false}"},
      {u"github", "    needs: [\"part_A\"]\n    if: \"${{ !cancelled() && (needs.part_A.result == 'success' "
                  "|| needs.part_A.result == 'failure' || needs.part_A.result == 'skipped') }}\"\n"},
      {u"github", "    if: \"${{ !cancelled() && needs.part_A.result == 'success' }}\"\n"},
      {u"github", "run: \"kxhost run n.kxproj --part A --set 'A=${{ '${{' }} b }}' --log part-1-A.jsonl\"\n"},
      {u"github", "    runs-on: [\"self-hosted\", \"vs2008\"]\n"},
      {u"gitlab", "part_B: # B\n  stage: parts\n  needs: [\"part_A\"]\n  tags: [\"vs2008\"]\n  script:\n"},
      {u"azure", "  condition: \"and(not(canceled()), in(dependencies.part_A.result, 'Succeeded', "
                 "'SucceededWithIssues', 'Failed', 'Skipped'))\"\n"},
  };
  for (const auto& [format, text] : cases)
    EXPECT_THAT(Written(format, Small()), HasSubstr(text)) << text::ToUtf8(format);
  const std::string soft = Written(u"gitlab", TPlanOf(Make("A", "ContinueOnError='true'") + Make("B")).Plan);
  EXPECT_THAT(soft, HasSubstr("tags: [\"vs2008\"]\n  allow_failure: true\n"));
}

TPlan Wide(std::size_t parts, bool inARow) {
  TPlan plan;
  for (std::size_t i = 0; i < parts; ++i) {
    TPart& part = plan.Parts.emplace_back();
    part.Id = u"P" + text::FromInteger(static_cast<std::int64_t>(i));
    if (i > 0 && (inARow || i + 1 == parts))
      for (std::size_t need = inARow ? i - 1 : 0; need < i; ++need)
        part.Needs.push_back({need, true});
  }
  return plan;
}

TEST(PlanFormats, KeepWithinTheLimitsOfEngines) {
  const std::string github = Written(u"github", Wide(1'000, false));
  EXPECT_EQ(CountOf("          - name: ", github),
            251U); // of four parts each, and the one that needs them all
  EXPECT_EQ(CountOf("kxhost run ", github), 1'000U);
  EXPECT_THAT(github, HasSubstr("    needs: [\"parts_1\", \"parts_2\"]\n"));
  EXPECT_EQ(CountOf("kxhost run ", Written(u"github", Wide(255, true))), 255U) << "and the report";
  EXPECT_EQ(FailureOf([] { Written(u"github", Wide(256, true)); }),
            "A workflow holds at most 256 jobs, and the parts of this plan wait for each other in a row of "
            "256. Plan a part of them by their names.");
  const std::string gitlab = Written(u"gitlab", Wide(120, false));
  EXPECT_THAT(gitlab, HasSubstr("\n  needs: [\"joint_1\", \"joint_2\", \"joint_3\"]\n"));
  EXPECT_EQ(CountOf("\"part_P", gitlab), 119U);
}

} // namespace
} // namespace kx::tests
