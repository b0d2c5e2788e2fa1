// Unit tests: what failed stands open, what is slow or comes and goes is named, everything else is folded.
#include "foundation/text/Text.h"
#include "program/report/HtmlPage.h"
#include "program/report/ResultRows.h"

#include <algorithm>

namespace kx {

namespace {

constexpr std::size_t MostSlow = 10;
constexpr std::chrono::milliseconds SlowFrom{100};
constexpr std::size_t MostFlaky = 30;
constexpr int MostOpen = 50; // failures
constexpr int FlakyFrom = 2; // changes between passed and failed

// The outcomes of a test in the last runs, this one last.
class TStrip {
public:
  TStrip(const TPast* past, const TReportedSuite& suite, const TReportedTest& test) {
    if (past == nullptr) return;
    if (const auto known = past->Tests.find(PastNameOf(suite, test)); known != past->Tests.end())
      runs_ = known->second;
    if (runs_.size() >= MostRunsShown)
      runs_.erase(runs_.begin(), runs_.end() - static_cast<std::ptrdiff_t>(MostRunsShown - 1));
    runs_.push_back(OutcomeOf(test));
  }

  bool IsEmpty() const { return runs_.empty(); }
  std::int64_t Runs() const { return std::ssize(runs_) - std::ranges::count(runs_, TPastTest::Absent); }
  std::int64_t Failed() const { return std::ranges::count(runs_, TPastTest::Failed); }
  bool IsNewFailure() const {
    return runs_.size() > 1 && runs_.back() == TPastTest::Failed &&
           runs_[runs_.size() - 2] != TPastTest::Failed;
  }
  bool IsFlaky() const {
    int changes = 0;
    TPastTest last = TPastTest::Absent;
    for (const auto outcome : runs_) {
      if (outcome != TPastTest::Passed && outcome != TPastTest::Failed) continue;
      if (last != TPastTest::Absent && last != outcome) ++changes;
      last = outcome;
    }
    return changes >= FlakyFrom;
  }

  // A failure is a tall bar, a success a short one, what did not run a dot.
  void Write(THtmlWriter& out) const {
    const std::size_t width = 6 * runs_.size();
    out << "<svg class=strip viewBox=\"0 0 " << std::to_string(width)
        << " 16\" role=img aria-label=\"Failed in " << Failed() << " of the last " << CountOf(Runs(), u"run")
        << "\">";
    WriteMarks(TPastTest::Passed, "11v5", "passed", out);
    WriteMarks(TPastTest::Failed, "0v16", "failed", out);
    WriteMarks(TPastTest::NotRun, "14v2", "skipped", out);
    out << "</svg>";
  }

private:
  void WriteMarks(TPastTest outcome, const char* mark, const char* name, THtmlWriter& out) const {
    std::string path;
    for (std::size_t i = 0; i < runs_.size(); ++i)
      if (runs_[i] == outcome) path += "M" + std::to_string(6 * i + 2) + " " + mark;
    if (!path.empty()) out << "<path class=" << name << " d=\"" << path << "\"/>";
  }

  std::vector<TPastTest> runs_;
};

struct TNamedTest {
  std::u16string Suite;
  std::u16string Name;
  std::chrono::milliseconds Elapsed{0};
};

struct TSuiteFigures {
  std::u16string Name;
  std::u16string Seconds;
  TTestCounts Counts;
};

class TTestWriter {
public:
  TTestWriter(const THtmlPage& page, THtmlWriter& out) : page_(page), out_(out) {}

  void Write() {
    WriteCounts();
    Visit([this](const TReportedSuite& suite) { WriteProblemsOf(suite); });
    out_ << "<div class=two>";
    WriteSlowest();
    WriteSuites();
    out_ << "</div>\n";
    out_ << "<div class=tools hidden><input type=search id=test-find placeholder=\"Search all tests\" "
            "aria-label=\"Search all tests\"><output id=test-count></output></div>\n<div id=suites>\n";
    Visit([this](const TReportedSuite& suite) { WriteAll(suite); });
    out_ << "</div>\n";
  }

private:
  void Visit(const std::function<void(const TReportedSuite&)>& visit) {
    if (const auto read = page_.Suites.ForEach(visit); !read) out_.Fail(read);
  }

  void WriteCounts() {
    const TTestCounts& tests = page_.Report.Tests;
    out_ << "<p>" << tests.Passed << " passed, " << tests.Failed << " failed, " << tests.NotRun
         << " not run.";
    if (page_.Past != nullptr)
      out_
          << " A strip shows the last runs, this one at its end: a tall bar is a failure, a dot was not run.";
    out_ << "</p>\n";
  }

  void WriteProblemsOf(const TReportedSuite& suite) {
    suites_.push_back({suite.Name, suite.Seconds, suite.Counts()});
    for (const auto& test : suite.Tests) {
      KeepIfSlow(suite, test);
      const TStrip strip(page_.Past, suite, test);
      if (test.Failed) {
        WriteFailure(suite, test, strip);
      } else if (flaky_ < MostFlaky && strip.IsFlaky()) {
        ++flaky_;
        WriteTitle(suite, test, strip, "<div class=\"test row\">");
        out_ << "</div>\n";
      }
    }
  }

  void WriteSuiteOf(const std::u16string& suite) { // a run of one suite needs no telling which
    if (page_.Suites.Count() > 1) out_ << " <span>" << suite << "</span>";
  }

  void WriteTitle(const TReportedSuite& suite, const TReportedTest& test, const TStrip& strip,
                  std::string_view tag) {
    out_ << tag << (test.Failed ? Icon("error", "failed") : Icon("flaky", "flaky")) << "<h3>" << test.Name;
    if (strip.IsNewFailure()) out_ << " <b class=new>new</b>";
    if (strip.IsFlaky())
      out_ << " <b class=flaky>flaky: failed in " << strip.Failed() << " of " << strip.Runs() << " runs</b>";
    WriteSuiteOf(suite.Name);
    out_ << "</h3>";
    if (strip.IsEmpty())
      out_ << "<span></span>";
    else
      strip.Write(out_);
    out_ << "<span class=time>" << FormatElapsed(ElapsedOf(test.Seconds)) << "</span>";
  }

  void WriteFailure(const TReportedSuite& suite, const TReportedTest& test, const TStrip& strip) {
    WriteTitle(suite, test, strip,
               ++failures_ <= MostOpen ? "<details class=test open><summary>"
                                       : "<details class=test><summary>");
    out_ << "</summary><pre class=error>" << test.Message << "\n</pre>";
    if (!test.StackTrace.empty())
      out_ << "<pre class=stack tabindex=0 role=region aria-label=\"Stack trace of " << test.Name << "\">"
           << test.StackTrace << "</pre>";
    out_ << "</details>\n";
  }

  void KeepIfSlow(const TReportedSuite& suite, const TReportedTest& test) {
    const auto elapsed = ElapsedOf(test.Seconds);
    if (elapsed < SlowFrom || (slowest_.size() == MostSlow && elapsed <= slowest_.back().Elapsed)) return;
    const auto place =
        std::ranges::find_if(slowest_, [&](const auto& other) { return other.Elapsed < elapsed; });
    slowest_.insert(place, {suite.Name, test.Name, elapsed});
    if (slowest_.size() > MostSlow) slowest_.pop_back();
  }

  void WriteSlowest() {
    if (slowest_.empty()) return;
    out_
        << "<div class=wide><h3>Slowest</h3><table><thead><tr><th>Test<th class=number>Time</thead><tbody>\n";
    for (const auto& test : slowest_) {
      out_ << "<tr><td>" << test.Name;
      WriteSuiteOf(test.Suite);
      out_ << "<td class=number>" << FormatElapsed(test.Elapsed) << "\n";
    }
    out_ << "</tbody></table></div>\n";
  }

  void WriteSuites() {
    out_ << "<div class=wide><h3>Suites</h3><table><thead><tr><th>Suite<th class=number>Passed<th "
            "class=number>Failed<th class=number>Not run<th class=number>Time</thead><tbody>\n";
    for (const auto& suite : suites_)
      out_ << "<tr><td>" << suite.Name << "<td class=number>" << suite.Counts.Passed << "<td class=number>"
           << suite.Counts.Failed << "<td class=number>" << suite.Counts.NotRun << "<td class=number>"
           << FormatElapsed(ElapsedOf(suite.Seconds)) << "\n";
    out_ << "</tbody></table></div>\n";
  }

  void WriteAll(const TReportedSuite& suite) {
    out_ << "<details class=suite><summary><span>All of " << suite.Name << "</span><span class=time>"
         << CountOf(std::ssize(suite.Tests), u"test") << "</span></summary><ol>\n";
    for (const auto& test : suite.Tests) {
      out_ << (test.Failed ? "<li class=error>" : test.Skipped ? "<li class=skipped>" : "<li>") << test.Name;
      const TStrip strip(page_.Past, suite, test);
      if (strip.Failed() > 0 && !test.Failed) strip.Write(out_);
      out_ << "<span>" << FormatElapsed(ElapsedOf(test.Seconds)) << "</span>\n";
    }
    out_ << "</ol></details>\n";
  }

  const THtmlPage& page_;
  THtmlWriter& out_;
  std::vector<TNamedTest> slowest_; // the slowest first
  std::vector<TSuiteFigures> suites_;
  std::size_t flaky_ = 0;
  int failures_ = 0;
};

} // namespace

void WriteTests(const THtmlPage& page, THtmlWriter& out) {
  TTestWriter(page, out).Write();
}

} // namespace kx
