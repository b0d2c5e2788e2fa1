#include "program/report/JsonLinesReader.h"

#include "foundation/formats/JsonMembers.h"
#include "foundation/platform/Files.h"
#include "foundation/platform/LineSplitter.h"
#include "foundation/text/Text.h"
#include "program/findings/FindingJson.h"
#include "program/report/ResultJson.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <limits>
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
  bool goesOn = true;
  bool isWhole = true;
  const auto take = [&](std::string_view line) { goesOn = goesOn && handle(line, isWhole); };
  platform::LineSplitter splitter(take, std::numeric_limits<std::size_t>::max()); // an event is a line
  std::array<char, 65'536> block{};
  while (goesOn) {
    const auto count = reader->Read(block.data(), block.size());
    if (!count) return platform::Failure{count.Message()};
    if (*count == 0) break;
    splitter.Feed({block.data(), *count});
  }
  isWhole = false;
  splitter.Finish();
  return platform::Done{};
}

constexpr int LastYear = 2200; // the clock ends some decades later

// "2010-04-01T10:20:30.123Z"
std::optional<TTime> ReadTime(const TJson& object, const char* name = "time") {
  const std::string text(Utf8Member(object, name));
  int year = 0;
  unsigned month = 0, day = 0;
  int hour = 0, minute = 0, second = 0, millisecond = 0;
  if (std::sscanf(text.c_str(), "%4d-%2u-%2uT%2d:%2d:%2d.%3dZ", &year, &month, &day, &hour, &minute, &second,
                  &millisecond) != 7)
    return std::nullopt;
  using namespace std::chrono;
  const year_month_day date{std::chrono::year(year), std::chrono::month(month), std::chrono::day(day)};
  if (!date.ok() || year < 1970 || year > LastYear) return std::nullopt;
  return TTime(sys_days(date)) + hours(hour) + minutes(minute) + seconds(second) + milliseconds(millisecond);
}

TStatusTag ReadStatus(int number) {
  return number >= 0 && number <= static_cast<int>(TStatusTag::stError) ? static_cast<TStatusTag>(number)
                                                                        : TStatusTag::stNormal;
}

TActionStarted ReadActionStarted(const TJson& object) {
  TActionStarted action{TextMember(object, "name"), TextMember(object, "type"),
                        TextMember(object, "description"), TextMember(object, "pass"),
                        DepthMember(object, "nesting")};
  if (FindMember(object, "iteration") != nullptr)
    action.Position = {u"pass", NumberMember<int>(object, "iteration"),
                       NumberMember<int>(object, "iterations")};
  return action;
}

TMessageSent ReadMessage(const TJson& object) {
  return {TextMember(object, "text"), ReadStatus(NumberMember<int>(object, "status")),
          FlagMember(object, "dryRun"), std::max(NumberMember<int>(object, "takesBack"), 0)};
}

TGroupStarted ReadGroup(const TJson& object) {
  return {TextMember(object, "title"), ReadStatus(NumberMember<int>(object, "status"))};
}

TGroupEnded ReadGroupEnd(const TJson& object) {
  TGroupEnded ended{TextMember(object, "title"), std::nullopt, DurationMember(object, "elapsedMs")};
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
  if (FindMember(object, "passes") == nullptr) return sent;
  sent.Source = {TextMember(object, "action")};
  for (const TJson& pass : ArrayMember(object, "passes"))
    sent.Source->Passes.push_back(pass.is_string() ? text::FromUtf8(pass.get_ref<const std::string&>())
                                                   : std::u16string());
  return sent;
}

class TLogReader {
public:
  // `messages` counts those of the logs before, too.
  TLogReader(const std::function<void(const TRunEvent&)>& handle, std::int64_t& messages)
      : handle_(handle), messages_(messages), before_(messages) {}

  // False for what is no event, or none of this run: a second one would hide what became of the first.
  bool Take(std::string_view line) {
    const TJson object = TJson::parse(line, nullptr, false);
    const std::optional<TTime> time = ReadTime(object);
    if (!time || end_) return false;
    if (!began_) began_ = *time;
    last_ = *time;
    const auto row = std::ranges::find(Rows, Utf8Member(object, "event"), &TRow::Event);
    if (row != Rows.end()) (this->*row->Take)(object); // another is of a newer version
    return true;
  }

  bool IsEmpty() const { return !began_; }
  bool HasEnded() const { return end_.has_value(); }

  TRunReport Report() {
    TRunReport report = end_ ? std::move(*end_) : Interrupted();
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
    handle_({last_, DepthMember(object, "depth"), std::move(what)});
  }

  template <auto Read>
  void Pass(const TJson& object) {
    Tell(object, Read(object));
  }

  void TakeAction(const TJson& object) {
    TActionStarted started = ReadActionStarted(object);
    open_.push_back({actions_.size(), {}});
    actions_.push_back(
        {.Name = started.Name, .Type = started.Type, .Pass = started.Pass, .Nesting = started.Nesting});
    Tell(object, std::move(started));
  }

  void TakeActionEnd(const TJson& object) {
    TActionEnded ended{ReadResult(object)};
    if (!open_.empty()) {
      actions_[open_.back().Action] = ended.Result;
      open_.pop_back();
    }
    Tell(object, std::move(ended));
  }

  void TakeGroup(const TJson& object) {
    if (!open_.empty()) open_.back().Groups.push_back(TextMember(object, "title"));
    Tell(object, ReadGroup(object));
  }

  void TakeGroupEnd(const TJson& object) {
    if (!open_.empty() && !open_.back().Groups.empty()) open_.back().Groups.pop_back();
    Tell(object, ReadGroupEnd(object));
  }

  void TakeMessage(const TJson& object) {
    ++messages_;
    TMessageSent message = ReadMessage(object);
    const std::size_t first = open_.empty() ? 0 : open_.back().Action + 1; // what is open stays
    actions_.resize(actions_.size() -
                    std::min(static_cast<std::size_t>(message.TakesBack), actions_.size() - first));
    Tell(object, std::move(message));
  }

  void TakeFinding(const TJson& object) {
    findings_.push_back(ReadFinding(object));
    auto& said = findings_.back().Said;
    if (said > 0) said = CountMember(object, "said") + before_;
  }

  void TakeEnd(const TJson& object) {
    end_ = ReadRun(object);
    end_->Began = ReadTime(object, "began").value_or(*began_);
  }

  // As a run does it that ends behind a failure.
  void CloseWhatIsOpen() {
    int depth = 0;
    for (const TOpen& open : open_)
      depth += 1 + static_cast<int>(open.Groups.size());
    for (; !open_.empty(); open_.pop_back()) {
      for (auto& groups = open_.back().Groups; !groups.empty(); groups.pop_back())
        handle_({last_, --depth, TGroupEnded{groups.back(), TStatusTag::stError}});
      handle_({last_, --depth, TActionEnded{actions_[open_.back().Action]}});
    }
  }

  // What is known of a run that nothing ended.
  TRunReport Interrupted() {
    CloseWhatIsOpen();
    TRunReport report;
    report.Began = *began_;
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
  struct TOpen {
    std::size_t Action; // in actions_
    std::vector<std::u16string> Groups;
  };
  std::vector<TOpen> open_; // the innermost last
  std::vector<TFinding> findings_;
  std::optional<TRunReport> end_;
};

const std::array<TLogReader::TRow, 8> TLogReader::Rows{{{"action", &TLogReader::TakeAction},
                                                        {"actionEnd", &TLogReader::TakeActionEnd},
                                                        {"message", &TLogReader::TakeMessage},
                                                        {"group", &TLogReader::TakeGroup},
                                                        {"groupEnd", &TLogReader::TakeGroupEnd},
                                                        {"metric", &TLogReader::Pass<ReadMetric>},
                                                        {"finding", &TLogReader::TakeFinding},
                                                        {"runEnd", &TLogReader::TakeEnd}}};

} // namespace

platform::Result<TRunReport> ReadRunLog(std::u16string_view fileName, std::int64_t& messages,
                                        const std::function<void(const TRunEvent&)>& handle) {
  TLogReader reader(handle, messages);
  int number = 0;
  bool isLog = true;
  const auto read = ForEachLine(fileName, [&](std::string_view line, bool isWhole) {
    ++number;
    isLog = reader.Take(line) || !isWhole; // its writer was killed there
    return isLog;
  });
  if (!read) return platform::Failure{read.Message()};
  if (!isLog && reader.HasEnded())
    return platform::Failure{std::u16string(fileName) + u":" + text::FromInteger(number) +
                             u": The run has ended before this line. Each run has a log of its own."};
  if (!isLog || reader.IsEmpty())
    return platform::Failure{std::u16string(fileName) + u":" + text::FromInteger(std::max(number, 1)) +
                             u": This is no log of a run, which \"kxhost run --log FILE.jsonl\" writes."};
  return reader.Report();
}

} // namespace kx
