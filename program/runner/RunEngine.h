// The run of a project's actions, and the verdict over it.
#pragma once

#include "program/runner/EventLog.h"
#include "program/runner/Execution.h"
#include "program/runner/Expressions.h"
#include "program/runner/Project.h"
#include "program/runner/Run.h"
#include "program/runner/RunFindings.h"
#include "program/runner/StopWatcher.h"
#include "program/runner/Variables.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kx {

// What a project runner consists of; its actions reach it through the runner.
class TRunEngine {
public:
  // `host` is what the actions see of it.
  TRunEngine(const TServiceRegistry& services, TKxEvent& stop, TRunSettings settings, IKxActionHost& host);

  TRunReport Run();
  bool RunChildren(const TKxBaseIterator& loop);
  bool IsRunning() const { return !frames_.empty(); }
  TCustomKxAction* Innermost(); // of the actions that are being executed; null when none is

  // What actions say. While nothing runs (a getter asked by a listing) it is for nobody.
  void Say(TMessageSent message);
  void Take(const TCustomKxAction& action, const TKxMetric& metric);
  void StartConfiguration(const TCustomKxAction& action, std::u16string_view name);
  void EndConfiguration(const TCustomKxAction& action, TKxOutcome outcome);
  TToolProjects* OpenProjects(const TCustomKxAction& action); // of the open configuration; else null
  void ReportBreach(std::u16string_view rule, std::u16string_view message); // of the innermost

  void ChangeStored(const TCustomKxAction& action, std::span<const std::u16string_view> properties,
                    const std::function<void()>& change); // as IKxActionHost

  std::shared_ptr<IKxProcess> NewProcess();

  const TServiceRegistry& Services;
  TKxEvent& StopSignal;
  const std::u16string KeyFile;
  TProject Project;
  TVariables Variables;
  TExpressionEngine Expressions;
  TEventLog Log;
  std::function<void(std::size_t place, TFinding finding)> OnFinding; // as TProjectRunner::WhenFound
  TProjectFile* File = nullptr; // stores what actions change; null: nothing does

private:
  struct TFrame {
    TExecution Execution;
    std::size_t Place; // in the report
  };

  std::u16string OwnFolder() const; // of the project
  const TKxBaseIterator* InnermostLoop() const;
  std::u16string PassOf(const TKxBaseIterator& loop) const;
  void TakeToolLine(std::u16string_view line);
  void Show(TMessageSent message);        // in the log, counted
  void SayWhere(TFinding& finding) const; // the action and the configuration that are under way
  TFinding FindingHere() const;           // one of them
  bool RunNodes(const std::vector<std::unique_ptr<TActionNode>>& nodes);
  TResultKind RunNode(const TActionNode& node);
  void Begin(const TActionNode& node);
  bool CheckSettings(const TActionNode& node);
  bool Execute(const TActionNode& node);
  TResultKind Finish(bool returned);

  TExecution* Current(const TCustomKxAction& action); // null unless it is the innermost
  TRuleSeverity SeverityOf(std::u16string_view rule) const;
  // An error or a warning in the log, or nothing, as the user has set it; True for an error.
  bool Report(std::u16string_view rule, std::u16string_view message);
  void JudgeErrors(const TExecution& execution);
  void Judge(const TExecution& execution);
  TResultKind FailureKind() const {
    return StopSignal.IsRaised() ? TResultKind::Stopped : TResultKind::Failed;
  }
  TResultKind SuccessKind() const { return isDryRun_ ? TResultKind::WouldRun : TResultKind::Succeeded; }
  TResultKind KindOf(const TExecution& execution, bool returned) const;

  void UpdateCounts();
  void NameFailedTests(const std::u16string& xml);
  auto DryRunMessages() {
    return [this](std::u16string_view text) { Say({std::u16string(text), TStatusTag::stNormal, true}); };
  }

  const std::u16string commandLine_;
  const TRuleSettings rules_; // of the command line
  const bool isDryRun_;
  TRunClock::time_point start_;
  std::vector<TFrame> frames_; // the innermost last
  TRunReport report_;
  TRunFindings findings_;
  int toolsRunning_ = 0;
  bool hasExecuted_ = false;                      // an action that is no loop
  bool hasFailures_ = false;                      // of actions behind which the run went on
  std::int64_t shown_ = 0;                        // messages of this run
  std::optional<std::vector<TMessageSent>> held_; // while an action is asked for its settings
  TStopWatcher* watcher_ = nullptr;               // while a run is under way
};

} // namespace kx
