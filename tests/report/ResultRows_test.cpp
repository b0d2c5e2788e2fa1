#include "program/report/ResultRows.h"

#include "foundation/text/Encoding.h"

#include <gtest/gtest.h>

namespace kx {
namespace {

using std::chrono::milliseconds;
using enum TResultKind;

// "action nesting configuration word errors/warnings ms status", "." behind one that is no outcome.
std::string Shown(const std::vector<TActionResult>& actions) {
  std::string shown;
  for (const TResultRow& row : ResultRows(actions))
    shown += text::ToUtf8(row.Action) + " " + std::to_string(row.Nesting) + " " +
             text::ToUtf8(row.Configuration) + " " + row.Word() + " " + std::to_string(row.Counts.Errors) +
             "/" + std::to_string(row.Counts.Warnings) + " " + std::to_string(row.Elapsed.count()) + " " +
             std::to_string(static_cast<int>(row.Status())) + (row.IsOutcome ? "\n" : ".\n");
  return shown;
}

TActionResult Action(TResultKind result, std::vector<TConfigurationResult> configurations = {},
                     bool isLoop = false) {
  TActionResult action{.Name = u"A", .Pass = u"p", .Nesting = 1, .IsLoop = isLoop, .Result = result};
  action.Counts = {3, 5};
  action.Elapsed = milliseconds(100);
  action.Configurations = std::move(configurations);
  return action;
}

TConfigurationResult Debug(TResultKind result, TProblemCounts counts, std::u16string reason = {}) {
  TConfigurationResult configuration{.Configuration = u"D", .Result = result, .Reason = std::move(reason)};
  configuration.Counts = counts;
  configuration.Elapsed = milliseconds(40);
  return configuration;
}

TEST(ResultRows, AreThoseOfConfigurationsAndOfWhatTheyDoNotSay) {
  TActionResult broken = Action(Failed, {Debug(Failed, {3, 5}, u"r")});
  TActionResult said = broken;
  broken.Reason = u"s";
  said.Reason = u"r";
  const std::pair<TActionResult, std::string_view> rows[] = {
      {Action(Succeeded), "A (p) 1  succeeded 3/5 100 2\n"},
      {Action(Failed, {Debug(Failed, {3, 5})}), "A (p) 1 D failed 3/5 40 3\n"},
      {Action(Succeeded, {Debug(Succeeded, {1, 2})}),
       "A (p) 1 D succeeded 1/2 40 2\nA (p) 1 (the rest) succeeded 2/3 60 2.\n"},
      {Action(Failed, {Debug(Succeeded, {3, 5})}),
       "A (p) 1 D succeeded 3/5 40 2\nA (p) 1 (the rest) failed 0/0 60 3\n"},
      {broken, "A (p) 1 D failed (r) 3/5 40 3\nA (p) 1 (the rest) failed (s) 0/0 60 3\n"},
      {said, "A (p) 1 D failed (r) 3/5 40 3\n"},
      {Action(Ignored, {Debug(Succeeded, {0, 5})}),
       "A (p) 1 D succeeded 0/5 40 2\nA (p) 1 (the rest) ignored 3/0 60 2\n"},
      {Action(Succeeded, {}, true), "A (p) 1  succeeded 3/5 100 2.\n"},
      {Action(Ignored, {}, true), "A (p) 1  ignored 3/5 100 2\n"},
  };
  for (const auto& [action, shown] : rows)
    EXPECT_EQ(Shown({action}), shown);
}

} // namespace
} // namespace kx
