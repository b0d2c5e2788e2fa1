#include "program/report/JsonLinesSink.h"

#include "contract/UnitTests.h"
#include "foundation/platform/Files.h"
#include "foundation/text/Encoding.h"
#include "program/findings/FindingJson.h"
#include "program/report/ResultJson.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace kx {

namespace {

// ISO 8601 in universal time, with milliseconds.
std::u16string TimeText(std::chrono::system_clock::time_point time) {
  return DateTimeText(std::chrono::floor<std::chrono::milliseconds>(time)) + u"Z";
}

void WriteEvent(const TActionStarted& action, TJsonWriter& json) {
  json.Member("event", "action");
  json.Member("name", action.Name);
  json.Member("type", action.Type);
  json.Member("description", action.Description);
  json.Member("pass", action.Pass);
  json.Member("nesting", action.Nesting);
  if (!action.Position) return;
  json.Member("iteration", action.Position->Number);
  json.Member("iterations", action.Position->Count);
}

void WriteEvent(const TActionEnded& ended, TJsonWriter& json) {
  json.Member("event", "actionEnd");
  WriteResult(ended.Result, json);
}

void WriteEvent(const TRunEnded& ended, TJsonWriter& json) {
  json.Member("event", "runEnd");
  WriteRun(ended.Report, json);
  if (ended.Report.Began != std::chrono::system_clock::time_point())
    json.Member("began", TimeText(ended.Report.Began));
}

void WriteEvent(const TMessageSent& message, TJsonWriter& json) {
  json.Member("event", "message");
  json.Member("status", static_cast<int>(message.Status));
  json.Member("text", message.Text);
  if (message.IsDryRun) json.Member("dryRun", true);
  if (message.TakesBack > 0) json.Member("takesBack", message.TakesBack);
}

void WriteEvent(const TGroupStarted& group, TJsonWriter& json) {
  json.Member("event", "group");
  json.Member("status", static_cast<int>(group.Status));
  json.Member("title", group.Title);
}

void WriteEvent(const TGroupEnded& group, TJsonWriter& json) {
  json.Member("event", "groupEnd");
  json.Member("status", group.Status ? std::optional(static_cast<int>(*group.Status)) : std::nullopt);
  json.Member("title", group.Title);
  json.Member("elapsedMs", group.Elapsed.count());
}

void WriteEvent(const TMetricSent& sent, TJsonWriter& json) {
  json.Member("event", "metric");
  json.Member("category", sent.Metric.Category);
  json.Member("name", sent.Metric.Name);
  json.Member("configuration", sent.Configuration);
  std::visit([&json](const auto& value) { json.Member("value", value); }, sent.Metric.Value);
  if (!sent.Source) return;
  json.Member("action", sent.Source->Action);
  json.ArrayMember("passes", [&] {
    for (const auto& pass : sent.Source->Passes)
      json.Value(pass);
  });
}

} // namespace

std::string ToJsonLine(const TRunEvent& event, const TMoreMembers& more) {
  return JsonObjectText([&](TJsonWriter& json) {
    json.Member("time", TimeText(event.Time));
    json.Member("depth", event.Depth);
    std::visit([&json](const auto& what) { WriteEvent(what, json); }, event.What);
    if (more) more(json);
  });
}

namespace {

std::string FindingLine(const TFinding& finding, std::chrono::system_clock::time_point time) {
  return JsonObjectText([&](TJsonWriter& json) {
    json.Member("time", TimeText(time));
    json.Member("depth", 0);
    json.Member("event", "finding");
    WriteFinding(finding, json);
  });
}

} // namespace

struct TJsonLinesSink::TState {
  std::ofstream File;
  std::u16string Reason; // of the first failure

  // The library keeps the system's number as it was.
  void NoteFailure() {
    if (File || !Reason.empty()) return;
    Reason = text::FromUtf8(std::generic_category().message(errno));
  }
};

TJsonLinesSink::TJsonLinesSink(std::unique_ptr<TState> state) : state_(std::move(state)) {}
TJsonLinesSink::~TJsonLinesSink() = default;

platform::Result<std::unique_ptr<TJsonLinesSink>> TJsonLinesSink::Create(std::u16string_view fileName) {
  auto state = std::make_unique<TState>();
  const std::filesystem::path path(platform::ResolveForWriting(fileName));
  do { // a signal may interrupt it
    errno = 0;
    state->File.clear();
    state->File.open(path, std::ios::binary | std::ios::trunc);
  } while (!state->File && errno == EINTR);
  state->NoteFailure();
  if (!state->File)
    return platform::Failure{u"Cannot write log file " + std::u16string(fileName) + u". " + state->Reason};
  return std::unique_ptr<TJsonLinesSink>(new TJsonLinesSink(std::move(state)));
}

void TJsonLinesSink::On(const TRunEvent& event) {
  if (!state_->File) return;
  if (const auto* ended = std::get_if<TRunEnded>(&event.What))
    for (const auto& finding : ended->Report.Findings)
      state_->File << FindingLine(finding, event.Time) + '\n';
  state_->File << ToJsonLine(event) + '\n' << std::flush;
  state_->NoteFailure();
}

platform::Status TJsonLinesSink::Close() {
  if (state_->File.is_open()) state_->File.close();
  state_->NoteFailure();
  if (!state_->Reason.empty()) return platform::Failure{state_->Reason};
  return platform::Done{};
}

} // namespace kx
