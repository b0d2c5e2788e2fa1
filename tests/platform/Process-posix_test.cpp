#include "tests/platform/ProcessTest.h"

#include <csignal>

namespace kx::platform {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

ProcessRequest Shell(std::u16string_view script) {
  return {u"/bin/sh", u"-c " + text::QuoteArgument(script), u"", {}};
}

TEST_F(Process, ExitCodeTellsTheSignalThatEndedIt) {
  EXPECT_EQ(ExitCode(Shell(u"kill -9 $$")), 137);
  const auto previous = signal(SIGPIPE, SIG_IGN);
  EXPECT_EQ(ExitCode(Shell(u"kill -PIPE $$")), 141) << "it does not inherit what is ignored here";
  signal(SIGPIPE, previous);
  const std::pair<int, std::u16string_view> rows[] = {
      {0, u""}, {128, u""}, {139, u"signal 11 (SIGSEGV)"}, {255, u""}};
  for (const auto& [code, fault] : rows)
    EXPECT_EQ(FaultOfExitCode(code), fault) << code;
}

TEST_F(Process, SaysWhyItCannotStart) {
  const std::u16string data = Write("data.txt"), broken = Write("broken", "#!/no/such/interpreter\n");
  fs::permissions(Native("broken"), fs::perms(0755));
  const std::pair<std::u16string, std::u16string_view> rows[] = {
      {data, u"Permission denied"},
      {broken, u"No such file or directory"},
  };
  for (const auto& [program, reason] : rows)
    EXPECT_EQ(Run({program, u"", u"", {}}).Message(), (u"Cannot run " + program + u". ").append(reason));
}

TEST_F(Process, EndsPolitelyAtAStopAndIsHeardToTheEnd) {
  const auto outcome = Run(
      Shell(u"trap 'echo bye; sleep 0.05; echo now; exit 5' TERM; echo ready; while :; do sleep 0.01; done"),
      [this](std::u16string_view line) {
        if (line == u"ready") stop_.Raise();
        if (line == u"bye") std::this_thread::sleep_for(std::chrono::milliseconds(300)); // it ends meanwhile
      });
  EXPECT_TRUE(outcome && outcome->Stopped);
  EXPECT_THAT(out_, ElementsAre(u"ready", u"bye", u"now"));
}

TEST_F(Process, LeavesNothingThatMovedAwayAfterAStop) {
  const std::pair<const char*, std::u16string_view> rows[] = {
      {"a grandchild in a session of its own", u"setsid sh -c 'echo $$; exec sleep 600' & wait"},
      {"an orphan in a session", u"(setsid sh -c 'trap \"\" TERM; echo $$; sleep 600; :' &); sleep 600"},
      {"one whose parent does not wait for it", u"trap 'exit 0' TERM; sleep 600 & echo $!; wait"},
  };
  for (const auto& [name, script] : rows)
    ExpectNothingIsLeft(name, Shell(script));
}

} // namespace
} // namespace kx::platform
