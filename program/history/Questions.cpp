#include "program/history/Questions.h"

#include "foundation/platform/Files.h"
#include "foundation/text/Text.h"
#include "program/history/HistoryFile.h"
#include "program/history/Past.h"

#include <algorithm>
#include <limits>
#include <tuple>
#include <unordered_map>

namespace kx::history {

namespace {

constexpr std::int64_t ChangesOfFlaky = 3; // failing, mended, failing again, mended again: nobody does that
constexpr std::size_t FewestForTrend = 6;
constexpr std::size_t LongestStrip = 100;
constexpr std::size_t MostTimes = 1'000; // of the newest runs, for what a test usually takes

using TTimes = std::vector<std::int32_t>; // milliseconds, in the order of the runs

std::int32_t Short(std::int64_t milliseconds) {
  return static_cast<std::int32_t>(
      std::min<std::int64_t>(milliseconds, std::numeric_limits<std::int32_t>::max()));
}

// So many tenths are below it; reorders.
std::chrono::milliseconds Quantile(TTimes& times, std::size_t tenths) {
  if (times.empty()) return {};
  const auto place = times.begin() + static_cast<std::ptrdiff_t>((times.size() - 1) * tenths / 10);
  std::ranges::nth_element(times, place);
  return std::chrono::milliseconds(*place);
}

int TrendOf(const TTimes& times) {
  if (times.size() < FewestForTrend) return 0;
  const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
  TTimes older(times.begin(), middle);
  TTimes newer(middle, times.end());
  const auto before = Quantile(older, 5).count();
  return before == 0 ? 0 : static_cast<int>((Quantile(newer, 5).count() - before) * 100 / before);
}

TUsualTime UsualTimeOf(const TPartName& part, TTimes times) {
  TUsualTime usual{.Part = part, .Runs = static_cast<std::int64_t>(times.size())};
  usual.Last = std::chrono::milliseconds(times.back());
  usual.Trend = TrendOf(times);
  usual.Median = Quantile(times, 5);
  usual.Low = Quantile(times, 1);
  usual.High = Quantile(times, 9);
  return usual;
}

// What the runs say of one test, one after the other.
struct TTestTally {
  TTestHistory History;
  TTimes Times;
  TPastTest Last = TPastTest::Absent;
  std::size_t LastPlace = 0;
  bool ChangedAtOneCommit = false;

  void Take(const TTestOutcome& test, std::size_t place, const std::vector<TRememberedRun>& runs) {
    const std::size_t first = runs.size() - std::min(runs.size(), LongestStrip);
    if (History.Strip.empty()) History.Strip.assign(runs.size() - first, TPastTest::Absent);
    if (place >= first) History.Strip[place - first] = test.Outcome;
    if (test.Outcome == TPastTest::NotRun) return;
    ++History.Runs;
    if (place + MostTimes >= runs.size()) Times.push_back(Short(test.Elapsed.count()));
    if (test.Outcome == TPastTest::Failed) {
      ++History.Failures;
      History.LastFailure = runs[place].Number;
    }
    if (Last != TPastTest::Absent && Last != test.Outcome) {
      ++History.Changes;
      const std::u16string& commit = runs[place].Run.Commit;
      ChangedAtOneCommit |= !commit.empty() && commit == runs[LastPlace].Run.Commit;
    }
    Last = test.Outcome;
    LastPlace = place;
  }

  TTestHistory Finish(std::u16string name) {
    History.Name = std::move(name);
    History.IsFlaky = ChangedAtOneCommit || History.Changes >= ChangesOfFlaky;
    History.Usual = Quantile(Times, 5);
    return std::move(History);
  }
};

std::string RunColumns() {
  return "run, branch, new_findings, fixed_findings, " + std::string(PastRunColumns);
}
constexpr int RunColumnCount = 13;

TRememberedRun MakeRun(const TStatement& row) {
  return {row.Integer(0), MakePastRun(row, 4), row.Text(1), row.Integer(2), row.Integer(3)};
}

} // namespace

TUsualTimes ReadUsualTimes(const std::u16string& file) {
  constexpr std::int64_t runs = 20; // the newest, since a project changes
  TUsualTimes usual;
  if (!platform::FileExists(file)) return usual;
  try {
    for (const auto& time : THistory(file).Times(runs)) {
      if (time.Part.Action.empty())
        usual.Run = time.Median;
      else if (time.Part.Configuration.empty())
        usual.Actions[time.Part.Action] = time.Median;
    }
  } catch (const EKxException&) { // it is a courtesy, and the end of the run says what is wrong
  }
  return usual;
}

THistory::THistory(const std::u16string& file) : database_(OpenToAsk(file)) {}

TNumber THistory::LastRun() {
  return database_.Integer("SELECT max(run) FROM runs");
}

TNumber THistory::FirstOf(std::int64_t last) {
  return std::max<TNumber>(LastRun() - last + 1, 1);
}

std::vector<TRememberedRun> THistory::Runs(std::int64_t last) {
  TStatement rows = database_.Prepare("SELECT " + RunColumns() + " FROM runs WHERE run >= ? ORDER BY run");
  rows.With(FirstOf(last));
  std::vector<TRememberedRun> runs;
  while (rows.Next())
    runs.push_back(MakeRun(rows));
  return runs;
}

std::vector<TRememberedPart> THistory::PartsOf(TNumber run) {
  TStatement rows = database_.Prepare(
      "SELECT a.text, c.text, p.text, nesting, result, errors, warnings, began, elapsed FROM parts "
      "JOIN names a ON a.id = action LEFT JOIN names c ON c.id = configuration "
      "LEFT JOIN names p ON p.id = project WHERE run = ? ORDER BY number");
  rows.With(run);
  std::vector<TRememberedPart> parts;
  while (rows.Next())
    parts.push_back({{rows.Text(0), rows.Text(1), rows.Text(2)},
                     static_cast<int>(rows.Integer(3)),
                     static_cast<TResultKind>(rows.Integer(4)),
                     {rows.Integer(5), rows.Integer(6)},
                     std::chrono::milliseconds(rows.Integer(7)),
                     std::chrono::milliseconds(rows.Integer(8))});
  return parts;
}

void THistory::ReadOutcomes(TRememberedDetails& details) {
  TStatement outcomes = database_.Prepare("SELECT tests, findings FROM outcomes WHERE run = ?");
  if (!outcomes.With(details.Run.Number).Next()) return;
  TStatement test = database_.Prepare("SELECT name FROM tests WHERE id = ?");
  UnpackTests(outcomes.Bytes(0), [&](TNumber number, const TTestOutcome& outcome) {
    if (outcome.Outcome == TPastTest::Failed && test.With(number).Next())
      details.FailedTests.push_back(test.Text(0));
  });
  TStatement finding =
      database_.Prepare("SELECT " + std::string(FindingColumns) + " FROM findings WHERE id = ?");
  for (const TNumber number : UnpackNumbers(outcomes.Bytes(1)))
    if (finding.With(number).Next()) details.Findings.push_back(MakeFinding(finding));
}

void THistory::ReadMetrics(TRememberedDetails& details) {
  TStatement rows =
      database_.Prepare("SELECT a.text, c.text, n.text, value FROM metrics "
                        "LEFT JOIN names a ON a.id = action LEFT JOIN names c ON c.id = configuration "
                        "LEFT JOIN names n ON n.id = name WHERE run = ? ORDER BY number");
  rows.With(details.Run.Number);
  while (rows.Next())
    details.Metrics.push_back({rows.Text(0), rows.Text(1), rows.Text(2), rows.Integer(3)});
}

std::optional<TRememberedDetails> THistory::Details(TNumber run) {
  TStatement row = database_.Prepare("SELECT " + RunColumns() +
                                     ", machine, system, command_line, tools FROM runs WHERE run = ?");
  if (!row.With(run).Next()) return std::nullopt;
  TRememberedDetails details{.Run = MakeRun(row)};
  details.Surroundings = {row.Text(RunColumnCount), row.Text(RunColumnCount + 1), details.Run.Run.Commit,
                          details.Run.Branch, row.Text(RunColumnCount + 2)};
  const std::u16string tools = row.Text(RunColumnCount + 3);
  for (const auto tool : text::SplitLines(tools))
    details.Surroundings.Tools.emplace_back(tool);
  details.Parts = PartsOf(run);
  ReadOutcomes(details);
  ReadMetrics(details);
  return details;
}

std::vector<TTestHistory> THistory::Tests(std::int64_t last) {
  const std::vector<TRememberedRun> runs = Runs(last);
  if (runs.empty()) return {};
  std::vector<TTestTally> tallies(static_cast<std::size_t>(database_.Integer("SELECT max(id) FROM tests")) +
                                  1);
  TStatement rows = database_.Prepare("SELECT run, tests FROM outcomes WHERE run >= ? ORDER BY run");
  rows.With(runs.front().Number);
  while (rows.Next()) {
    const auto run = std::ranges::lower_bound(runs, rows.Integer(0), {}, &TRememberedRun::Number);
    if (run == runs.end()) break;
    const auto place = static_cast<std::size_t>(run - runs.begin());
    UnpackTests(rows.Bytes(1), [&](TNumber test, const TTestOutcome& outcome) {
      tallies[static_cast<std::size_t>(test)].Take(outcome, place, runs);
    });
  }
  std::vector<TTestHistory> tests;
  TStatement names = database_.Prepare("SELECT id, name FROM tests");
  while (names.Next())
    if (auto& tally = tallies[static_cast<std::size_t>(names.Integer(0))]; !tally.History.Strip.empty())
      tests.push_back(tally.Finish(names.Text(1)));
  std::ranges::sort(tests, [](const TTestHistory& one, const TTestHistory& other) {
    const auto rank = [](const TTestHistory& test) {
      return std::tuple(!test.IsFlaky, test.IsFlaky ? -test.Changes : 0, -test.Usual);
    };
    return std::tuple(rank(one), std::u16string_view(one.Name)) <
           std::tuple(rank(other), std::u16string_view(other.Name));
  });
  return tests;
}

std::vector<TKnownFinding> THistory::Findings() {
  TStatement rows = database_.Prepare("SELECT since_run, since, " + std::string(FindingColumns) +
                                      " FROM findings WHERE last_run = ? ORDER BY since_run, id");
  rows.With(LastRun());
  std::vector<TKnownFinding> findings;
  while (rows.Next())
    findings.push_back({MakeFinding(rows, 2), rows.Integer(0), TimeOf(rows.Integer(1))});
  return findings;
}

std::vector<TUsualTime> THistory::Times(std::int64_t last) {
  TTimes wholes;
  for (const auto& run : Runs(last))
    if (run.Run.Result == TResultKind::Succeeded) wholes.push_back(Short(run.Run.Elapsed.count()));
  std::vector<TUsualTime> times;
  if (!wholes.empty()) times.push_back(UsualTimeOf({}, std::move(wholes)));

  using TKey = std::tuple<TNumber, TNumber, TNumber>;
  struct TPart {
    TTimes Times = {};
    std::pair<TNumber, TNumber> Place = {}; // the last run and the number there
  };
  std::map<TKey, TPart> parts;
  TStatement rows =
      database_.Prepare("SELECT action, configuration, project, elapsed, run, number FROM parts "
                        "WHERE run >= ? AND result = ?");
  rows.With(FirstOf(last), static_cast<std::int64_t>(TResultKind::Succeeded));
  while (rows.Next()) {
    TPart& part = parts[{rows.Integer(0), rows.Integer(1), rows.Integer(2)}];
    part.Times.push_back(Short(rows.Integer(3)));
    part.Place = {-rows.Integer(4), rows.Integer(5)};
  }
  std::unordered_map<TNumber, std::u16string> names;
  TStatement texts = database_.Prepare("SELECT id, text FROM names");
  while (texts.Next())
    names[texts.Integer(0)] = texts.Text(1);
  std::map<std::pair<std::pair<TNumber, TNumber>, TKey>, TUsualTime> inOrder;
  for (auto& [key, part] : parts) {
    const auto& [action, configuration, project] = key;
    inOrder[{part.Place, key}] =
        UsualTimeOf({names[action], names[configuration], names[project]}, std::move(part.Times));
  }
  for (auto& entry : inOrder)
    times.push_back(std::move(entry.second));
  return times;
}

} // namespace kx::history
