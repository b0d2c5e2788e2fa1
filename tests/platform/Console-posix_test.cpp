#include "platform/Console.h"

#include <array>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <thread>
#include <unistd.h>

namespace kx::platform {
namespace {

// Standard output is a pipe while it lives.
class PipedOutput : public testing::Test {
protected:
  PipedOutput() : saved_(dup(STDOUT_FILENO)) {
    EXPECT_EQ(pipe(ends_.data()), 0);
    fflush(stdout);
    dup2(ends_[1], STDOUT_FILENO);
    close(ends_[1]);
    previous_ = signal(SIGPIPE, SIG_IGN);
  }
  ~PipedOutput() override {
    Restore();
    signal(SIGPIPE, previous_);
  }

  void Restore() {
    if (saved_ < 0) return;
    dup2(saved_, STDOUT_FILENO);
    close(saved_);
    saved_ = -1;
  }

  std::string ReadAll() const {
    std::string all;
    std::array<char, 4096> block{};
    for (ssize_t count = 0; (count = read(ends_[0], block.data(), block.size())) > 0;) {
      all.append(block.data(), static_cast<std::size_t>(count));
    }
    close(ends_[0]);
    return all;
  }

  int ReadEnd() const { return ends_[0]; }

private:
  int saved_;
  std::array<int, 2> ends_{};
  void (*previous_)(int) = nullptr;
};

TEST_F(PipedOutput, GetsEverythingEvenWhenItDoesNotWait) {
  std::string text;
  for (int i = 0; i < 50'000; ++i)
    text += std::to_string(i) + "\n";
  fcntl(STDOUT_FILENO, F_SETFL, O_NONBLOCK);
  std::string received;
  std::thread reader([&] { received = ReadAll(); });
  WriteConsole(ConsoleStream::Output, text);
  Restore();
  reader.join();
  EXPECT_EQ(received.size(), text.size());
  EXPECT_TRUE(received == text);
}

TEST_F(PipedOutput, IsGivenUpWhenNobodyReads) {
  close(ReadEnd());
  WriteConsole(ConsoleStream::Output, "nobody reads this");
  EXPECT_FALSE(IsTerminal(ConsoleStream::Output));
  EXPECT_EQ(TerminalWidth(ConsoleStream::Output), 80);
}

TEST(CommandLineArguments, AreDecodedWithTheProgramsName) {
  std::string program = "kxhost";
  std::string accented = "\xC3\xA9";
  std::array<char*, 3> argv{program.data(), accented.data(), nullptr};
  EXPECT_EQ(CommandLineArguments(2, argv.data()), (std::vector<std::u16string>{u"kxhost", u"\u00E9"}));
}

} // namespace
} // namespace kx::platform
