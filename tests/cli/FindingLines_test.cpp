#include "program/cli/FindingLines.h"

#include "foundation/platform/Files.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"

#include <gtest/gtest.h>

#include <vector>

namespace kx::cli {
namespace {

using enum TFindingSeverity;

TEST(FindingLines, NameAsMuchOfAPlaceAsIsKnown) {
  const std::pair<TFindingPlace, const char*> rows[] = {
      {{u"/w/a.c", 3, 4}, "a.c:3:4"},    {{u"/w/a.c", 3}, "a.c:3"},   {{u"/w/a.c", 0, 4}, "a.c"},
      {{u"/v/a.c", 1, 1}, "/v/a.c:1:1"}, {{u"b\x1b.c"}, "b\u241b.c"}, {{}, ""}};
  for (const auto& [place, text] : rows)
    EXPECT_EQ(PlaceText(place, u"/w"), text);
}

TEST(FindingLines, StandTogetherFileByFileTheMostSevereFirst) {
  const auto finding = [](const char16_t* file, int line, TFindingSeverity severity, const char16_t* message,
                          int occurrences = 1) {
    return TFinding{.Severity = severity,
                    .Message = message,
                    .Place = {file, line},
                    .Code = severity == Error ? u"C1" : u"",
                    .Occurrences = occurrences};
  };
  std::vector<TFinding> findings{finding(u"b.c", 9, Warning, u"one"), finding(u"a.c", 2, Warning, u"two", 3),
                                 finding(u"b.c", 1, Error, u"three"),
                                 finding(u"", 0, Warning, u"four\x1b[2J"),
                                 finding(u"a.c", 1, Note, u"no line")};
  EXPECT_EQ(FindingLines(findings, 0, "in r.html", TPalette(false)), R"(b.c:1: error C1: three
b.c:9: warning: one
a.c:2: warning: two (3 times)
warning: four␛[2J
)");
  EXPECT_EQ(FindingLines(std::span(findings).subspan(1, 2), 1, "in r.html", TPalette(true)),
            "b.c:1: \033[31merror\033[0m C1: three\na.c:2: \033[33mwarning\033[0m: two\033[2m (3 "
            "times)\033[0m\n\033[2mand 1 more in r.html\033[0m\n");
  EXPECT_TRUE(FindingLines({}, 0, "", TPalette(false)).empty());
  for (int i = 0; i < 20; ++i)
    findings.push_back(finding(u"c.c", i, Error, u"more"));
  const std::string lines = FindingLines(findings, 2, "elsewhere", TPalette(false));
  EXPECT_EQ(lines.substr(0, lines.find('\n')), "b.c:1: error C1: three");
  EXPECT_EQ(lines.substr(lines.rfind("and")), R"(and 6 more elsewhere
)");
  EXPECT_EQ(std::ranges::count(lines, '\n'), 21);
  EXPECT_EQ(
      FindingLine(finding(text::JoinPath(platform::CurrentDirectory(), u"d.c").c_str(), 5, Note, u"see"),
                  TPalette(false)),
      "d.c:5: note: see\n");
}

} // namespace
} // namespace kx::cli
