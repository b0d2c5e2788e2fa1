#include "program/runner/RunEngine.h"

#include "contract/Services.h"
#include "foundation/platform/Files.h"
#include "foundation/text/WindowsPath.h"
#include "program/findings/SourceFiles.h"
#include "program/runner/ActionGraph.h"
#include "program/runner/Conditions.h"
#include "program/runner/DryRun.h"
#include "program/runner/Messages.h"
#include "program/runner/Surroundings.h"
#include "program/runner/Validation.h"

#include <algorithm>
#include <map>
#include <utility>

namespace kx {

namespace {

// While it lives, every change of a file goes to `files` (none: to the files themselves).
class TFileUpdatesScope {
public:
  explicit TFileUpdatesScope(IKxFileUpdates* files) : before_(CurrentServices()) {
    TKxServices services = before_;
    services.Files = files;
    SetServices(services);
  }
  ~TFileUpdatesScope() { SetServices(before_); }
  TFileUpdatesScope(const TFileUpdatesScope&) = delete;
  TFileUpdatesScope& operator=(const TFileUpdatesScope&) = delete;

private:
  TKxServices before_;
};

// Of its outermost actions, of which it has some.
bool WasAllSkipped(const TRunReport& report) {
  return !report.Actions.empty() && std::ranges::all_of(report.Actions, [](const TActionResult& action) {
    return action.Result == TResultKind::Skipped;
  });
}

} // namespace

TRunEngine::TRunEngine(const TServiceRegistry& services, TKxEvent& stop, TRunSettings settings,
                       IKxActionHost& host)
    : Services(services), StopSignal(stop), KeyFile(std::move(settings.KeyFile)), Project(services, host),
      Variables(Project, std::move(settings.Variables)), Expressions(Project, Variables),
      Log(settings.Secrets ? std::move(settings.Secrets) : std::make_shared<TSecretMask>()),
      commandLine_(std::move(settings.CommandLine)), rules_(std::move(settings.Rules)),
      isDryRun_(settings.DryRun) {}

std::vector<std::size_t> TRunEngine::Places() const {
  return Choice.Only ? *Choice.Only : AllPlaces(Project);
}

void TRunEngine::CountUp() {
  if (Choice.NumbersAreCounted) return;
  isCounted_ = false;
  for (const std::size_t place : Places()) {
    const TActionNode& node = *Project.Actions().at(place);
    if (WouldBeSkipped(node)) continue;
    CountUp(node);
  }
}

// A faulty condition is told of when the action's turn comes.
bool TRunEngine::WouldBeSkipped(const TActionNode& node) const {
  try {
    return !Holds(node);
  } catch (const std::exception&) {
    return true;
  }
}

void TRunEngine::CountUp(const TActionNode& node) {
  node.Action().CountUp();
  for (const auto& child : node.Children())
    CountUp(*child);
}

TRunReport TRunEngine::Run() {
  TDryRunFiles dryRunFiles(DryRunMessages());
  const TFileUpdatesScope files(isDryRun_ ? &dryRunFiles : nullptr);
  start_ = TRunClock::now();
  StopSignal.Clear();
  Variables.ForgetRun();
  report_ = {};
  report_.Began = std::chrono::system_clock::now();
  report_.File = Project.FileName;
  if (Choice.WithoutNeeds && Choice.Only && Choice.Only->size() == 1)
    report_.Part = TPartOfRun{.Place = Choice.Only->front(), .Pass = Choice.OnlyPass};
  report_.Surroundings = SurroundingsOf(OwnFolder());
  report_.Surroundings.CommandLine = commandLine_;
  findings_ = {};
  if (OnFinding)
    findings_.WhenChanged([this](std::size_t place, TFinding finding) {
      Log.Mask(finding);
      OnFinding(place, std::move(finding));
    });
  hasExecuted_ = false;
  hasFailures_ = false;
  isCounted_ = Choice.NumbersAreCounted;
  isGraphRefused_ = false;
  shown_ = 0;
  UpdateCounts();
  bool succeeded = true;
  if (Project.Actions().empty()) {
    succeeded = !Report(KxVerdictRules::NoActions, u"The project holds no actions.");
  } else {
    TStopWatcher watcher(StopSignal);
    watcher_ = &watcher;
    succeeded = RunParts();
    watcher_ = nullptr;
  }
  const TResultKind end = hasFailures_             ? TResultKind::FinishedWithFailures
                          : WasAllSkipped(report_) ? TResultKind::NothingToDo
                                                   : SuccessKind();
  report_.Result = succeeded && !StopSignal.IsRaised() ? end : FailureKind();
  const auto wasRefused = [](const TActionResult& result) { return result.Reason == InvalidSettings; };
  report_.NothingExecuted =
      !hasExecuted_ && (isGraphRefused_ || std::ranges::any_of(report_.Actions, wasRefused));
  // What has not begun has not finished.
  if (report_.NothingExecuted && !IsSuccess(report_.Result)) report_.Result = FailureKind();
  report_.Elapsed = ElapsedSince(start_);
  report_.MoreFindings = findings_.More();
  report_.Findings = findings_.Take();
  if (!report_.Findings.empty()) report_.Root = FindSourceRoot(OwnFolder());
  return Log.EndRun(std::move(report_));
}

std::u16string TRunEngine::OwnFolder() const {
  return Project.FileName.empty() ? platform::CurrentDirectory() : text::ExtractFileDir(Project.FileName);
}

TSchedule TRunEngine::MakeSchedule(const std::vector<std::size_t>& places, const TActionGraph* graph) const {
  std::map<std::size_t, std::size_t> order; // in the schedule, by place
  for (std::size_t i = 0; i < places.size(); ++i)
    order.emplace(places[i], i);
  std::vector<TScheduled> parts;
  for (std::size_t i = 0; i < places.size(); ++i) {
    parts.push_back({{}, i, Project.Actions().at(places[i])->OnFailure()});
    if (graph == nullptr) continue;
    for (const TActionNeed& need : graph->NeedsOf(places[i]))
      if (const auto part = order.find(need.Action); part != order.end())
        parts.back().Needs.push_back({part->second, need.MustSucceed});
  }
  return TSchedule(std::move(parts), Choice.KeepGoing);
}

// The actions of the outermost level.
bool TRunEngine::RunParts() {
  const auto places = Places();
  std::optional<TActionGraph> graph;
  try {
    if (!Choice.WithoutNeeds) graph.emplace(Project);
    if (graph && !isCounted_ && !graph->IsPlain()) {
      CountUp();
      isCounted_ = true;
    }
  } catch (const EKxException& error) {
    isGraphRefused_ = true;
    Say({error.Message(), TStatusTag::stError});
    return false;
  }
  TSchedule schedule = MakeSchedule(places, graph ? &*graph : nullptr);
  bool succeeded = true;
  while (const auto part = StopSignal.IsRaised() ? std::nullopt : schedule.Next()) {
    const TActionNode& node = *Project.Actions()[places[*part]];
    if (node.Iterator() != nullptr) node.Iterator()->SetOnlyPass(Choice.OnlyPass);
    const TResultKind kind = RunNode(node);
    schedule.End(*part, kind);
    const bool isFine = IsSuccess(kind) || kind == TResultKind::Ignored;
    succeeded = succeeded && GoesOnBehind(kind, node.OnFailure());
    hasFailures_ = hasFailures_ || (!isFine && GoesOnBehind(kind, node.OnFailure()));
  }
  const bool isChosen = Choice.Only && !report_.Part && places.size() < Project.Actions().size();
  report_.IsPartial = report_.IsPartial || isChosen || !schedule.NotRun().empty();
  if (!schedule.IsCutShort() && !StopSignal.IsRaised()) SkipHeldUp(schedule, places);
  return succeeded;
}

// What has not run although the run went on.
void TRunEngine::SkipHeldUp(const TSchedule& schedule, const std::vector<std::size_t>& places) {
  for (const std::size_t part : schedule.NotRun()) {
    Begin(*Project.Actions()[places[part]]);
    const std::size_t need = places[schedule.RefusedBy(part).value()];
    Skip(NeedsNotMet, NeedNotMet(Project.Actions()[need]->DisplayName()));
  }
}

bool TRunEngine::RunNodes(const std::vector<std::unique_ptr<TActionNode>>& nodes) {
  const bool wentOn = std::ranges::all_of(nodes, [this](const auto& node) {
    return !Stop().IsRaised() && GoesOnBehind(RunNode(*node), node->OnFailure());
  });
  report_.IsPartial = report_.IsPartial || !wentOn;
  return wentOn;
}

bool TRunEngine::RunChildren(const TKxBaseIterator& loop) {
  const TActionNode* node = Project.FindNode(loop);
  if (node == nullptr) return false;
  if (node->Children().empty() && loop.GetCurrentIteration() == 1)
    ReportBreach(KxVerdictRules::EmptyLoop, u"The loop holds no actions: its passes do nothing.");
  return RunNodes(node->Children());
}

TResultKind TRunEngine::RunNode(const TActionNode& node) {
  const TKxBaseIterator* loop = node.Iterator();
  const TVariables::TLoopScope scope(Variables, loop == nullptr ? u"" : loop->GetLoopVariable());
  Begin(node);
  const auto holds = ConditionHolds(node);
  if (holds == false)
    return Skip(ConditionNotMet, u"Skipped: its condition does not hold: " + node.Terms().Condition);
  if (holds != true || !CheckSettings(node)) {
    frames_.back().Execution.Breach(InvalidSettings);
    return Finish(KindOf(frames_.back().Execution, false));
  }
  const bool returned = AttemptAll(node);
  return Finish(KindOf(frames_.back().Execution, returned));
}

bool TRunEngine::Holds(const TActionNode& node) const {
  const std::u16string& condition = node.Terms().Condition;
  return text::Trim(condition).empty() || TCondition(condition).Holds([&](std::u16string_view reference) {
    return Expressions.Expand(node.Action(), reference);
  });
}

std::optional<bool> TRunEngine::ConditionHolds(const TActionNode& node) {
  try {
    return Holds(node);
  } catch (const std::exception& error) {
    Say({u"Condition : " + MessageOf(error), TStatusTag::stError});
    return std::nullopt;
  }
}

TResultKind TRunEngine::Skip(std::u16string_view reason, std::u16string message) {
  Say({std::move(message), TStatusTag::stNormal});
  frames_.back().Execution.Skip(reason);
  return Finish(TResultKind::Skipped);
}

void TRunEngine::Begin(const TActionNode& node) {
  const TKxBaseIterator* loop = InnermostLoop();
  TExecution execution(node, loop != nullptr ? PassOf(*loop) : std::u16string(),
                       static_cast<int>(frames_.size()), start_);
  const TActionResult& result = execution.Result();
  TActionStarted started{result.Name, result.Type, node.Action().GetFormattedDescription(), result.Pass,
                         result.Nesting};
  if (loop != nullptr)
    started.Position = {loop->GetPassUnit(), loop->GetCurrentIteration(), loop->GetIterationCount()};
  Log.StartAction(std::move(started));
  frames_.push_back({std::move(execution), report_.Actions.size()});
  findings_.BeginAction();
  watcher_->Enter(node.Action());
}

// What the action says while it looks at its settings matters only where they are wrong: its execution says
// it again.
bool TRunEngine::CheckSettings(const TActionNode& node) {
  TValidationEntries entries;
  held_.emplace();
  ValidateAction(Services, node, entries);
  const auto held = *std::exchange(held_, std::nullopt);
  if (entries.empty()) return true;
  for (const auto& message : held)
    Say(message);
  for (const auto& entry : entries)
    Say({entry.Page.empty() ? entry.Message : entry.Page + u" : " + entry.Message, TStatusTag::stError});
  return false;
}

bool TRunEngine::Execute(const TActionNode& node) {
  hasExecuted_ = hasExecuted_ || node.Iterator() == nullptr;
  try {
    return node.Action().Execute();
  } catch (const std::exception& error) {
    Say({MessageOf(error), TStatusTag::stError});
  } catch (...) {
    Say({u"The action failed without a message.", TStatusTag::stError});
  }
  return false;
}

// Under the limits of the action, if it has any: a dry run waits for nothing.
bool TRunEngine::Attempt(const TActionNode& node) {
  const TActionTerms& terms = node.Terms();
  lastTool_.clear();
  firstError_.clear();
  watcher_->BeginAttempt();
  if (isDryRun_ || (terms.TimeLimit.count() == 0 && terms.IdleLimit.count() == 0)) {
    const bool returned = Execute(node);
    EndAttempt(returned);
    return returned;
  }
  TLimitWatch watch(Stop(), limit_, terms.TimeLimit, terms.IdleLimit, [this] { watcher_->Tell(); });
  TLimitWatch* const above = std::exchange(limit_, &watch);
  const bool returned = Execute(node);
  if (!StopSignal.IsRaised() && watch.Reached() != TLimitKind::None) SayLimit(node, watch.Reached());
  EndAttempt(returned);
  limit_ = above;
  return returned;
}

// What is said and found in an attempt behind which there may be another is no error yet.
bool TRunEngine::AttemptAll(const TActionNode& node) {
  const int attempts = isDryRun_ ? 1 : 1 + node.Terms().Retries;
  const bool wasPartial = report_.IsPartial;
  const std::size_t metrics = metricsAhead_.size();
  for (int attempt = 1; attempt < attempts; ++attempt) {
    if (attempt > 1) SayAttempt(attempt, attempts);
    findings_.BeginAttempt();
    ++attemptsAhead_;
    const bool returned = Attempt(node);
    --attemptsAhead_;
    const bool counts = (returned && !frames_.back().Execution.IsBreached()) || Stop().IsRaised();
    findings_.EndAttempt(counts);
    if (counts) {
      if (attemptsAhead_ == 0) SendMetricsAhead();
      return returned;
    }
    TakeBack(attempt, attempts);
    metricsAhead_.erase(metricsAhead_.begin() + static_cast<std::ptrdiff_t>(metrics), metricsAhead_.end());
    report_.IsPartial = wasPartial;
  }
  if (attempts > 1) SayAttempt(attempts, attempts);
  return Attempt(node);
}

void TRunEngine::SendMetricsAhead() {
  for (auto& sent : std::exchange(metricsAhead_, {}))
    Log.Send(std::move(sent));
}

void TRunEngine::SayAttempt(int attempt, int attempts) {
  Say({u"Attempt " + text::FromInteger(attempt) + u" of " + text::FromInteger(attempts),
       TStatusTag::stNormal});
}

// The attempt has failed, and does not count: one warning says that it was made.
void TRunEngine::TakeBack(int attempt, int attempts) {
  const std::u16string why = firstError_;
  const auto taken = static_cast<int>(report_.Actions.size() - frames_.back().Place);
  report_.Actions.resize(frames_.back().Place); // those of its passes
  TExecution& execution = frames_.back().Execution;
  execution.BeginAnew();
  for (int before = 1; before < attempt; ++before)
    execution.Take(TStatusTag::stWarning, false); // as it was said of them
  Say({u"Warning : Attempt " + text::FromInteger(attempt) + u" of " + text::FromInteger(attempts) +
           u" failed, and another one follows" + (why.empty() ? u"." : u": " + why),
       TStatusTag::stWarning, false, taken});
}

void TRunEngine::SayLimit(const TActionNode& node, TLimitKind reached) {
  const bool isTime = reached == TLimitKind::Time;
  std::u16string text =
      isTime ? u"The action was ended: its time limit of " + LimitText(node.Terms().TimeLimit) + u" is over."
             : u"The action was ended: it had said nothing for " + LimitText(node.Terms().IdleLimit) +
                   u", its idle limit.";
  const std::u16string tool = text::ExtractFileName(lastTool_);
  if (!isTime && text::EqualsIgnoreCase(text::ChangeFileExt(tool, u""), u"devenv"))
    text += u" The likely cause: " + tool + u" shows a dialog that nobody sees and waits for an answer.";
  findings_.TakeLimit(text, FindingHere());
  Show({std::move(text), TStatusTag::stError});
  frames_.back().Execution.Breach(isTime ? TimeLimitReached : IdleLimitReached);
}

void TRunEngine::EndAttempt(bool returned) {
  TExecution& execution = frames_.back().Execution;
  execution.EndConfiguration(FailureKind());
  if (returned) Judge(execution);
  if (!returned && execution.Counts().Errors == 0 && !Stop().IsRaised())
    Say({u"The action failed without a message.", TStatusTag::stError});
}

TResultKind TRunEngine::Finish(TResultKind kind) {
  watcher_->Leave();
  TExecution& execution = frames_.back().Execution;
  findings_.EndAction();
  const std::size_t place = frames_.back().Place;
  TActionResult result = execution.Finish(kind);
  frames_.pop_back();
  if (frames_.empty()) {
    report_.Counts += result.Counts;
    report_.Tests += result.Tests;
  } else {
    frames_.back().Execution.Take(result);
  }
  UpdateCounts();
  report_.Actions.insert(report_.Actions.begin() + static_cast<std::ptrdiff_t>(place), result);
  Log.EndAction(std::move(result));
  return kind;
}

} // namespace kx
