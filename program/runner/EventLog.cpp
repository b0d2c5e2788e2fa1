#include "program/runner/EventLog.h"

#include "program/findings/FindingList.h"

namespace kx {

std::chrono::milliseconds TimeBetween(TRunClock::time_point start, TRunClock::time_point end) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(end - start);
}

std::chrono::milliseconds ElapsedSince(TRunClock::time_point start) {
  return TimeBetween(start, TRunClock::now());
}

template <typename TWhat>
void TEventLog::Emit(TWhat what) {
  if (sinks_.empty()) return;
  const TRunEvent event{std::chrono::system_clock::now(), static_cast<int>(open_.size()), std::move(what),
                        soFar_};
  for (auto* sink : sinks_)
    sink->On(event);
}

void TEventLog::Mask(TActionResult& result) const {
  Mask(result.Name);
  Mask(result.Pass);
  for (auto& configuration : result.Configurations) {
    Mask(configuration.Configuration);
    for (auto& project : configuration.Projects)
      for (auto* text : {&project.Project, &project.Configuration})
        Mask(*text);
  }
}

void TEventLog::Mask(TFinding& finding) const {
  for (auto* text : {&finding.Message, &finding.Place.File, &finding.Project, &finding.Configuration,
                     &finding.Action, &finding.Advice})
    Mask(*text);
  for (auto& step : finding.Steps) {
    Mask(step.Message);
    Mask(step.Place.File);
  }
}

void TEventLog::StartAction(TActionStarted started) {
  Mask(started.Name);
  Mask(started.Description);
  Mask(started.Pass);
  TOpen open{started.Name, true};
  Emit(std::move(started));
  open_.push_back(std::move(open));
}

void TEventLog::EndAction(TActionResult result) {
  while (!open_.back().IsAction)
    EndGroup(IsSuccess(result.Result) ? std::nullopt : std::optional(TStatusTag::stError));
  open_.pop_back();
  Mask(result);
  Emit(TActionEnded{std::move(result)});
}

TRunReport TEventLog::EndRun(TRunReport report) {
  for (auto& action : report.Actions)
    Mask(action);
  for (auto& finding : report.Findings)
    Mask(finding);
  Mask(report.Surroundings.CommandLine);
  SetFingerprints(report.Findings, report.Root);
  Emit(TRunEnded{report});
  return report;
}

void TEventLog::Send(TMessageSent message) {
  Mask(message.Text);
  Emit(std::move(message));
}

void TEventLog::Send(TMetricSent sent) {
  if (auto* text = std::get_if<std::u16string>(&sent.Metric.Value)) Mask(*text);
  Mask(sent.Metric.Category);
  Mask(sent.Metric.Name);
  Mask(sent.Configuration);
  if (sent.Source) {
    Mask(sent.Source->Action);
    for (auto& pass : sent.Source->Passes)
      Mask(pass);
  }
  Emit(std::move(sent));
}

void TEventLog::StartGroup(std::u16string_view title, TStatusTag status) {
  TOpen open{std::u16string(title)};
  Mask(open.Title);
  Emit(TGroupStarted{open.Title, status});
  open_.push_back(std::move(open));
}

void TEventLog::EndGroup(std::optional<TStatusTag> status) {
  if (open_.empty() || open_.back().IsAction) return;
  const TOpen group = std::move(open_.back());
  open_.pop_back();
  Emit(TGroupEnded{group.Title, status, ElapsedSince(group.Start)});
}

} // namespace kx
