#include "program/cli/Graph.h"

#include "foundation/text/Text.h"

#include <algorithm>
#include <limits>

namespace kx::cli {

namespace {

constexpr std::size_t NoNode = std::numeric_limits<std::size_t>::max();

// Tarjan's search for strongly connected components, without recursion: a chain of projects may be long.
class TWaySearch {
public:
  explicit TWaySearch(const TGraph& graph)
      : graph_(graph), ways_{std::vector(graph.Nodes.size(), NoNode),
                             std::vector(graph.Nodes.size(), NoNode)},
        found_(graph.Nodes.size(), NoNode), lowest_(graph.Nodes.size()) {}

  TGraphWays Run() {
    for (std::size_t node = 0; node < graph_.Nodes.size(); ++node)
      if (found_[node] == NoNode) Search(node);
    return std::move(ways_);
  }

private:
  struct TStep {
    std::size_t Node;
    std::size_t Need; // the next to be looked at
  };

  void Enter(std::size_t node) {
    found_[node] = lowest_[node] = count_++;
    open_.push_back(node);
    way_.push_back({node, 0});
  }

  void Search(std::size_t first) {
    for (Enter(first); !way_.empty();) {
      auto& [node, need] = way_.back();
      const auto& needs = graph_.Nodes[node].Needs;
      if (need == needs.size()) {
        Leave(node);
      } else {
        Follow(node, needs[need++].Node);
      }
    }
  }

  void Follow(std::size_t node, std::size_t needed) {
    if (found_[needed] == NoNode) return Enter(needed);
    if (ways_.Circle[needed] == NoNode) lowest_[node] = std::min(lowest_[node], found_[needed]);
  }

  void Leave(std::size_t node) {
    way_.pop_back();
    if (!way_.empty()) lowest_[way_.back().Node] = std::min(lowest_[way_.back().Node], lowest_[node]);
    SetLayer(node);
    if (lowest_[node] == found_[node]) CloseCircle(node);
  }

  // What has no layer yet lies on the way here: it closes a circle and does not count.
  void SetLayer(std::size_t node) {
    std::size_t layer = 0;
    for (const TGraphNeed& need : graph_.Nodes[node].Needs)
      if (ways_.Layer[need.Node] != NoNode) layer = std::max(layer, ways_.Layer[need.Node] + 1);
    ways_.Layer[node] = layer;
  }

  void CloseCircle(std::size_t first) {
    for (std::size_t node = NoNode; node != first;) {
      node = open_.back();
      open_.pop_back();
      ways_.Circle[node] = first;
    }
  }

  const TGraph& graph_;
  TGraphWays ways_;
  std::vector<std::size_t> found_;  // by node: when the search came there
  std::vector<std::size_t> lowest_; // by node: the first found that it leads back to
  std::vector<std::size_t> open_;   // found, and the circle not yet closed
  std::vector<TStep> way_;
  std::size_t count_ = 0;
};

using TNeighbours = std::vector<std::vector<std::size_t>>;

// Marks what is reached from `middle`.
void Reach(const std::vector<std::size_t>& middle, const TNeighbours& next, std::vector<bool>& kept) {
  std::vector<bool> reached(next.size());
  std::vector<std::size_t> open = middle;
  while (!open.empty()) {
    const std::size_t node = open.back();
    open.pop_back();
    if (reached[node]) continue;
    reached[node] = kept[node] = true;
    open.insert(open.end(), next[node].begin(), next[node].end());
  }
}

std::vector<bool> ReachedBothWays(const TGraph& graph, const std::vector<std::size_t>& middle) {
  TNeighbours needed(graph.Nodes.size());
  TNeighbours needing(graph.Nodes.size());
  for (std::size_t node = 0; node < graph.Nodes.size(); ++node)
    for (const TGraphNeed& need : graph.Nodes[node].Needs) {
      needed[node].push_back(need.Node);
      needing[need.Node].push_back(node);
    }
  std::vector<bool> kept(graph.Nodes.size());
  Reach(middle, needed, kept);
  Reach(middle, needing, kept);
  return kept;
}

} // namespace

TGraphWays WaysOf(const TGraph& graph) {
  return TWaySearch(graph).Run();
}

void MarkCircles(TGraph& graph) {
  const TGraphWays ways = WaysOf(graph);
  for (std::size_t node = 0; node < graph.Nodes.size(); ++node)
    for (TGraphNeed& need : graph.Nodes[node].Needs)
      need.InCircle = need.Node != node && ways.Circle[need.Node] == ways.Circle[node];
}

TGraph CutAround(const TGraph& graph, const std::vector<std::size_t>& middle) {
  const std::vector<bool> kept = ReachedBothWays(graph, middle);
  std::vector<std::size_t> numbers(graph.Nodes.size());
  TGraph cut{.Solution = graph.Solution, .Nodes = {}};
  for (std::size_t node = 0; node < graph.Nodes.size(); ++node) {
    numbers[node] = cut.Nodes.size();
    if (kept[node]) cut.Nodes.push_back(graph.Nodes[node]);
  }
  for (TGraphNode& node : cut.Nodes) {
    std::erase_if(node.Needs, [&kept](const TGraphNeed& need) { return !kept[need.Node]; });
    for (TGraphNeed& need : node.Needs)
      need.Node = numbers[need.Node];
  }
  for (const auto& circle : graph.Circles) { // who reaches one of it reaches all
    if (!kept[circle.front()]) continue;
    auto& copied = cut.Circles.emplace_back(circle);
    for (std::size_t& node : copied)
      node = numbers[node];
  }
  return cut;
}

int LineOfNeed(const TGraphNode& node, std::size_t needed) {
  const auto found = std::ranges::find(node.Needs, needed, &TGraphNeed::Node);
  return found == node.Needs.end() ? 0 : found->Line;
}

std::u16string NameOf(const TGraphNode& node) {
  return (node.Order ? text::FromInteger(*node.Order) + u". " : u"") + node.Name;
}

std::u16string RemarkOn(const TGraphNode& node) {
  switch (node.Kind) {
  case TGraphNodeKind::NotOnDisk:
    return u" (not on disk)";
  case TGraphNodeKind::Unknown:
    return u" (no project of this solution)";
  case TGraphNodeKind::Project:
    break;
  }
  return {};
}

std::u16string DescribeCircle(const TGraph& graph, const std::vector<std::size_t>& circle) {
  std::u16string text;
  for (std::size_t i = 0; i < circle.size(); ++i) {
    const TGraphNode& node = graph.Nodes[circle[i]];
    const std::size_t next = circle[(i + 1) % circle.size()];
    const int line = LineOfNeed(node, next);
    text += (text.empty() ? u"" : u", ") + node.Name + u" needs " + graph.Nodes[next].Name +
            (line > 0 ? u" (line " + text::FromInteger(line) + u")" : u"");
  }
  return text;
}

} // namespace kx::cli
