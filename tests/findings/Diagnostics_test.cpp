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
      {u"7/1/2011 9:20:30 AM 2011-07-01 10:20:30.1 +0200 a.cs(1): error X1: t", u"a.cs|1|0|error|X1|t|"},
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
      {u"a.f90:10.5: one two three warning X1: t", u"a.f90|10|5|warning|X1|t|"},
      {u"a.c(12-14): error X1: t", u"a.c|12|0|error|X1|t|"},
      {u"a b.c(12,5-13,1): one two three four error X1: t", u"a b.c|12|5|error|X1|t|"},
      {u"a.c(12,5): one two three four five error X1: t", u""},
      {u"a.c:7:0: error X1: t", u"a.c:7:0|0|0|error|X1|t|"},
      {u"one two three: sub cat error X1: t", u"|0|0|error|X1|t|"},
      {u"one two three four: error X1: t", u""},
      {u"a.c: one two three error X1: t", u""},
      {u"a.c(1): \x1b[31;1merror\x1b[m X1: t", u"a.c|1|0|error|X1|t|"},
      {u"a.c(1): error X1: t\x1b[", u"a.c|1|0|error|X1|t|"},
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

TEST(BuildNumberOf, IsWhatStandsBeforeALine) {
  const std::pair<std::u16string_view, int> rows[] = {
      {u" 12>a", 12}, {u">a", 0}, {u"12", 0}, {u"1x>a", 0}, {u"7>", 7}};
  for (const auto& [line, number] : rows)
    EXPECT_EQ(BuildNumberOf(line), number) << text::ToUtf8(line);
}

} // namespace
} // namespace kx
