#include "program/history/Past.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

namespace kx::history {

namespace {

// The numbers of the runs, oldest first; the past gets what became of them.
std::vector<TNumber> ReadRuns(TDatabase& database, TPast& past) {
  std::vector<TNumber> numbers;
  TStatement rows =
      database.Prepare("SELECT run, " + std::string(PastRunColumns) + " FROM runs ORDER BY run DESC LIMIT ?");
  rows.With(std::int64_t{RunsOfPast});
  while (rows.Next()) {
    numbers.push_back(rows.Integer(0));
    past.Runs.push_back(MakePastRun(rows, 1));
  }
  std::ranges::reverse(numbers);
  std::ranges::reverse(past.Runs);
  return numbers;
}

void ReadFindings(TDatabase& database, const TRunReport& report, const std::vector<TNumber>& runs,
                  TPast& past) {
  const TLookedFor lookedFor(report);
  std::unordered_set<std::u16string> present;
  for (const auto& finding : report.Findings)
    present.insert(finding.Fingerprint);
  TStatement rows = database.Prepare("SELECT since_run, " + std::string(FindingColumns) +
                                     " FROM findings WHERE last_run = ? ORDER BY id");
  rows.With(runs.back());
  while (rows.Next()) {
    std::u16string fingerprint = rows.Text(1);
    if (!present.contains(fingerprint)) {
      TFinding finding = MakeFinding(rows, 1);
      if (lookedFor(finding.Action)) past.Fixed.push_back(std::move(finding));
      continue;
    }
    const auto since = std::ranges::lower_bound(runs, rows.Integer(0)); // the first one, when it is older
    past.KnownSince[std::move(fingerprint)] = static_cast<std::size_t>(since - runs.begin());
  }
}

void ReadTests(TDatabase& database, const std::map<std::u16string, TTestOutcome>& tests,
               const std::vector<TNumber>& runs, TPast& past) {
  std::unordered_map<TNumber, std::vector<TPastTest>*> strips;
  TStatement number = database.Prepare("SELECT id FROM tests WHERE name = ?");
  for (const auto& [name, outcome] : tests) {
    if (!number.With(name).Next()) continue;
    auto& strip = past.Tests[name];
    strip.assign(runs.size(), TPastTest::Absent);
    strips[number.Integer(0)] = &strip;
  }
  TStatement rows = database.Prepare("SELECT run, tests FROM outcomes WHERE run >= ?");
  rows.With(runs.front());
  while (rows.Next()) {
    const auto place =
        static_cast<std::size_t>(std::ranges::lower_bound(runs, rows.Integer(0)) - runs.begin());
    UnpackTests(rows.Bytes(1), [&](TNumber test, const TTestOutcome& outcome) {
      const auto strip = strips.find(test);
      if (strip != strips.end() && place < runs.size()) (*strip->second)[place] = outcome.Outcome;
    });
  }
}

} // namespace

std::chrono::system_clock::time_point TimeOf(std::int64_t milliseconds) {
  return std::chrono::system_clock::time_point(std::chrono::milliseconds(milliseconds));
}

TLookedFor::TLookedFor(const TRunReport& report)
    : none_(report.Result == TResultKind::Stopped || report.NothingExecuted || report.MoreFindings > 0),
      all_(!report.IsPartial) {
  std::set<std::u16string> skipped; // of two actions of one name perhaps one
  for (const TActionResult& action : report.Actions)
    (action.Result == TResultKind::Skipped ? skipped : ran_).insert(NameWithPass(action.Name, action.Pass));
  all_ = all_ && skipped.empty();
  for (const auto& name : skipped)
    ran_.erase(name);
}

bool TLookedFor::operator()(const std::u16string& action) const {
  return !none_ && (all_ || action.empty() || ran_.contains(action));
}

TPastRun MakePastRun(const TStatement& row, int first) {
  return {TimeOf(row.Integer(first)),
          static_cast<TResultKind>(row.Integer(first + 1)),
          std::chrono::milliseconds(row.Integer(first + 2)),
          {row.Integer(first + 3), row.Integer(first + 4)},
          {row.Integer(first + 5), row.Integer(first + 6), row.Integer(first + 7)},
          row.Text(first + 8)};
}

TFinding MakeFinding(const TStatement& row, int first) {
  TFinding finding;
  finding.Fingerprint = row.Text(first);
  finding.Rule = row.Text(first + 1);
  finding.Severity = static_cast<TFindingSeverity>(row.Integer(first + 2));
  finding.Message = row.Text(first + 3);
  finding.Place = {row.Text(first + 4), static_cast<int>(row.Integer(first + 5)),
                   static_cast<int>(row.Integer(first + 6))};
  finding.Code = row.Text(first + 7);
  finding.Project = row.Text(first + 8);
  finding.Configuration = row.Text(first + 9);
  finding.Action = row.Text(first + 10);
  finding.Advice = row.Text(first + 11);
  return finding;
}

TPast ReadPast(TDatabase& database, const TRunReport& report,
               const std::map<std::u16string, TTestOutcome>& tests) {
  TPast past;
  const std::vector<TNumber> runs = ReadRuns(database, past);
  if (runs.empty()) return past;
  ReadFindings(database, report, runs, past);
  ReadTests(database, tests, runs, past);
  return past;
}

} // namespace kx::history
