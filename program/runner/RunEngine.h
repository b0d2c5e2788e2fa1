// The run of a project's actions, and the verdict over it.
#pragma once

#include "program/runner/ActionGraph.h"
#include "program/runner/EventLog.h"
#include "program/runner/Execution.h"
#include "program/runner/Expressions.h"
#include "program/runner/LimitWatch.h"
#include "program/runner/Project.h"
#include "program/runner/Run.h"
#include "program/runner/RunFindings.h"
#include "program/runner/Schedule.h"
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

  void CountUp(); // as TProjectRunner
  bool HasUnstoredNumbers() const { return hasUnstoredNumbers_; }
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
  void EndGroup(std::optional<TStatusTag> status);

  void ChangeStored(const TCustomKxAction& action, std::span<const std::u16string_view> properties,
                    const std::function<void()>& change); // as IKxActionHost

  std::shared_ptr<IKxProcess> NewProcess();
  // What ends the innermost action: the user's stop or a limit.
  const TKxEvent& Stop() const { return limit_ == nullptr ? StopSignal : limit_->Signal(); }

  const TServiceRegistry& Services;
  TKxEvent& StopSignal;
  const std::u16string KeyFile;
  TProject Project;
  TVariables Variables;
  TExpressionEngine Expressions;
  TEventLog Log;
  TRunChoice Choice;
  std::function<void(std::size_t place, TFinding finding)> OnFinding; // as TProjectRunner::WhenFound
  TProjectFile* File = nullptr; // stores what actions change; null: nothing does

private:
  struct TFrame {
    TExecution Execution;
    std::size_t Place;                        // in the report
    std::vector<std::u16string> Counted = {}; // stored properties that an attempt has counted up
  };

  std::vector<std::size_t> Places() const; // of the actions that are to be run
  void CountUp(const TActionNode& node);
  bool HasCounted(std::span<const std::u16string_view> properties) const;
  void NoteCounted(std::span<const std::u16string_view> properties);
  bool Holds(const TActionNode& node) const; // its condition; raises EExpressionError
  bool WouldBeSkipped(const TActionNode& node) const;
  std::u16string OwnFolder() const; // of the project
  const TKxBaseIterator* InnermostLoop() const;
  std::u16string PassOf(const TKxBaseIterator& loop) const;
  void TakeToolLine(std::u16string_view line);
  void Show(TMessageSent message);        // in the log, counted
  void SayWhere(TFinding& finding) const; // the action and the configuration that are under way
  TFinding FindingHere() const;           // one of them
  TMetricSource SourceHere() const;
  void SendMetricsAhead();
  bool RunParts();
  // Without a graph there are no needs.
  TSchedule MakeSchedule(const std::vector<std::size_t>& places, const TActionGraph* graph) const;
  void SkipHeldUp(const TSchedule& schedule, const std::vector<std::size_t>& places);
  bool RunNodes(const std::vector<std::unique_ptr<TActionNode>>& nodes);
  TResultKind RunNode(const TActionNode& node);
  void Begin(const TActionNode& node);
  std::optional<bool> ConditionHolds(const TActionNode& node); // nothing: it is faulty, as the log says
  TResultKind Skip(std::u16string_view reason, std::u16string message);
  bool CheckSettings(const TActionNode& node);
  bool Execute(const TActionNode& node);
  bool Attempt(const TActionNode& node);
  bool AttemptAll(const TActionNode& node);
  void SayAttempt(int attempt, int attempts);
  void TakeBack(int attempt, int attempts);
  void SayLimit(const TActionNode& node, TLimitKind reached);
  void EndAttempt(bool returned);
  TResultKind Finish(TResultKind kind);

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
  TLimitWatch* limit_ = nullptr;                  // of the innermost action that has limits
  std::u16string lastTool_;                       // of the attempt under way
  std::u16string firstError_;                     // of the attempt under way
  int attemptsAhead_ = 0;                         // of what is under way: its errors may not count
  std::vector<TMetricSent> metricsAhead_;         // nobody can take them back once they were told
  bool isCounted_ = false;                        // the numbers of this run
  bool hasUnstoredNumbers_ = false;
  bool isGraphRefused_ = false;
};

} // namespace kx
