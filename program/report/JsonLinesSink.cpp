#include "program/report/JsonLinesSink.h"

#include "contract/UnitTests.h"
#include "foundation/platform/Files.h"
#include "foundation/text/Encoding.h"
#include "program/report/ResultJson.h"

#include <nlohmann/json.hpp>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace kx {

namespace {

// Keys stay in the order in which they are written here.
using TJson = nlohmann::ordered_json;

std::string Utf8(std::u16string_view text) {
  return text::ToUtf8(text);
}

// ISO 8601 in universal time, with milliseconds.
std::string TimeText(std::chrono::system_clock::time_point time) {
  return Utf8(DateTimeText(std::chrono::floor<std::chrono::milliseconds>(time))) + "Z";
}

TJson Fields(const TActionStarted& action) {
  TJson fields{{"event", "action"},         {"name", Utf8(action.Name)},
               {"type", Utf8(action.Type)}, {"description", Utf8(action.Description)},
               {"pass", Utf8(action.Pass)}, {"nesting", action.Nesting}};
  if (action.Position) {
    fields["iteration"] = action.Position->Number;
    fields["iterations"] = action.Position->Count;
  }
  return fields;
}

TJson Fields(const TActionEnded& ended) {
  TJson fields{{"event", "actionEnd"}};
  fields.update(ResultJson(ended.Result));
  return fields;
}

TJson Fields(const TRunEnded& ended) {
  TJson fields{{"event", "runEnd"}};
  fields.update(RunJson(ended.Report));
  return fields;
}

TJson Fields(const TMessageSent& message) {
  TJson fields{
      {"event", "message"}, {"status", static_cast<int>(message.Status)}, {"text", Utf8(message.Text)}};
  if (message.IsDryRun) fields["dryRun"] = true;
  return fields;
}

TJson Fields(const TGroupStarted& group) {
  return {{"event", "group"}, {"status", static_cast<int>(group.Status)}, {"title", Utf8(group.Title)}};
}

TJson Fields(const TGroupEnded& group) {
  return {{"event", "groupEnd"},
          {"status", group.Status ? TJson(static_cast<int>(*group.Status)) : TJson()},
          {"title", Utf8(group.Title)},
          {"elapsedMs", group.Elapsed.count()}};
}

TJson Fields(const TMetricSent& sent) {
  const auto* number = std::get_if<std::int64_t>(&sent.Metric.Value);
  const TJson value =
      number != nullptr ? TJson(*number) : TJson(Utf8(std::get<std::u16string>(sent.Metric.Value)));
  return {{"event", "metric"},
          {"category", Utf8(sent.Metric.Category)},
          {"name", Utf8(sent.Metric.Name)},
          {"configuration", Utf8(sent.Configuration)},
          {"value", value}};
}

} // namespace

std::string ToJsonLine(const TRunEvent& event) {
  TJson line{{"time", TimeText(event.Time)}, {"depth", event.Depth}};
  line.update(std::visit([](const auto& what) { return Fields(what); }, event.What));
  return line.dump();
}

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
  state->File.open(std::filesystem::path(platform::ResolveForWriting(fileName)),
                   std::ios::binary | std::ios::trunc);
  state->NoteFailure();
  if (!state->File)
    return platform::Failure{u"Cannot write log file " + std::u16string(fileName) + u". " + state->Reason};
  return std::unique_ptr<TJsonLinesSink>(new TJsonLinesSink(std::move(state)));
}

void TJsonLinesSink::On(const TRunEvent& event) {
  if (!state_->File) return;
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
