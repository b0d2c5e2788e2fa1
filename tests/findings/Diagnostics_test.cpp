#include "program/findings/Diagnostics.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"

#include <gtest/gtest.h>

namespace kx {
namespace {

// file|line|column|severity|code|message|project; empty for a line that is no diagnostic.
std::u16string Shown(std::u16string_view line) {
  const auto found = ReadDiagnostic(line);
  if (!found) return {};
  const TFindingPlace& place = found->Place;
  return place.File + u"|" + text::FromInteger(place.Line) + u"|" + text::FromInteger(place.Column) + u"|" +
         text::FromAscii(WordOf(found->Severity)) + u"|" + found->Code + u"|" + found->Message + u"|" +
         found->Project;
}

TEST(Diagnostics, AreToldByTheirForm) {
  const std::pair<std::u16string, std::u16string> cases[] = {
      {u"a\\b.cs(12,5): error CS0103: no x", u"a\\b.cs|12|5|error|CS0103|no x|"},
      {u"  3>x.cpp(7) : fatal error C1083: y", u"x.cpp|7|0|error|C1083|y|"},
      {u"C:\\App (x86)\\b.vb (1,2,3,4): Warning BC1: t", u"C:\\App (x86)\\b.vb|1|2|warning|BC1|t|"},
      {u"b.cs(1,2-3,4): info X1: t [/s/App/App.csproj::Target=a]",
       u"/s/App/b.cs|1|2|note|X1|t|/s/App/App.csproj"},
      {u"LINK : fatal error LNK1104: cannot open 'a.lib'", u"|0|0|error|LNK1104|cannot open 'a.lib'|"},
      {u"m.lib(n.obj) : error LNK2019: u", u"m.lib(n.obj)|0|0|error|LNK2019|u|"},
      {u"cl : Command line warning D9025 : overriding '/W3'", u"|0|0|warning|D9025|overriding '/W3'|"},
      {u".\\x.rc (12): error RC2104 : undefined: foo", u".\\x.rc|12|0|error|RC2104|undefined: foo|"},
      {u"error CS2001: no file", u"|0|0|error|CS2001|no file|"},
      {u"a.h(3): warning: CA1820 : Usage : t", u"a.h|3|0|warning|CA1820|Usage : t|"},
      {u"D:/a/b.c:12:5: warning: unused [-Wunused]", u"D:/a/b.c|12|5|warning|-Wunused|unused|"},
      {u"b.c:12: Fehler: x", u"b.c|12|0|error||x|"},
      {u"b.c:1:2: 警告：x", u"b.c|1|2|warning||x|"},
      {u"b.cs(3,1): viga CS0103: x", u"b.cs|3|1|error|CS0103|x|"},
      {u"b.h(3): note: see declaration of 'x'", u"b.h|3|0|note||see declaration of 'x'|"},
      {u"b.h(3) : see declaration of 'x'", u"b.h|3|0|note||see declaration of 'x'|"},
      {u"U.pas(9) Error: E2003 Undeclared", u"U.pas|9|0|error||E2003 Undeclared|"},
      {u"2024-01-01T10:00:00.12Z ##[error]\x1b[31m 10:20:30 [csc] 1:7>b.c(1): error\x1b[0m\x1b[1m X1\x1b[0m: "
       u"t",
       u"b.c|1|0|error|X1|t|"},
      {u"[10:20:30]W:\t [exec] collect2: error: ld returned 1", u"|0|0|error||ld returned 1|"},
      {std::u16string(300'000, u'(') + u"1): error: t", std::u16string(299'999, u'(') + u"|1|0|error||t|"},
      {u"build\t18-Jul-2011 10:20:30\ta.cs(1,2): error X1: t", u"a.cs|1|2|error|X1|t|"},
      {u"a.cs(1): error X1: t [C:\\x [1]\\App.csproj]",
       u"C:\\x [1]\\a.cs|1|0|error|X1|t|C:\\x [1]\\App.csproj"},
      {u"/a.aspx(5): error ASPPARSE: t", u"/a.aspx|5|0|error|ASPPARSE|t|"},
      {u"a.cs(1,2): hidden CS8019: t", u"a.cs|1|2|note|CS8019|t|"},
      {u"ERROR: a.cs(1,2): warning X1: t", u"a.cs|1|2|warning|X1|t|"},
      {u"src/a.ts:3:4 - error TS2304: t", u"src/a.ts|3|4|error|TS2304|t|"},
      {u"a.f90:10.5-9: Error: t", u"a.f90|10|5|error||t|"},
      {u"/b/ld.exe: a.o:a.c:(.text+0x7): undefined reference to `f'",
       u"a.c|0|0|error||undefined reference to `f'|"},
      {u"/b/ld: cannot find -lfoo", u"|0|0|error||cannot find -lfoo|"},
      {u"a:10.5: one two three warning X1: t", u"a|10|5|warning|X1|t|"},
      {u"a.c(12-14): error X1: t", u"a.c|12|0|error|X1|t|"},
      {u"a b.c(12,5-13,1): one two three four error X1: t", u"a b.c|12|5|error|X1|t|"},
      {u"a.c(12,5): one two three four five error X1: t", u""},
      {u"a.c:7:0: error X1: t", u"a.c:7:0|0|0|error|X1|t|"},
      {u"one two three: sub cat error X1: t", u"|0|0|error|X1|t|"},
      {u"one two three four: error X1: t", u""},
      {u"a.c: one two three error X1: t", u""},
      {u"a.c(1): \x1b[31;1merror\x1b[m X1: t", u"a.c|1|0|error|X1|t|"},
      {u"a.c(1): error X1: t\x1b[", u"a.c|1|0|error|X1|t|"},
      {u"x.cpp(7)error: t", u"x.cpp|7|0|error||t|"},
      {u"a(1): error X1: t", u"a|1|0|error|X1|t|"},
      {u"a:12: error X1: t", u"a|12|0|error|X1|t|"},
      {u"7.z: error X1: t", u"7.z|0|0|error|X1|t|"},
      {u"a.c(0,5): error X1: t", u"a.c(0,5)|0|0|error|X1|t|"},
      {u"a.c(,5): error X1: t", u"a.c(,5)|0|0|error|X1|t|"},
      {u"a.c(12,): error X1: t", u"a.c|12|0|error|X1|t|"},
      {u"b.cs(3,1): azAZ\u00C0 a_b-c.d#1: x", u"b.cs|3|1|error|a_b-c.d#1|x|"},
      {u"/a.aspx(5): error AZAZ: t", u"/a.aspx|5|0|error|AZAZ|t|"},
      {u"/a.aspx(5): error " + std::u16string(40, u'A') + u": t",
       u"/a.aspx|5|0|error|" + std::u16string(40, u'A') + u"|t|"},
      {u"a.c(1): error X" + std::u16string(39, u'1') + u": t",
       u"a.c|1|0|error|X" + std::u16string(39, u'1') + u"|t|"},
      {u"a.c(1):" + std::u16string(40, u'a') + u" error X1: t", u"a.c|1|0|error|X1|t|"},
      {u"a.c(1): error X1: t\x1bu7", u"a.c|1|0|error|X1|tu7|"},
      {u"cross-compiler: error X1: t", u"|0|0|error|X1|t|"},
      {u"cc1: fatal error: no a.h", u"|0|0|error||no a.h|"},
      {u"/b c/x: error: t", u"/b c/x|0|0|error||t|"},
      {u"xbuild: error: a.c(1): error X1: t", u"|0|0|error||a.c(1): error X1: t|"},
      {u"ERROR: LINK: error LNK1: t", u"|0|0|error||LINK: error LNK1: t|"},
      {u"C:\\a.o: undefined reference to `f'", u"C:\\a.o|0|0|error||undefined reference to `f'|"},
      {u"ld: a.o: undefined reference to `f'", u"a.o|0|0|error||undefined reference to `f'|"},
      {u"a.c:(.text+0x7): multiple definition of `f'", u"a.c|0|0|error||multiple definition of `f'|"},
      {u"a.o: undefined reference to `f' see declaration of 'f'",
       u"a.o|0|0|error||undefined reference to `f' see declaration of 'f'|"},
      {u"a.cs(1): error X1: t [/s/A.sln]", u"/s/a.cs|1|0|error|X1|t|/s/A.sln"},
      {u"/a.cs(1): error X1: t [/s/A.sln.metaproj]", u"/a.cs|1|0|error|X1|t|/s/A.sln.metaproj"},
      {u"LINK : error X1: t [/s/A.vcxproj]", u"|0|0|error|X1|t|/s/A.vcxproj"},
      {u"    0 Error(s)", u""},
      {u"Errors: 0", u""},
      {u"Error : 0", u""},
      {u"Compile complete -- 0 errors, 0 warnings", u""},
      {u"The command failed with error MSB3073: see above", u""},
      {u"Build succeeded with warning: see above", u""},
      {u"calling f(12): no error", u""},
      {u"note: it is late", u""},
      {u"undefined reference to `f'", u""},
      {u"THE ERROR: it was", u""},
      {u"echo a.cs(1): error X1: t", u""},
      {u"10:20:30 error 5: access", u""},
  };
  for (const auto& [line, expected] : cases)
    EXPECT_EQ(Shown(line), expected) << text::ToUtf8(line.substr(0, 80));
}

TEST(Diagnostics, AreNoOtherLinesThatLookLikeThem) {
  const std::u16string a40(40, u'A');
  for (const std::u16string& line : std::initializer_list<std::u16string>{u"a.c(1): error X1" + a40 + u": t",
                                                                          u"a.c(1): error " + a40 + u"A: t",
                                                                          u"a.c(1):" + a40 + u"A error X1: t",
                                                                          u"a.c(1): error C1+: t",
                                                                          u"a.c(1): error \u00C41: t",
                                                                          u"a.c(1): error abc: t",
                                                                          u"/a.aspx(5): error ASZ: t",
                                                                          u"/a.aspx(5): error abcd: t",
                                                                          u"error READ: t",
                                                                          u"b.cs(3,1): vi9a CS0103: x",
                                                                          u"b: viga CS0103: x",
                                                                          u"/a.aspx(5): viga ASPPARSE: t",
                                                                          u":10.5: error X1: t",
                                                                          u"the end.: error X1: t",
                                                                          u"it is. so: error X1: t",
                                                                          u"step 1.2: error X1: t",
                                                                          u"9a: error X1: t",
                                                                          u"m.lib(n.obj): error: t",
                                                                          u"cc1: odd error: t",
                                                                          u"the one: error: t",
                                                                          u"x : see declaration of 'x'"})
    EXPECT_EQ(Shown(line), u"") << text::ToUtf8(line);
}

TEST(Diagnostics, TakeFromTheTextOnlyWhatIsNoPartOfIt) {
  for (const std::u16string& text : std::initializer_list<std::u16string>{
           u"t[App.csproj]", u"t [-Wxy", u"t [-W x]", u"in line 5: t", u"12: t", u"C1x: t"})
    EXPECT_EQ(Shown(u"a.c(1): error: " + text), u"a.c|1|0|error||" + text + u"|");
}

TEST(Diagnostics, BeginBehindWhatBuildServersPutBeforeLines) {
  for (const std::u16string_view prefix :
       {u"7/1/2011 9:20:30 AM 2011-07-01 10:20:30.1 +0200 ", u"2010-04-01 10:20:30 -0500 ",
        u"[10:20:30][exec] ", u"[10:20:30]W:\t", u"2024-01-01T10:00:00.1Z 01O ", u"00E+"})
    EXPECT_EQ(Shown(std::u16string(prefix) + u"a.c(1): error X1: [b] t"), u"a.c|1|0|error|X1|[b] t|")
        << text::ToUtf8(prefix);
  for (const std::u16string_view file : {u"7z.c", u"[a]bc d.c", u"[a]C:\\b.c", u"a b\tc.c", u"##[a.c",
                                         u"01Ox.c", u"01x b.c", u"x1O b.c", u"0xE b.c"})
    EXPECT_EQ(Shown(std::u16string(file) + u"(1): error X1: t"), std::u16string(file) + u"|1|0|error|X1|t|")
        << text::ToUtf8(file);
}

TEST(Diagnostics, NotesBelongToTheFindingBeforeThemWhereTheyNameALineAndNoCode) {
  using enum TFindingSeverity;
  EXPECT_TRUE(IsPartOfFindingBefore({.Severity = Note, .Place = {u"a.c", 1}}));
  for (const auto& finding : {TFinding{.Severity = Note, .Place = {u"a.c"}},
                              {.Severity = Note, .Place = {u"a.c", 1}, .Code = u"C1"},
                              {.Place = {u"a.c", 1}}})
    EXPECT_FALSE(IsPartOfFindingBefore(finding));
  EXPECT_EQ(ReadDiagnostic(u"a.c(1): warning: t")->Rule, u"tool-warning");
}

TEST(BuildNumberOf, IsWhatStandsBeforeALine) {
  const std::pair<std::u16string_view, int> rows[] = {
      {u" 12>a", 12}, {u">a", 0}, {u"12", 0}, {u"1x>a", 0}, {u"7>", 7}};
  for (const auto& [line, number] : rows)
    EXPECT_EQ(BuildNumberOf(line), number) << text::ToUtf8(line);
}

} // namespace
} // namespace kx
