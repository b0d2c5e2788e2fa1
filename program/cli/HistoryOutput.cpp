#include "program/cli/HistoryOutput.h"

#include "program/cli/FindingLines.h"
#include "program/cli/Output.h"
#include "program/cli/Table.h"
#include "program/report/ResultRows.h"

#include <algorithm>
#include <array>
#include <ctime>

namespace kx::cli {

namespace {

using history::TPartName;
using history::TRememberedRun;
using history::TTestHistory;

constexpr std::size_t MostTests = 20; // in each of the two lists
constexpr std::size_t StripLength = 30;
constexpr std::size_t CommitDigits = 8;

// As the clocks on this machine's wall show it.
std::string LocalTime(std::chrono::system_clock::time_point time) {
  const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
  std::array<char, 32> text{};
  std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M", std::localtime(&seconds));
  return text.data();
}

// A row is read for what is there, not for what is not.
std::string NumberText(std::int64_t number) {
  return number == 0 ? std::string("-") : std::to_string(number);
}

std::string TestsText(const TTestCounts& tests) {
  if (tests.Total() == 0) return "-";
  const std::string failed = tests.Failed > 0 ? ", " + std::to_string(tests.Failed) + " failed" : "";
  return std::to_string(tests.Total()) + failed;
}

std::string CommitText(const std::u16string& commit) {
  return NameForTerminal(std::u16string_view(commit).substr(0, CommitDigits));
}

// The last runs as a picture: passed, failed, not run, absent.
std::string StripText(const std::vector<TPastTest>& strip) {
  constexpr std::string_view signs = " .F-";
  std::string text;
  for (const TPastTest outcome : strip)
    text += signs[static_cast<std::size_t>(outcome)];
  return text.size() > StripLength ? text.substr(text.size() - StripLength) : text;
}

std::string PartText(const TPartName& part) {
  if (part.Action.empty()) return "(whole run)";
  std::string text = NameForTerminal(part.Action);
  for (const auto* name : {&part.Configuration, &part.Project})
    if (!name->empty()) text += " / " + NameForTerminal(*name);
  return text;
}

std::string Titled(const char* title, const TPalette& palette) {
  return "\n" + palette.Bold(title) + "\n";
}

TTable TestTable() {
  return TTable({{"Test", false, true},
                 {"Usual", true},
                 {"Runs", true},
                 {"Failed", true},
                 {"Changes", true},
                 {"Last failure", true},
                 {"Last runs"}});
}

void AddTest(TTable& table, const TTestHistory& test) {
  table.Add({NameForTerminal(test.Name), FormatElapsed(test.Usual), std::to_string(test.Runs),
             NumberText(test.Failures), NumberText(test.Changes),
             test.LastFailure == 0 ? std::string("-") : "run " + std::to_string(test.LastFailure),
             StripText(test.Strip)},
            test.IsFlaky ? TStatusTag::stWarning : TStatusTag::stNormal);
}

} // namespace

std::string RunLines(std::span<const TRememberedRun> runs, const TPalette& palette) {
  TTable table({{"Run", true},
                {"Began"},
                {"Result", false, true},
                {"Errors", true},
                {"Warnings", true},
                {"New", true},
                {"Fixed", true},
                {"Tests", true},
                {"Time", true},
                {"Commit"},
                {"Branch"}});
  for (const TRememberedRun& run : runs)
    table.Add({std::to_string(run.Number), LocalTime(run.Run.Began), WordOf(run.Run.Result),
               NumberText(run.Run.Counts.Errors), NumberText(run.Run.Counts.Warnings),
               NumberText(run.NewFindings), NumberText(run.FixedFindings), TestsText(run.Run.Tests),
               FormatElapsed(run.Run.Elapsed), CommitText(run.Run.Commit), NameForTerminal(run.Branch)},
              StatusOf(run.Run.Result));
  return table.Text(palette);
}

std::string DetailLines(const history::TRememberedDetails& details, const TPalette& palette) {
  const TPastRun& run = details.Run.Run;
  const TRunSurroundings& on = details.Surroundings;
  std::string text = palette.Bold("Run " + std::to_string(details.Run.Number)) + ": " +
                     palette.Paint(WordOf(run.Result), StatusOf(run.Result)) + ", " + LocalTime(run.Began) +
                     ", " + FormatElapsed(run.Elapsed) + "\n";
  const auto line = [&text](const char* name, const std::u16string& value) {
    if (!value.empty()) text += name + NameForTerminal(value) + "\n";
  };
  line("Machine  ", on.Machine);
  line("System   ", on.System);
  line("Commit   ", on.Commit);
  line("Branch   ", on.Branch);
  line("Command  ", on.CommandLine);
  TTable parts({{"Part"}, {"Result", false, true}, {"Errors", true}, {"Warnings", true}, {"Time", true}});
  for (const auto& part : details.Parts)
    parts.Add({std::string(static_cast<std::size_t>(part.Nesting) * 2, ' ') + PartText(part.Name),
               WordOf(part.Result), std::to_string(part.Counts.Errors), std::to_string(part.Counts.Warnings),
               FormatElapsed(part.Elapsed)},
              StatusOf(part.Result));
  text += "\n" + parts.Text(palette);
  if (!details.FailedTests.empty()) text += Titled("Failed tests", palette);
  for (const auto& test : details.FailedTests)
    text += NameForTerminal(test) + "\n";
  const std::string findings = FindingLines(details.Findings, 0, "(--json shows all)", palette);
  return findings.empty() ? text : text + "\n" + findings;
}

std::string TestLines(std::span<const TTestHistory> tests, const TPalette& palette) {
  if (tests.empty()) return "No tests ran.\n";
  TTable flaky = TestTable();
  for (const TTestHistory& test : tests.first(std::min(MostTests, tests.size())))
    if (test.IsFlaky) AddTest(flaky, test);
  std::vector<const TTestHistory*> slowest;
  for (const TTestHistory& test : tests)
    slowest.push_back(&test);
  std::ranges::stable_sort(slowest, {}, [](const TTestHistory* test) { return -test->Usual; });
  slowest.resize(std::min(MostTests, slowest.size()));
  TTable slow = TestTable();
  for (const TTestHistory* test : slowest)
    AddTest(slow, *test);
  return "Flaky: changed without another commit, or again and again\n" +
         (flaky.IsEmpty() ? std::string("none\n") : flaky.Text(palette)) + "\nSlowest\n" + slow.Text(palette);
}

std::string KnownFindingLines(std::span<const history::TKnownFinding> findings, const TPalette& palette) {
  if (findings.empty()) return "Nothing was wrong in the last run.\n";
  TTable table({{"Since", true}, {"Began"}, {"Finding", false, true}});
  for (const auto& known : findings)
    table.Add({"run " + std::to_string(known.SinceRun), LocalTime(known.Since),
               NameForTerminal(TextOf(known.Finding))},
              StatusOf(known.Finding.Severity));
  return table.Text(palette);
}

std::string TimeLines(std::span<const history::TUsualTime> times, const TPalette& palette) {
  if (times.empty()) return "Nothing succeeded in these runs.\n";
  TTable table(
      {{"Part"}, {"Runs", true}, {"Median", true}, {"Spread", true}, {"Last", true}, {"Trend", true}});
  for (const auto& time : times) {
    const std::string sign = time.Trend > 0 ? "+" : "";
    table.Add({PartText(time.Part), std::to_string(time.Runs), FormatElapsed(time.Median),
               FormatElapsed(time.Low) + " to " + FormatElapsed(time.High), FormatElapsed(time.Last),
               time.Trend == 0 ? std::string("-") : sign + std::to_string(time.Trend) + " %"});
  }
  return table.Text(palette);
}

} // namespace kx::cli
