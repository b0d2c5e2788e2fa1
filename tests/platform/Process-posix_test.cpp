#include "platform/Process.h"

#include "tests/support/TemporaryFolder.h"
#include "text/CommandLine.h"
#include "text/Text.h"

#include <array>
#include <csignal>
#include <gmock/gmock.h>
#include <thread>
#include <unistd.h>

namespace kx::platform {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

class Process : public testing::Test, protected tests::TTemporaryFolder {
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

  StopSignal stop_, otherStop_;
  std::vector<std::u16string> out_, err_;
};

TEST_F(Process, GivesItsOutputAsWholeDecodedLines) {
  EXPECT_EQ(ExitCode(u"printf 'a\\r\\n\\nb\\rc\\n\\303\\251\\n\\202t\\202'; printf 'e\\n' >&2"), 0);
  EXPECT_THAT(out_, ElementsAre(u"a", u"", u"b\rc", u"é", u"été"));
  EXPECT_THAT(err_, ElementsAre(u"e"));
}

TEST_F(Process, FloodsOnBothStreamsArriveWhole) {
  EXPECT_EQ(ExitCode(u"for i in $(seq 3000); do printf '%0200d\\n' $i; printf '%0300d\\n' $i >&2; done"), 0);
  ASSERT_TRUE(out_.size() == 3000 && err_.size() == 3000) << out_.size() << " " << err_.size();
  EXPECT_EQ(err_.back().size(), 300U);
}

TEST_F(Process, ExitCodeTellsHowItEnded) {
  EXPECT_EQ(ExitCode(u"exit 255"), 255);
  EXPECT_EQ(ExitCode(u"kill -9 $$"), 137);
  EXPECT_EQ(RunProcess(Shell(u"seq 100000; exit 4"), {}, {})->ExitCode, 4) << "nobody listens";
  const auto previous = signal(SIGPIPE, SIG_IGN);
  EXPECT_EQ(ExitCode(u"kill -PIPE $$"), 141) << "it does not inherit what is ignored here";
  signal(SIGPIPE, previous);
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

TEST_F(Process, SaysWhyItCannotStart) {
  const std::u16string data = Write("data.txt"), broken = Write("broken", "#!/no/such/interpreter\n");
  fs::permissions(Native("broken"), fs::perms(0755));
  const std::array<std::u16string, 3> rows[] = {
      {Path("missing.exe"), u"", u"No such file or directory"},
      {data, u"", u"Permission denied"},
      {broken, u"", u"No such file or directory"},
      {u"/bin/sh", Path("nowhere"), u"Its folder does not exist: " + Path("nowhere")},
  };
  for (const auto& [program, folder, reason] : rows)
    EXPECT_EQ(Run({program, u"", folder, {}}).Message(), (u"Cannot run " + program + u". ").append(reason));
}

TEST_F(Process, EndsPolitelyAtAStop) {
  const auto outcome = Run(Shell(u"trap 'echo bye; exit 5' TERM; echo ready; while :; do sleep 0.01; done"),
                           [this](std::u16string_view) { stop_.Raise(); });
  EXPECT_TRUE(outcome && outcome->Stopped);
  EXPECT_THAT(out_, ElementsAre(u"ready", u"bye"));
  EXPECT_TRUE(Run(Shell(u"echo started"))->Stopped);
  EXPECT_THAT(out_, ElementsAre()) << "nothing starts after a stop";
}

TEST_F(Process, LeavesNothingOfItsTreeAfterAStop) {
  // Each prints the number of the process that must not survive.
  const std::pair<const char*, std::u16string_view> rows[] = {
      {"a child that ignores the request", u"trap '' TERM; echo $$; sleep 600; :"},
      {"a grandchild that ignores it", u"(trap '' TERM; sh -c 'echo $$; exec sleep 600') & wait"},
      {"a grandchild in a session of its own", u"setsid sh -c 'echo $$; exec sleep 600' & wait"},
      {"an orphan in a session", u"(setsid sh -c 'trap \"\" TERM; echo $$; sleep 600; :' &); sleep 600"},
      {"one whose parent does not wait for it", u"trap 'exit 0' TERM; sleep 600 & echo $!; wait"},
  };
  for (const auto& [name, script] : rows) {
    stop_.Clear();
    std::jthread stopper;
    const auto outcome = Run(Shell(script), [&](std::u16string_view) {
      stopper = std::jthread([this] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20)); // nothing is read meanwhile
        stop_.Raise();
      });
    });
    EXPECT_TRUE(outcome && outcome->Stopped) << name;
    ASSERT_EQ(out_.size(), 1U) << name;
    EXPECT_FALSE(Runs(out_[0])) << name << " " << testing::PrintToString(out_[0]);
  }
}

TEST_F(Process, DoesNotWaitForAServerThatItLeftBehind) {
  for (const auto script : {u"sleep 600 & echo $! >&2; exit 6", u"yes & echo $! >&2; sleep 0.05; exit 6"}) {
    EXPECT_EQ(ExitCode(script), 6);
    ASSERT_EQ(err_.size(), 1U);
    EXPECT_TRUE(Runs(err_[0]) || script[0] == u'y') << "what a tool leaves running is its own business";
    kill(static_cast<pid_t>(text::ToInteger(err_[0]).value()), SIGKILL);
  }
}

TEST_F(Process, EndsWhenAReceiverThrows) {
  const auto fail = [](std::u16string_view) { throw std::runtime_error("enough"); };
  EXPECT_THROW((void)Run(Shell(u"trap '' TERM; echo $$; sleep 600; :"), fail), std::runtime_error);
  ASSERT_EQ(out_.size(), 1U);
  EXPECT_FALSE(Runs(out_[0]));
}

} // namespace
} // namespace kx::platform
