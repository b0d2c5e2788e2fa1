#include "program/editor/EditorSession.h"
#include "foundation/platform/Files.h"
#include "foundation/text/Exceptions.h"
#include "program/editor/SessionArguments.h"
#include "program/history/HistoryJson.h"

namespace kx::editor {

namespace {

constexpr std::int64_t RunsShown = 100;
constexpr std::int64_t RunsOfTests = 30; // from which it follows which tests are flaky

TJson OverviewJson(history::THistory& history) {
  return TJson::parse(JsonObjectText([&](TJsonWriter& json) {
    json.ArrayMember("remembered", [&] {
      for (const auto& run : history.Runs(RunsShown))
        json.Object([&] { WriteRun(run, json); });
    });
    json.ArrayMember("tests", [&] {
      for (const auto& test : history.Tests(RunsOfTests))
        json.Object([&] { WriteTest(test, json); });
    });
    json.ArrayMember("known", [&] {
      for (const auto& finding : history.Findings())
        json.Object([&] {
          json.Member("sinceRun", finding.SinceRun);
          json.Member("fingerprint", finding.Finding.Fingerprint);
        });
    });
  }));
}

TJson DetailsJson(history::THistory& history, history::TNumber run) {
  const auto details = history.Details(run);
  if (!details) throw EKxException(u"The run is not remembered any more.");
  return TJson::parse(JsonObjectText([&](TJsonWriter& json) { WriteDetails(*details, json); }));
}

} // namespace

// What earlier sessions left, too. Without a history there is nothing to tell.
TJson TEditorSession::History(const TJson& arguments) {
  const history::TNumber run =
      arguments.contains("run") ? static_cast<history::TNumber>(IndexOf(arguments, "run")) : 0;
  aside_ = [file = history_.FileFor(project_.FileName()), run] {
    if (file.empty() || !platform::FileExists(file)) return TJson{{"remembered", TJson::array()}};
    history::THistory history(file);
    return run > 0 ? TJson{{"details", DetailsJson(history, run)}} : OverviewJson(history);
  };
  return TJson::object();
}

} // namespace kx::editor
