#include "program/runner/Schedule.h"

#include <gtest/gtest.h>

#include <deque>
#include <map>
#include <string>

namespace kx::tests {
namespace {

using enum TResultKind;
constexpr auto Halt = TOnFailure::Stop;
constexpr auto Continue = TOnFailure::Continue;
constexpr auto Ignore = TOnFailure::Ignore;

constexpr TActionNeed Behind(std::size_t part) {
  return {part, false};
}
constexpr TActionNeed Success(std::size_t part) {
  return {part, true};
}
std::vector<TScheduled> Chain(std::vector<TOnFailure> parts) {
  std::vector<TScheduled> chain;
  for (std::size_t i = 0; i < parts.size(); ++i)
    chain.push_back({i == 0 ? std::vector<TActionNeed>() : std::vector{Behind(i - 1)}, i, parts[i]});
  return chain;
}

// The parts as they begin, up to `atOnce` at a time, the oldest ending first: "012 !34" with those that never
// begin behind "!", "x" when it is cut short.
std::string Order(std::vector<TScheduled> parts, const std::map<std::size_t, TResultKind>& ends,
                  bool keepGoing, std::size_t atOnce = 1) {
  TSchedule schedule(std::move(parts), keepGoing);
  std::string text;
  std::deque<std::size_t> running;
  const auto begin = [&] {
    while (running.size() < atOnce) {
      const auto next = schedule.Next();
      if (!next) break;
      running.push_back(*next);
      text += std::to_string(*next);
    }
    return !running.empty();
  };
  while (begin()) {
    const auto end = ends.find(running.front());
    schedule.End(running.front(), end == ends.end() ? Succeeded : end->second);
    running.pop_front();
  }
  text += schedule.IsCutShort() ? "x!" : "!";
  for (const std::size_t part : schedule.NotRun())
    text += std::to_string(part);
  return text;
}

TEST(Schedule, BeginsWhatTheNeedsAndTheEndsAllow) {
  const auto onlyNeeds = [](std::vector<TActionNeed> needs, TOnFailure onFailure = Halt) {
    static std::size_t unit = 100;
    return TScheduled{std::move(needs), ++unit, onFailure};
  };
  const std::vector<TScheduled> passes{{{}, 0, Continue},
                                       {{}, 0, Continue},
                                       {{Success(0)}, 0, Continue},
                                       {{Behind(0), Behind(1), Behind(2)}, 1, Halt}};
  const std::vector<TScheduled> behindFailure{onlyNeeds({}, Continue), onlyNeeds({Success(0)}),
                                              onlyNeeds({Behind(1)}), onlyNeeds({Behind(0)})};
  const std::vector<TScheduled> three{onlyNeeds({}), onlyNeeds({}), onlyNeeds({})};
  const std::vector<TScheduled> later{onlyNeeds({Success(2)}), onlyNeeds({}), onlyNeeds({})};
  const std::vector<TScheduled> rest{onlyNeeds({}), onlyNeeds({Behind(0)}), onlyNeeds({}),
                                     onlyNeeds({Success(2)})};
  const std::vector<TScheduled> ignored{onlyNeeds({}, Ignore), onlyNeeds({Success(0)})};
  const std::vector<TScheduled> heldUp{onlyNeeds({}, Continue), onlyNeeds({Success(0)}, Ignore),
                                       onlyNeeds({Success(1)})};
  const std::vector<TScheduled> four{onlyNeeds({}), onlyNeeds({Success(0)}), onlyNeeds({}), onlyNeeds({})};
  using TEnds = std::map<std::size_t, TResultKind>; // of those that do not succeed
  const TEnds none, fails{{0, Failed}}, secondFails{{1, Failed}};
  struct TCase {
    const char* Name;
    std::vector<TScheduled> Parts;
    TEnds Ends;
    bool KeepGoing;
    std::string Order;
    std::size_t AtOnce = 1;
  };
  const TCase cases[] = {
      {"one behind the other", Chain({Halt, Halt, Halt}), none, false, "012!"},
      {"a failure ends it", Chain({Halt, Halt, Halt}), secondFails, false, "01x!2"},
      {"unless the project says otherwise", Chain({Halt, Continue, Halt}), secondFails, false, "012!"},
      {"a loop with failures lets it go on", Chain({Halt, Halt}), TEnds{{0, FinishedWithFailures}}, false,
       "01!"},
      {"what is skipped lets it go on", Chain({Halt, Halt}), TEnds{{0, Skipped}}, false, "01!"},
      {"the user ends it, whatever the project says", Chain({Continue, Halt}), TEnds{{0, Stopped}}, true,
       "0x!1"},
      {"keep going: what stands behind waits for it in vain", Chain({Halt, Halt, Halt}), fails, true, "0!12"},
      {"keep going: the rest runs", rest, fails, true, "023!1"},
      {"a later one is needed", later, none, false, "120!"},
      {"what must succeed and what only stands behind", behindFailure, fails, false, "03!12"},
      {"what is ignored has succeeded", ignored, TEnds{{0, Ignored}}, false, "01!"},
      {"what is held up and not minded lets others run", heldUp, fails, false, "02!1"},
      {"a failed pass is the last of its loop", passes, fails, false, "03!12"},
      {"but for one that runs already", passes, fails, false, "013!2", 2},
      {"keep going: other passes run", passes, fails, true, "013!2"},
      {"two at once", four, none, false, "0213!", 2},
      {"one that runs ends behind a failure", three, fails, false, "01x!2", 2},
  };
  for (const TCase& row : cases)
    EXPECT_EQ(Order(row.Parts, row.Ends, row.KeepGoing, row.AtOnce), row.Order) << row.Name;
}

TEST(Schedule, HoldsUpALongRowWithoutRunningOutOfStack) {
  constexpr std::size_t Count = 100'000;
  TSchedule schedule(Chain(std::vector<TOnFailure>(Count, Halt)), true);
  schedule.End(schedule.Next().value(), Failed);
  EXPECT_FALSE(schedule.Next());
  EXPECT_EQ(schedule.NotRun().size(), Count - 1);
  EXPECT_EQ(schedule.RefusedBy(Count - 1), Count - 2);
}

} // namespace
} // namespace kx::tests
