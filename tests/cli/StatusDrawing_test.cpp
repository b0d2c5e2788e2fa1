#include "program/cli/StatusDrawing.h"

#include <gtest/gtest.h>

#include <array>

namespace kx::cli {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

// A row a line, with the columns that it takes.
std::string Drawn(const TStatus& status, std::size_t columns, std::size_t rows, bool inColour = false) {
  std::string drawn;
  for (const auto& row : DrawStatus(status, columns, rows, TPalette(inColour)))
    drawn += row.Text + "|" + std::to_string(row.Columns) + "\n";
  return drawn;
}

TEST(StatusDrawing, SaysWhatIsUnderWayAndHowFarItIs) {
  EXPECT_EQ(Drawn({}, 100, 20), "");
  TStatus status{.Entries = {{{"Build", "project 3 of 17", true, seconds(40)}, milliseconds(12'999)}},
                 .Elapsed = seconds(75)};
  EXPECT_EQ(Drawn(status, 79, 8),
            R"(Build                                     project 3 of 17  0:12 of usually 0:40|79
1:15|4
)");
  status.Entries.push_back({{.Title = "Compiling a group"}, seconds(3)});
  status.Entries.push_back({{.Title = "Inner", .IsAction = true, .Usual = milliseconds(999)}, seconds(600)});
  status.Counts = {1, 2};
  status.Usual = seconds(150);
  EXPECT_EQ(
      Drawn(status, 120, 20),
      R"(Build                                                          project 3 of 17  0:12 of usually 0:40|100
  Compiling a group                                                                                 |100
    Inner                                                                                      10:00|100
███████████████░░░░░░░░░░░░░░░  1:15 of usually 2:30  1 error  2 warnings|73
)");
  for (const char* title : {"four", "five"})
    status.Entries.push_back({{.Title = title}, {}});
  status.Progress = "12 of 40 parts";
  status.Usual = milliseconds(999);
  status.Counts = {3, 0};
  EXPECT_EQ(Drawn(status, 90, 8),
            R"(Compiling a group                                                                         |90
Inner                                                                                10:00|90
four                                                                                      |90
five                                                                                      |90
1:15  12 of 40 parts  3 errors|30
)");
}

TEST(StatusDrawing, IsOneRowWhereThereIsNoRoom) {
  TStatus status{.Entries = {{{.Title = "Build", .Progress = "pass 1 of 2", .IsAction = true}, {}},
                             {{.Title = "\u65E5\u672C\u8A9E \uAC00\uFF21 \u00E9"}, {}}},
                 .Counts = {1, 1},
                 .Elapsed = seconds(9)};
  EXPECT_EQ(Drawn(status, 78, 20), R"(0:09  pass 1 of 2  日本語 가Ａ é  1 error  1 warning|52
)");
  EXPECT_EQ(Drawn(status, 100, 7), Drawn(status, 78, 20));
  EXPECT_EQ(Drawn(status, 26, 20), R"(0:09  pass 1 of 2  日本語 |26
)");
  EXPECT_EQ(Drawn(status, 25, 20), R"(0:09  pass 1 of 2  日本語|25
)") << "half a letter is none";
  status.Progress = "1 of 3 parts";
  status.Entries.pop_back();
  status.Counts = {};
  EXPECT_EQ(Drawn(status, 60, 20, true), "\033[2m0:09  1 of 3 parts  pass 1 of 2  Build\033[0m|38\n");
}

TEST(StatusDrawing, CutsWhatIsTooWide) {
  const TStatus status{.Entries = {{{std::string(200, 't'), std::string(200, 'p'), true}, seconds(1)}}};
  EXPECT_EQ(Drawn(status, 79, 20),
            R"(tttttttttttttttttttttttttttttttttttttt  ppppppppppppppppppppppppppppppppppppppp|79
0:00|4
)");
}

TEST(StatusDrawing, IsTakenAwayRowByRow) {
  const std::array<std::size_t, 3> rows{80, 0, 81};
  EXPECT_EQ(EraseStatus({}, 80), "");
  EXPECT_EQ(EraseStatus(std::span(rows).first(1), 80), "\r\033[J");
  EXPECT_EQ(EraseStatus(rows, 80), "\r\033[3A\033[J");
  EXPECT_EQ(EraseStatus(rows, 40), "\r\033[5A\033[J");
}

} // namespace
} // namespace kx::cli
