// Graphs as a picture: a column a layer, what is built first on the left, an arrow to what a project needs.
#include "foundation/formats/Xml.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "program/cli/Graph.h"

#include <algorithm>
#include <cmath>

namespace kx::cli {

namespace {

// In pixels.
constexpr int CharacterWidth = 8; // of the widest usual letters; texts are cut to so many
constexpr std::size_t LongestLabel = 40;
constexpr int BoxHeight = 26;
constexpr int RowHeight = 36;
constexpr int ColumnGap = 110;
constexpr int Margin = 24;
constexpr int HeadHeight = 76;

constexpr std::u16string_view Legend = u"Arrows lead to what a project needs; what is built first stands on "
                                       u"the left. Dashed boxes: not on disk or "
                                       u"not in the solution. Red: circles.";

constexpr std::string_view Style = R"(<style>
svg{color-scheme:light dark;--text:#1f2328;--paper:#ffffff;--box:#f3f5f8;--line:#6b7785;--circle:#c4161c}
@media(prefers-color-scheme:dark){svg{--text:#e6e9ed;--paper:#15181c;--box:#252a31;--line:#8c98a6;--circle:#ff6b6b}}
.paper{fill:var(--paper)}
text{font:13px system-ui,sans-serif;fill:var(--text)}
text.head{font-weight:bold;font-size:16px}
text.legend{fill:var(--line)}
rect.box{fill:var(--box);stroke:var(--line)}
.missing rect{stroke-dasharray:4 3}
.circular rect{stroke:var(--circle);stroke-width:3}
path{fill:none;stroke:var(--line);stroke-opacity:.7}
path.circle{stroke:var(--circle);stroke-opacity:1;stroke-width:2.5;stroke-dasharray:8 4}
marker path{fill:var(--line);stroke:none}
marker.circle path{fill:var(--circle)}
</style>
)";

std::string Escaped(std::u16string_view text) {
  return text::ToUtf8(XmlEscape(text::VisibleControls(text)));
}

// East Asian letters are as wide as they are high.
int WidthOf(std::u16string_view label) {
  int width = 0;
  for (const char16_t c : label)
    width += c >= 0x1100 ? 2 * CharacterWidth : CharacterWidth;
  return width;
}

std::string Places(std::initializer_list<int> numbers) {
  std::string text;
  for (const int number : numbers)
    text += (text.empty() ? "" : " ") + std::to_string(number);
  return text;
}

struct TBox {
  int X = 0;
  int Y = 0; // of its middle
  int Width = 0;
};

class TDrawing {
public:
  TDrawing(const TGraph& graph, const TGraphPut& put)
      : graph_(graph), put_(put), layers_(WaysOf(graph).Layer), boxes_(graph.Nodes.size()),
        isLinked_(graph.Nodes.size()), isCircular_(graph.Nodes.size()) {
    for (std::size_t node = 0; node < graph.Nodes.size(); ++node)
      for (const TGraphNeed& need : graph.Nodes[node].Needs) {
        isLinked_[node] = isLinked_[need.Node] = true;
        if (need.InCircle) isCircular_[node] = isCircular_[need.Node] = true;
      }
  }

  void Write() {
    PlaceColumns();
    PlaceAlone();
    WriteHead();
    for (std::size_t node = 0; node < boxes_.size(); ++node)
      for (const TGraphNeed& need : graph_.Nodes[node].Needs)
        WriteArrow(node, need);
    for (std::size_t node = 0; node < boxes_.size(); ++node)
      WriteBox(node);
    put_("</svg>\n");
  }

private:
  using TColumn = std::vector<std::size_t>;

  int WidthOfColumn(const TColumn& column) const {
    int width = 0;
    for (const std::size_t node : column)
      width = std::max(width, WidthOf(text::Shortened(NameOf(graph_.Nodes[node]), LongestLabel)) +
                                  2 * CharacterWidth);
    return width;
  }

  void PlaceColumns() {
    std::vector<TColumn> columns;
    for (std::size_t node = 0; node < boxes_.size(); ++node) {
      if (!isLinked_[node]) continue;
      if (columns.size() <= layers_[node]) columns.resize(layers_[node] + 1);
      columns[layers_[node]].push_back(node);
    }
    std::size_t rows = 0;
    for (const TColumn& column : columns)
      rows = std::max(rows, column.size());
    int x = Margin;
    for (const TColumn& column : columns) {
      PlaceColumn(column, x, static_cast<int>(rows - column.size()) * RowHeight / 2);
      x += WidthOfColumn(column) + ColumnGap;
    }
    width_ = std::max(width_, x - ColumnGap - Margin);
    height_ += static_cast<int>(rows) * RowHeight;
  }

  void PlaceColumn(const TColumn& column, int x, int above) {
    const int width = WidthOfColumn(column);
    int y = height_ + above + RowHeight / 2;
    for (const std::size_t node : column) {
      boxes_[node] = {x, y, width};
      y += RowHeight;
    }
  }

  // Those that neither need nor are needed, row by row below the others.
  void PlaceAlone() {
    TColumn alone;
    for (std::size_t node = 0; node < boxes_.size(); ++node)
      if (!isLinked_[node]) alone.push_back(node);
    if (alone.empty()) return;
    const int step = WidthOfColumn(alone) + Margin;
    const auto count = static_cast<int>(alone.size());
    const int fitting = width_ / step;
    const int inRow = std::max({1, fitting, static_cast<int>(std::sqrt(count * RowHeight / step))});
    height_ += Margin;
    for (int i = 0; i < count; ++i)
      boxes_[alone[static_cast<std::size_t>(i)]] = {
          Margin + i % inRow * step, height_ + i / inRow * RowHeight + RowHeight / 2, step - Margin};
    width_ = std::max(width_, std::min(count, inRow) * step - Margin);
    height_ += (count + inRow - 1) / inRow * RowHeight;
  }

  void WriteHead() {
    const std::u16string title = text::ExtractFileName(graph_.Solution) + u": build order and dependencies";
    const int width =
        std::max(width_, WidthOf(title.size() > Legend.size() ? std::u16string_view(title) : Legend)) +
        2 * Margin;
    const int height = height_ + Margin;
    put_("<svg xmlns=\"http://www.w3.org/2000/svg\" role=\"img\" aria-labelledby=\"title text\" width=\"" +
         std::to_string(width) + "\" height=\"" + std::to_string(height) + "\" viewBox=\"" +
         Places({0, 0, width, height}) + "\">\n<title id=\"title\">" + Escaped(title) +
         "</title>\n<desc id=\"text\">" + Description() + "</desc>\n" + std::string(Style) + "<defs>" +
         Marker("plain") + Marker("circle") +
         "</defs>\n<rect class=\"paper\" width=\"100%\" height=\"100%\"/>\n" + HeadLine("head", 34, title) +
         HeadLine("legend", 56, Legend));
  }

  static std::string HeadLine(const std::string& name, int y, std::u16string_view text) {
    return "<text class=\"" + name + "\" x=\"" + std::to_string(Margin) + "\" y=\"" + std::to_string(y) +
           "\">" + Escaped(text) + "</text>\n";
  }

  static std::string Marker(const std::string& name) {
    return "<marker id=\"" + name + "\" class=\"" + name +
           "\" viewBox=\"0 0 8 8\" refX=\"8\" refY=\"4\" markerWidth=\"8\" markerHeight=\"8\" "
           "markerUnits=\"userSpaceOnUse\" orient=\"auto\"><path d=\"M0 0L8 4L0 8z\"/></marker>";
  }

  std::string Description() const {
    std::u16string text(Legend);
    for (const auto& circle : graph_.Circles)
      text += u" Circle: " + DescribeCircle(graph_, circle) + u".";
    return Escaped(text);
  }

  // Behind the boxes. A way back leaves on the left like any other and bends around.
  void WriteArrow(std::size_t from, const TGraphNeed& need) {
    const TBox& begin = boxes_[from];
    const TBox& end = boxes_[need.Node];
    const int arrives = end.X + end.Width;
    const bool isBack = layers_[need.Node] >= layers_[from];
    const int bend = isBack ? ColumnGap * 2 / 3 : std::max(ColumnGap / 2, (begin.X - arrives) / 2);
    const int lift = isBack ? RowHeight * 2 / 3 : 0; // its highest point lies between two rows
    const std::string name = need.InCircle ? "circle" : "plain";
    put_("<path class=\"" + name + "\" marker-end=\"url(#" + name + ")\" d=\"M" + Places({begin.X, begin.Y}) +
         "C" + Places({begin.X - bend, begin.Y - lift, arrives + bend, end.Y - lift, arrives, end.Y}) +
         "\"/>\n");
  }

  void WriteBox(std::size_t node) {
    const TGraphNode& shown = graph_.Nodes[node];
    const TBox& box = boxes_[node];
    const std::string kind = (shown.Kind == TGraphNodeKind::Project ? "" : "missing ") +
                             std::string(isCircular_[node] ? "circular" : "");
    put_("<g class=\"" + kind + "\"><title>" + Escaped(NameOf(shown) + RemarkOn(shown) + u"\n" + shown.Path) +
         "</title><rect class=\"box\" rx=\"6\" x=\"" + std::to_string(box.X) + "\" y=\"" +
         std::to_string(box.Y - BoxHeight / 2) + "\" width=\"" + std::to_string(box.Width) + "\" height=\"" +
         std::to_string(BoxHeight) + "\"/><text x=\"" + std::to_string(box.X + CharacterWidth) + "\" y=\"" +
         std::to_string(box.Y + 5) + "\">" + Escaped(text::Shortened(NameOf(shown), LongestLabel)) +
         "</text></g>\n");
  }

  const TGraph& graph_;
  const TGraphPut& put_;
  std::vector<std::size_t> layers_;
  std::vector<TBox> boxes_;
  std::vector<bool> isLinked_;
  std::vector<bool> isCircular_;
  int width_ = 0; // between the margins
  int height_ = HeadHeight;
};

} // namespace

void WriteSvg(const TGraph& graph, const TGraphPut& put) {
  TDrawing(graph, put).Write();
}

} // namespace kx::cli
