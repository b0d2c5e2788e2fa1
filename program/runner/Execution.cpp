#include "program/runner/Execution.h"

#include <algorithm>

namespace kx {

TExecution::TExecution(const TActionNode& node, std::u16string pass, int nesting,
                       TRunClock::time_point runStart)
    : node_(&node), runStart_(runStart) {
  result_.Name = node.DisplayName();
  result_.Type = node.Type().Identifier;
  result_.Pass = std::move(pass);
  result_.Nesting = nesting;
  result_.IsLoop = node.Iterator() != nullptr;
  result_.Began = TimeBetween(runStart_, start_);
}

void TExecution::StartConfiguration(std::u16string_view name) {
  EndConfiguration(TResultKind::Failed);
  open_.emplace(TOpenConfiguration{{.Configuration = std::u16string(name)}});
  open_->Result.Began = TimeBetween(runStart_, open_->Start);
}

void TExecution::EndConfiguration(TResultKind kind) {
  if (!open_) return;
  if (kind == TResultKind::Stopped) open_->Tally.ForgetOwnErrors();
  TConfigurationResult& result = open_->Result;
  result.Result = kind;
  result.Counts = open_->Tally.Counts();
  result.Elapsed = ElapsedSince(open_->Start);
  result.Projects = open_->Projects.Take(runStart_, kind);
  inside_ += result.Counts;
  result_.Configurations.push_back(std::move(result));
  open_.reset();
}

void TExecution::Take(const TActionResult& child) {
  inside_ += child.Counts;
  result_.Tests += child.Tests;
  const bool failed = !IsSuccess(child.Result) && child.Result != TResultKind::Ignored;
  hasFailedChild_ = hasFailedChild_ || failed;
  hasBusyChild_ =
      hasBusyChild_ || (child.Result != TResultKind::NothingToDo && child.Result != TResultKind::Skipped);
}

TProblemCounts TExecution::Counts() const {
  TProblemCounts counts = inside_;
  counts += own_.Counts();
  if (open_) counts += open_->Tally.Counts();
  return counts;
}

void TExecution::BeginAnew() {
  open_.reset();
  own_ = {};
  inside_ = {};
  result_.Configurations.clear();
  result_.Tests = {};
  result_.Reason.clear();
  hasOwnReason_ = hasFailedChild_ = hasBusyChild_ = false;
}

void TExecution::Breach(std::u16string_view reason) {
  if (open_ && open_->Result.Reason.empty()) open_->Result.Reason = reason;
  const bool isOwn = !open_ && !hasOwnReason_;
  if (isOwn || result_.Reason.empty()) result_.Reason = reason;
  hasOwnReason_ = hasOwnReason_ || isOwn;
}

const TConfigurationResult* TExecution::FailedConfiguration() const {
  const auto found =
      std::ranges::find(result_.Configurations, TResultKind::Failed, &TConfigurationResult::Result);
  return found == result_.Configurations.end() ? nullptr : &*found;
}

bool TExecution::HadNothingToDo() const {
  if (result_.IsLoop) return !hasBusyChild_;
  return !result_.Configurations.empty() &&
         std::ranges::all_of(result_.Configurations, [](const TConfigurationResult& configuration) {
           return configuration.Result == TResultKind::NothingToDo;
         });
}

TActionResult TExecution::Finish(TResultKind kind) {
  if (kind == TResultKind::Stopped) own_.ForgetOwnErrors();
  if (kind == TResultKind::Ignored)
    for (auto& configuration : result_.Configurations)
      if (configuration.Result == TResultKind::Failed) configuration.Result = kind;
  result_.Result = kind;
  result_.Counts = Counts();
  result_.Elapsed = ElapsedSince(start_);
  return std::move(result_);
}

} // namespace kx
