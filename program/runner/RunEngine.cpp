#include "program/runner/RunEngine.h"

#include "contract/Services.h"
#include "foundation/platform/Files.h"
#include "foundation/platform/Process.h"
#include "foundation/text/WindowsPath.h"
#include "program/findings/SourceFiles.h"
#include "program/runner/DryRun.h"
#include "program/runner/ProjectFile.h"
#include "program/runner/Surroundings.h"
#include "program/runner/TestSuites.h"
#include "program/runner/Validation.h"

#include <algorithm>

namespace kx {

namespace {

// A process during which what the action says are the words of its tool.
class TToolProcess : public IKxProcess {
public:
  // `onFault` gets what is to be said about a tool that did not end by itself.
  TToolProcess(std::shared_ptr<IKxProcess> process, int& running,
               std::function<void(const std::u16string& text)> onFault)
      : process_(std::move(process)), running_(running), onFault_(std::move(onFault)) {}
  TKxProcessSettings& Settings() override { return process_->Settings(); }
  int GetExitCode() const override { return process_->GetExitCode(); }
  void Run() override {
    RunTool();
    if (GetExitCode() == ExitCodeTerminated) return;
    if (const std::u16string fault = platform::FaultOfExitCode(GetExitCode()); !fault.empty())
      onFault_(Settings().Executable + u" was ended by " + fault + u".");
  }

private:
  class TRunning {
  public:
    explicit TRunning(int& count) : count_(++count) {}
    ~TRunning() { --count_; }
    TRunning(const TRunning&) = delete;
    TRunning& operator=(const TRunning&) = delete;

  private:
    int& count_;
  };

  void RunTool() {
    const TRunning running(running_);
    process_->Run();
  }

  std::shared_ptr<IKxProcess> process_;
  int& running_;
  std::function<void(const std::u16string& text)> onFault_;
};

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

} // namespace

TRunEngine::TRunEngine(const TServiceRegistry& services, TKxEvent& stop, TRunSettings settings,
                       IKxActionHost& host)
    : Services(services), StopSignal(stop), KeyFile(std::move(settings.KeyFile)), Project(services, host),
      Variables(Project, std::move(settings.Variables)), Expressions(Project, Variables),
      Log(settings.Secrets ? std::move(settings.Secrets) : std::make_shared<TSecretMask>()),
      commandLine_(std::move(settings.CommandLine)), rules_(std::move(settings.Rules)),
      isDryRun_(settings.DryRun) {}

TRunReport TRunEngine::Run() {
  TDryRunFiles dryRunFiles(DryRunMessages());
  const TFileUpdatesScope files(isDryRun_ ? &dryRunFiles : nullptr);
  start_ = TRunClock::now();
  StopSignal.Clear();
  Variables.ForgetRun();
  report_ = {};
  report_.Began = std::chrono::system_clock::now();
  report_.File = Project.FileName;
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
  shown_ = 0;
  UpdateCounts();
  bool succeeded = true;
  if (Project.Actions().empty()) {
    succeeded = !Report(KxVerdictRules::NoActions, u"The project holds no actions.");
  } else {
    TStopWatcher watcher(StopSignal);
    watcher_ = &watcher;
    succeeded = RunNodes(Project.Actions());
    watcher_ = nullptr;
  }
  const TResultKind end = hasFailures_ ? TResultKind::FinishedWithFailures : SuccessKind();
  report_.Result = succeeded && !StopSignal.IsRaised() ? end : FailureKind();
  const auto wasRefused = [](const TActionResult& result) { return result.Reason == InvalidSettings; };
  report_.NothingExecuted = !hasExecuted_ && std::ranges::any_of(report_.Actions, wasRefused);
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

bool TRunEngine::RunNodes(const std::vector<std::unique_ptr<TActionNode>>& nodes) {
  for (const auto& node : nodes) {
    if (StopSignal.IsRaised()) return false;
    const TResultKind kind = RunNode(*node);
    if (IsSuccess(kind) || kind == TResultKind::Ignored) continue;
    if (kind == TResultKind::Stopped) return false;
    if (kind == TResultKind::Failed && node->OnFailure() == TOnFailure::Stop) return false;
    hasFailures_ = hasFailures_ || frames_.empty();
  }
  return true;
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
  return Finish(CheckSettings(node) && Execute(node));
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
  frames_.back().Execution.Breach(InvalidSettings);
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

TResultKind TRunEngine::Finish(bool returned) {
  watcher_->Leave();
  TExecution& execution = frames_.back().Execution;
  execution.EndConfiguration(FailureKind());
  if (returned) Judge(execution);
  if (!returned && execution.Counts().Errors == 0 && !StopSignal.IsRaised())
    Say({u"The action failed without a message.", TStatusTag::stError});
  const TResultKind kind = KindOf(execution, returned);
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

// --- The verdict ---

TResultKind TRunEngine::KindOf(const TExecution& execution, bool returned) const {
  TResultKind kind = SuccessKind();
  if (!returned || execution.IsBreached())
    kind = FailureKind();
  else if (execution.HasFailedChild())
    kind = TResultKind::FinishedWithFailures;
  else if (execution.HadNothingToDo())
    kind = TResultKind::NothingToDo;
  const bool isIgnored = execution.Node().OnFailure() == TOnFailure::Ignore;
  return isIgnored && !IsSuccess(kind) && kind != TResultKind::Stopped ? TResultKind::Ignored : kind;
}

TRuleSeverity TRunEngine::SeverityOf(std::u16string_view rule) const {
  const TVerdictRule* known = FindVerdictRule(rule);
  if (isDryRun_ && known != nullptr && known->NeedsRun) return TRuleSeverity::Off;
  if (const auto set = rules_.Find(rule)) return *set;
  if (const auto set = Project.Rules.Find(rule)) return *set;
  return known != nullptr ? known->Default : TRuleSeverity::Error; // a rule of a plug-in's own
}

bool TRunEngine::Report(std::u16string_view rule, std::u16string_view message) {
  const TRuleSeverity severity = SeverityOf(rule);
  if (severity == TRuleSeverity::Off) return false;
  const std::u16string text = std::u16string(message) + u" (rule " + std::u16string(rule) + u")";
  const bool isError = severity == TRuleSeverity::Error;
  TFinding finding = FindingHere();
  finding.Rule = rule;
  finding.Severity = isError ? TFindingSeverity::Error : TFindingSeverity::Warning;
  finding.Message = OneLine(message);
  findings_.Add(std::move(finding));
  Show({isError ? text : u"Warning : " + text, isError ? TStatusTag::stError : TStatusTag::stWarning});
  return isError;
}

void TRunEngine::ReportBreach(std::u16string_view rule, std::u16string_view message) {
  if (Report(rule, message)) frames_.back().Execution.Breach(rule);
}

void TRunEngine::JudgeErrors(const TExecution& execution) {
  const std::int64_t errors = execution.AnalysedErrors();
  if (errors == 0) return;
  ReportBreach(KxVerdictRules::ErrorsCounted, text::FromInteger(errors) +
                                                  (errors == 1 ? u" error was" : u" errors were") +
                                                  u" counted although the tool reports success.");
}

// Of an action that returned True.
void TRunEngine::Judge(const TExecution& execution) {
  JudgeErrors(execution);
  if (const auto* failed = execution.FailedConfiguration(); failed != nullptr && !execution.IsBreached())
    ReportBreach(KxVerdictRules::FailedConfiguration,
                 u"The configuration " + failed->Configuration + u" failed, although a later one succeeded.");
}

// --- What the actions say ---

TExecution* TRunEngine::Current(const TCustomKxAction& action) {
  return Innermost() == &action ? &frames_.back().Execution : nullptr;
}

TCustomKxAction* TRunEngine::Innermost() {
  return frames_.empty() ? nullptr : &frames_.back().Execution.Node().Action();
}

const TKxBaseIterator* TRunEngine::InnermostLoop() const {
  const auto found = std::find_if(frames_.rbegin(), frames_.rend(), [](const TFrame& frame) {
    const TKxBaseIterator* loop = frame.Execution.Node().Iterator();
    return loop != nullptr && loop->GetCurrentIteration() > 0;
  });
  return found == frames_.rend() ? nullptr : found->Execution.Node().Iterator();
}

std::u16string TRunEngine::PassOf(const TKxBaseIterator& loop) const {
  const auto value = Variables.Find(loop.GetLoopVariable());
  return value ? value->Text : text::FromInteger(loop.GetCurrentIteration());
}

void TRunEngine::Say(TMessageSent message) {
  if (held_) {
    held_->push_back(std::move(message));
    return;
  }
  if (toolsRunning_ > 0)
    TakeToolLine(message.Text);
  else if (message.Status == TStatusTag::stWarning || message.Status == TStatusTag::stError)
    findings_.TakeOwn(message.Text, message.Status, FindingHere());
  Show(std::move(message));
}

void TRunEngine::TakeToolLine(std::u16string_view line) {
  TToolProjects* projects = frames_.back().Execution.OpenProjects();
  if (projects != nullptr) projects->Read(line, TRunClock::now());
  findings_.TakeToolLine(line, [&](TFinding& finding) {
    SayWhere(finding);
    if (projects != nullptr) projects->Count(line, finding);
  });
}

void TRunEngine::Show(TMessageSent message) {
  if (frames_.empty()) {
    TProblemTally tally;
    tally.Take(message.Status, false);
    report_.Counts += tally.Counts();
  } else {
    frames_.back().Execution.Take(message.Status, toolsRunning_ > 0);
  }
  UpdateCounts();
  ++shown_;
  Log.Send(std::move(message));
}

void TRunEngine::Take(const TCustomKxAction& action, const TKxMetric& metric) {
  TExecution* execution = Current(action);
  if (execution == nullptr) return;
  execution->Take(metric);
  UpdateCounts();
  const auto* configuration = execution->OpenConfiguration();
  Log.Send({metric, configuration == nullptr ? std::u16string() : configuration->Configuration});
  if (const std::u16string* xml = TestSuiteXml(metric)) NameFailedTests(*xml);
}

void TRunEngine::NameFailedTests(const std::u16string& xml) {
  const auto suite = ReadTestSuite(xml);
  if (!suite) return;
  frames_.back().Execution.Take(suite->Counts());
  for (const auto& test : suite->Tests)
    if (test.Failed) {
      findings_.TakeFailedTest(test, FindingHere());
      Show({u"Test failed : " + test.Name + (test.Message.empty() ? u"" : u" : " + test.Message),
            TStatusTag::stError});
    }
}

void TRunEngine::SayWhere(TFinding& finding) const {
  finding.Said = shown_ + 1; // what tells it is shown next
  if (frames_.empty()) return;
  const TExecution& execution = frames_.back().Execution;
  finding.Action = NameWithPass(execution.Result().Name, execution.Result().Pass);
  if (const auto* open = execution.OpenConfiguration()) finding.Configuration = open->Configuration;
}

TFinding TRunEngine::FindingHere() const {
  TFinding finding;
  SayWhere(finding);
  return finding;
}

void TRunEngine::StartConfiguration(const TCustomKxAction& action, std::u16string_view name) {
  TExecution* execution = Current(action);
  if (execution == nullptr) return;
  execution->StartConfiguration(name);
  findings_.BeginTool();
}

void TRunEngine::EndConfiguration(const TCustomKxAction& action, TKxOutcome outcome) {
  TExecution* execution = Current(action);
  if (execution == nullptr || execution->OpenConfiguration() == nullptr) return;
  if (outcome != TKxOutcome::koFailed) JudgeErrors(*execution);
  TResultKind kind = outcome == TKxOutcome::koNothingToDo ? TResultKind::NothingToDo : SuccessKind();
  if (outcome == TKxOutcome::koFailed || !execution->OpenConfiguration()->Reason.empty())
    kind = FailureKind();
  execution->EndConfiguration(kind);
  UpdateCounts();
}

TToolProjects* TRunEngine::OpenProjects(const TCustomKxAction& action) {
  TExecution* execution = Current(action);
  return execution == nullptr ? nullptr : execution->OpenProjects();
}

void TRunEngine::ChangeStored(const TCustomKxAction& action, std::span<const std::u16string_view> properties,
                              const std::function<void()>& change) {
  const TActionNode* node = File == nullptr || isDryRun_ ? nullptr : Project.FindNode(action);
  if (node == nullptr) {
    change();
    return;
  }
  TSavePatience patience;
  patience.Say = [this](const std::u16string& message) { Say({message, TStatusTag::stNormal}); };
  patience.GoesOn = [this] { return !StopSignal.IsRaised(); };
  const auto stored = File->Change(*node, properties, change, patience);
  if (!stored) throw EKxException(u"The numbers cannot be stored, so they are not used. " + stored.Message());
}

void TRunEngine::UpdateCounts() {
  TProblemCounts counts = report_.Counts;
  for (const auto& frame : frames_)
    counts += frame.Execution.Counts();
  Log.SetCounts(counts);
}

std::shared_ptr<IKxProcess> TRunEngine::NewProcess() {
  return std::make_shared<TToolProcess>(isDryRun_ ? NewDryRunProcess(DryRunMessages())
                                                  : NewSystemProcess(StopSignal),
                                        toolsRunning_, [this](const std::u16string& text) {
                                          Say({u"Warning : " + text, TStatusTag::stWarning});
                                        });
}

} // namespace kx
