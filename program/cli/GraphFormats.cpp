// Graphs as text that others draw, and as JSON.
#include "foundation/formats/DiagramText.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "program/cli/Graph.h"
#include "program/cli/Output.h"

#include <set>

namespace kx::cli {

namespace {

std::string Number(std::size_t number) {
  return std::to_string(number);
}

std::u16string Shown(std::u16string_view name) {
  return text::FromUtf8(NameForTerminal(name));
}

// Identifiers are shared now and then; nodes are not.
std::vector<std::string> DotNames(const TGraph& graph) {
  std::vector<std::string> names;
  std::set<std::string> used;
  for (const TGraphNode& node : graph.Nodes) {
    std::string name = DotText(Shown(node.Id));
    if (!used.insert(name).second) {
      name += " at " + Number(names.size() + 1);
      used.insert(name);
    }
    names.push_back("\"" + name + "\"");
  }
  return names;
}

constexpr std::string_view DotStyleOf(TGraphNodeKind kind) {
  return kind == TGraphNodeKind::Project ? "" : ", style=\"rounded,dashed\"";
}

// "3,5,8" of the numbers that are chosen; empty when none is.
class TMermaidList {
public:
  explicit TMermaidList(std::string_view prefix) : prefix_(prefix) {}
  void Add(std::size_t number) {
    text_ += (text_.empty() ? "" : ",") + std::string(prefix_) + Number(number);
  }
  std::string Line(std::string_view before, std::string_view behind) const {
    return text_.empty() ? "" : "  " + std::string(before) + text_ + std::string(behind) + "\n";
  }

private:
  std::string_view prefix_;
  std::string text_;
};

void WriteGraphNode(const TGraph& graph, const TGraphNode& node, TJsonWriter& json) {
  json.Member("order", node.Order);
  json.Member("name", node.Name);
  json.Member("id", node.Id);
  json.Member("path", node.Path);
  json.Member("exists", node.Kind == TGraphNodeKind::Project);
  json.ArrayMember("needs", [&] {
    for (const TGraphNeed& need : node.Needs)
      json.Value(graph.Nodes[need.Node].Id);
  });
}

void WriteCircle(const TGraph& graph, const std::vector<std::size_t>& circle, TJsonWriter& json) {
  for (std::size_t i = 0; i < circle.size(); ++i)
    json.Object([&] {
      json.Member("id", graph.Nodes[circle[i]].Id);
      const int line = LineOfNeed(graph.Nodes[circle[i]], circle[(i + 1) % circle.size()]);
      json.Member("line", line > 0 ? std::optional(line) : std::nullopt);
    });
}

} // namespace

void WriteDot(const TGraph& graph, const TGraphPut& put) {
  const std::vector<std::string> names = DotNames(graph);
  put("digraph \"" + DotText(Shown(text::ExtractFileName(graph.Solution))) +
      "\" {\n  node [shape=box, style=rounded, fontname=\"sans-serif\"];\n");
  for (std::size_t i = 0; i < names.size(); ++i) {
    const TGraphNode& node = graph.Nodes[i];
    put("  " + names[i] + " [label=\"" + DotLabel(Shown(NameOf(node) + RemarkOn(node))) + "\", tooltip=\"" +
        DotLabel(Shown(node.Path.empty() ? node.Id : node.Path)) + "\"" + std::string(DotStyleOf(node.Kind)) +
        "];\n");
  }
  for (std::size_t i = 0; i < names.size(); ++i)
    for (const TGraphNeed& need : graph.Nodes[i].Needs)
      put("  " + names[i] + " -> " + names[need.Node] +
          (need.InCircle ? " [color=red, style=bold];\n" : ";\n"));
  put("}\n");
}

void WriteMermaid(const TGraph& graph, const TGraphPut& put) {
  put("flowchart TD\n");
  TMermaidList missing("n");
  for (std::size_t i = 0; i < graph.Nodes.size(); ++i) {
    put("  n" + Number(i) + "(\"" + MermaidText(Shown(NameOf(graph.Nodes[i]) + RemarkOn(graph.Nodes[i]))) +
        "\")\n");
    if (graph.Nodes[i].Kind != TGraphNodeKind::Project) missing.Add(i);
  }
  TMermaidList circles("");
  std::size_t edge = 0;
  for (std::size_t i = 0; i < graph.Nodes.size(); ++i)
    for (const TGraphNeed& need : graph.Nodes[i].Needs) {
      put("  n" + Number(i) + (need.InCircle ? " ==> n" : " --> n") + Number(need.Node) + "\n");
      if (need.InCircle) circles.Add(edge);
      ++edge;
    }
  put("  classDef missing stroke-dasharray:4 4\n");
  put(missing.Line("class ", " missing"));
  put(circles.Line("linkStyle ", " stroke:red"));
}

void WriteGraphJson(const TGraph& graph, const TGraphPut& put) {
  TJsonWriter json(put);
  json.Object([&] {
    json.Member("solution", graph.Solution);
    json.ArrayMember("projects", [&] {
      for (const TGraphNode& node : graph.Nodes)
        if (node.Kind != TGraphNodeKind::Unknown) json.Object([&] { WriteGraphNode(graph, node, json); });
    });
    json.ArrayMember("unknown", [&] {
      for (const TGraphNode& node : graph.Nodes)
        if (node.Kind == TGraphNodeKind::Unknown) json.Value(node.Id);
    });
    json.ArrayMember("circles", [&] {
      for (const auto& circle : graph.Circles)
        json.Array([&] { WriteCircle(graph, circle, json); });
    });
  });
  json.EndLine();
  json.Flush();
}

} // namespace kx::cli
