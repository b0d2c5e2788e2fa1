#include "program/parts/PartProcesses.h"

#include "foundation/platform/Files.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/WindowsPath.h"

#include <gtest/gtest.h>

namespace kx {
namespace {

TEST(PartProcesses, SayHowEachPartEndedAndWhatWasSaidMeanwhile) {
  const std::u16string answer = uR"( err:\x1e{\x22exitCode\x22:)";
  std::u16string flood;
  for (int i = 0; i < 101; ++i)
    flood += u"err:x\\n ";
  struct TCase {
    std::u16string Commands; // of the process, for tests/support/TestTool.cpp
    bool Stops = false;
    int ExitCode = 0;
    bool HasAnswered = false;
    std::size_t Errors = 0;
    std::vector<std::u16string> Remarks = {};
  };
  const TCase cases[] = {
      {.Commands = u"exit:3", .ExitCode = 3},
      {.Commands = u"wait", .Stops = true},
      {.Commands = flood, .Errors = 100},
      {.Commands = u"err:odd\\n err:more" + answer + u"7}\\n",
       .ExitCode = 7,
       .HasAnswered = true,
       .Errors = 2},
      {.Commands = answer + u"0}\\n err:late\\n exit:4",
       .HasAnswered = true,
       .Remarks = {u"late", u"A process that ran parts was ended by itself with code 4."}},
  };
  for (const TCase& row : cases) {
    SCOPED_TRACE(text::ToUtf8(row.Commands.substr(0, 60)));
    platform::StopSignal stop;
    TPartProcesses processes(
        {text::JoinPath(platform::ProgramDirectory(), KX_TEST_TOOL), row.Commands, u"", {}}, stop);
    processes.Start(5, {u"A", u"a.jsonl"});
    EXPECT_EQ(processes.Running(), 1U);
    if (row.Stops) stop.Raise();
    const TPartOutcome outcome = processes.Wait();
    EXPECT_EQ(outcome.Part, 5U);
    EXPECT_EQ(outcome.Trouble, u"");
    EXPECT_EQ(outcome.IsStopped, row.Stops);
    EXPECT_EQ(outcome.IsStopped ? 0 : outcome.ExitCode, row.ExitCode);
    EXPECT_EQ(outcome.HasAnswered, row.HasAnswered);
    EXPECT_EQ(outcome.Errors.size(), row.Errors);
    EXPECT_EQ(processes.End(), row.Remarks);
  }
  platform::StopSignal stop;
  TPartProcesses none({u"/none/kxhost", u"", u"", {}}, stop);
  none.Start(0, {u"A", u"a.jsonl"});
  EXPECT_NE(none.Wait().Trouble, u"") << "it cannot be started";
}

} // namespace
} // namespace kx
