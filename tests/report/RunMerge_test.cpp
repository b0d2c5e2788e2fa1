#include "program/report/RunMerge.h"

#include <gtest/gtest.h>

#include <string>

namespace kx::tests {
namespace {

using namespace std::chrono_literals;

constexpr std::chrono::system_clock::time_point Start{1270117230s};

TRunReport RunOf(std::optional<TPartOfRun> part, std::chrono::milliseconds began,
                 std::vector<TActionResult> actions, TResultKind result = TResultKind::Succeeded) {
  TRunReport run;
  run.Part = part;
  run.Began = Start + began;
  run.Elapsed = 10ms;
  run.Result = result;
  run.Actions = std::move(actions);
  run.File = u"/p.kxproj";
  return run;
}

TActionResult Row(std::u16string name, int nesting = 0, TResultKind result = TResultKind::Succeeded) {
  return {.Name = std::move(name),
          .Nesting = nesting,
          .IsLoop = nesting == 0,
          .Result = result,
          .Counts = {1, 2},
          .Began = 1ms,
          .Elapsed = 5ms};
}

TEST(RunMerge, PutsPartsAsTheProjectHasThemAndPassesIntoOneLoop) {
  TRunMerge merge;
  merge.Add(RunOf(TPartOfRun{.Place = 2}, 70ms, {Row(u"Last")}));
  merge.Add(RunOf(std::nullopt, 90ms, {Row(u"Else")}));
  merge.Add(RunOf(TPartOfRun{1, 2}, 40ms, {Row(u"Loop", 0, TResultKind::Failed), Row(u"In b", 1)},
                  TResultKind::Failed));
  merge.Add(RunOf(TPartOfRun{1, 1}, 60ms, {Row(u"Loop"), Row(u"In a", 1)}));
  merge.Add(RunOf(TPartOfRun{.Place = 0}, 0ms, {Row(u"First")}));
  const TRunReport run = merge.Take();
  std::string rows;
  for (const auto& action : run.Actions)
    rows += std::string(action.Name.begin(), action.Name.end()) + " " + WordOf(action.Result) + " " +
            std::to_string(action.Counts.Errors) + " " + std::to_string(action.Began.count()) + "+" +
            std::to_string(action.Elapsed.count()) + "; ";
  EXPECT_EQ(rows, "First succeeded 1 1+5; Loop failed 2 41+25; In a succeeded 1 61+5; In b succeeded 1 41+5; "
                  "Last succeeded 1 71+5; Else succeeded 1 91+5; ");
  EXPECT_EQ(run.Result, TResultKind::Failed);
  EXPECT_EQ(run.Began, Start);
  EXPECT_EQ(run.Elapsed, 100ms);
  EXPECT_EQ(run.File, u"/p.kxproj");
  EXPECT_FALSE(run.Part);
}

} // namespace
} // namespace kx::tests
