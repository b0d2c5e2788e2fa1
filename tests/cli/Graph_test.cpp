#include "program/cli/Graph.h"

#include "foundation/formats/Xml.h"
#include "foundation/text/Encoding.h"

#include "tests/support/Written.h"

#include <gmock/gmock.h>

#include <regex>

namespace kx::cli {
namespace {

using enum TGraphNodeKind;
using testing::ElementsAre;

template <typename TWrite>
std::string Drawn(const TGraph& graph, const TWrite& write) {
  std::string text;
  write(graph, [&text](std::string_view utf8) { text += utf8; });
  return text;
}

// 0 -> 1 -> 2 -> 0 is a circle, 3 leads to it and needs itself, 4 is missing and reached from it, 5 is alone.
TGraph Sample() {
  TGraph graph{.Solution = u"/src/A \"b\".sln",
               .Nodes = {{.Name = u"A\" \\N <&>\n", .Id = u"{\"\\}", .Path = u"a\\b.csproj"},
                         {.Name = u"1. `é`", .Id = u"{B}", .Path = u"b", .Kind = NotOnDisk, .Order = 7},
                         {.Name = u"C", .Id = u"{B}", .Path = u"c"},
                         {.Name = u"D", .Id = u"{D}", .Path = u"d"},
                         {.Name = u"{E}", .Id = u"{E}", .Path = u"", .Kind = Unknown},
                         {.Name = u"F", .Id = u"{F}", .Path = u"f"}},
               .Circles = {{0, 1, 2}}};
  graph.Nodes[0].Needs = {{1, 4}};
  graph.Nodes[1].Needs = {{2, 9}, {4, 10}};
  graph.Nodes[2].Needs = {{0, 0}};
  graph.Nodes[3].Needs = {{2, 20}, {3, 21}};
  MarkCircles(graph);
  return graph;
}

TEST(Graph, IsWrittenForPrograms) {
  TGraph graph = Sample();
  graph.Nodes.resize(2);
  graph.Nodes[0].Needs = {{1, 4}};
  graph.Nodes[1].Needs = {{0, 0}};
  graph.Circles = {{0, 1}};
  EXPECT_EQ(
      Drawn(graph, WriteGraphJson),
      R"({"solution":"/src/A \"b\".sln","projects":[{"order":null,"name":"A\" \\N <&>\n","id":"{\"\\}","path":"a\\b.csproj","exists":true,"needs":["{B}"]},{"order":7,"name":"1. `é`","id":"{B}","path":"b","exists":false,"needs":["{\"\\}"]}],"unknown":[],"circles":[[{"id":"{\"\\}","line":4},{"id":"{B}","line":null}]]}
)");
}

TEST(Graph, IsWrittenForOthersToDrawWhateverProjectsAreCalled) {
  EXPECT_EQ(Drawn(Sample(), WriteDot),
            R"dot(digraph "A \"b\".sln" {
  node [shape=box, style=rounded, fontname="sans-serif"];
  "{\"\\}" [label="A\" \\N <&amp;>␊", tooltip="a\\b.csproj"];
  "{B}" [label="7. 1. `é` (not on disk)", tooltip="b", style="rounded,dashed"];
  "{B} at 3" [label="C", tooltip="c"];
  "{D}" [label="D", tooltip="d"];
  "{E}" [label="{E} (no project of this solution)", tooltip="{E}", style="rounded,dashed"];
  "{F}" [label="F", tooltip="f"];
  "{\"\\}" -> "{B}" [color=red, style=bold];
  "{B}" -> "{B} at 3" [color=red, style=bold];
  "{B}" -> "{E}";
  "{B} at 3" -> "{\"\\}" [color=red, style=bold];
  "{D}" -> "{B} at 3";
  "{D}" -> "{D}";
}
)dot");
  EXPECT_EQ(Drawn(Sample(), WriteMermaid),
            R"(flowchart TD
  n0("A#34; #92;N #60;#38;#62;␊")
  n1("7#46; 1#46; #96;é#96; #40;not on disk#41;")
  n2("C")
  n3("D")
  n4("#123;E#125; #40;no project of this solution#41;")
  n5("F")
  n0 ==> n1
  n1 ==> n2
  n1 --> n4
  n2 ==> n0
  n3 --> n2
  n3 --> n3
  classDef missing stroke-dasharray:4 4
  class n1,n4 missing
  linkStyle 0,1,3 stroke:red
)");
}

TEST(Graph, IsDrawnInColumnsFromLeftToRight) {
  static const std::regex head("<title id=[^]*</defs>\n");
  EXPECT_EQ(
      std::regex_replace(Drawn(Sample(), WriteSvg), head, ""),
      R"~(<svg xmlns="http://www.w3.org/2000/svg" role="img" aria-labelledby="title text" width="1168" height="232" viewBox="0 0 1168 232">
<rect class="paper" width="100%" height="100%"/>
<text class="head" x="24" y="34">A &quot;b&quot;.sln: build order and dependencies</text>
<text class="legend" x="24" y="56">Arrows lead to what a project needs; what is built first stands on the left. Dashed boxes: not on disk or not in the solution. Red: circles.</text>
<path class="circle" marker-end="url(#circle)" d="M372 112C317 112 317 94 262 94"/>
<path class="circle" marker-end="url(#circle)" d="M174 94C119 94 119 94 64 94"/>
<path class="plain" marker-end="url(#plain)" d="M174 94C119 94 119 130 64 130"/>
<path class="circle" marker-end="url(#circle)" d="M24 94C-49 70 541 88 468 112"/>
<path class="plain" marker-end="url(#plain)" d="M174 130C119 130 119 94 64 94"/>
<path class="plain" marker-end="url(#plain)" d="M174 130C101 106 335 106 262 130"/>
<g class="circular"><title>A&quot; \N &lt;&amp;&gt;

a\b.csproj</title><rect class="box" rx="6" x="372" y="99" width="96" height="26"/><text x="380" y="117">A&quot; \N &lt;&amp;&gt;
</text></g>
<g class="missing circular"><title>7. 1. `é` (not on disk)
b</title><rect class="box" rx="6" x="174" y="81" width="88" height="26"/><text x="182" y="99">7. 1. `é`</text></g>
<g class="circular"><title>C
c</title><rect class="box" rx="6" x="24" y="81" width="40" height="26"/><text x="32" y="99">C</text></g>
<g class=""><title>D
d</title><rect class="box" rx="6" x="174" y="117" width="88" height="26"/><text x="182" y="135">D</text></g>
<g class="missing "><title>{E} (no project of this solution)
</title><rect class="box" rx="6" x="24" y="117" width="40" height="26"/><text x="32" y="135">{E}</text></g>
<g class=""><title>F
f</title><rect class="box" rx="6" x="24" y="177" width="24" height="26"/><text x="32" y="195">F</text></g>
</svg>
)~");
}

TEST(Graph, HasLayersAlongItsLongestWaysAndIsCutToWhatIsReached) {
  EXPECT_THAT(WaysOf(Sample()).Layer,
              ElementsAre(2, 1, 0, 1, 0, 0)); // the way back from 2 to 0 does not count
  const std::tuple<std::size_t, std::vector<std::u16string>, std::size_t> cuts[] = {
      // around this node; the identifiers that stay, the circles that stay
      {1, {u"{\"\\}", u"{B}", u"{B}", u"{D}", u"{E}"}, 1},
      {4, {u"{\"\\}", u"{B}", u"{B}", u"{D}", u"{E}"}, 1},
      {5, {u"{F}"}, 0},
  };
  for (const auto& [middle, ids, circles] : cuts) {
    const TGraph cut = CutAround(Sample(), {middle});
    std::vector<std::u16string> kept;
    for (const TGraphNode& node : cut.Nodes)
      kept.push_back(node.Id);
    EXPECT_EQ(kept, ids);
    EXPECT_EQ(cut.Circles.size(), circles);
  }
  // A neighbour's other needs are not of interest, and the numbers of what stays follow on.
  TGraph fork{.Solution = u"", .Nodes = {{.Name = u"Other"}, {.Name = u"Lib"}, {.Name = u"App"}}};
  fork.Nodes[2].Needs = {{0, 3}, {1, 4}};
  const TGraph cut = CutAround(fork, {1});
  ASSERT_EQ(cut.Nodes.size(), 2U);
  ASSERT_EQ(cut.Nodes[1].Needs.size(), 1U);
  EXPECT_EQ(LineOfNeed(cut.Nodes[1], 0), 4);
}

} // namespace
} // namespace kx::cli
