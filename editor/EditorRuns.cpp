#include "editor/EditorRuns.h"

#include "host/Exceptions.h"
#include "report/JsonLinesSink.h"
#include "report/ResultJson.h"
#include "report/ResultRows.h"
#include "report/SourceLocation.h"
#include "runner/ProjectFile.h"
#include "text/Encoding.h"
#include "text/WindowsPath.h"

#include <algorithm>
#include <atomic>
#include <map>

namespace kx::editor {

namespace {

using nlohmann::json;

constexpr std::size_t MostEventsAtOnce = 20000;
constexpr auto Gathering = std::chrono::milliseconds(100); // one answer for what comes in quick succession

// The table at the end of the run, row by row.
json RowsJson(const TRunReport& report) {
  json rows = json::array();
  for (const auto& row : ResultRows(report.Actions))
    rows.push_back({{"action", text::ToUtf8(row.Action)},
                    {"nesting", row.Nesting},
                    {"configuration", text::ToUtf8(row.Configuration)},
                    {"result", row.Word()},
                    {"status", static_cast<int>(row.Status())},
                    {"errors", row.Counts.Errors},
                    {"warnings", row.Counts.Warnings},
                    {"elapsedMs", row.Elapsed.count()}});
  return rows;
}

std::string Dump(const json& value) {
  return value.dump(-1, ' ', false, json::error_handler_t::replace);
}

} // namespace

struct TEditorRuns::TRun {
  int Number = 0;
  std::string Text;
  std::u16string FileName;
  std::optional<std::string> Stored;
  bool DryRun = false;
  bool Running = true;
  std::atomic<bool> StopAsked = false;
  std::vector<std::string> Events;
  std::map<std::size_t, TLocation> Locations;
  json Metrics = json::array();
  TProblemCounts SoFar = {};
};

// Called on the thread of the run.
class TEditorRuns::TSink : public IRunEventSink {
public:
  TSink(TEditorRuns& runs, TRun& run) : runs_(runs), run_(run) {}

  void On(const TRunEvent& event) override {
    // A run forgets what was asked before it began; nobody knows when that was.
    if (run_.StopAsked) runs_.stop_.Raise();
    std::string line = ToJsonLine(event);
    if (const auto* message = std::get_if<TMessageSent>(&event.What)) {
      if (message->Status >= TStatusTag::stWarning) line = WithLocation(std::move(line), message->Text);
    } else if (const auto* started = std::get_if<TActionStarted>(&event.What)) {
      actions_.push_back(started->Pass.empty() ? started->Name
                                               : started->Name + u" [" + started->Pass + u"]");
      if (started->Position) line = With(line, {{"unit", text::ToUtf8(started->Position->Unit)}});
    } else if (std::holds_alternative<TActionEnded>(event.What)) {
      actions_.pop_back();
    } else if (const auto* sent = std::get_if<TMetricSent>(&event.What)) {
      Keep(*sent);
    }
    runs_.Append(run_, std::move(line), event.SoFar);
  }

private:
  static std::string With(const std::string& line, const json& fields) {
    auto event = json::parse(line);
    event.update(fields);
    return Dump(event);
  }

  std::string WithLocation(std::string line, const std::u16string& text) {
    const auto found = FindSourceLocation(text);
    if (!found) return line;
    const std::u16string file = text::ExpandPath(found->File, text::ExtractFileDir(run_.FileName));
    {
      const std::lock_guard lock(runs_.mutex_);
      run_.Locations[run_.Events.size()] = {file, found->Line};
    }
    return With(line, {{"file", text::ToUtf8(file)}, {"line", found->Line}, {"column", found->Column}});
  }

  void Keep(const TMetricSent& sent) {
    const auto* number = std::get_if<std::int64_t>(&sent.Metric.Value);
    if (number == nullptr) return;
    const json metric = {{"action", actions_.empty() ? "" : text::ToUtf8(actions_.back())},
                         {"category", text::ToUtf8(sent.Metric.Category)},
                         {"name", text::ToUtf8(sent.Metric.Name)},
                         {"configuration", text::ToUtf8(sent.Configuration)},
                         {"value", *number}};
    const std::lock_guard lock(runs_.mutex_);
    run_.Metrics.push_back(metric);
  }

  TEditorRuns& runs_;
  TRun& run_;
  std::vector<std::u16string> actions_; // running ones, the innermost last
};

TEditorRuns::TEditorRuns(const TServiceRegistry& services, TRunSettings settings)
    : services_(services), settings_(std::move(settings)) {
  // The registry collects the names of constants when it is first asked: not on two threads at once.
  static_cast<void>(services_.ConstantNames());
}

TEditorRuns::~TEditorRuns() {
  End();
}

void TEditorRuns::End() {
  Stop();
  if (thread_.joinable()) thread_.join();
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
  auto run = std::make_unique<TRun>();
  run->Number = static_cast<int>(summaries_.size()) + 1;
  run->Text = std::move(text);
  run->FileName = std::move(fileName);
  run->Stored = std::move(stored);
  run->DryRun = dryRun;
  run_ = std::move(run);
  result_.reset();
  stop_.Clear();
  thread_ = std::thread([this] { Execute(*run_); });
}

void TEditorRuns::Stop() {
  const std::lock_guard lock(mutex_);
  if (run_ == nullptr || !run_->Running) return;
  run_->StopAsked = true;
  stop_.Raise();
}

void TEditorRuns::Execute(TRun& run) {
  TRunReport report;
  std::string text;
  std::string error;
  try {
    TRunSettings settings = settings_;
    settings.DryRun = run.DryRun;
    TProjectRunner runner(services_, stop_, std::move(settings));
    TProjectFile file(runner.Project());
    file.LoadBytes(run.Text, run.FileName, run.Stored);
    runner.StoreIn(file);
    TSink sink(*this, run);
    runner.AddSink(sink);
    report = runner.Run();
    text = file.Text();
  } catch (const std::exception& failure) {
    error = text::ToUtf8(MessageOf(failure));
  }
  json summary = RunJson(report);
  summary.update({{"run", run.Number},
                  {"dryRun", run.DryRun},
                  {"stopped", report.Result == TResultKind::Stopped},
                  {"error", error},
                  {"rows", RowsJson(report)},
                  {"metrics", run.Metrics}});
  const std::lock_guard lock(mutex_);
  summaries_.push_back(std::move(summary));
  if (!run.DryRun && !text.empty() && text != run.Text) result_ = std::move(text);
  run.Running = false;
  changed_.notify_all();
}

void TEditorRuns::Append(TRun& run, std::string line, const TProblemCounts& soFar) {
  const std::lock_guard lock(mutex_);
  run.SoFar = soFar;
  run.Events.push_back(std::move(line));
}

std::optional<std::string> TEditorRuns::TakeResult() {
  const std::lock_guard lock(mutex_);
  return std::exchange(result_, std::nullopt);
}

std::string TEditorRuns::Events(int run, std::size_t from, std::chrono::milliseconds wait) {
  std::unique_lock lock(mutex_);
  const auto hasNews = [&] {
    if (run_ == nullptr) return true;
    return run_->Number != run || from < run_->Events.size() || !run_->Running;
  };
  // Only the end of a run wakes: to wake for each of many thousand lines would be most of the work.
  for (const auto end = std::chrono::steady_clock::now() + wait;
       !hasNews() && std::chrono::steady_clock::now() < end;)
    changed_.wait_for(lock, Gathering);
  if (run_ != nullptr && run_->Running && run_->Events.size() < from + MostEventsAtOnce)
    changed_.wait_for(lock, Gathering);
  if (run_ == nullptr)
    return R"({"run":0,"running":false,"errors":0,"warnings":0,"from":0,"next":0,"events":[]})";
  if (run_->Number != run) from = 0;
  const std::size_t next = std::min(run_->Events.size(), from + MostEventsAtOnce);
  std::string text = "{\"run\":" + std::to_string(run_->Number) +
                     ",\"running\":" + (run_->Running || next < run_->Events.size() ? "true" : "false") +
                     ",\"errors\":" + std::to_string(run_->SoFar.Errors) +
                     ",\"warnings\":" + std::to_string(run_->SoFar.Warnings) +
                     ",\"from\":" + std::to_string(from) + ",\"next\":" + std::to_string(next) +
                     ",\"events\":[";
  for (std::size_t i = from; i < next; ++i)
    text.append(i == from ? "" : ",").append(run_->Events[i]);
  return text + "]}";
}

json TEditorRuns::Summaries() const {
  const std::lock_guard lock(mutex_);
  return summaries_;
}

std::optional<TEditorRuns::TLocation> TEditorRuns::LocationOf(std::size_t event) const {
  const std::lock_guard lock(mutex_);
  if (run_ == nullptr) return std::nullopt;
  const auto found = run_->Locations.find(event);
  return found == run_->Locations.end() ? std::nullopt : std::optional(found->second);
}

} // namespace kx::editor
