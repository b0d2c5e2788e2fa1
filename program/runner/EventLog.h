// Hands the events of a run to its sinks and keeps count of what is open.
#pragma once

#include "program/runner/Events.h"
#include "program/runner/SecretMask.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kx {

using TRunClock = std::chrono::steady_clock;

std::chrono::milliseconds TimeBetween(TRunClock::time_point start, TRunClock::time_point end);
std::chrono::milliseconds ElapsedSince(TRunClock::time_point start);

class TEventLog {
public:
  // Every text of the events is masked, whoever sends it: a tool may repeat what it was given.
  explicit TEventLog(std::shared_ptr<TSecretMask> secrets) : secrets_(std::move(secrets)) {}

  void AddSink(IRunEventSink& sink) { sinks_.push_back(&sink); }
  void RemoveSink(IRunEventSink& sink) { std::erase(sinks_, &sink); }
  TSecretMask& Secrets() { return *secrets_; }
  // The counts that events carry from now on.
  void SetCounts(const TProblemCounts& soFar) { soFar_ = soFar; }

  void StartAction(TActionStarted started);
  void EndAction(TActionResult result); // closes what the action left open
  TRunReport EndRun(TRunReport report); // as it was shown; sets the fingerprints of its findings
  void Send(TMessageSent message);
  void Send(TMetricSent sent);
  void Mask(TFinding& finding) const;
  void StartGroup(std::u16string_view title, TStatusTag status);
  // The innermost group of the running action; none open: nothing happens.
  void EndGroup(std::optional<TStatusTag> status);

private:
  struct TOpen {
    std::u16string Title;
    bool IsAction = false;
    TRunClock::time_point Start = TRunClock::now();
  };
  template <typename TWhat>
  void Emit(TWhat what);
  void Mask(std::u16string& text) const { secrets_->Mask(text); }
  void Mask(TActionResult& result) const;

  std::vector<IRunEventSink*> sinks_;
  std::vector<TOpen> open_;
  std::shared_ptr<TSecretMask> secrets_;
  TProblemCounts soFar_;
};

} // namespace kx
