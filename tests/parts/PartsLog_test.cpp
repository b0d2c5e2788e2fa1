#include "program/parts/PartsLog.h"

#include "program/report/JsonLinesSink.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kx {
namespace {

enum class TLog { Missing, Torn, Succeeded, Failed };

// Of a part that has run one action and said one line.
std::u16string WriteLog(const tests::TTemporaryFolder& folder, TLog what) {
  if (what == TLog::Missing) return folder.Path("none.jsonl");
  const auto now = std::chrono::system_clock::now();
  const TResultKind result = what == TLog::Failed ? TResultKind::Failed : TResultKind::Succeeded;
  const TActionResult action{.Name = u"A", .Type = u"STEP", .Result = result};
  TRunReport report{.Result = result, .Began = now};
  report.Actions = {action};
  auto sink = TJsonLinesSink::Create(folder.Path("part.jsonl"));
  EXPECT_TRUE(sink);
  (*sink)->On({now, 0, TActionStarted{u"A", u"STEP", u"A", u"", 0, {}}});
  (*sink)->On({now, 1, TMessageSent{u"said", TStatusTag::stNormal}});
  (*sink)->On({now, 0, TActionEnded{action}});
  if (what != TLog::Torn) (*sink)->On({now, 0, TRunEnded{report}});
  EXPECT_TRUE((*sink)->Close());
  return folder.Path("part.jsonl");
}

struct TTold : IRunEventSink {
  void On(const TRunEvent& event) override {
    if (const auto* message = std::get_if<TMessageSent>(&event.What))
      Text += (message->Status == TStatusTag::stError ? u"error: " : u"") + message->Text + u"|";
  }
  std::u16string Text;
};

TEST(PartsLog, APartThatEndsOtherwiseThanItsLogSaysHasFailed) {
  using enum TResultKind;
  struct TCase {
    TLog Log;
    TPartOutcome Outcome;
    TResultKind Kind;
    const char* Said;
  };
  const TCase cases[] = {
      {TLog::Succeeded, {.ExitCode = 0, .HasAnswered = true}, Succeeded, "said|"},
      {TLog::Failed, {.ExitCode = 1, .HasAnswered = true}, Failed, "said|"},
      {TLog::Succeeded,
       {.ExitCode = 1, .HasAnswered = true},
       Failed,
       "said|error: The process of this part ended with code 1 although its log tells of a success.|"},
      {TLog::Missing,
       {.ExitCode = 0, .HasAnswered = true},
       Failed,
       "error: This part left no log. Its process ended with code 0.|"},
      {TLog::Torn,
       {.ExitCode = 0, .HasAnswered = true},
       Failed,
       "code 0 although its log tells of no success.|"},
      {TLog::Succeeded, {.Trouble = u"No process."}, Failed, "said|error: No process.|"},
      {TLog::Missing, {.IsStopped = true}, Stopped, ""},
      {TLog::Succeeded, {.ExitCode = 0, .HasAnswered = true, .Errors = {u"odd"}}, Succeeded, "said|odd|"},
  };
  for (const TCase& row : cases) {
    SCOPED_TRACE(row.Said);
    const tests::TTemporaryFolder folder;
    TTold told;
    IRunEventSink* const sink = &told;
    const auto began = std::chrono::system_clock::now() - std::chrono::hours(1);
    TPartsLog log({&sink, 1}, began);
    TEndedPart part{.Place = {}, .Action = {u"A", u"STEP", u"A", u"", 0, {}}};
    part.Log = WriteLog(folder, row.Log);
    part.Outcome = row.Outcome;
    EXPECT_EQ(log.Add(part).Kind, row.Kind);
    EXPECT_NE(text::ToUtf8(told.Text).find(row.Said), std::string::npos) << text::ToUtf8(told.Text);
    const TRunReport report = log.Take();
    EXPECT_EQ(report.Result, row.Kind);
    EXPECT_EQ(report.Began, began);
    EXPECT_GE(report.Elapsed, std::chrono::hours(1)) << "the time of the whole run";
    EXPECT_EQ(report.Actions.at(0).Name, u"A");
    EXPECT_EQ(report.Counts.Errors > 0, told.Text.find(u"error: ") != std::u16string::npos);
    EXPECT_EQ(report.Counts.Warnings, static_cast<int>(row.Outcome.Errors.size()));
  }
}

} // namespace
} // namespace kx
