// One execution of one action while it is under way.
#pragma once

#include "program/runner/EventLog.h"
#include "program/runner/ProblemTally.h"
#include "program/runner/Project.h"
#include "program/runner/ToolProjects.h"

#include <optional>
#include <string>
#include <string_view>

namespace kx {

// Books what the action says on the configuration that is open, else on the action itself, and makes its
// result of it at the end. Decides nothing about the run around it.
class TExecution {
public:
  TExecution(const TActionNode& node, std::u16string pass, int nesting, TRunClock::time_point runStart);

  const TActionNode& Node() const { return *node_; }
  const TActionResult& Result() const { return result_; } // as far as it has come

  // One at a time. One that begins while another is open ends that as failed; ending none does nothing.
  void StartConfiguration(std::u16string_view name);
  void EndConfiguration(TResultKind kind);
  const TConfigurationResult* OpenConfiguration() const { return open_ ? &open_->Result : nullptr; }
  TToolProjects* OpenProjects() { return open_ ? &open_->Projects : nullptr; }

  void Take(TStatusTag status, bool fromTool) { Tally().Take(status, fromTool); }
  void Take(const TKxMetric& metric) { Tally().Take(metric); }
  void Take(const TTestCounts& tests) { result_.Tests += tests; }
  void Take(const TActionResult& child); // of a loop
  // Those that the tool's analysis reported for what is open now.
  std::int64_t AnalysedErrors() const {
    return open_ ? open_->Tally.AnalysedErrors() : own_.AnalysedErrors();
  }
  TProblemCounts Counts() const; // of everything in it, so far

  // Another attempt begins: what was booked, and what spoke against it, is as if it had not been.
  void BeginAnew();

  // Something speaks against a success, for the configuration that is open and for the action. The first
  // reason counts; for the action one beside its configurations before those inside.
  void Breach(std::u16string_view reason);
  bool IsBreached() const { return !result_.Reason.empty(); }

  bool HasFailedChild() const { return hasFailedChild_; }
  const TConfigurationResult* FailedConfiguration() const; // the first; null when there is none
  // In any of its configurations, of which it has some; a loop: in any of its passes.
  bool HadNothingToDo() const;

  void Skip(std::u16string_view reason) { result_.Reason = reason; }
  // Configurations that failed in an action that is ignored are ignored with it.
  TActionResult Finish(TResultKind kind);

private:
  struct TOpenConfiguration {
    TConfigurationResult Result;
    TProblemTally Tally = {};
    TToolProjects Projects = {};
    TRunClock::time_point Start = TRunClock::now();
  };
  TProblemTally& Tally() { return open_ ? open_->Tally : own_; }

  const TActionNode* node_;
  TActionResult result_;
  TProblemTally own_;
  TProblemCounts inside_; // of ended configurations and children
  std::optional<TOpenConfiguration> open_;
  bool hasOwnReason_ = false;
  bool hasFailedChild_ = false;
  bool hasBusyChild_ = false;
  TRunClock::time_point runStart_;
  TRunClock::time_point start_ = TRunClock::now();
};

} // namespace kx
