#include "program/editor/EventSpool.h"

#include "tests/support/FailingMemory.h"
#include "tests/support/Failure.h"

#include <gtest/gtest.h>

namespace kx::editor {
namespace {

std::string NumberedLine(std::size_t number) {
  return "{\"line\":" + std::to_string(number) + ",\"text\":\"" + std::string(number % 200, 'x') + "\"}";
}

// More than memory holds: what is on the disk, what is not, and what lies on the edge of both.
TEST(EventSpool, LinesAreFoundByTheirNumbersWhereverTheyLie) {
  constexpr std::size_t count = 20000;
  TEventSpool spool;
  for (std::size_t number = 0; number < count; ++number)
    spool.Append(NumberedLine(number));
  ASSERT_EQ(spool.Count(), count);
  EXPECT_TRUE(spool.State());
  for (const std::size_t piece : {std::size_t{1}, std::size_t{100000}, std::size_t{1} << 30}) {
    std::size_t number = 0;
    for (int asked = 0; number < count && asked < 2000; ++asked) {
      std::size_t next = 0;
      const std::string lines = spool.Lines(number, piece, next);
      ASSERT_GT(next, number) << piece;
      EXPECT_TRUE(next == number + 1 || lines.size() < piece + (next - number));
      std::string expected;
      for (; number < next; ++number)
        expected += (expected.empty() ? "" : ",") + NumberedLine(number);
      ASSERT_EQ(lines, expected);
    }
    EXPECT_TRUE(number == count || piece == 1);
  }
  for (const std::size_t number : {std::size_t{0}, std::size_t{1}, count / 2, count - 1})
    EXPECT_EQ(spool.Line(number), NumberedLine(number));
  EXPECT_EQ(spool.Line(count), std::nullopt);
  std::size_t next = 0;
  EXPECT_EQ(spool.Lines(count + 5, 100, next), "");
  EXPECT_EQ(next, count);
}

TEST(EventSpool, ALineIsReadWhileOthersAreAdded) {
  TEventSpool spool;
  std::size_t next = 0;
  for (std::size_t number = 0; number < 20000; ++number) {
    spool.Append(NumberedLine(number));
    if (number % 1000 == 0) {
      EXPECT_EQ(spool.Line(number / 2), NumberedLine(number / 2));
    }
  }
  EXPECT_EQ(spool.Lines(19999, 1, next), NumberedLine(19999));
}

TEST(EventSpool, LosesTheLineThatThereIsNoMemoryForAndNoOther) {
  const std::string line(std::size_t{100} * 1024, 'x'); // some are on disk
  long allocation = 0;
  for (int taken = 0; taken < 6;) {
    TEventSpool spool;
    taken = 0;
    {
      const tests::TFailingMemory failing(++allocation);
      for (int i = 0; i < 6; ++i)
        if (tests::FailureOf([&] { spool.Append(line); }).empty()) ++taken;
    }
    std::string expected = line;
    for (int i = 1; i < taken; ++i)
      expected += "," + line;
    std::size_t next = 0;
    EXPECT_TRUE(spool.Lines(0, std::size_t{1} << 30, next) == expected) << allocation;
    EXPECT_TRUE(spool.State());
  }
  EXPECT_GT(allocation, 4) << "some have failed";
}

TEST(EventSpool, CountsOnWhenTheDiskTakesNoMore) {
  TEventSpool spool(u"/no/such/folder");
  for (std::size_t number = 0; number < 5000; ++number)
    spool.Append(NumberedLine(number));
  EXPECT_FALSE(spool.State());
  EXPECT_EQ(spool.Line(0), std::nullopt) << "was in memory until then";
  std::size_t next = 0;
  EXPECT_EQ(spool.Lines(10, 1 << 20, next), "");
  EXPECT_EQ(next, 5000U);
}

} // namespace
} // namespace kx::editor
