// kxhost graph: what the projects of a solution need, and in which order they are built, as a picture.
#pragma once

#include "foundation/formats/JsonWriter.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace kx::cli {

struct TGraphNeed {
  std::size_t Node = 0;
  int Line = 0;          // of the solution, from 1; 0 when no line says it
  bool InCircle = false; // it is part of a way that leads back to where it begins
};

enum class TGraphNodeKind { Project, NotOnDisk, Unknown }; // the last: an identifier that no project has

struct TGraphNode {
  std::u16string Name; // the identifier of an unknown project
  std::u16string Id = {};
  std::u16string Path = {}; // as the solution writes it
  TGraphNodeKind Kind = TGraphNodeKind::Project;
  std::optional<std::int64_t> Order = std::nullopt; // from 1; nothing where there is no build order
  std::vector<TGraphNeed> Needs = {};
};

// The nodes stand in build order, those that no project has at the end.
struct TGraph {
  std::u16string Solution;
  std::vector<TGraphNode> Nodes;
  // Each node needs the next one, the last one the first. A circle that shares a project with one of these
  // is not listed; its needs are marked all the same.
  std::vector<std::vector<std::size_t>> Circles = {};
};

// Raises EKxException for a file that is refused, or when `around` is not empty and no project is called so.
// With `around` only the projects of this name, id, file name or path, and whatever these need or are needed
// by.
TGraph GraphOfSolution(const std::u16string& file, const std::u16string& around);

// How one comes from any node to those that it needs, without going in circles.
struct TGraphWays {
  std::vector<std::size_t> Circle; // by node: two nodes of one number lead to each other
  std::vector<std::size_t> Layer;  // by node: the length of the longest way from it
};
TGraphWays WaysOf(const TGraph& graph);

void MarkCircles(TGraph& graph); // sets InCircle; a project that needs itself is no circle
// The nodes from which any of `middle` is reached, and those reached from them.
TGraph CutAround(const TGraph& graph, const std::vector<std::size_t>& middle);

// The line that says so; 0 when none does.
int LineOfNeed(const TGraphNode& node, std::size_t needed);

// What people are shown: "3. App", and what is special about it: "(not on disk)".
std::u16string NameOf(const TGraphNode& node);
std::u16string RemarkOn(const TGraphNode& node); // empty for most, else with a blank in front
// "A needs B (line 6), B needs A (line 9)"
std::u16string DescribeCircle(const TGraph& graph, const std::vector<std::size_t>& circle);

// Nothing that a solution names can break out of these formats.
using TGraphPut = TJsonWriter::TPut;
void WriteDot(const TGraph& graph, const TGraphPut& put);
void WriteMermaid(const TGraph& graph, const TGraphPut& put);
void WriteSvg(const TGraph& graph, const TGraphPut& put);
void WriteGraphJson(const TGraph& graph, const TGraphPut& put);

} // namespace kx::cli
