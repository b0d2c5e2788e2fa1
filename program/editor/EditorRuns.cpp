#include "program/editor/EditorRuns.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/WindowsPath.h"
#include "program/editor/EventSpool.h"
#include "program/findings/Diagnostics.h"
#include "program/findings/FindingJson.h"
#include "program/history/RunRecorder.h"
#include "program/report/JsonLinesSink.h"
#include "program/report/ResultJson.h"
#include "program/report/ResultRows.h"
#include "program/report/Timeline.h"
#include "program/runner/ProjectFile.h"

#include <algorithm>
#include <atomic>
#include <new>
#include <system_error>

namespace kx::editor {

namespace {

constexpr std::size_t MostBytesAtOnce = std::size_t{2} << 20;
constexpr auto Gathering = std::chrono::milliseconds(100); // one answer for what comes in quick succession

// A row of the table at the end of the run.
void WriteRow(const TResultRow& row, TJsonWriter& json) {
  json.Member("action", row.Action);
  json.Member("nesting", row.Nesting);
  json.Member("configuration", row.Configuration);
  json.Member("result", row.Word());
  json.Member("status", static_cast<int>(row.Status()));
  json.Member("errors", row.Counts.Errors);
  json.Member("warnings", row.Counts.Warnings);
  json.Member("elapsedMs", row.Elapsed.count());
}

// Stands behind the events that were kept.
std::string LossOf(const std::u16string& reason) {
  return JsonObjectText([&reason](TJsonWriter& json) {
    json.Member("event", "message");
    json.Member("status", static_cast<int>(TStatusTag::stWarning));
    json.Member("depth", 0);
    json.Member("time", "");
    json.Member("text", u"The rest of the log is not shown here. " + reason);
  });
}

} // namespace

struct TEditorRuns::TRun {
  struct TNumber {
    std::u16string Action;
    std::u16string Category;
    std::u16string Name;
    std::u16string Configuration;
    std::int64_t Value = 0;

    void Write(TJsonWriter& json) const {
      json.Member("action", Action);
      json.Member("category", Category);
      json.Member("name", Name);
      json.Member("configuration", Configuration);
      json.Member("value", Value);
    }
  };

  int Number = 0;
  std::string Text;
  std::u16string FileName;
  std::optional<std::string> Stored;
  bool DryRun = false;
  std::atomic<bool> Running = true;
  std::atomic<bool> StopAsked = false;
  std::vector<TNumber> Metrics = {};
  nlohmann::json Summary = {};
  std::string Timeline = {}; // once it does not run any more
  std::u16string HistoryTrouble = {};
  std::mutex Mutex; // guards what follows; a disk may hold it
  TEventSpool Events;
  TProblemCounts SoFar = {};
  struct TFound {
    std::string Text = {};
    std::size_t Event = 0; // with which it came or changed last
  };
  std::vector<TFound> Findings = {};

  void Keep(std::size_t place, TFinding finding) {
    std::u16string& file = finding.Place.File;
    if (!file.empty()) file = text::ExpandPath(file, text::ExtractFileDir(FileName));
    std::string text = JsonObjectText([&](TJsonWriter& json) {
      WriteFinding(finding, json);
      json.Member("place", static_cast<std::int64_t>(place));
    });
    const std::lock_guard lock(Mutex);
    if (place >= Findings.size()) Findings.resize(place + 1);
    Findings[place] = {std::move(text), Events.Count()};
  }
  std::string FindingsOf(std::size_t from, std::size_t next) const {
    std::string findings;
    for (const auto& found : Findings) {
      if (found.Text.empty()) continue; // there was no memory for it
      if (found.Event >= from && found.Event < next) findings += (findings.empty() ? "" : ",") + found.Text;
    }
    return findings;
  }
};

// Called on the thread of the run.
class TEditorRuns::TSink : public IRunEventSink {
public:
  TSink(TEditorRuns& runs, TRun& run) : runs_(runs), run_(run) {}

  void On(const TRunEvent& event) override {
    // A run forgets what was asked before it began; nobody knows when that was.
    if (run_.StopAsked) runs_.stop_.Raise();
    if (const auto* started = std::get_if<TActionStarted>(&event.What)) {
      actions_.push_back(NameWithPass(started->Name, started->Pass));
    } else if (std::holds_alternative<TActionEnded>(event.What)) {
      actions_.pop_back();
    } else if (const auto* sent = std::get_if<TMetricSent>(&event.What)) {
      Keep(*sent);
    }
    runs_.Append(run_, ToJsonLine(event, [&](TJsonWriter& json) { WriteMore(event, json); }), event.SoFar);
  }

private:
  void WriteMore(const TRunEvent& event, TJsonWriter& json) const {
    if (const auto* started = std::get_if<TActionStarted>(&event.What)) {
      if (started->Position) json.Member("unit", started->Position->Unit);
    } else if (const auto* message = std::get_if<TMessageSent>(&event.What)) {
      if (message->Status >= TStatusTag::stWarning) WriteLocation(message->Text, json);
    }
  }

  void WriteLocation(const std::u16string& text, TJsonWriter& json) const {
    const auto found = ReadDiagnostic(text);
    if (!found || found->Place.Line == 0) return;
    json.Member("file", text::ExpandPath(found->Place.File, text::ExtractFileDir(run_.FileName)));
    json.Member("line", found->Place.Line);
    json.Member("column", found->Place.Column);
  }

  void Keep(const TMetricSent& sent) {
    const auto* number = std::get_if<std::int64_t>(&sent.Metric.Value);
    if (number == nullptr) return;
    run_.Metrics.push_back(
        {ActionOf(sent, actions_), sent.Metric.Category, sent.Metric.Name, sent.Configuration, *number});
  }

  TEditorRuns& runs_;
  TRun& run_;
  std::vector<std::u16string> actions_; // running ones, the innermost last
};

TEditorRuns::TEditorRuns(const TServiceRegistry& services, TRunSettings settings, history::TPlace history)
    : services_(services), settings_(std::move(settings)), history_(std::move(history)) {
  // The registry collects the names of constants when it is first asked: not on two threads at once.
  static_cast<void>(services_.ConstantNames());
}

TEditorRuns::~TEditorRuns() {
  Stop();
  if (thread_.joinable()) thread_.join();
}

void TEditorRuns::End(std::chrono::milliseconds wait) {
  Stop();
  std::unique_lock lock(mutex_);
  changed_.wait_for(lock, wait, [this] { return run_ == nullptr || !run_->Running; });
}

bool TEditorRuns::IsRunning() const {
  const std::lock_guard lock(mutex_);
  return run_ != nullptr && run_->Running;
}

void TEditorRuns::Start(std::string text, std::u16string fileName, std::optional<std::string> stored,
                        bool dryRun) {
  if (IsRunning()) throw EKxException(u"The project is running already.");
  if (thread_.joinable()) thread_.join();
  const std::lock_guard lock(mutex_);
  auto run = std::make_shared<TRun>();
  run->Number = static_cast<int>(summaries_.size()) + 1;
  run->Text = std::move(text);
  run->FileName = std::move(fileName);
  run->Stored = std::move(stored);
  run->DryRun = dryRun;
  run->Summary = nlohmann::json::parse(SummaryOf(*run, {}, MessageOf(std::bad_alloc())));
  summaries_.reserve(summaries_.size() + 1); // its end needs no memory
  stop_.Clear();
  try {
    thread_ = std::thread([this, run] { Execute(*run); });
  } catch (const std::system_error& error) {
    throw EKxException(u"The run could not be started. " + MessageOf(error));
  }
  run_ = std::move(run);
  result_.reset();
}

void TEditorRuns::Stop() {
  const std::lock_guard lock(mutex_);
  if (run_ == nullptr || !run_->Running) return;
  run_->StopAsked = true;
  stop_.Raise();
}

std::string TEditorRuns::SummaryOf(const TRun& run, const TRunReport& report, const std::u16string& error) {
  return JsonObjectText([&](TJsonWriter& json) {
    WriteRun(report, json);
    json.Member("run", run.Number);
    json.Member("dryRun", run.DryRun);
    json.Member("stopped", report.Result == TResultKind::Stopped);
    json.Member("error", error);
    json.Member("historyTrouble", run.HistoryTrouble);
    json.ArrayMember("rows", [&] {
      for (const auto& row : ResultRows(report.Actions))
        json.Object([&] { WriteRow(row, json); });
    });
    json.ArrayMember("metrics", [&] {
      for (const auto& metric : run.Metrics)
        json.Object([&] { metric.Write(json); });
    });
  });
}

// The project's text behind the run. `report` is there even if what follows the run fails.
std::string TEditorRuns::RunProject(TRun& run, TRunReport& report) {
  TRunSettings settings = settings_;
  settings.DryRun = run.DryRun;
  TProjectRunner runner(services_, stop_, std::move(settings));
  TProjectFile file(runner.Project());
  file.LoadBytes(run.Text, run.FileName, run.Stored);
  runner.StoreIn(file);
  TSink sink(*this, run);
  runner.AddSink(sink);
  runner.WhenFound([&run](std::size_t place, TFinding finding) { run.Keep(place, std::move(finding)); });
  const history::TPlace place = run.DryRun ? history::TPlace{.Off = true} : history_;
  history::TRunRecorder history(place, run.FileName);
  runner.AddSink(history);
  report = runner.Run();
  run.HistoryTrouble = history.Finish(report);
  return file.Text();
}

// Nothing that goes wrong here may end the editor, in which there may be unsaved work.
void TEditorRuns::Execute(TRun& run) {
  std::string text;
  try {
    TRunReport report;
    std::u16string error;
    try {
      text = RunProject(run, report);
    } catch (const std::exception& failure) {
      error = MessageOf(failure);
    }
    run.Timeline = TimelineMarkup(report);
    run.Summary = nlohmann::json::parse(SummaryOf(run, report, error));
  } catch (const std::bad_alloc&) { // the summary from before the run says so
  }
  const std::lock_guard lock(mutex_);
  summaries_.push_back(std::move(run.Summary));
  if (!run.DryRun && !text.empty() && text != run.Text) result_ = std::move(text);
  run.Running = false;
  changed_.notify_all();
}

void TEditorRuns::Append(TRun& run, std::string_view line, const TProblemCounts& soFar) {
  const std::lock_guard lock(run.Mutex);
  run.SoFar = soFar;
  run.Events.Append(line);
}

std::shared_ptr<TEditorRuns::TRun> TEditorRuns::Newest() const {
  const std::lock_guard lock(mutex_);
  return run_;
}

std::optional<std::string> TEditorRuns::TakeResult() {
  const std::lock_guard lock(mutex_);
  return std::exchange(result_, std::nullopt);
}

bool TEditorRuns::HasResult() const {
  const std::lock_guard lock(mutex_);
  return result_.has_value();
}

void TEditorRuns::WaitForNews(int run, std::size_t from, std::chrono::milliseconds wait,
                              const TKxEvent& stop) {
  const auto goesOn = [&] { // and has nothing new
    const auto newest = Newest();
    if (newest == nullptr || newest->Number != run || !newest->Running || stop.IsRaised()) return false;
    const std::lock_guard lock(newest->Mutex);
    return from >= newest->Events.Count();
  };
  // Only the end of a run wakes: to wake for each of many thousand lines would be most of the work.
  const auto gather = [this] {
    std::unique_lock lock(mutex_);
    if (run_ != nullptr && run_->Running) changed_.wait_for(lock, Gathering);
  };
  for (const auto end = std::chrono::steady_clock::now() + wait;
       goesOn() && std::chrono::steady_clock::now() < end;)
    gather();
  if (!stop.IsRaised()) gather();
}

std::string TEditorRuns::Events(int run, std::size_t from, std::chrono::milliseconds wait,
                                const TKxEvent& stop) {
  WaitForNews(run, from, wait, stop);
  const auto newest = Newest();
  if (newest == nullptr)
    return R"({"run":0,"running":false,"errors":0,"warnings":0,"from":0,"next":0,"events":[],"findings":[]})";
  if (newest->Number != run) from = 0;
  const bool isRunning = newest->Running; // before the events are read: none comes later, if it does not
  const std::lock_guard lock(newest->Mutex);
  std::size_t next = 0;
  std::string events = newest->Events.Lines(from, MostBytesAtOnce, next);
  const bool goesOn = isRunning || next < newest->Events.Count();
  if (const auto& state = newest->Events.State(); !goesOn && !state)
    events += (events.empty() ? "" : ",") + LossOf(state.Message());
  return "{\"run\":" + std::to_string(newest->Number) + ",\"running\":" + (goesOn ? "true" : "false") +
         ",\"errors\":" + std::to_string(newest->SoFar.Errors) +
         ",\"warnings\":" + std::to_string(newest->SoFar.Warnings) + ",\"from\":" + std::to_string(from) +
         ",\"next\":" + std::to_string(next) + ",\"events\":[" + events + "],\"findings\":[" +
         newest->FindingsOf(from, next) + "]}";
}

std::string TEditorRuns::Timeline() const {
  const auto newest = Newest();
  return newest == nullptr || newest->Running ? std::string() : newest->Timeline;
}

nlohmann::json TEditorRuns::Summaries() const {
  const std::lock_guard lock(mutex_);
  return summaries_;
}

// No event has a file of its own but those that were given one here.
std::optional<TEditorRuns::TLocation> TEditorRuns::LocationOf(std::size_t event) const {
  return ReadLocation([event](const TRun& run) { return run.Events.Line(event); });
}

std::optional<TEditorRuns::TLocation> TEditorRuns::LocationOfFinding(std::size_t place) const {
  return ReadLocation([place](const TRun& run) {
    return place < run.Findings.size() ? std::optional(run.Findings[place].Text) : std::nullopt;
  });
}

// Of the object that `read` finds in the newest run.
std::optional<TEditorRuns::TLocation>
TEditorRuns::ReadLocation(const std::function<std::optional<std::string>(const TRun&)>& read) const {
  const auto newest = Newest();
  if (newest == nullptr) return std::nullopt;
  const auto object = [&] {
    const std::lock_guard lock(newest->Mutex);
    return read(*newest);
  }();
  if (!object) return std::nullopt;
  const auto fields = nlohmann::json::parse(*object);
  const auto line = fields.find("line");
  if (line == fields.end() || line->is_null()) return std::nullopt;
  const auto column = fields.find("column");
  return TLocation{text::FromUtf8(fields.at("file").get<std::string>()), line->get<int>(),
                   column != fields.end() && column->is_number_integer() ? column->get<int>() : 0};
}

} // namespace kx::editor
