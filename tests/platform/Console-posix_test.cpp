#include "foundation/platform/Console.h"

#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <optional>
#include <termios.h>
#include <thread>
#include <unistd.h>

namespace kx::platform {
namespace {

TEST(WriteConsole, GivesAPipeThatDoesNotWaitEverythingAndAFullDiskUp) {
  const std::string text(300'000, 'x');
  std::string received;
  int ends[2] = {};
  ASSERT_EQ(pipe2(ends, O_NONBLOCK), 0);
  fcntl(ends[0], F_SETFL, 0);
  fflush(stdout);
  const int saved = dup(STDOUT_FILENO), full = open("/dev/full", O_WRONLY);
  dup2(ends[1], STDOUT_FILENO);
  close(ends[1]);
  std::thread reader([&] {
    char block[4096];
    for (ssize_t count = 0; (count = read(ends[0], block, sizeof block)) > 0;)
      received.append(block, static_cast<std::size_t>(count));
  });
  WriteConsole(ConsoleStream::Output, text);
  const std::u16string well = WriteFailure(ConsoleStream::Output);
  dup2(full, STDOUT_FILENO);
  reader.join();
  WriteConsole(ConsoleStream::Output, "nobody gets this");
  const std::u16string failed = WriteFailure(ConsoleStream::Output);
  dup2(saved, STDOUT_FILENO);
  for (const int opened : {saved, full, ends[0]})
    close(opened);
  EXPECT_TRUE(received == text) << received.size();
  EXPECT_EQ(well, u"");
  EXPECT_EQ(failed, u"No space left on device");
}

// A person at a terminal of the test's own: what is typed, what comes of it, and all that the terminal shows.
TEST(AskForSecret, ShowsNothingOfWhatIsTyped) {
  const std::tuple<const char*, std::string, std::optional<std::string>> rows[] = {
      {"a line", "secret\r", "secret"},
      {"a line ended otherwise", "secret\n", "secret"},
      {"letters taken back",
       "ab\x7F\bc\xC3\xA9\x7F\x7F\x7F\x7F"
       "d\r",
       "d"},
      {"begun anew", "wrong\x15right\r", "right"},
      {"given up", "x\x03", std::nullopt},
      {"given up otherwise", "x\x04", std::nullopt},
  };
  for (const auto& [name, typed, expected] : rows) {
    const int master = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_EQ(grantpt(master) | unlockpt(master), 0);
    const int terminal = open(ptsname(master), O_RDWR | O_NOCTTY);
    const int input = dup(STDIN_FILENO), errors = dup(STDERR_FILENO);
    dup2(terminal, STDIN_FILENO);
    dup2(terminal, STDERR_FILENO);
    termios before{}, after{};
    tcgetattr(terminal, &before);
    std::string shown;
    std::thread person([&, &keys = typed] {
      char block[64];
      while (shown.find("Key: ") == std::string::npos)
        shown.append(block,
                     static_cast<std::size_t>(std::max<ssize_t>(read(master, block, sizeof block), 0)));
      EXPECT_EQ(write(master, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
    });
    EXPECT_TRUE(IsInputTerminal());
    const auto answer = AskForSecret("Key: ");
    person.join();
    tcgetattr(terminal, &after);
    dup2(input, STDIN_FILENO);
    dup2(errors, STDERR_FILENO);
    static_cast<void>(write(terminal, "|", 1));
    for (char c = 0; c != '|' && read(master, &c, 1) == 1;)
      shown += c;
    for (const int opened : {input, errors, terminal, master})
      close(opened);
    EXPECT_EQ(answer, expected) << name;
    EXPECT_EQ(shown, "Key: \r\n|") << name;
    EXPECT_EQ(after.c_lflag, before.c_lflag) << name << ": the terminal is as it was";
  }
}

} // namespace
} // namespace kx::platform
