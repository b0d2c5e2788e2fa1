#include "program/history/RunRecorder.h"

#include "foundation/text/Text.h"
#include "program/history/HistoryFile.h"
#include "program/history/Past.h"

#include <set>

namespace kx::history {

namespace {

std::int64_t Milliseconds(std::chrono::system_clock::time_point time) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch()).count();
}

// Adds one run in a transaction that the caller has begun.
class TAddition {
public:
  TAddition(TDatabase& database, const TRunReport& report)
      : database_(database), report_(report), last_(database.Integer("SELECT max(run) FROM runs")),
        run_(last_ + 1), name_(database.Prepare(
                             "INSERT INTO names(text, last_run) VALUES(?, ?) ON CONFLICT(text) DO UPDATE SET "
                             "last_run = excluded.last_run RETURNING id")) {}

  void Add(const std::map<std::u16string, TTestOutcome>& tests,
           const std::vector<TRememberedMetric>& metrics) {
    TStatement outcomes = database_.Prepare("INSERT INTO outcomes VALUES(?, ?, ?)");
    outcomes.With(run_, TBytes(PackTests(NumberTests(tests))), TBytes(PackNumbers(AddFindings()))).Run();
    AddRun();
    for (const auto& action : report_.Actions)
      AddAction(action);
    AddMetrics(metrics);
  }

  void Prune(const TLimits& limits) {
    const auto youngest = report_.Began - limits.Age;
    TStatement oldest = database_.Prepare("SELECT min(run) FROM runs WHERE run > ? AND began >= ?");
    const std::int64_t first = oldest.With(run_ - limits.Runs, Milliseconds(youngest)).Only();
    if (database_.Integer("SELECT min(run) FROM runs") >= first) return;
    for (const std::string table : {"runs", "outcomes", "parts", "metrics"})
      database_.Prepare("DELETE FROM " + table + " WHERE run < ?").With(first).Run();
    for (const std::string table : {"names", "tests", "findings"})
      database_.Prepare("DELETE FROM " + table + " WHERE last_run < ?").With(first).Run();
  }

private:
  std::int64_t NumberOf(const std::u16string& name) {
    if (name.empty()) return 0;
    const auto [place, isNew] = names_.try_emplace(name, 0);
    if (isNew) place->second = name_.With(name, run_).Only();
    return place->second;
  }

  std::map<TNumber, TTestOutcome> NumberTests(const std::map<std::u16string, TTestOutcome>& tests) {
    TStatement add = database_.Prepare("INSERT INTO tests(name, last_run) VALUES(?, ?) ON CONFLICT(name) DO "
                                       "UPDATE SET last_run = excluded.last_run RETURNING id");
    std::map<TNumber, TTestOutcome> numbered;
    for (const auto& [name, outcome] : tests)
      numbered[add.With(name, run_).Only()] = outcome;
    return numbered;
  }

  // What was there in the run before is there since the same run as then.
  std::set<TNumber> AddFindings() {
    TStatement add = database_.Prepare(
        "INSERT INTO findings(" + std::string(FindingColumns) +
        ", since_run, since, last_run) VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?) ON "
        "CONFLICT(fingerprint) "
        "DO UPDATE SET severity = excluded.severity, message = excluded.message, line = excluded.line, "
        "\"column\" = excluded.\"column\", "
        "since_run = CASE WHEN last_run >= excluded.last_run - 1 THEN since_run ELSE excluded.since_run END, "
        "since = CASE WHEN last_run >= excluded.last_run - 1 THEN since ELSE excluded.since END, "
        "last_run = excluded.last_run RETURNING id");
    std::set<TNumber> present;
    for (const auto& finding : report_.Findings)
      present.insert(add.With(finding.Fingerprint, finding.Rule, static_cast<std::int64_t>(finding.Severity),
                              finding.Message, finding.Place.File, std::int64_t{finding.Place.Line},
                              std::int64_t{finding.Place.Column}, finding.Code, finding.Project,
                              finding.Configuration, finding.Action, finding.Advice, run_,
                              Milliseconds(report_.Began), run_)
                         .Only());
    KeepWhatWasNotLookedFor();
    return present;
  }

  // It is as it was.
  void KeepWhatWasNotLookedFor() {
    const TLookedFor lookedFor(report_);
    TStatement before = database_.Prepare("SELECT id, action FROM findings WHERE last_run = ?");
    before.With(last_);
    std::vector<TNumber> kept;
    while (before.Next())
      if (!lookedFor(before.Text(1))) kept.push_back(before.Integer(0));
    TStatement keep = database_.Prepare("UPDATE findings SET last_run = ? WHERE id = ?");
    for (const TNumber finding : kept)
      keep.With(run_, finding).Run();
  }

  std::int64_t CountFindings(const char* condition) {
    TStatement count = database_.Prepare(std::string("SELECT count(*) FROM findings WHERE ") + condition);
    return count.With(last_ > 0 ? run_ : -1).Only(); // nothing is new in the first run
  }

  void AddRun() {
    const TRunSurroundings& on = report_.Surroundings;
    TStatement add =
        database_.Prepare("INSERT INTO runs VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
    add.With(run_, Milliseconds(report_.Began), static_cast<std::int64_t>(report_.Result),
             std::int64_t{report_.Elapsed.count()}, report_.Counts.Errors, report_.Counts.Warnings,
             report_.Tests.Passed, report_.Tests.Failed, report_.Tests.NotRun, CountFindings("since_run = ?"),
             CountFindings("last_run = ? - 1"), on.Machine, on.System, on.Commit, on.Branch, on.CommandLine,
             text::Join(on.Tools, u"\n"))
        .Run();
  }

  template <typename TPart>
  void AddPart(const TPart& part, int nesting, const std::u16string& action,
               const std::u16string& configuration, const std::u16string& project) {
    part_
        .With(run_, partCount_++, std::int64_t{nesting}, NumberOf(action), NumberOf(configuration),
              NumberOf(project), static_cast<std::int64_t>(part.Result), std::int64_t{part.Began.count()},
              std::int64_t{part.Elapsed.count()}, part.Counts.Errors, part.Counts.Warnings)
        .Run();
  }

  void AddAction(const TActionResult& action) {
    const std::u16string name = NameWithPass(action.Name, action.Pass);
    AddPart(action, action.Nesting, name, {}, {});
    for (const auto& configuration : action.Configurations) {
      AddPart(configuration, action.Nesting, name, configuration.Configuration, {});
      for (const auto& project : configuration.Projects)
        AddPart(project, action.Nesting, name, configuration.Configuration, project.Project);
    }
  }

  void AddMetrics(const std::vector<TRememberedMetric>& metrics) {
    TStatement add = database_.Prepare("INSERT INTO metrics VALUES(?, ?, ?, ?, ?, ?)");
    std::int64_t number = 0;
    for (const auto& metric : metrics)
      add.With(run_, number++, NumberOf(metric.Action), NumberOf(metric.Configuration), NumberOf(metric.Name),
               metric.Value)
          .Run();
  }

  TDatabase& database_;
  const TRunReport& report_;
  const std::int64_t last_; // the run before, 0 for none
  const std::int64_t run_;
  TStatement name_;
  TStatement part_ = database_.Prepare("INSERT INTO parts VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
  std::int64_t partCount_ = 0;
  std::map<std::u16string, std::int64_t> names_;
};

} // namespace

TRunRecorder::TRunRecorder(const TPlace& place, const std::u16string& project, TLimits limits)
    : file_(place.FileFor(project)), isOwn_(place.IsOwn()), limits_(limits) {}

void TRunRecorder::On(const TRunEvent& event) {
  if (file_.empty()) return;
  suiteNames_.On(event);
  if (const auto* started = std::get_if<TActionStarted>(&event.What)) {
    actions_.push_back(NameWithPass(started->Name, started->Pass));
  } else if (std::holds_alternative<TActionEnded>(event.What)) {
    if (!actions_.empty()) actions_.pop_back();
  } else if (const auto* sent = std::get_if<TMetricSent>(&event.What)) {
    Keep(*sent);
  }
}

void TRunRecorder::Keep(const TMetricSent& sent) {
  if (const std::u16string* xml = TestSuiteXml(sent.Metric)) return KeepTests(suiteNames_.Rename(*xml));
  const auto* number = std::get_if<std::int64_t>(&sent.Metric.Value);
  if (number == nullptr) return;
  metrics_.push_back({ActionOf(sent, actions_), sent.Configuration,
                      sent.Metric.Category + u"." + sent.Metric.Name, *number});
}

// Of tests of one name, such as the rows of a table, the worst one counts.
void TRunRecorder::KeepTests(const std::u16string& xml) {
  const auto suite = ReadTestSuite(xml);
  if (!suite) return;
  for (const auto& test : suite->Tests) {
    TTestOutcome& kept = tests_[PastNameOf(*suite, test)];
    if (kept.Outcome != TPastTest::Failed) kept.Outcome = OutcomeOf(test);
    kept.Elapsed += ElapsedOf(test.Seconds);
  }
}

void TRunRecorder::ReadAndAdd(TRunReport& report) {
  TDatabase database = OpenToAdd(file_);
  report.Past = std::make_shared<const TPast>(ReadPast(database, report, tests_));
  TTransaction transaction(database);
  TAddition addition(database, report);
  addition.Add(tests_, metrics_);
  addition.Prune(limits_);
  if (IsSuccess(report.Result)) database.Execute("DELETE FROM passed"); // there is nothing to resume
  transaction.Commit();
}

std::u16string TRunRecorder::Finish(TRunReport& report) {
  if (file_.empty()) return {};
  const auto failed = [this](const EKxException& error) {
    return u"Warning : the run is not in the history " + file_ + u". " + error.Message();
  };
  try {
    ReadAndAdd(report);
    return {};
  } catch (const EDatabase& error) {
    const std::u16string aside = error.IsDamaged() ? SetAside(file_, isOwn_) : std::u16string();
    if (aside.empty()) return failed(error);
    try {
      ReadAndAdd(report);
    } catch (const EKxException& again) {
      return failed(again);
    }
    return u"Warning : the history " + file_ + u" was damaged; a new one begins, the old one is " + aside;
  } catch (const EKxException& error) {
    return failed(error);
  }
}

} // namespace kx::history
