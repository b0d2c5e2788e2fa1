#include "runner/Run.h"

#include "platform/Files.h"
#include "platform/System.h"
#include "runner/Base64.h"
#include "runner/DryRun.h"
#include "runner/EventLog.h"
#include "runner/StopWatcher.h"
#include "text/Encoding.h"

#include <algorithm>
#include <optional>

namespace kx {

namespace {

// One execution under way.
struct TFrame {
  const TActionNode* Node;
  TActionResult Result;
  bool Breached = false; // of a rule of the verdict
  TRunClock::time_point Start = TRunClock::now();
  TRunClock::time_point ConfigurationStart = Start;
};

std::u16string LocalValue(const TCustomKxAction& action, std::u16string_view name) {
  std::u16string value;
  return action.GetLocalVariableValue(name, value) ? value : std::u16string();
}

// "Release|Any CPU", as far as the action says what it is building.
std::u16string CurrentConfiguration(const TCustomKxAction& action) {
  const std::u16string name = LocalValue(action, u"CURRENTCONFIGNAME");
  const std::u16string platform = LocalValue(action, u"CURRENTPLATFORMNAME");
  return platform.empty() ? name : name + u"|" + platform;
}

// The results of one configuration begin with the first sign of life under its name.
TConfigurationResult* NoteConfiguration(TFrame& frame) {
  auto& all = frame.Result.Configurations;
  const std::u16string current = CurrentConfiguration(frame.Node->Action());
  if (current.empty()) return nullptr;
  if (all.empty() || all.back().Configuration != current) {
    if (!all.empty()) all.back().Elapsed = ElapsedSince(frame.ConfigurationStart);
    frame.ConfigurationStart = TRunClock::now();
    all.push_back({current, true, 0, 0, {}});
  }
  return &all.back();
}

void CountMetric(TFrame& frame, const TKxMetric& metric) {
  const auto* value = std::get_if<std::int64_t>(&metric.Value);
  if (metric.Category != u"Compiler" || value == nullptr) return;
  TConfigurationResult* configuration = NoteConfiguration(frame);
  if (metric.Name == u"Errors") {
    frame.Result.Errors += *value;
    if (configuration != nullptr) configuration->Errors += *value;
  } else if (metric.Name == u"Warnings") {
    frame.Result.Warnings += *value;
    if (configuration != nullptr) configuration->Warnings += *value;
  }
}

class TValidationCollector : public IKxActionValidationError {
public:
  TValidationCollector(const TServiceRegistry& services, const TActionNode& node,
                       std::vector<TValidationEntry>& entries)
      : services_(services), node_(node), entries_(entries) {}

  void Add(std::u16string_view page, std::u16string_view message, TKxOptionsObject* options) override {
    entries_.push_back(
        {node_.DisplayName(), std::u16string(page), std::u16string(message), ClassOf(options), &node_});
  }

private:
  const TKxOptionsClass* ClassOf(const TKxOptionsObject* options) const {
    const auto& all = services_.Options();
    const auto found = std::ranges::find_if(
        all, [options](const TRegisteredOptions& row) { return row.Object.get() == options; });
    return found == all.end() ? nullptr : found->Class;
  }

  const TServiceRegistry& services_;
  const TActionNode& node_;
  std::vector<TValidationEntry>& entries_;
};

} // namespace

struct TProjectRunner::TState {
  TState(const TServiceRegistry& services, TKxEvent& stop, TRunSettings settings, TProjectRunner& host)
      : Services(services), StopSignal(stop), KeyFile(std::move(settings.KeyFile)), Project(services, host),
        Variables(Project, std::move(settings.Variables)), Expressions(Project, Variables),
        IsDryRun(settings.DryRun) {}

  // What actions say while nothing runs (a getter asked by a listing) is for nobody.
  bool IsHeard() const { return !Frames.empty() || Validating; }
  TFrame* Current(const TCustomKxAction& action) {
    return !Frames.empty() && &Frames.back().Node->Action() == &action ? &Frames.back() : nullptr;
  }
  const TKxBaseIterator* InnermostLoop() const {
    const auto found = std::find_if(Frames.rbegin(), Frames.rend(), [](const TFrame& frame) {
      const TKxBaseIterator* loop = frame.Node->Iterator();
      return loop != nullptr && loop->GetCurrentIteration() > 0;
    });
    return found == Frames.rend() ? nullptr : found->Node->Iterator();
  }
  std::u16string Pass(const TKxBaseIterator& loop) const {
    const auto value = Variables.Find(loop.GetLoopVariable());
    return value ? value->Text : text::FromInteger(loop.GetCurrentIteration());
  }

  bool RunNodes(const std::vector<std::unique_ptr<TActionNode>>& nodes);
  bool RunNode(const TActionNode& node);
  void Begin(const TActionNode& node);
  bool Execute(TCustomKxAction& action);
  void Finish(bool succeeded);
  void ValidateNodes(const std::vector<std::unique_ptr<TActionNode>>& nodes,
                     std::vector<TValidationEntry>& entries);
  void CheckFiles(const std::vector<std::unique_ptr<TActionNode>>& nodes,
                  std::vector<TValidationNote>& notes);
  TDryRunMessages DryRunMessages() {
    return [this](std::u16string_view text) { Log.Send(text, TStatusTag::stNormal); };
  }

  const TServiceRegistry& Services;
  TKxEvent& StopSignal;
  std::u16string KeyFile;
  TProject Project;
  TVariables Variables;
  TExpressionEngine Expressions;
  TEventLog Log;
  std::vector<TFrame> Frames;
  TRunReport Report;
  TStopWatcher* Watcher = nullptr; // while a run is under way
  bool Validating = false;
  const bool IsDryRun;
};

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

} // namespace

bool TProjectRunner::TState::RunNodes(const std::vector<std::unique_ptr<TActionNode>>& nodes) {
  for (const auto& node : nodes) {
    if (StopSignal.IsRaised()) return false;
    if (!RunNode(*node) && !node->ContinueOnError()) return false;
  }
  return true;
}

bool TProjectRunner::TState::RunNode(const TActionNode& node) {
  const TKxBaseIterator* loop = node.Iterator();
  const TVariables::TLoopScope scope(Variables, loop == nullptr ? u"" : loop->GetLoopVariable());
  Begin(node);
  const bool succeeded = Execute(node.Action()) && !Frames.back().Breached;
  Finish(succeeded);
  return succeeded;
}

void TProjectRunner::TState::Begin(const TActionNode& node) {
  TFrame frame;
  frame.Node = &node;
  frame.Result.Name = node.DisplayName();
  frame.Result.Type = node.Type().Identifier;
  frame.Result.Nesting = static_cast<int>(Frames.size());
  const TKxBaseIterator* loop = InnermostLoop();
  if (loop != nullptr) frame.Result.Pass = Pass(*loop);
  TActionStarted started{frame.Result.Name, frame.Result.Type, node.Action().GetFormattedDescription(),
                         frame.Result.Pass, frame.Result.Nesting};
  if (loop != nullptr)
    started.Position = {loop->GetPassUnit(), loop->GetCurrentIteration(), loop->GetIterationCount()};
  Log.StartAction(std::move(started));
  Frames.push_back(std::move(frame));
  Watcher->Enter(node.Action());
}

bool TProjectRunner::TState::Execute(TCustomKxAction& action) {
  try {
    return action.Execute();
  } catch (const std::exception& error) {
    Log.Send(MessageOf(error), TStatusTag::stError);
  } catch (...) {
    Log.Send(u"The action failed without a message.", TStatusTag::stError);
  }
  return false;
}

void TProjectRunner::TState::Finish(bool succeeded) {
  Watcher->Leave();
  TFrame frame = std::move(Frames.back());
  Frames.pop_back();
  TActionResult& result = frame.Result;
  result.Succeeded = succeeded;
  result.Elapsed = ElapsedSince(frame.Start);
  if (!result.Configurations.empty()) {
    result.Configurations.back().Elapsed = ElapsedSince(frame.ConfigurationStart);
    if (!succeeded) result.Configurations.back().Succeeded = false;
  }
  Report.Actions.push_back(result);
  Log.EndAction(std::move(result));
}

void TProjectRunner::TState::ValidateNodes(const std::vector<std::unique_ptr<TActionNode>>& nodes,
                                           std::vector<TValidationEntry>& entries) {
  for (const auto& node : nodes) {
    TValidationCollector collector(Services, *node, entries);
    const std::size_t before = entries.size();
    try {
      if (!node->Action().Validate(collector) && entries.size() == before)
        collector.Add({}, u"The settings are not valid.", nullptr);
    } catch (const std::exception& error) {
      collector.Add({}, MessageOf(error), nullptr);
    }
    ValidateNodes(node->Children(), entries);
  }
}

// Several actions may change one file; it is named once for each.
void TProjectRunner::TState::CheckFiles(const std::vector<std::unique_ptr<TActionNode>>& nodes,
                                        std::vector<TValidationNote>& notes) {
  for (const auto& node : nodes) {
    text::TStringList files;
    node->Action().GetFilesToChange(files);
    for (const auto& file : files)
      if (const auto allowed = platform::CheckSaveFile(file); !allowed)
        notes.push_back({node->DisplayName(), allowed.Message()});
    CheckFiles(node->Children(), notes);
  }
}

TProjectRunner::TProjectRunner(const TServiceRegistry& services, TKxEvent& stop, TRunSettings settings)
    : state_(std::make_unique<TState>(services, stop, std::move(settings), *this)) {}
TProjectRunner::~TProjectRunner() = default;

TProject& TProjectRunner::Project() {
  return state_->Project;
}
void TProjectRunner::AddSink(IRunEventSink& sink) {
  state_->Log.AddSink(sink);
}

std::vector<TValidationEntry> TProjectRunner::Validate() {
  std::vector<TValidationEntry> entries;
  state_->Validating = true;
  state_->ValidateNodes(state_->Project.Actions(), entries);
  state_->Validating = false;
  return entries;
}

std::vector<TValidationNote> TProjectRunner::CheckFilesToChange() {
  std::vector<TValidationNote> notes;
  state_->CheckFiles(state_->Project.Actions(), notes);
  return notes;
}

TRunReport TProjectRunner::Run() {
  TDryRunFiles dryRunFiles(state_->DryRunMessages());
  const TFileUpdatesScope files(state_->IsDryRun ? &dryRunFiles : nullptr);
  state_->StopSignal.Clear();
  state_->Variables.ForgetRun();
  state_->Report = {};
  TStopWatcher watcher(state_->StopSignal);
  state_->Watcher = &watcher;
  const bool succeeded = state_->RunNodes(state_->Project.Actions());
  state_->Watcher = nullptr;
  state_->Report.Stopped = state_->StopSignal.IsRaised();
  state_->Report.Succeeded = succeeded && !state_->Report.Stopped;
  return std::move(state_->Report);
}

void TProjectRunner::SendMessage(TCustomKxAction& /*action*/, std::u16string_view text, TStatusTag status) {
  if (state_->IsHeard()) state_->Log.Send(text, status);
}

void TProjectRunner::StartMessageGroup(TCustomKxAction& action, std::u16string_view title,
                                       TMessageGroupType /*type*/, TStatusTag status) {
  if (TFrame* frame = state_->Current(action)) NoteConfiguration(*frame);
  if (state_->IsHeard()) state_->Log.StartGroup(title, status);
}

void TProjectRunner::EndMessageGroup(TCustomKxAction& action, std::optional<TStatusTag> status) {
  TFrame* frame = state_->Current(action);
  if (frame != nullptr && status == TStatusTag::stError && !frame->Result.Configurations.empty())
    frame->Result.Configurations.back().Succeeded = false;
  state_->Log.EndGroup(status);
}

void TProjectRunner::SendMetric(TCustomKxAction& action, const TKxMetric& metric) {
  if (TFrame* frame = state_->Current(action)) CountMetric(*frame, metric);
  if (state_->IsHeard()) state_->Log.Send({metric, CurrentConfiguration(action)});
}

void TProjectRunner::StartConfiguration(TCustomKxAction& /*action*/, std::u16string_view /*name*/) {}

void TProjectRunner::EndConfiguration(TCustomKxAction& /*action*/, TKxOutcome /*outcome*/) {}

void TProjectRunner::ReportBreach(TCustomKxAction& action, std::u16string_view /*rule*/,
                                  std::u16string_view message) {
  if (TFrame* frame = state_->Current(action)) frame->Breached = true;
  if (state_->IsHeard()) state_->Log.Send(message, TStatusTag::stError);
}

std::u16string TProjectRunner::Expand(TCustomKxAction& action, std::u16string_view text) {
  return state_->Expressions.Expand(action, text);
}

std::optional<std::u16string> TProjectRunner::GetVariable(std::u16string_view name) {
  auto* action = state_->Frames.empty() ? nullptr : &state_->Frames.back().Node->Action();
  return state_->Expressions.VariableValue(action, name);
}

void TProjectRunner::SetVariable(std::u16string_view name, std::u16string_view value) {
  state_->Variables.Set(name, value);
}

IPropertySetService& TProjectRunner::PropertySets() {
  return state_->Project.PropertySets;
}

std::u16string TProjectRunner::EncryptString(std::u16string_view clear) {
  if (clear.empty()) return {};
  state_->Log.KeepSecret(clear);
  const auto secret = platform::ProtectSecret(text::ToUtf8(clear), state_->KeyFile);
  if (!secret) throw EKxException(secret.Message());
  return ToBase64(*secret);
}

std::u16string TProjectRunner::DecryptString(std::u16string_view secret) {
  const auto bytes = FromBase64(secret);
  if (!bytes || bytes->empty()) return {};
  const auto clear = platform::UnprotectSecret(*bytes, state_->KeyFile);
  if (!clear) return {};
  std::u16string text = text::FromUtf8(*clear);
  state_->Log.KeepSecret(text);
  return text;
}

std::shared_ptr<IKxProcess> TProjectRunner::NewProcess(TCustomKxAction& /*action*/) {
  if (state_->IsDryRun) return NewDryRunProcess(state_->DryRunMessages());
  return NewSystemProcess(state_->StopSignal);
}

const TKxEvent& TProjectRunner::Stop() const {
  return state_->StopSignal;
}

bool TProjectRunner::RunChildren(TKxBaseIterator& iterator) {
  const TActionNode* node = state_->Project.FindNode(iterator);
  if (node == nullptr) return false;
  if (node->Children().empty() && iterator.GetCurrentIteration() == 1)
    iterator.ReportBreach(KxVerdictRules::EmptyLoop, u"The loop holds no actions: its passes do nothing.");
  return state_->RunNodes(node->Children());
}

bool TProjectRunner::IsValidating() const {
  return state_->Validating;
}

} // namespace kx
