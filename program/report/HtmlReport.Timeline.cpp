// When what ran: actions, configurations and projects as bars over the time of the run.
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "program/report/HtmlPage.h"
#include "program/report/ResultRows.h"
#include "program/report/Timeline.h"

#include <algorithm>
#include <array>
#include <map>

namespace kx {

namespace {

using std::chrono::milliseconds;

constexpr double RowHeight = 1.625; // rem, as the style has them
constexpr double AxisHeight = 1.5;
constexpr double BarHeight = 1.0625;
constexpr std::size_t MostRows = 400;
constexpr int MostTicks = 8;
constexpr double CharactersAPercent = 1.1; // about, of a wide page

struct TBar {
  std::size_t Row = 0;
  std::u16string Label; // inside, where there is room
  std::u16string Title; // when the pointer rests on it
  milliseconds Began{0};
  milliseconds Elapsed{0};
  TResultKind Result = TResultKind::Failed;
  bool IsLeaf = false; // nothing that is drawn ran inside
  bool IsLongest = false;
  milliseconds End() const { return Began + Elapsed; }
};

class TTimeline {
public:
  explicit TTimeline(const TRunReport& report) : whole_(report.Elapsed) {
    for (const auto& action : report.Actions)
      Add(action);
    for (const auto& bar : bars_)
      whole_ = std::max(whole_, bar.End());
    MarkLongest();
  }

  const std::vector<std::u16string>& Rows() const { return rows_; }
  const std::vector<TBar>& Bars() const { return bars_; }
  milliseconds Whole() const { return whole_; }
  // Bars of the longest chain, the last first; none where it would be everything.
  const std::vector<const TBar*>& Longest() const { return longest_; }

private:
  std::size_t RowOf(const std::u16string& name) {
    const auto [place, isNew] = places_.emplace(name, rows_.size());
    if (isNew) rows_.push_back(name);
    return place->second;
  }

  void Add(const std::u16string& row, const std::u16string& label, const std::u16string& title,
           const auto& result, bool isLeaf) {
    if (result.Elapsed <= milliseconds(0) || (rows_.size() >= MostRows && !places_.contains(row))) return;
    bars_.push_back({RowOf(row), label, title, result.Began, result.Elapsed, result.Result, isLeaf});
  }

  void Add(const TActionResult& action) {
    const std::u16string name = NameWithPass(action.Name, action.Pass);
    const bool hasParts = action.IsLoop || !action.Configurations.empty();
    Add(action.Nesting == 0 ? u"Actions" : u"In loops", name, name, action, !hasParts);
    for (const auto& configuration : action.Configurations) {
      if (configuration.Projects.empty())
        Add(configuration.Configuration, u"", name + u", " + configuration.Configuration, configuration,
            true);
      for (const auto& project : configuration.Projects)
        Add(project.Project, u"", project.Project + u", " + configuration.Configuration, project, true);
    }
  }

  // What decided how long the run took, as far as times tell it: from the bar that ended last back to the one
  // that ended last before it began, and so on.
  void MarkLongest() {
    std::vector<TBar*> leaves;
    for (auto& bar : bars_)
      if (bar.IsLeaf) leaves.push_back(&bar);
    std::ranges::stable_sort(leaves, {}, [](const TBar* bar) { return bar->End(); });
    const milliseconds overlap = std::min(milliseconds(100), whole_ / 100);
    milliseconds until = milliseconds::max();
    for (auto at = leaves.rbegin(); at != leaves.rend(); ++at) {
      TBar* bar = *at;
      if (bar->End() > until) continue;
      bar->IsLongest = true;
      longest_.push_back(bar);
      until = bar->Began + overlap;
    }
    if (longest_.size() < leaves.size()) return;
    longest_.clear();
    for (auto& bar : bars_)
      bar.IsLongest = false;
  }

  std::vector<std::u16string> rows_;
  std::map<std::u16string, std::size_t> places_;
  std::vector<TBar> bars_;
  milliseconds whole_;
  std::vector<const TBar*> longest_;
};

milliseconds StepFor(milliseconds whole) {
  static constexpr std::array<int, 16> steps{100,   200,   500,    1000,   2000,   5000,    10000,   15000,
                                             30000, 60000, 120000, 300000, 600000, 1800000, 3600000, 7200000};
  const auto* const step =
      std::ranges::find_if(steps, [&](int ms) { return whole / milliseconds(ms) < MostTicks; });
  return step == steps.end() ? whole / 2 : milliseconds(*step);
}

std::string AxisText(milliseconds time, milliseconds step) {
  if (step < milliseconds(1000)) return Fixed(static_cast<double>(time.count()) / 1000).substr(0, 3) + " s";
  const auto seconds = time.count() / 1000;
  const std::string rest = std::to_string(seconds % 60);
  return std::to_string(seconds / 60) + (rest.size() < 2 ? ":0" : ":") + rest;
}

class TTimelineWriter {
public:
  TTimelineWriter(const TTimeline& timeline, THtmlWriter& out)
      : timeline_(timeline), out_(out),
        height_(AxisHeight + RowHeight * static_cast<double>(timeline.Rows().size())) {}

  void Write() {
    out_ << "<div class=timeline><ol>";
    for (const auto& row : timeline_.Rows())
      out_ << "<li title=\"" << row << "\">" << row;
    out_ << "</ol>\n<svg height=" << Fixed(height_)
         << "rem role=img aria-label=\"Timeline of the run; the table of results has the times\">\n";
    WriteAxis();
    WriteChain();
    for (const auto& bar : timeline_.Bars())
      Write(bar);
    const bool hasFailed =
        std::ranges::any_of(timeline_.Bars(), [](const TBar& bar) { return !IsSuccess(bar.Result); });
    out_ << "</svg></div>\n<p class=key><span><i></i>ended well</span>"
         << (hasFailed ? "<span><i class=error></i>failed \u00d7</span>" : "")
         << (timeline_.Longest().empty() ? "" : "<span><i class=longest></i>longest chain</span>")
         << "</p>\n";
  }

private:
  std::string X(milliseconds time) const {
    return Fixed(100 * static_cast<double>(time.count()) / static_cast<double>(timeline_.Whole().count())) +
           "%";
  }
  static std::string Y(std::size_t row, double below) {
    return Fixed(AxisHeight + RowHeight * static_cast<double>(row) + below) + "rem";
  }

  void WriteAxis() {
    const milliseconds step = StepFor(timeline_.Whole());
    int number = 0;
    for (milliseconds at(0); at <= timeline_.Whole(); at += step, ++number) {
      const std::string x = X(at);
      out_ << "<line x1=" << x << " x2=" << x << " y1=1.25rem y2=" << Fixed(height_) << "rem /><text"
           << (number % 2 == 1 ? " class=odd" : "") << " x=" << x << " y=.75rem"
           << (number == 0 ? "" : " text-anchor=middle") << ">" << AxisText(at, step) << "</text>\n";
    }
  }

  // From the end of each bar to the one that began then.
  void WriteChain() {
    const auto& chain = timeline_.Longest();
    for (std::size_t i = 1; i < chain.size(); ++i) {
      if (!chain[i]->Label.empty() || !chain[i - 1]->Label.empty())
        continue; // actions follow each other anyway
      const std::string x = X(chain[i]->End());
      out_ << "<line class=chain x1=" << x << " x2=" << x << " y1=" << Y(chain[i]->Row, BarHeight + 0.25)
           << " y2=" << Y(chain[i - 1]->Row, BarHeight + 0.25) << " />";
    }
  }

  void Write(const TBar& bar) {
    const std::string x = X(bar.Began);
    const std::string width = X(bar.Elapsed);
    const bool failed = !IsSuccess(bar.Result);
    out_ << "<g><title>" << bar.Title << ": " << FormatElapsed(bar.Elapsed) << " from "
         << FormatElapsed(bar.Began) << ", " << WordOf(bar.Result)
         << (bar.IsLongest ? ", on the longest chain" : "") << "</title><rect class=\""
         << (bar.IsLeaf ? "bar" : "bar outer") << (failed ? " failed" : "") << "\" x=" << x
         << " width=" << width << " y=" << Y(bar.Row, 0.25) << " height=" << Fixed(BarHeight)
         << "rem rx=3 />";
    if (bar.IsLongest)
      out_ << "<rect class=longest x=" << x << " width=" << width << " y=" << Y(bar.Row, BarHeight + 0.25)
           << " height=3 />";
    WriteLabel(bar, failed, x);
    out_ << "</g>\n";
  }

  void WriteLabel(const TBar& bar, bool failed, const std::string& x) {
    const std::u16string time = text::FromUtf8(FormatElapsed(bar.Elapsed));
    const std::u16string label = (failed ? u"\u00d7 " : u"") + (bar.Label.empty() ? time : bar.Label);
    const double percent =
        100.0 * static_cast<double>(bar.Elapsed.count()) / static_cast<double>(timeline_.Whole().count());
    if (percent * CharactersAPercent < static_cast<double>(label.size()) + 1) return;
    out_ << "<text class=\"label" << (failed ? " failed" : "") << "\" x=" << x
         << " dx=.4375rem y=" << Y(bar.Row, 1.0625) << ">" << label << "</text>";
  }

  const TTimeline& timeline_;
  THtmlWriter& out_;
  double height_;
};

// One bar says no more than the time of the run does.
bool IsWorthDrawing(const TRunReport& report, const TTimeline& timeline) {
  return report.Elapsed > milliseconds(0) && timeline.Bars().size() > 2;
}

} // namespace

bool HasTimeline(const THtmlPage& page) {
  return IsWorthDrawing(page.Report, TTimeline(page.Report));
}

void WriteTimeline(const THtmlPage& page, THtmlWriter& out) {
  out << TimelineMarkup(page.Report);
}

std::string TimelineMarkup(const TRunReport& report) {
  const TTimeline timeline(report);
  std::string markup;
  if (!IsWorthDrawing(report, timeline)) return markup;
  const platform::PutBytes put = [&markup](std::string_view bytes) {
    markup += bytes;
    return platform::Status(platform::Done{});
  };
  THtmlWriter out(put);
  TTimelineWriter(timeline, out).Write();
  static_cast<void>(out.Finish()); // a text takes all there is
  return markup;
}

} // namespace kx
