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
      {u"    0 Error(s)", u""},
      {u"Errors: 0", u""},
      {u"Error : 0", u""},
      {u"Compile complete -- 0 errors, 0 warnings", u""},
      {u"The command failed with error MSB3073: see above", u""},
      {u"Build succeeded with warning: see above", u""},
      {u"calling f(12): no error", u""},
      {u"note: it is late", u""},
      {u"echo a.cs(1): error X1: t", u""},
      {u"10:20:30 error 5: access", u""},
  };
  for (const auto& [line, expected] : cases)
    EXPECT_EQ(Shown(line), expected) << text::ToUtf8(line.substr(0, 80));
}

} // namespace
} // namespace kx
