#include "program/findings/FindingList.h"

#include "foundation/platform/Files.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "program/findings/SourceFiles.h"
#include "program/findings/ToolFindings.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kx {
namespace {

using testing::ElementsAre;

TEST(FindingList, HoldsEachThingOnceAndKnowsWhoseItIs) {
  TFindingList list(2);
  TToolFindings tool(list);
  for (const auto* const line :
       {u"1>------ Build started: Project: App, Configuration: Debug Win32 ------",
        u"2>------ Erstellen gestartet: Projekt: Lib, Konfiguration: Debug Win32 ------",
        u"2>C:\\s\\a.h(3): warning C4996: old", u"1>c:/S/a.h(3): warning C4996: old",
        u"1>c:/s/b.h(1): note: see x", u"2>b.cpp(9): error C1: t", u"2>c.h(7): note: see y",
        u"2>b.cpp(9): warning C2: one too many", u"2>d.h(7): note: of nothing that is kept",
        u"2>e.cpp(9): error C3: has room", u"3>c:/S/a.h(3): error C4996: old"})
    tool.Read(line);
  ASSERT_EQ(list.Kept().size(), 3U);
  const TFinding& worse = list.Kept().front();
  EXPECT_EQ(std::tuple(worse.Occurrences, worse.Project, worse.Configuration, worse.Steps.size()),
            std::tuple(3, u"Lib", u"Debug Win32", 0U));
  EXPECT_EQ(worse.Severity, TFindingSeverity::Error);
  ASSERT_EQ(list.Kept()[1].Steps.size(), 1U);
  EXPECT_EQ(list.Kept()[1].Steps[0].Place.File, u"c.h");
  EXPECT_EQ(list.More(), 1);
}

std::u16string FingerprintsOf(const std::u16string& root, std::vector<TFinding> findings) {
  std::u16string all;
  SetFingerprints(findings, root);
  for (const auto& finding : findings)
    all += finding.Fingerprint + u" ";
  return all;
}

TEST(Fingerprints, StayWhenLinesMoveAndFoldersDiffer) {
  const tests::TTemporaryFolder one;
  const tests::TTemporaryFolder other;
  one.Write("Lib/a.c", "int x;\nint y;\nint y;\n");
  other.Write("Lib/a.c", "\n\n  int  x;\nint y;\nint y;\n");
  const auto findings = [](const std::u16string& root, int moved) {
    const std::u16string file = text::JoinPath(root, u"Lib/a.c");
    const auto at = [&](int line, const char16_t* message) {
      return TFinding{.Rule = u"C1", .Message = message, .Place = {file, line + moved, 1}};
    };
    return std::vector{at(1, u"unused, see 'a/b.c' 12"), at(2, u"old"), at(3, u"old")};
  };
  const std::u16string before = FingerprintsOf(one.Path(), findings(one.Path(), 0));
  std::vector<TFinding> after = findings(other.Path(), 2);
  after[0].Message = u"unused, see 'd/e.c' 14";
  EXPECT_EQ(FingerprintsOf(other.Path(), after), before);
  after[1].Place.Line = 3; // the line of another text
  EXPECT_NE(FingerprintsOf(other.Path(), after), before);
}

// Values that GitHub's own upload makes of these texts.
TEST(SourceFiles, HashLinesAsGitHubDoes) {
  EXPECT_THAT(LineHashesOf(u""), ElementsAre("c129715d7a2bc9a3:1"));
  EXPECT_THAT(LineHashesOf(u" a\nb\n  \t\tc\n d"), ElementsAre("271789c17abda88f:1", "54703d4cd895b18:1",
                                                               "180aee12dab6264:1", "a23a3dc5e078b07b:1"));
  const tests::TTemporaryFolder folder;
  folder.Write("d/a.c", " a\nb\n  \t\tc\n d");
  TSourceFiles files(folder.Path());
  for (const auto& [name, line, text, hash] :
       {std::tuple(u"d/a.c", 1, u" a", "271789c17abda88f:1"),
        std::tuple(u"d/a.c", 4, u" d", "a23a3dc5e078b07b:1"), std::tuple(u"d/a.c", 5, u"", ""),
        std::tuple(u"d/a.c", 0, u"", ""), std::tuple(u"b.c", 1, u"", "")}) {
    EXPECT_EQ(files.LineText(name, line), text) << line;
    EXPECT_EQ(files.LineHash(name, line), hash) << line;
  }
  EXPECT_EQ(SeenFrom(u"C:\\s", u"c:/S/./a.c") + u" " + SeenFrom(u"", u".\\./b.c") + u" " +
                SeenFrom(u"/s/", u"/st/c.c"),
            u"a.c b.c /st/c.c");
}

} // namespace
} // namespace kx
