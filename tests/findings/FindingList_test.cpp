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
        u"2>e.cpp(9): error C3: has room", u"3>c:/S/a.h(3): error C4996: old",
        u"f.cpp(9): error C5: the last", u"g.cpp(9): error C6: one too many"})
    tool.Read(line);
  ASSERT_EQ(list.Kept().size(), 4U);
  EXPECT_EQ(list.Kept()[2].Rule + list.Kept()[3].Rule, u"C3C5") << "errors have twice the room";
  const TFinding& worse = list.Kept().front();
  EXPECT_EQ(std::tuple(worse.Occurrences, worse.Project, worse.Configuration, worse.Steps.size()),
            std::tuple(3, u"Lib", u"Debug Win32", 0U));
  EXPECT_EQ(worse.Severity, TFindingSeverity::Error);
  ASSERT_EQ(list.Kept()[1].Steps.size(), 1U);
  EXPECT_EQ(list.Kept()[1].Steps[0].Place.File, u"c.h");
  EXPECT_EQ(list.More(), 2);
}

TEST(FindingList, TellsWhichFindingHasChangedAndBoundsEach) {
  TFindingList list;
  std::string told;
  list.WhenChanged([&told](std::size_t place, const TFinding& finding) {
    told += std::to_string(place) + ":" +
            std::to_string(finding.Occurrences + static_cast<int>(finding.Steps.size())) + " ";
  });
  const TFinding note{.Severity = TFindingSeverity::Note, .Message = u"n", .Place = {u"a.c", 1}};
  list.Add(note); // of nothing
  for (const int column : {1, 2, 1})
    list.Add({.Rule = u"C1", .Message = std::u16string(4'001, u'm'), .Place = {u"a.c", 1, column}});
  EXPECT_EQ(list.Kept().size(), 3U);
  EXPECT_EQ(list.Kept()[1].Message.size(), 4'000U);
  list.Add(note); // of one that was there before
  list.Add({.Rule = u"C2"});
  list.Add(note);
  EXPECT_EQ(told, "0:1 1:1 2:1 1:2 3:1 3:2 ");
  for (int i = 0; i < 60; ++i)
    list.Add(note);
  EXPECT_EQ(list.Kept()[3].Steps.size(), 50U);
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
  EXPECT_EQ(text::ToUtf8(before), "07009207572c29d2 e7764465d6bccb0f e7764465d6bccb0f-2 ")
      << "the baselines of users hold these";
  after[1].Place.Line = 3; // the line of another text
  EXPECT_NE(FingerprintsOf(other.Path(), after), before);
}

TEST(Fingerprints, LeaveOutPathsBetweenQuotesOfAnyKind) {
  const auto of = [](const std::u16string& message) {
    return FingerprintsOf(u"/s", {{.Rule = u"C1", .Message = message, .Place = {u"/other/a.c", 1}}});
  };
  EXPECT_EQ(of(u"a/b x c/d"), of(u"e/f x 1\\2"));
  EXPECT_NE(of(u"a/b x c/d"), of(u"a/b y c/d"));
  for (const std::u16string_view quotes : {u"''", u"\"\"", u"``", u"\u2018\u2019", u"\u00AB\u00BB"}) {
    const auto quoted = [&](const std::u16string& before, const std::u16string& path,
                            const std::u16string& behind) {
      return of(before + quotes[0] + path + quotes[1] + behind);
    };
    EXPECT_EQ(quoted(u"x", u"a/b", u"y"), quoted(u"x", u"c/d", u"y"));
    EXPECT_NE(quoted(u"x", u"a/b", u"y"), quoted(u"z", u"a/b", u"y"));
    EXPECT_NE(quoted(u"x", u"a/b", u"y"), quoted(u"x", u"a/b", u"z"));
  }
}

TEST(FindingMerge, KnowsWhatLogsOfSeveralMachinesTell) {
  TFindingMerge merge;
  const auto found = [](std::u16string file, const char16_t* message, const char16_t* fingerprint) {
    return TFinding{
        .Rule = u"C1", .Message = message, .Place = {std::move(file), 1}, .Fingerprint = fingerprint};
  };
  merge.Add({found(u"/one/a.c", u"in /one/b.h 1", u"0123456789abcdef"),
             found(u"/one/a.c", u"in /one/b.h 2", u"0123456789abcdef-2")},
            u"/one");
  merge.Add({found(u"C:\\two\\a.c", u"in C:\\two\\b.h 2", u"0123456789abcdef"),
             found(u"C:\\two\\b.c", u"x", u"0123456789abcdef-2")},
            u"C:\\two");
  std::string shown;
  for (const auto& finding : merge.Take())
    shown += text::ToUtf8(finding.Fingerprint) + " " + std::to_string(finding.Occurrences) + "; ";
  EXPECT_EQ(shown, "0123456789abcdef 1; 0123456789abcdef-2 2; 0123456789abcdef-3 1; ");
}

// Values that GitHub's own upload makes of these texts.
TEST(SourceFiles, HashLinesAsGitHubDoes) {
  EXPECT_THAT(LineHashesOf(u""), ElementsAre("c129715d7a2bc9a3:1"));
  EXPECT_THAT(LineHashesOf(u" a\nb\n  \t\tc\n d"), ElementsAre("271789c17abda88f:1", "54703d4cd895b18:1",
                                                               "180aee12dab6264:1", "a23a3dc5e078b07b:1"));
  for (const auto* lines : {u"a\rb\r", u"a\r\nb\r\n"})
    EXPECT_EQ(LineHashesOf(lines), LineHashesOf(u"a\nb\n"));
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

TEST(SourceFiles, BelongToTheWorkingCopyAroundThem) {
  const tests::TTemporaryFolder folder;
  for (const char* file : {"a/.git", "a/b/c/x", "d/.hg/x", "d/e/x", "f/.svn/x"})
    folder.Write(file, "");
  for (const auto& [inside, root] : {std::pair("a/b/c", "a"), {"d/e", "d"}, {"f", "f"}, {"a", "a"}})
    EXPECT_EQ(FindSourceRoot(folder.Path(inside)), folder.Path(root));
  EXPECT_EQ(FindSourceRoot(u"no/such"), u"no/such");
}

} // namespace
} // namespace kx
