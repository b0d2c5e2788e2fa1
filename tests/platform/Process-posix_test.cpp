#include "platform/Process.h"

#include "tests/platform/TestFolder.h"
#include "text/CommandLine.h"
#include "text/Text.h"

#include <csignal>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace kx::platform {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

class Process : public TestFolder {
protected:
  static ProcessRequest Shell(std::u16string_view script) {
    return {u"/bin/sh", u"-c " + text::QuoteArgument(script), u"", {}};
  }

  // Runs it and keeps its lines. `onLine` sees each of standard output.
  Result<ProcessOutcome> Run(const ProcessRequest& request,
                             const std::function<void(std::u16string_view)>& onLine = {}) {
    out_.clear();
    err_.clear();
    ProcessOutput output;
    output.OnStdOut = [&](std::u16string_view line) {
      out_.emplace_back(line);
      if (onLine) onLine(line);
    };
    output.OnStdErr = [&](std::u16string_view line) { err_.emplace_back(line); };
    const StopSignal* stops[] = {&otherStop_, &stop_};
    return RunProcess(request, output, stops);
  }

  int ExitCode(std::u16string_view script) {
    const auto outcome = Run(Shell(script));
    EXPECT_TRUE(outcome && !outcome->Stopped);
    return outcome ? outcome->ExitCode : -1;
  }

  // A process that has ended but that nobody has asked about yet does not run any more.
  static bool Runs(std::u16string_view number) {
    std::ifstream status("/proc/" + text::ToUtf8(number) + "/stat");
    std::string text;
    std::getline(status, text);
    const std::size_t name = text.rfind(')');
    return name != std::string::npos && text[name + 2] != 'Z' && text[name + 2] != 'X';
  }

  static void WaitUntilGone(std::u16string_view number) {
    while (Runs(number))
      std::this_thread::yield();
  }

  StopSignal stop_;
  StopSignal otherStop_;
  std::vector<std::u16string> out_;
  std::vector<std::u16string> err_;
};

TEST_F(Process, GivesItsOutputAsWholeLines) {
  EXPECT_EQ(ExitCode(u"printf 'a\\r\\n\\nb\\rc\\nno end'; printf 'e\\n' >&2"), 0);
  EXPECT_THAT(out_, ElementsAre(u"a", u"", u"b\rc", u"no end"));
  EXPECT_THAT(err_, ElementsAre(u"e"));
}

TEST_F(Process, OutputIsDecodedLineByLine) {
  ExitCode(u"printf '\\303\\251t\\303\\251\\n\\202t\\202\\n'");
  EXPECT_THAT(out_, ElementsAre(u"été", u"été"));
}

TEST_F(Process, FloodsOnBothStreamsArriveWhole) {
  EXPECT_EQ(ExitCode(u"i=0; while [ $i -lt 3000 ]; do i=$((i+1)); printf '%0200d\\n' $i; printf '%0300d\\n' "
                     u"$i >&2; done"),
            0);
  ASSERT_EQ(out_.size(), 3000U);
  ASSERT_EQ(err_.size(), 3000U);
  EXPECT_EQ(text::ToInteger(out_.back()), 3000);
  EXPECT_EQ(err_.back().size(), 300U);
}

TEST_F(Process, NobodyNeedListen) {
  const auto outcome = RunProcess(Shell(u"seq 100000; exit 4"), {}, {});
  ASSERT_TRUE(outcome);
  EXPECT_EQ(outcome->ExitCode, 4);
}

TEST_F(Process, ExitCodeTellsHowItEnded) {
  const struct {
    std::u16string_view Script;
    int ExitCode;
  } rows[] = {
      {u"exit 0", 0}, {u"exit 3", 3}, {u"exit 255", 255}, {u"kill -9 $$", 137}, {u"kill -TERM $$", 143}};
  for (const auto& row : rows)
    EXPECT_EQ(ExitCode(row.Script), row.ExitCode) << testing::PrintToString(row.Script);
}

TEST_F(Process, GetsArgumentsFolderAndEnvironmentAsAsked) {
  fs::create_directories(Native("Work Folder"));
  Write("tool", "#!/bin/sh\nfor a; do echo \"[$a]\"; done; pwd; echo $KX_ADDED $HOME; cat; echo end\n");
  fs::permissions(Native("tool"), fs::perms(0755));
  ProcessRequest request{Path("TOOL"), u"/x:\"a b\" \"\" C:\\dir\\ \\\"q\\\" $HOME", Path("work folder"), {}};
  request.Environment = {{u"KX_ADDED", u"é=1"}, {u"HOME", u"/replaced"}};
  const auto outcome = Run(request);
  ASSERT_TRUE(outcome) << testing::PrintToString(outcome.Message());
  EXPECT_THAT(out_, ElementsAre(u"[/x:a b]", u"[]", u"[C:\\dir\\]", u"[\"q\"]", u"[$HOME]",
                                Path("Work Folder"), u"é=1 /replaced", u"end"));
}

TEST_F(Process, StartsWithFreshSignals) {
  const auto previous = signal(SIGPIPE, SIG_IGN);
  sigset_t blocked;
  sigset_t before;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &blocked, &before);
  // The C library keeps two signals above 31 for itself.
  ExitCode(u"grep -cE '^Sig(Blk|Ign):.*[08]0000000$' /proc/self/status");
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  signal(SIGPIPE, previous);
  EXPECT_THAT(out_, ElementsAre(u"2"));
}

TEST_F(Process, SaysWhyItCannotStart) {
  Write("data.txt", "#!/bin/sh\n");
  Write("broken", "#!/no/such/interpreter\n");
  fs::permissions(Native("broken"), fs::perms(0755));
  const struct {
    std::u16string Executable, Folder;
    std::u16string Reason;
  } rows[] = {
      {Path("missing.exe"), u"", u"No such file or directory"},
      {Path("data.txt"), u"", u"Permission denied"},
      {Path("broken"), u"", u"No such file or directory"},
      {Path(""), u"", u"Permission denied"},
      {u"/bin/sh", Path("nowhere"), u"Its folder does not exist: " + Path("nowhere")},
  };
  for (const auto& row : rows) {
    const auto outcome = Run({row.Executable, u"", row.Folder, {}});
    ASSERT_FALSE(outcome) << testing::PrintToString(row.Executable);
    EXPECT_EQ(outcome.Message(), u"Cannot run " + row.Executable + u". " + row.Reason);
  }
}

TEST_F(Process, IsNotStartedAfterAStop) {
  stop_.Raise();
  const auto outcome = Run(Shell(u"touch " + Path("started")));
  ASSERT_TRUE(outcome);
  EXPECT_TRUE(outcome->Stopped);
  EXPECT_FALSE(fs::exists(Native("started")));
}

TEST_F(Process, EndsPolitelyAtAStop) {
  const auto outcome = Run(Shell(u"trap 'echo bye; exit 5' TERM; echo ready; while :; do sleep 0.01; done"),
                           [this](std::u16string_view) { stop_.Raise(); });
  ASSERT_TRUE(outcome);
  EXPECT_TRUE(outcome->Stopped);
  EXPECT_THAT(out_, ElementsAre(u"ready", u"bye"));
}

TEST_F(Process, LeavesNothingOfItsTreeAfterAStop) {
  const struct {
    const char* Case;
    std::u16string_view Script; // prints the number of the process that must not survive
  } rows[] = {
      {"a child that ignores the request", u"trap '' TERM; echo $$; while :; do sleep 1; done"},
      {"a grandchild that ignores it", u"(trap '' TERM; sh -c 'echo $$; exec sleep 600') & wait"},
      {"a grandchild in a session of its own", u"setsid sh -c 'echo $$; exec sleep 600' & wait"},
      {"one that has lost its parent and its session",
       u"(setsid sh -c 'trap \"\" TERM; echo $$; while :; do sleep 1; done' &); sleep 600"},
      {"one whose parent does not wait for it", u"trap 'exit 0' TERM; sleep 600 & echo $!; wait"},
  };
  for (const auto& row : rows) {
    stop_.Clear();
    const auto outcome = Run(Shell(row.Script), [this](std::u16string_view) { stop_.Raise(); });
    ASSERT_TRUE(outcome) << row.Case;
    EXPECT_TRUE(outcome->Stopped) << row.Case;
    ASSERT_EQ(out_.size(), 1U) << row.Case;
    EXPECT_FALSE(Runs(out_[0])) << row.Case << " " << testing::PrintToString(out_[0]);
  }
}

TEST_F(Process, StopsAreNoticedWhileNothingIsWritten) {
  std::thread stopper;
  const auto outcome = Run(Shell(u"echo ready; exec sleep 600"), [&](std::u16string_view) {
    stopper = std::thread([this] {
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
      otherStop_.Raise();
    });
  });
  stopper.join();
  ASSERT_TRUE(outcome);
  EXPECT_TRUE(outcome->Stopped);
}

TEST_F(Process, DoesNotWaitForAServerThatItLeftBehind) {
  EXPECT_EQ(ExitCode(u"sleep 600 & echo $!; echo last; exit 6"), 6);
  ASSERT_THAT(out_, ElementsAre(testing::_, u"last"));
  EXPECT_TRUE(Runs(out_[0])) << "what a tool leaves running is its own business";
  kill(static_cast<pid_t>(text::ToIntegerOr(out_[0], 0)), SIGKILL);
  WaitUntilGone(out_[0]);
}

TEST_F(Process, DoesNotFollowAFloodOfAServerThatItLeftBehind) {
  EXPECT_EQ(ExitCode(u"yes & echo $! >&2; sleep 0.05; exit 0"), 0);
  ASSERT_EQ(err_.size(), 1U);
  kill(static_cast<pid_t>(text::ToIntegerOr(err_[0], 0)), SIGKILL);
  WaitUntilGone(err_[0]);
}

TEST_F(Process, EndsWhenAReceiverThrows) {
  const auto fail = [](std::u16string_view) { throw std::runtime_error("enough"); };
  EXPECT_THROW(static_cast<void>(Run(Shell(u"trap '' TERM; echo $$; while :; do sleep 1; done"), fail)),
               std::runtime_error);
  ASSERT_EQ(out_.size(), 1U);
  EXPECT_FALSE(Runs(out_[0]));
}

TEST_F(Process, CarriesTheMarksOfTheRunsAroundIt) {
  const ScopedVariable around("KX_RUN_ID", "outer");
  ExitCode(u"echo $KX_RUN_ID");
  ASSERT_EQ(out_.size(), 1U);
  EXPECT_TRUE(out_[0].starts_with(u"outer:" + std::u16string(text::FromUtf8(std::to_string(getpid())))))
      << testing::PrintToString(out_[0]);
}

} // namespace
} // namespace kx::platform
