#include "runner/EventLog.h"

#include "text/Text.h"

#include <algorithm>

namespace kx {

std::chrono::milliseconds ElapsedSince(TRunClock::time_point start) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(TRunClock::now() - start);
}

template <typename TWhat>
void TEventLog::Emit(TWhat what) {
  if (sinks_.empty()) return;
  const TRunEvent event{std::chrono::system_clock::now(), static_cast<int>(open_.size()), std::move(what),
                        soFar_};
  for (auto* sink : sinks_)
    sink->On(event);
}

void TEventLog::KeepSecret(std::u16string_view secret) {
  constexpr std::size_t shortest = 4;
  if (secret.size() < shortest || std::ranges::find(secrets_, secret) != secrets_.end()) return;
  secrets_.emplace_back(secret);
}

void TEventLog::Mask(std::u16string& text) const {
  for (const auto& secret : secrets_)
    if (text.find(secret) != std::u16string::npos) text = text::ReplaceAll(text, secret, u"***");
}

void TEventLog::StartAction(TActionStarted started) {
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
  Emit(TActionEnded{std::move(result)});
}

void TEventLog::EndRun(TRunReport report) {
  Emit(TRunEnded{std::move(report)});
}

void TEventLog::Send(TMessageSent message) {
  Mask(message.Text);
  Emit(std::move(message));
}

void TEventLog::Send(TMetricSent sent) {
  if (auto* text = std::get_if<std::u16string>(&sent.Metric.Value)) Mask(*text);
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
