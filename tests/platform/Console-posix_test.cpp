#include "foundation/platform/Console.h"

#include <fcntl.h>
#include <gtest/gtest.h>
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

} // namespace
} // namespace kx::platform
