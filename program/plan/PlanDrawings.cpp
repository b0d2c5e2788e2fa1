// Plans as text that others draw: an arrow leads from a part to what waits for it.
#include "foundation/formats/DiagramText.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "program/plan/PlanFormats.h"
#include "program/report/ResultRows.h"

#include <set>
#include <utility>

namespace kx {

namespace {

std::string NodeOf(std::size_t part) {
  return "p" + std::to_string(part + 1);
}

std::u16string LabelOf(const TPart& part) {
  return part.Usual ? part.Id + u" - " + text::FromUtf8(FormatElapsed(*part.Usual)) : part.Id;
}

struct TArrow {
  std::size_t From;
  std::size_t To;
  bool MustSucceed;
  bool IsCritical;
};

class TDrawing {
public:
  explicit TDrawing(const TPlan& plan) : plan_(plan) {
    const auto path = CriticalPath(plan);
    critical_.insert(path.begin(), path.end());
    for (std::size_t i = 1; i < path.size(); ++i)
      ways_.emplace(path[i - 1], path[i]);
  }

  bool IsCritical(std::size_t part) const { return critical_.contains(part); }

  template <typename TOn>
  void ForEachArrow(const TOn& on) const {
    for (std::size_t i = 0; i < plan_.Parts.size(); ++i)
      for (const TActionNeed& need : plan_.Parts[i].Needs)
        on(TArrow{need.Action, i, MustSucceed(plan_, need), ways_.contains({need.Action, i})});
  }

private:
  const TPlan& plan_;
  std::set<std::size_t> critical_;
  std::set<std::pair<std::size_t, std::size_t>> ways_;
};

} // namespace

void WritePlanDot(const TPlan& plan, const TRunWords& /*words*/, const TPlanPut& put) {
  const TDrawing drawing(plan);
  put("digraph \"" + DotText(plan.Name) +
      "\" {\n  rankdir=LR;\n  node [shape=box, style=rounded, fontname=\"sans-serif\"];\n");
  for (std::size_t i = 0; i < plan.Parts.size(); ++i)
    put("  " + NodeOf(i) + " [label=\"" + DotLabel(LabelOf(plan.Parts[i])) + "\"" +
        (drawing.IsCritical(i) ? ", color=red" : "") + "];\n");
  drawing.ForEachArrow([&put](const TArrow& arrow) {
    put("  " + NodeOf(arrow.From) + " -> " + NodeOf(arrow.To) + " [" +
        (arrow.IsCritical ? "color=red, " : "") + (arrow.MustSucceed ? "style=solid" : "style=dashed") +
        "];\n");
  });
  put("}\n");
}

void WritePlanMermaid(const TPlan& plan, const TRunWords& /*words*/, const TPlanPut& put) {
  const TDrawing drawing(plan);
  put("flowchart LR\n");
  for (std::size_t i = 0; i < plan.Parts.size(); ++i)
    put("  " + NodeOf(i) + "(\"" + MermaidText(LabelOf(plan.Parts[i])) + "\")" +
        (drawing.IsCritical(i) ? ":::critical" : "") + "\n");
  drawing.ForEachArrow([&put](const TArrow& arrow) {
    put("  " + NodeOf(arrow.From) +
        (arrow.IsCritical    ? " ==> "
         : arrow.MustSucceed ? " --> "
                             : " -.-> ") +
        NodeOf(arrow.To) + "\n");
  });
  put("  classDef critical stroke:red\n");
}

} // namespace kx
