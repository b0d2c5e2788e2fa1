#include "runner/EventLog.h"

namespace kx {

std::chrono::milliseconds ElapsedSince(TRunClock::time_point start) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(TRunClock::now() - start);
}

template <typename TWhat>
void TEventLog::Emit(TWhat what) {
  if (sinks_.empty()) return;
  const TRunEvent event{std::chrono::system_clock::now(), static_cast<int>(open_.size()), std::move(what)};
  for (auto* sink : sinks_)
    sink->On(event);
}

void TEventLog::StartAction(TActionStarted started) {
  TOpen open{started.Name, true};
  Emit(std::move(started));
  open_.push_back(std::move(open));
}

void TEventLog::EndAction(TActionResult result) {
  while (!open_.back().IsAction)
    EndGroup(result.Succeeded ? std::nullopt : std::optional(TStatusTag::stError));
  open_.pop_back();
  Emit(TActionEnded{std::move(result)});
}

void TEventLog::Send(std::u16string_view text, TStatusTag status) {
  Emit(TMessageSent{std::u16string(text), status});
}

void TEventLog::Send(const TKxMetric& metric) {
  Emit(TMetricSent{metric});
}

void TEventLog::StartGroup(std::u16string_view title, TStatusTag status) {
  Emit(TGroupStarted{std::u16string(title), status});
  open_.push_back({std::u16string(title)});
}

void TEventLog::EndGroup(std::optional<TStatusTag> status) {
  if (open_.empty() || open_.back().IsAction) return;
  const TOpen group = std::move(open_.back());
  open_.pop_back();
  Emit(TGroupEnded{group.Title, status, ElapsedSince(group.Start)});
}

} // namespace kx
