#include "program/parts/PartsLog.h"

#include "foundation/platform/Files.h"
#include "foundation/platform/Process.h"
#include "foundation/text/Text.h"
#include "program/findings/FindingList.h"
#include "program/report/JsonLinesReader.h"

#include <algorithm>
#include <utility>

namespace kx {

namespace {

using std::chrono::duration_cast, std::chrono::milliseconds;
using TTime = std::chrono::system_clock::time_point;

// Why the part has failed whatever its log says; empty for one whose process and log say the same.
std::u16string TroubleOf(const TEndedPart& part, const platform::Result<TRunReport>& read) {
  const TPartOutcome& outcome = part.Outcome;
  if (outcome.IsStopped) return {};
  if (!outcome.Trouble.empty()) return outcome.Trouble;
  const auto fault = outcome.HasAnswered ? u"" : platform::FaultOfExitCode(outcome.ExitCode);
  if (!fault.empty()) return u"The process of this part was ended by " + fault + u".";
  if (!read)
    return u"This part left no log. Its process ended with code " + text::FromInteger(outcome.ExitCode) +
           u".";
  if (outcome.ExitCode != 0 && IsSuccess(read->Result))
    return u"The process of this part ended with code " + text::FromInteger(outcome.ExitCode) +
           u" although its log tells of a success.";
  if (outcome.ExitCode == 0 && !IsSuccess(read->Result))
    return u"The process of this part ended with code 0 although its log tells of no success.";
  return {};
}

// Of a part that has told nothing itself.
TRunReport SilentRun(const TEndedPart& part) {
  TRunReport report;
  report.Began = std::chrono::system_clock::now();
  report.Part = part.Place;
  report.Result = part.Outcome.IsStopped ? TResultKind::Stopped : TResultKind::Failed;
  report.Actions.push_back({.Name = part.Action.Name,
                            .Type = part.Action.Type,
                            .IsLoop = part.Place.Pass > 0,
                            .Result = report.Result});
  return report;
}

// What is to be said of a part beside its log.
std::vector<std::u16string> Remarks(const TEndedPart& part, const std::u16string& trouble) {
  std::vector<std::u16string> lines = part.Outcome.Errors;
  if (!trouble.empty()) lines.push_back(trouble);
  return lines;
}

TFindingSeverity SeverityOf(TStatusTag status) {
  return status == TStatusTag::stError ? TFindingSeverity::Error : TFindingSeverity::Warning;
}

void Book(TRunReport& report, TFinding finding) {
  const bool isError = finding.Severity == TFindingSeverity::Error;
  const TProblemCounts one{isError ? 1 : 0, isError ? 0 : 1};
  report.Counts += one;
  report.Actions.front().Counts += one;
  SetFingerprints({&finding, 1}, report.Root);
  report.Findings.push_back(std::move(finding));
}

TPartVerdict VerdictOf(const TRunReport& report) {
  return {report.Actions.front().Result, HasFindings(report)};
}

} // namespace

// Hands over the events of one log as those of the whole run.
class TPartsLog::TReading {
public:
  TReading(TPartsLog& log, const TEndedPart& part, bool shows)
      : log_(log), isPass_(part.Place.Pass > 0), isFurther_(log.loop_.has_value()), shows_(shows) {}

  void Take(TRunEvent event) {
    if (!offset_) offset_ = duration_cast<milliseconds>(event.Time - log_.began_);
    if (!shows_) return;
    if (auto* ended = std::get_if<TActionEnded>(&event.What)) {
      if (isPass_ && ended->Result.Nesting == 0) return; // the loop ends with its last pass
      MoveTimes(ended->Result, *offset_);
    }
    if (isPass_ && isFurther_ && WasSaid(event)) return;
    log_.Tell(std::move(event));
  }

  std::int64_t Dropped() const { return dropped_; } // messages, in front of all others

private:
  // Each pass begins with the loop itself and what it says before its first action.
  bool WasSaid(const TRunEvent& event) {
    if (const auto* started = std::get_if<TActionStarted>(&event.What)) {
      isInside_ = started->Nesting > 0;
      return !isInside_;
    }
    const auto* message = std::get_if<TMessageSent>(&event.What);
    const bool was = !isInside_ && message != nullptr && message->Status == TStatusTag::stNormal;
    dropped_ += was ? 1 : 0;
    return was;
  }

  TPartsLog& log_;
  const bool isPass_;
  const bool isFurther_; // of an open loop
  const bool shows_;
  bool isInside_ = false; // has come to an action in the loop
  std::int64_t dropped_ = 0;
  std::optional<milliseconds> offset_; // of its times
};

std::optional<std::size_t> TPartsLog::LoopOf(const TEndedPart& part) {
  return part.Place.Pass > 0 ? std::optional(part.Place.Place) : std::nullopt;
}

TPartVerdict TPartsLog::Add(TEndedPart part) {
  if (MayShow(part)) return Show(part);
  const TPartVerdict verdict = VerdictOf(Read(part, false));
  waiting_.push_back(std::move(part));
  return verdict;
}

TPartVerdict TPartsLog::Show(const TEndedPart& part) {
  TRunReport report = Read(part, true);
  const TPartVerdict verdict = VerdictOf(report);
  soFar_ += report.Counts;
  if (LoopOf(part)) {
    openLoop_ = LoopOf(part);
    TakePass(report);
  }
  runs_.Add(std::move(report));
  if (!part.Log.empty()) static_cast<void>(platform::RemoveFile(part.Log)); // else it goes with its folder
  return verdict;
}

TRunReport TPartsLog::ReadSkipped(const TEndedPart& part, bool shows) {
  TReading reading(*this, part, shows);
  TRunReport report = SilentRun(part);
  report.Result = TResultKind::NothingToDo;
  TActionResult& action = report.Actions.front();
  action.Result = TResultKind::Skipped;
  action.Reason = part.Skipped;
  const TTime now = report.Began;
  reading.Take({now, 0, part.Action});
  if (shows) {
    Tell({now, 1, TMessageSent{part.Why, TStatusTag::stNormal}});
    ++messages_;
  }
  reading.Take({now, 0, TActionEnded{action}});
  return report;
}

TRunReport TPartsLog::Read(const TEndedPart& part, bool shows) {
  if (!part.Skipped.empty()) return ReadSkipped(part, shows);
  TReading reading(*this, part, shows);
  std::int64_t messages = messages_;
  const auto read =
      ReadRunLog(part.Log, messages, [&reading](const TRunEvent& event) { reading.Take(event); });
  const bool isSilent = !read || read->Actions.empty();
  TRunReport report = isSilent ? SilentRun(part) : *read;
  report.Part = part.Place;
  report.File.clear(); // the same of all parts, but of those that have told nothing
  const std::u16string trouble = TroubleOf(part, read);
  if (!trouble.empty()) report.Result = report.Actions.front().Result = TResultKind::Failed;

  const TTime now = std::chrono::system_clock::now();
  if (isSilent) reading.Take({now, 0, part.Action});
  const TStatusTag status = trouble.empty() ? TStatusTag::stWarning : TStatusTag::stError;
  for (const auto& line : Remarks(part, trouble)) {
    reading.Take({now, isSilent ? 1 : 0, TMessageSent{line, status}});
    Book(report, {.Rule = u"part",
                  .Severity = SeverityOf(status),
                  .Message = OneLine(line),
                  .Action = part.Action.Name,
                  .Said = ++messages});
  }
  if (isSilent) reading.Take({now, 0, TActionEnded{report.Actions.front()}});
  for (TFinding& finding : report.Findings)
    if (finding.Said > 0) finding.Said -= reading.Dropped();
  if (shows) messages_ = messages - reading.Dropped();
  return report;
}

void TPartsLog::TakePass(const TRunReport& report) {
  TActionResult pass = report.Actions.front();
  MoveTimes(pass, duration_cast<milliseconds>(report.Began - began_));
  if (loop_) {
    MergeLoop(*loop_, pass);
  } else {
    loop_ = std::move(pass);
  }
}

void TPartsLog::CloseLoop(std::size_t place) {
  closed_.insert(place);
  if (openLoop_ != place) return;
  EndLoop();
  ShowWaiting();
}

void TPartsLog::EndLoop() {
  Tell({std::chrono::system_clock::now(), 0, TActionEnded{*std::move(loop_)}});
  loop_.reset();
  openLoop_.reset();
}

void TPartsLog::ShowWaiting() {
  while (true) {
    const auto next = std::ranges::find_if(waiting_, [this](const auto& part) { return MayShow(part); });
    if (next != waiting_.end()) {
      const TEndedPart part = std::move(*next);
      waiting_.erase(next);
      Show(part);
    } else if (openLoop_ && closed_.contains(*openLoop_)) {
      EndLoop();
    } else {
      return;
    }
  }
}

void TPartsLog::Tell(TRunEvent event) {
  event.SoFar = soFar_;
  for (IRunEventSink* sink : sinks_)
    sink->On(event);
}

TRunReport TPartsLog::Take() {
  if (runs_.IsEmpty()) return {.Result = TResultKind::Stopped, .Began = began_};
  TRunReport report = runs_.Take();
  for (auto& action : report.Actions)
    MoveTimes(action, duration_cast<milliseconds>(report.Began - began_));
  report.Began = began_;
  report.Elapsed = duration_cast<milliseconds>(std::chrono::system_clock::now() - began_);
  return report;
}

} // namespace kx
