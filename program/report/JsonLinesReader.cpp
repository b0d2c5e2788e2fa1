#include "program/report/JsonLinesReader.h"

#include "foundation/formats/JsonMembers.h"
#include "foundation/platform/Files.h"
#include "foundation/text/Text.h"
#include "program/findings/FindingJson.h"
#include "program/report/ResultJson.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <iterator>
#include <optional>

namespace kx {

namespace {

using TJson = nlohmann::json;
using TTime = std::chrono::system_clock::time_point;

// Without their ends; only the last may lack one. `handle` returns False to end the reading.
platform::Status ForEachLine(std::u16string_view fileName,
                             const std::function<bool(std::string_view line, bool isWhole)>& handle) {
  auto reader = platform::FileReader::Open(fileName);
  if (!reader) return platform::Failure{reader.Message()};
  std::array<char, 65'536> block{};
  std::string pending;
  for (;;) {
    const auto count = reader->Read(block.data(), block.size());
    if (!count) return platform::Failure{count.Message()};
    if (*count == 0) break;
    std::string_view rest(block.data(), *count);
    for (std::size_t end = rest.find('\n'); end != rest.npos; end = rest.find('\n')) {
      pending += rest.substr(0, end);
      if (!handle(pending, true)) return platform::Done{};
      pending.clear();
      rest.remove_prefix(end + 1);
    }
    pending += rest;
  }
  if (!pending.empty()) handle(pending, false);
  return platform::Done{};
}

// "2010-04-01T10:20:30.123Z"
std::optional<TTime> ReadTime(const TJson& object) {
  const std::string text = text::ToUtf8(TextMember(object, "time"));
  int year = 0;
  unsigned month = 0, day = 0;
  int hour = 0, minute = 0, second = 0, millisecond = 0;
  if (std::sscanf(text.c_str(), "%4d-%2u-%2uT%2d:%2d:%2d.%3dZ", &year, &month, &day, &hour, &minute, &second,
                  &millisecond) != 7)
    return std::nullopt;
  using namespace std::chrono;
  return TTime(sys_days(
             year_month_day(std::chrono::year(year), std::chrono::month(month), std::chrono::day(day)))) +
         hours(hour) + minutes(minute) + seconds(second) + milliseconds(millisecond);
}

TStatusTag ReadStatus(int number) {
  return number >= 0 && number <= static_cast<int>(TStatusTag::stError) ? static_cast<TStatusTag>(number)
                                                                        : TStatusTag::stNormal;
}

TActionStarted ReadActionStarted(const TJson& object) {
  TActionStarted action{TextMember(object, "name"), TextMember(object, "type"),
                        TextMember(object, "description"), TextMember(object, "pass"),
                        NumberMember<int>(object, "nesting")};
  if (FindMember(object, "iteration") != nullptr)
    action.Position = {u"pass", NumberMember<int>(object, "iteration"),
                       NumberMember<int>(object, "iterations")};
  return action;
}

TMessageSent ReadMessage(const TJson& object) {
  return {TextMember(object, "text"), ReadStatus(NumberMember<int>(object, "status")),
          FlagMember(object, "dryRun")};
}

TGroupStarted ReadGroup(const TJson& object) {
  return {TextMember(object, "title"), ReadStatus(NumberMember<int>(object, "status"))};
}

TGroupEnded ReadGroupEnd(const TJson& object) {
  TGroupEnded ended{TextMember(object, "title"), std::nullopt,
                    std::chrono::milliseconds(NumberMember<std::int64_t>(object, "elapsedMs"))};
  const TJson* status = FindMember(object, "status");
  if (status != nullptr && status->is_number_integer()) ended.Status = ReadStatus(status->get<int>());
  return ended;
}

TMetricSent ReadMetric(const TJson& object) {
  TMetricSent sent{{TextMember(object, "category"), TextMember(object, "name"), std::int64_t{0}},
                   TextMember(object, "configuration")};
  const TJson* value = FindMember(object, "value");
  if (value != nullptr && value->is_string()) {
    sent.Metric.Value = TextMember(object, "value");
  } else {
    sent.Metric.Value = NumberMember<std::int64_t>(object, "value");
  }
  return sent;
}

class TLogReader {
public:
  // `messages` counts those of the logs before, too.
  TLogReader(const std::function<void(const TRunEvent&)>& handle, std::int64_t& messages)
      : handle_(handle), messages_(messages), before_(messages) {}

  // False for what is no event.
  bool Take(std::string_view line) {
    const TJson object = TJson::parse(line, nullptr, false);
    const std::optional<TTime> time = ReadTime(object);
    if (!time) return false;
    if (!began_) began_ = *time;
    last_ = *time;
    const std::string event = text::ToUtf8(TextMember(object, "event"));
    const auto row = std::ranges::find(Rows, event, &TRow::Event);
    if (row != Rows.end()) (this->*row->Take)(object); // another is of a newer version
    return true;
  }

  bool IsEmpty() const { return !began_; }

  TRunReport Report() {
    TRunReport report = end_ ? std::move(*end_) : Interrupted();
    report.Began = *began_;
    report.Actions = std::move(actions_);
    report.Findings = std::move(findings_);
    return report;
  }

private:
  struct TRow {
    std::string_view Event;
    void (TLogReader::*Take)(const TJson& object);
  };
  static const std::array<TRow, 8> Rows;

  void Tell(const TJson& object, decltype(TRunEvent::What) what) const {
    handle_({last_, NumberMember<int>(object, "depth"), std::move(what)});
  }

  template <auto Read>
  void Pass(const TJson& object) {
    Tell(object, Read(object));
  }

  void TakeAction(const TJson& object) {
    TActionStarted started = ReadActionStarted(object);
    open_.push_back(actions_.size());
    actions_.push_back(
        {.Name = started.Name, .Type = started.Type, .Pass = started.Pass, .Nesting = started.Nesting});
    Tell(object, std::move(started));
  }

  void TakeActionEnd(const TJson& object) {
    TActionEnded ended{ReadResult(object)};
    if (!open_.empty()) {
      actions_[open_.back()] = ended.Result;
      open_.pop_back();
    }
    Tell(object, std::move(ended));
  }

  void TakeMessage(const TJson& object) {
    ++messages_;
    Tell(object, ReadMessage(object));
  }

  void TakeFinding(const TJson& object) {
    findings_.push_back(ReadFinding(object));
    if (findings_.back().Said > 0) findings_.back().Said += before_;
  }

  void TakeEnd(const TJson& object) { end_ = ReadRun(object); }

  // What is known of a run that nothing ended.
  TRunReport Interrupted() {
    TRunReport report;
    report.Elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(last_ - *began_);
    for (const auto& action : actions_) {
      if (action.Nesting != 0) continue;
      report.Counts += action.Counts;
      report.Tests += action.Tests;
    }
    findings_.push_back({.Rule = u"run-interrupted",
                         .Severity = TFindingSeverity::Error,
                         .Message = u"The log of the run ends before the run did.",
                         .Fingerprint = u"run-interrupted"});
    return report;
  }

  const std::function<void(const TRunEvent&)>& handle_;
  std::int64_t& messages_;
  const std::int64_t before_;
  std::optional<TTime> began_;
  TTime last_;
  std::vector<TActionResult> actions_; // in the order in which they began
  std::vector<std::size_t> open_;      // in actions_, the innermost last
  std::vector<TFinding> findings_;
  std::optional<TRunReport> end_;
};

const std::array<TLogReader::TRow, 8> TLogReader::Rows{{{"action", &TLogReader::TakeAction},
                                                        {"actionEnd", &TLogReader::TakeActionEnd},
                                                        {"message", &TLogReader::TakeMessage},
                                                        {"group", &TLogReader::Pass<ReadGroup>},
                                                        {"groupEnd", &TLogReader::Pass<ReadGroupEnd>},
                                                        {"metric", &TLogReader::Pass<ReadMetric>},
                                                        {"finding", &TLogReader::TakeFinding},
                                                        {"runEnd", &TLogReader::TakeEnd}}};

// What counts for several runs before other things.
int Weight(TResultKind kind) {
  constexpr std::array lightFirst{TResultKind::NothingToDo, TResultKind::WouldRun,
                                  TResultKind::Succeeded,   TResultKind::Ignored,
                                  TResultKind::Stopped,     TResultKind::FinishedWithFailures,
                                  TResultKind::Failed};
  return static_cast<int>(std::ranges::find(lightFirst, kind) - lightFirst.begin());
}

void MoveTimes(TRunReport& run, std::chrono::milliseconds by) {
  for (auto& action : run.Actions) {
    action.Began += by;
    for (auto& configuration : action.Configurations) {
      configuration.Began += by;
      for (auto& project : configuration.Projects)
        project.Began += by;
    }
  }
}

// One that is counted from the earlier beginning to the later end.
void MergeTimes(TRunReport& merged, TRunReport& run) {
  using std::chrono::duration_cast, std::chrono::milliseconds;
  const auto began = std::min(merged.Began, run.Began);
  const auto end = std::max(merged.Began + merged.Elapsed, run.Began + run.Elapsed);
  MoveTimes(merged, duration_cast<milliseconds>(merged.Began - began));
  MoveTimes(run, duration_cast<milliseconds>(run.Began - began));
  merged.Began = began;
  merged.Elapsed = duration_cast<milliseconds>(end - began);
}

// Where the runs differ, there is none for all of them.
void MergeText(std::u16string& merged, const std::u16string& text) {
  if (merged != text) merged.clear();
}

} // namespace

platform::Status TRunLogs::Read(std::u16string_view fileName,
                                const std::function<void(const TRunEvent&)>& handle) {
  TLogReader reader(handle, messages_);
  int number = 0;
  bool isLog = true;
  auto read = ForEachLine(fileName, [&](std::string_view line, bool isWhole) {
    ++number;
    isLog = reader.Take(line) || !isWhole; // its writer was killed there
    return isLog;
  });
  if (!read) return read;
  if (!isLog || reader.IsEmpty())
    return platform::Failure{std::u16string(fileName) + u":" + text::FromInteger(std::max(number, 1)) +
                             u": This is no log of a run, which \"kxhost run --log FILE.jsonl\" writes."};
  Merge(reader.Report());
  return read;
}

TRunReport TRunLogs::Take() {
  return *std::move(merged_);
}

void TRunLogs::Merge(TRunReport run) {
  auto findings = std::move(run.Findings);
  if (!merged_) {
    merged_ = std::move(run);
    merged_->Findings.clear();
  } else {
    MergeTimes(*merged_, run);
    if (Weight(run.Result) > Weight(merged_->Result)) merged_->Result = run.Result;
    merged_->Counts += run.Counts;
    merged_->Tests += run.Tests;
    merged_->MoreFindings += run.MoreFindings;
    MergeText(merged_->Root, run.Root);
    MergeText(merged_->File, run.File);
    std::ranges::move(run.Actions, std::back_inserter(merged_->Actions));
  }
  for (TFinding& finding : findings) {
    const auto [known, isNew] = places_.try_emplace(finding.Fingerprint, merged_->Findings.size());
    if (isNew) {
      merged_->Findings.push_back(std::move(finding));
    } else {
      merged_->Findings[known->second].Occurrences += finding.Occurrences;
    }
  }
}

} // namespace kx
