// What changed over the last runs: a chart for each figure, and one table with all of them.
#include "program/report/HtmlPage.h"
#include "program/report/ResultRows.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace kx {

namespace {

struct TTrend {
  const char* Title;
  const char* Class;
  bool IsLine;
  bool IsOfTests;
  double (*Value)(const TPastRun& run);
  std::string (*Text)(const TPastRun& run);
};

constexpr std::array<TTrend, 4> Trends{{
    {"Errors", "error", false, false,
     [](const TPastRun& run) { return static_cast<double>(run.Counts.Errors); },
     [](const TPastRun& run) { return Grouped(run.Counts.Errors); }},
    {"Warnings", "plain", false, false,
     [](const TPastRun& run) { return static_cast<double>(run.Counts.Warnings); },
     [](const TPastRun& run) { return Grouped(run.Counts.Warnings); }},
    {"Failed tests", "error", false, true,
     [](const TPastRun& run) { return static_cast<double>(run.Tests.Failed); },
     [](const TPastRun& run) { return Grouped(run.Tests.Failed) + " of " + Grouped(run.Tests.Total()); }},
    {"Time", "plain", true, false,
     [](const TPastRun& run) { return static_cast<double>(run.Elapsed.count()) / 1000; },
     [](const TPastRun& run) { return FormatElapsed(run.Elapsed); }},
}};

// The last runs and this one.
std::vector<TPastRun> RunsOf(const THtmlPage& page) {
  const auto& past = page.Past->Runs;
  const std::size_t kept = std::min(past.size(), MostRunsShown - 1);
  std::vector<TPastRun> runs(past.end() - static_cast<std::ptrdiff_t>(kept), past.end());
  const TRunReport& report = page.Report;
  runs.push_back(
      {report.Began, report.Result, report.Elapsed, report.Counts, report.Tests, report.Surroundings.Commit});
  return runs;
}

// So few runs would be bars as wide as the chart.
constexpr std::size_t FewestSlots = 12;

// One even digit with zeros, or 10, at or above the value: a scale that can be halved.
double TopOfScale(double largest) {
  if (largest <= 2) return 2;
  const double power = std::pow(10, std::floor(std::log10(largest)));
  for (const double factor : {1.0, 2.0, 4.0, 6.0, 8.0})
    if (largest <= factor * power) return factor * power;
  return 10 * power;
}

std::string ScaleText(const TTrend& trend, double value) {
  const auto whole = static_cast<std::int64_t>(value);
  return trend.IsLine ? FormatElapsed(std::chrono::seconds(whole)) : Grouped(whole);
}

class TChartWriter {
public:
  TChartWriter(const std::vector<TPastRun>& runs, THtmlWriter& out)
      : runs_(runs), out_(out), slots_(std::max(runs.size(), FewestSlots)) {}

  void Write(const TTrend& trend, std::size_t number) {
    double largest = 0;
    for (const auto& run : runs_)
      largest = std::max(largest, trend.Value(run));
    const double top = TopOfScale(largest);
    const std::string text = trend.Text(runs_.back());
    out_ << "<figure class=chart tabindex=0 role=group aria-label=\"" << trend.Title << " of the last "
         << std::to_string(runs_.size()) << " runs, " << text
         << " in this one; Left and Right read the others\" data-column=" << std::to_string(number + 2)
         << "><figcaption><b>" << trend.Title << "</b> <output>" << text
         << "</output></figcaption><p class=y>";
    for (const double part : {1.0, 0.5, 0.0})
      out_ << "<span style=bottom:" << Fixed(part * 100) << "%>" << ScaleText(trend, part * top) << "</span>";
    out_ << "</p><div><svg viewBox=\"0 0 " << std::to_string(slots_)
         << " 100\" preserveAspectRatio=none aria-hidden=true><path class=grid d=\"M0 0h"
         << std::to_string(slots_) << "M0 50h" << std::to_string(slots_) << "\"/>";
    if (trend.IsLine)
      WriteLine(trend, top);
    else
      WriteBars(trend, top);
    out_ << "<path class=here d=\"\"/></svg></div>";
    WriteDays();
    out_ << "</figure>\n";
  }

private:
  double Left(std::size_t run) const { return static_cast<double>(run + slots_ - runs_.size()); }

  void WriteBars(const TTrend& trend, double top) {
    for (std::size_t i = 0; i < runs_.size(); ++i) {
      const double height = 100 * trend.Value(runs_[i]) / top;
      if (height <= 0) continue;
      out_ << "<path class=\"" << trend.Class << (i + 1 == runs_.size() ? " this" : "") << "\" d=\"M"
           << Fixed(Left(i) + 0.15) << " 100h.7V" << Fixed(100 - height) << "h-.7z\"/>";
    }
  }

  // A run that did not succeed has a larger point.
  void WriteLine(const TTrend& trend, double top) {
    std::string line;
    std::string good;
    std::string bad;
    for (std::size_t i = 0; i < runs_.size(); ++i) {
      const std::string at = Fixed(Left(i) + 0.5) + " " + Fixed(100 - 100 * trend.Value(runs_[i]) / top);
      line += (i == 0 ? "M" : "L") + at;
      (IsSuccess(runs_[i].Result) ? good : bad) += "M" + at + "h0";
    }
    out_ << "<path class=line d=\"" << line << "\"/><path class=point d=\"" << good
         << "\"/><path class=\"point failed\" d=\"" << bad << "\"/>";
  }

  void WriteDays() {
    out_ << "<p class=x><span>";
    if (runs_.size() == slots_) out_ << Day(runs_.front().Began);
    out_ << "</span>";
    if (runs_.size() == slots_) out_ << "<span>" << Day(runs_[runs_.size() / 2].Began) << "</span>";
    out_ << "<span>this run</span></p>";
  }

  const std::vector<TPastRun>& runs_;
  THtmlWriter& out_;
  std::size_t slots_; // the runs stand in the last ones
};

void WriteTable(const std::vector<TPastRun>& runs, THtmlWriter& out) {
  out << "<details class=fold><summary>The figures as a table</summary><div class=wide><table "
         "id=runs><thead><tr><th "
         "scope=col>Run<th scope=col>Result";
  for (const auto& trend : Trends)
    out << "<th scope=col class=number>" << trend.Title;
  out << "<th scope=col>Commit</thead><tbody>\n";
  for (const auto& run : runs) {
    out << "<tr><th scope=row>" << DayTime(run.Began) << "<td>" << WordOf(run.Result);
    for (const auto& trend : Trends)
      out << "<td class=number>" << trend.Text(run);
    out << "<td><code>" << std::u16string_view(run.Commit).substr(0, 10) << "</code>\n";
  }
  out << "</tbody></table></div></details>\n";
}

} // namespace

void WriteTrends(const THtmlPage& page, THtmlWriter& out) {
  const std::vector<TPastRun> runs = RunsOf(page);
  out << "<p>The last " << CountOf(std::ssize(runs), u"run")
      << ", this one at the end.</p>\n<div class=charts>\n";
  TChartWriter writer(runs, out);
  const bool hasTests = std::ranges::any_of(runs, [](const TPastRun& run) { return run.Tests.Total() > 0; });
  for (std::size_t i = 0; i < Trends.size(); ++i)
    if (hasTests || !Trends[i].IsOfTests) writer.Write(Trends[i], i);
  out << "</div>\n";
  WriteTable(runs, out);
}

} // namespace kx
