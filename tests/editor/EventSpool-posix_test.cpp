#include "program/editor/EventSpool.h"

#include <gtest/gtest.h>

#include <csignal>
#include <sys/resource.h>

namespace kx::editor {
namespace {

TEST(EventSpool, WhatTheDiskDoesNotTakeIsLostAndNothingElse) {
  constexpr std::size_t block = std::size_t{256} * 1024; // what a Spool writes at once
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  rlimit full = before;
  full.rlim_cur = block * 3 / 2; // room for what is written first
  setrlimit(RLIMIT_FSIZE, &full);
  TEventSpool spool;
  const std::string line(block / 4, 'x');
  for (int i = 0; i < 9; ++i)
    spool.Append(line);
  setrlimit(RLIMIT_FSIZE, &before);
  spool.Append(line); // when there is room again
  EXPECT_FALSE(spool.State());
  std::size_t next = 0;
  EXPECT_EQ(spool.Lines(0, std::size_t{1} << 30, next), line + "," + line + "," + line + "," + line);
  EXPECT_EQ(next, 10U) << "numbers go on";
  EXPECT_EQ(spool.Line(3), line);
  EXPECT_EQ(spool.Line(4), std::nullopt);
}

} // namespace
} // namespace kx::editor
