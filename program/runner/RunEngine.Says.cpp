// What actions say while they run, and the processes that they start.
#include "program/runner/RunEngine.h"
#include "foundation/platform/Process.h"
#include "program/runner/DryRun.h"
#include "program/runner/ProjectFile.h"
#include "program/runner/TestSuites.h"

#include <algorithm>
#include <utility>

namespace kx {

namespace {

// A process during which what the action says are the words of its tool.
class TToolProcess : public IKxProcess {
public:
  // `onFault` gets what is to be said about a tool that did not end by itself.
  TToolProcess(std::shared_ptr<IKxProcess> process, int& running, std::u16string& lastTool,
               std::function<void(const std::u16string& text)> onFault)
      : process_(std::move(process)), running_(running), lastTool_(lastTool), onFault_(std::move(onFault)) {}
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
    lastTool_ = Settings().Executable;
    process_->Run();
  }

  std::shared_ptr<IKxProcess> process_;
  int& running_;
  std::u16string& lastTool_;
  std::function<void(const std::u16string& text)> onFault_;
};

} // namespace

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
  if (limit_ != nullptr) {
    // An action takes whatever ends it for the user.
    if (message.Text == TerminatedByUser && limit_->Signal().IsRaised() && !StopSignal.IsRaised()) return;
    limit_->NoteWord();
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
  if (message.Status == TStatusTag::stError && firstError_.empty()) firstError_ = OneLine(message.Text);
  if (attemptsAhead_ > 0 && message.Status == TStatusTag::stError) message.Status = TStatusTag::stWarning;
  Log.Send(std::move(message));
}

void TRunEngine::EndGroup(std::optional<TStatusTag> status) {
  if (attemptsAhead_ > 0 && status == TStatusTag::stError) status = TStatusTag::stWarning;
  Log.EndGroup(status);
}

void TRunEngine::Take(const TCustomKxAction& action, const TKxMetric& metric) {
  TExecution* execution = Current(action);
  if (execution == nullptr) return;
  execution->Take(metric);
  UpdateCounts();
  const auto* configuration = execution->OpenConfiguration();
  TMetricSent sent{metric, configuration == nullptr ? std::u16string() : configuration->Configuration};
  if (attemptsAhead_ > 0) {
    sent.Source = SourceHere();
    metricsAhead_.push_back(std::move(sent));
  } else {
    Log.Send(std::move(sent));
  }
  if (const std::u16string* xml = TestSuiteXml(metric)) NameFailedTests(*xml);
}

TMetricSource TRunEngine::SourceHere() const {
  const TActionResult& innermost = frames_.back().Execution.Result();
  TMetricSource source{NameWithPass(innermost.Name, innermost.Pass)};
  for (const auto& frame : frames_)
    source.Passes.push_back(frame.Execution.Result().Pass);
  return source;
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
  if (isCounted_ || HasCounted(properties)) return;
  const TActionNode* node = File == nullptr || isDryRun_ ? nullptr : Project.FindNode(action);
  if (node == nullptr) {
    hasUnstoredNumbers_ = true;
    change();
    NoteCounted(properties);
    return;
  }
  TSavePatience patience;
  patience.Say = [this](const std::u16string& message) { Say({message, TStatusTag::stNormal}); };
  patience.GoesOn = [this] { return !StopSignal.IsRaised(); };
  const auto stored = File->Change(*node, properties, change, patience);
  if (!stored) throw EKxException(u"The numbers cannot be stored, so they are not used. " + stored.Message());
  NoteCounted(properties);
}

// An execution counts up once, however many attempts it takes.
bool TRunEngine::HasCounted(std::span<const std::u16string_view> properties) const {
  return !frames_.empty() && std::ranges::all_of(properties, [this](std::u16string_view property) {
    return std::ranges::find(frames_.back().Counted, property) != frames_.back().Counted.end();
  });
}

void TRunEngine::NoteCounted(std::span<const std::u16string_view> properties) {
  if (frames_.empty() || frames_.back().Execution.Node().Terms().Retries == 0) return;
  auto& counted = frames_.back().Counted;
  counted.insert(counted.end(), properties.begin(), properties.end());
}

void TRunEngine::UpdateCounts() {
  TProblemCounts counts = report_.Counts;
  for (const auto& frame : frames_)
    counts += frame.Execution.Counts();
  Log.SetCounts(counts);
}

std::shared_ptr<IKxProcess> TRunEngine::NewProcess() {
  return std::make_shared<TToolProcess>(isDryRun_ ? NewDryRunProcess(DryRunMessages())
                                                  : NewSystemProcess(Stop()),
                                        toolsRunning_, lastTool_, [this](const std::u16string& text) {
                                          Say({u"Warning : " + text, TStatusTag::stWarning});
                                        });
}

} // namespace kx
