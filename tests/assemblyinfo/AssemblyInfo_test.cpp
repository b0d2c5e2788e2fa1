#include "package/assemblyinfo/AssemblyInfo.h"

#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "package/assemblyinfo/AssemblyInfoRewriter.h"
#include "package/assemblyinfo/AssemblyInfoSharing.h"
#include "package/assemblyinfo/AssemblyInfoVersion.h"
#include "tests/support/Failure.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>

namespace kx {
namespace {

using enum TAssemblyInfoLanguage;

const TAssemblyInfoValues Title{{u"AssemblyTitle", u"N"}};
const TAssemblyInfoValues Comment{{u"AssemblyComment", u"c"}};

struct TCase {
  const char* What;
  TAssemblyInfoLanguage Language;
  std::string Text; // ~as it was~as it becomes~, and ^ for the end of a line
  TAssemblyInfoValues Values = Title;
};

void Check(const TCase& row) {
  std::string before, after;
  std::size_t part = 0;
  for (const char c : row.Text) {
    if (c == '~') ++part;
    if (c != '~' && part % 3 != 2) before += c == '^' ? '\n' : c;
    if (c != '~' && part % 3 != 1) after += c == '^' ? '\n' : c;
  }
  const std::string once = RewriteAssemblyInfo(before, row.Language, row.Values).Bytes;
  EXPECT_EQ(once, after) << row.What;
  EXPECT_EQ(RewriteAssemblyInfo(once, row.Language, row.Values).Bytes, once) << row.What << ", again";
}

// Every spelling, each beside what looks like it and is none.
const TCase Spellings[] = {
    {"C#", CSharp, R"--(using R = System.Reflection;
[assembly: AssemblyTitle(~"o"~"N"~)]
[assembly:global::System.Reflection.AssemblyTitleAttribute(~"o"~"N"~)]
[assembly: R.AssemblyTitle(~"o"~"N"~)]
[assembly: My.AssemblyTitle("a")]
[module: AssemblyTitle("b")]
[ assembly	:^ AssemblyTitle /* ) */ ( ~"o"~"N"~ // "^) ]
[assembly: A(typeof(X[,])), AssemblyTitle(~@"a""b"~@"N"~)]
[assembly: AssemblyTitle(~"a" + (B.C) + ")"~"N"~)]
[assembly: AssemblyTitle(title: ~"o"~"N"~)]
[assembly: AssemblyTitle~~("N")~]
[@assembly: \u0041ssemblyTitle(~"o"~"N"~)]
[assembly: AssemblyTitle("\u004e")]
[assembly: AssemblyTitle("""N""")]
[assembly: AssemblyTitle(~$@"{"""a"""}\"~"N"~)]
$$@$ [assembly: AssemblyTitle(~$@"o"~"N"~)]
// [assembly: AssemblyTitle("a")]
/* [assembly: AssemblyTitle("b")] */
class C { string a = @"\""[assembly: AssemblyTitle(1)]", b = $"{"[assembly: AssemblyTitle(1)]"}", c = """
"[assembly: AssemblyTitle(1)]
"""; char d = '"'; string e = 'd' + "'[assembly: AssemblyTitle(1)]"; }
class D { object f = e[assembly: AssemblyTitle(1)], g = h()[assembly: AssemblyTitle(1)]; }
#if !DEFINED^#if false^[assembly: AssemblyTitle("a^#endif^#endif
#if X^string s = "^#endif
#define A^#if A && !B || A^[assembly: AssemblyTitle(~"o"~"N"~)]^#else^[assembly: AssemblyTitle("p")]^#endif
#if (true)^[assembly: AssemblyTitle(~"o"~"N"~)]^#elif X^[assembly: AssemblyTitle("p")]^#else^[assembly: AssemblyTitle("q")]^#endif
#if true == false^[assembly: AssemblyTitle("p")]^#elif false != !false^[assembly: AssemblyTitle(~"o"~"N"~)]^#endif
[assembly: AssemblyTitle(Name = "a", ~f(1, [2])~"N"~, "b")]
[assembly: Reflection.AssemblyTitle(~"o"~"N"~)]
[assembly: AssemblyTitle(~~"N", ~Name = "a")]
[assembly: AssemblyTitle(~~"N"~)]
[assembly: AssemblyTitle(~A == B ? "o" : "p"~"N"~)]
[assembly: AssemblyTitle(~global::N.T~"N"~)])--"},
    {"conditions", CSharp, R"--(#endif^#else
#define A^#if A ?^[assembly: AssemblyTitle("p")]^#endif
#if A ||^[assembly: AssemblyTitle("p")]^#endif
#if (A^[assembly: AssemblyTitle("p")]^#endif
#if X == true^[assembly: AssemblyTitle("p")]^#else^[assembly: AssemblyTitle("q")]^#endif
#if false^#undef A^#endif^#if A^[assembly: AssemblyTitle(~"o"~"N"~)]^#endif
#undef A^#if A^[assembly: AssemblyTitle("p")]^#else^[assembly: AssemblyTitle(~"o"~"N"~)]^#endif
#if X^#define C^#endif^#if C^[assembly: AssemblyTitle("p")]^#else^[assembly: AssemblyTitle("q")]^#endif
#if false^[assembly: AssemblyTitle("p")]^#elif true^[assembly: AssemblyTitle(~"o"~"N"~)]^#else^[assembly: AssemblyTitle("q")]^#endif
#endregion /* x^[assembly: AssemblyTitle(~"o"~"N"~)]
#define AZ_az09é^#if AZ_az09é^[assembly: AssemblyTitle(~"o"~"N"~)]^#endif)--"},
    {"Visual Basic", VisualBasic, R"--(Dim [[x
<Assembly: [AssemblyTitle](~"o"~"N"~)>
<Assembly: [System].[Reflection].[assemblytitle](~"o"~"N"~)>
<ASSEMBLY: Foo(1), _^ Assembly: assemblytitle(~"a ""b"")"~"N"~)> ' "
<Assembly: AssemblyTitle(~“o”~"N"~)>
REM <Assembly: AssemblyTitle("a")>
' <Assembly: AssemblyTitle(1)>
#Const A = True^#If A And Not False Then^<Assembly: AssemblyTitle(~"o"~"N"~)>^#Else^<Assembly: AssemblyTitle("p")>^#End If
#If Not A Then^<Assembly: AssemblyTitle("p")>^#ElseIf A Then^<Assembly: AssemblyTitle(~"o"~"N"~)>^#End If
#If False Then^#End Region^<Assembly: AssemblyTitle("p")>^#End If
’ <Assembly: AssemblyTitle(1)>
<Assembly: AssemblyTitle(~~"N", ~Name:="a")>)--"},
    {"Visual Basic with a short name of the namespace", VisualBasic,
     R"--(Imports R = System.Reflection^<Assembly: r.AssemblyTitle(~"o"~"N"~)>)--"},
    {"C++", Cpp, R"--(#ifndef H^#define H
[assembly:::System::Reflection::AssemblyTitleAttribute(~L"a" L"b"~L"N"~)];
auto s = R"x()" [assembly:AssemblyTitle("")]; )x"; // \
[assembly:AssemblyTitle("")];
#if 0^[assembly:AssemblyTitle("")];^#endif^#endif
#define A^#if defined(A)^[assembly:AssemblyTitle(~"o"~"N"~)];^#else^[assembly:AssemblyTitle("")];^#endif
#ifdef A^[assembly:AssemblyTitle(~"o"~"N"~)];^#else^[assembly:AssemblyTitle("")];^#endif
#if defined A^[assembly:AssemblyTitle(~"o"~"N"~)];^#endif
#define V 1^#define W 0^#if V^[assembly:AssemblyTitle(~"o"~"N"~)];^#endif^#if W^[assembly:AssemblyTitle("")];^#endif
#undef A^#ifdef A^[assembly:AssemblyTitle("")];^#else^[assembly:AssemblyTitle(~"o"~"N"~)];^#endif
#if 1 /*^#else^*/^[assembly:AssemblyTitle(~"o"~"N"~)];^#endif
int n = 1'000 + '"';^[assembly:AssemblyTitle(~"o"~"N"~)];)--"},
    {"C++ with a short name of the namespace", Cpp,
     R"--(namespace R = System::Reflection;^[assembly:R::AssemblyTitle(~"o"~"N"~)];)--"},
    {"F#", FSharp, R"--([<assembly: B 1; assembly: AssemblyTitle ~"o"~"N"~>]
[<assembly: AssemblyTitle(~""""o"""~"N"~)>]
[<assembly: AssemblyTitle ~"o"~"N"~^  assembly: AssemblyCompany "c"^  assembly: Foo>]
[<assembly: ``AssemblyTitle``^  ~"o"~"N"~>]
do ()
(* (* *) "*)" [<assembly: AssemblyTitle("a")>] *)
let f (x: 'a) = '"')--"},
    {"J#", JSharp, R"--(/** @assembly Foo("")
 *  @assembly AssemblyTitle(~"o"~"N"~) */
// @assembly AssemblyTitle("")
/** see @assembly AssemblyTitle("") */)--"},
};

const TCase Additions[] = {
    {"like the last one", CSharp,
     "\t[assembly:AssemblyCompanyAttribute (\"\")] // c\r^"
     "~~\t[assembly:AssemblyTitleAttribute (\"N\")]\r^~class C {}^"},
    {"before the code of a class in the same line", CSharp,
     R"(using System.Reflection;^[assembly: A]~~^[assembly: AssemblyTitle("N")]~ sealed^class C {})"},
    {"behind a last line without end", CSharp,
     R"(using System.Reflection;^[assembly: A]~~^[assembly: AssemblyTitle("N")]~)"},
    {"before code in the same line", CSharp,
     "[assembly: AssemblyCompany(\"\")]~~\r^[assembly: AssemblyTitle(\"N\")]~ class C {}"},
    {"with its import", CSharp,
     R"(using System;^~~using System.Reflection;^~[assembly: CLSCompliant(true)]^)"
     R"(~~[assembly: AssemblyTitle("N")]^~)"},
    {"with its import", VisualBasic,
     R"(Imports System^~~Imports System.Reflection^~~~<Assembly: AssemblyTitle("N")>^~Module M^End Module^)"},
    {"with its import", Cpp,
     R"(using namespace System;^~~using namespace System::Reflection;^~)"
     R"(~~[assembly:AssemblyTitleAttribute("N")];^~int i;^)"},
    {"with its import", JSharp,
     R"(import System.*;^~~import System.Reflection.*;^~~~/** @assembly AssemblyTitle("N") */^~class C {}^)"},
    {"with its import", FSharp,
     R"(module M^open System^~~open System.Reflection^~~~[<assembly: AssemblyTitle("N")>]^do ()^~)"},
    {"behind several imports", CSharp,
     R"(extern alias X;^using System;^using A = B;^using System.Reflection;^~~[assembly: AssemblyTitle("N")]^~class C {}^)"},
    {"with its namespace", CSharp, R"(// c^~~[assembly: System.Reflection.AssemblyTitle("N")]^~class C {}^)"},
    {"outside a condition", CSharp,
     R"(using System.Reflection;^[assembly: A]^~~[assembly: AssemblyTitle("N")]^~)"
     R"(#if X^[assembly: B]^#endif^)"},
    {"into an empty file", VisualBasic, "~~<Assembly: System.Reflection.AssemblyTitle(\"N\")>\r^~"},
    {"behind the options", VisualBasic,
     R"(Option Strict On^Imports System.Reflection^~~<Assembly: AssemblyTitle("N")>^~Module M^End Module^)"},
    {"behind the includes", Cpp,
     R"(#include "stdafx.h"^~~[assembly:System::Reflection::AssemblyTitleAttribute("N")];^~int i;^)"},
    {"with something to stand before", FSharp,
     R"(module M^~~[<assembly: System.Reflection.AssemblyTitle("N")>]^do ()^~)"},
    {"behind a package and imports", JSharp,
     R"(package a;^import System.*;^import System.Reflection.*;^~~/** @assembly AssemblyTitle("N") */^~class C {}^)"},
    {"behind namespaces", VisualBasic,
     R"(Imports A = System.IO^Imports System.Reflection, System^~~<Assembly: AssemblyTitle("N")>^~Module M^End Module^)"},
    {"behind a using of C++", Cpp,
     R"(#include "a.h"^using namespace System;^using namespace System::Reflection;^~~[assembly:AssemblyTitleAttribute("N")];^~int i;^)"},
    {"behind a documentation comment", JSharp,
     R"(/** @assembly AssemblyCompany("") */^~~/** @assembly AssemblyTitle("N") */^~)"},
    {"whatever is imported inside of braces", CSharp,
     R"(~~[assembly: System.Reflection.AssemblyTitle("N")]^~namespace N { enum E; using System.Reflection; }^)"},
    {"behind an import behind closed braces", CSharp,
     R"(}^class C { }^#if X^{^#endif^using System.Reflection;^~~[assembly: AssemblyTitle("N")]^~)"},
    {"before a condition that imports", CSharp,
     R"(~~[assembly: System.Reflection.AssemblyTitle("N")]^~#if X^using System.Reflection;^#endif^)"},
    {"behind the import of a type", CSharp,
     R"(using static System.Reflection;^~~[assembly: System.Reflection.AssemblyTitle("N")]^~)"},
    {"behind the name of an assembly", CSharp,
     R"(extern alias X;^~~[assembly: System.Reflection.AssemblyTitle("N")]^~class C {}^)"},
    {"before what is no section", CSharp,
     R"(~~[assembly: System.Reflection.AssemblyTitle("N")]^~[assembly: A B]^)"},
    {"behind an import for all files", CSharp,
     R"(global using System.Reflection;^~~[assembly: AssemblyTitle("N")]^~)"},
    {"not where both branches hold it", CSharp, R"([assembly: AssemblyTitle(^#if X^"o"^#else^"p"^#endif^)])"},
    {"not where numbers decide", Cpp, R"(#define V 2^#if V == 1^[assembly:AssemblyTitle("o")];^#endif)"},
    {"not where a condition goes on behind its end", CSharp,
     R"(#if true X^[assembly: AssemblyTitle("o")]^#endif^)"},
    {"not where a condition may hold it", CSharp, R"(#if X^[assembly: AssemblyTitle("o")]^#endif^)"},
    {"not when the framework has none", CSharp, "class C {}^", Comment},
    {"but changed where the file has it", CSharp, R"([assembly: My.AssemblyComment(~""~"c"~)])", Comment},
};

const TAssemblyInfoValues Nasty{{u"AssemblyTitle", u"\"\\\n*/?\?/"}};
const TAssemblyInfoValues Controls{{u"AssemblyTitle", u"\t\r\x7F\u2029."}};
const TCase Escapes[] = {
    {"C#", CSharp, R"x([assembly: AssemblyTitle(~@""~"\"\\\n*/??/"~)])x", Nasty},
    {"C++", Cpp, R"x([assembly:AssemblyTitle(L"~~\"\\\n*/?\?/~")];)x", Nasty},
    {"J#", JSharp, R"x(/** @assembly AssemblyTitle("~~\"\\\n*\057??/~") */)x", Nasty},
    {"F#", FSharp, R"x([<assembly: AssemblyTitle("~~\"\\\n*/??/~")>])x", Nasty},
    {"the same already",
     CSharp,
     R"x([assembly: AssemblyTitle("\U0001F600")])x",
     {{u"AssemblyTitle", u"\U0001F600"}}},
    {"Visual Basic", VisualBasic,
     R"x(<Assembly: AssemblyTitle("~~""\" & Microsoft.VisualBasic.ChrW(10) & "*/??/~")>)x", Nasty},
    {"controls of C#", CSharp, R"x([assembly: AssemblyTitle("~~\t\r\u007F\u2029.~")])x", Controls},
    {"controls of C++", Cpp, R"x([assembly:AssemblyTitle(L"~~\t\r\177\u2029.~")];)x", Controls},
    {"controls of J#", JSharp, R"x(/** @assembly AssemblyTitle("~~\t\r\177\u2029.~") */)x", Controls},
    {"controls of F#", FSharp, R"x([<assembly: AssemblyTitle("~~\t\r\u007F\u2029.~")>])x", Controls},
    {"controls of Visual Basic", VisualBasic,
     R"x(<Assembly: AssemblyTitle(~"o"~Microsoft.VisualBasic.ChrW(9) & Microsoft.VisualBasic.ChrW(13))x"
     R"x( & Microsoft.VisualBasic.ChrW(127) & Microsoft.VisualBasic.ChrW(8233) & "."~)>)x",
     Controls},
    {"nothing in Visual Basic",
     VisualBasic,
     R"x(<Assembly: AssemblyTitle(~"o"~""~)>)x",
     {{u"AssemblyTitle", u""}}},
};

const TAssemblyInfoValues Version{{u"AssemblyVersion", u"2.0"}};
const TAssemblyInfoValues Both{{u"AssemblyTitle", u"T"}, {u"AssemblyVersion", u"2.0"}};
const TAssemblyInfoValues Strange{{u"AssemblyTitle", u"a\"b\\c\x01{}"}, {u"Own", u"x"}};

// What compilers of one language take for blank, for a comment or for code, and those of another do not.
const TCase Oddities[] = {
    {"F# that is a comment alone", FSharp,
     "(* c *)~~\r^[<assembly: System.Reflection.AssemblyTitle(\"a\\\"b\\\\c\\u0001{}\")>]\r^do ()\r^~",
     Strange},
    {"a line of F# ends at any line separator", FSharp,
     "  [<Own(\"a\" + \"b\") >]\r^namespace global~~\r^[<assembly: "
     "System.Reflection.AssemblyTitle(\"a\\\"b\\\\c\\u0001{}\")>]~\u2028let f' = 1 ",
     Strange},
    {"a tag without a value, and code behind it", JSharp,
     "  /** @assembly Assembly\\u0054itle(~~\"T\") */\r^  /** @assembly "
     "System.Reflection.AssemblyVersion(\"2.0\"~) */;\302\205import System.*; ",
     Both},
    {"J# reads no conditions, and an open bracket takes all tags", JSharp,
     "import System.Reflection.*;#if A^/** @assembly AssemblyTitle(typeof(X)^ * @assembly  new int[]{1}^ * "
     "@assembly  \"a{0}\")^ * @assembly Assembly\\u0054itle */\032~~^/** @assembly AssemblyVersion(\"2.0\") "
     "*/~",
     Version},
    {"a comment of Basic that is a word alone, a constant without value", VisualBasic,
     R"(REM^#Const X=^~~<Assembly: System.Reflection.AssemblyVersion("2.0")>^~)", Version},
    {"an import behind code that goes on", JSharp,
     "#!x^import java.io.*;~~^import System.Reflection.*;^/** @assembly AssemblyVersion(\"2.0\") */~\\^// "
     "c^/** @assembly AssemblyTitle(\"~a\\x41\" @assembly  R\"(x)~T~\") @assembly  AssemblyTitle(@\"a\"\"b\" "
     "*/\032",
     Both},
    {"C++: lines that go on, and a comment of two lines", Cpp,
     "[assembly:: AssemblyTitle(\"a{0}\"), AssemblyTitle(version: $@\"a{b}c\"), "
     "global::System.Reflection.AssemblyVersion(typeof(X), new int[]{1}, $\"{{}}\")]^using namespace "
     "System::Reflection;\\^#include <x>\t~~^[assembly:AssemblyVersionAttribute(\"2.0\")];~/* a^ b "
     "*/\302\205namespace R = System::Reflection;^",
     Version},
    {"a tag whose bracket is not closed is none", JSharp,
     R"(~~/** @assembly System.Reflection.AssemblyTitle("a\"b\\c\001{}") */^~/** @assembly ``AssemblyTitle``(X = 1^ * @assembly  nameof(X)) */)",
     Strange},
    {"F# has an operator that looks like a comment", FSharp,
     "\uFEFF~~[<assembly: System.Reflection.AssemblyVersion(\"2.0\")>]\r^~(*) x", Version},
    {"C++: blank lines of CR, and an argument that is an expression", Cpp,
     "#!x^// c \\\r\r/* a^ b "
     "*/~~\r[assembly:System::Reflection::AssemblyTitleAttribute(\"a\\\"b\\\\c\\001{}\")];~\r[assembly : "
     "global::System.Reflection.AssemblyVersion(\"a\"\"b\"), Own(~typeof(X)~\"x\"~, new int[]{1}, \"1.0\"), "
     "``AssemblyTitle``(L\"w\")] ",
     Strange},
    {"a comment of Basic directly behind its word", VisualBasic,
     "REM' c _ ~~\r^<Assembly: System.Reflection.AssemblyVersion(\"2.0\")>\r^~", Version},
    {"C++: a guard, an #include and the end of file mark", Cpp,
     "~~[assembly:System::Reflection::AssemblyTitleAttribute(\"a\\\"b\\\\c\\001{}\")];^~[Assembly: "
     "AssemblyTitle(version: 'c')]^#ifndef G^#include <x>\032",
     Strange},
    {"F#: conditions that are never closed", FSharp,
     "~~[<assembly: System.Reflection.AssemblyTitle(\"a\\\"b\\\\c\\u0001{}\")>]^do ()^~#else\\^#if A\032",
     Strange},
    {"F#: names of another letter case are others", FSharp,
     "[<assembly:assemblytitle;global::System.Reflection.AssemblyVersion(~version: "
     "X~\"2.0\"~)>]\r^~~[<assembly:global::System.Reflection.AssemblyTitle(\"T\")>]\r^~",
     Both},
    {"Basic: the next line, and a statement on a line of its own", VisualBasic,
     "REM\302\205~~<Assembly: System.Reflection.AssemblyTitle(\"T\")>^<Assembly: "
     "System.Reflection.AssemblyVersion(\"2.0\")>^~#Else^: <Assembly: Own(\"x\")>^",
     Both},
    {"C++: a dot is no scope", Cpp,
     R"([assembly: R.AssemblyVersion()];^~~[assembly: System::Reflection::AssemblyVersionAttribute("2.0")];^~)",
     Version},
    {"J#: no line behind the last comment", JSharp,
     "\r^/** @module AssemblyTitle(version: \"a\\x41\") */ ~~\r^/** @assembly "
     "System.Reflection.AssemblyTitle(\"T\") */\r^/** @assembly System.Reflection.AssemblyVersion(\"2.0\") "
     "*/\r^~",
     Both},
    {"Basic: an alias that is not conditional", VisualBasic,
     "\uFEFF#If X Or True Then^^\302\205Imports R=System.Reflection~~^<Assembly: "
     "System.Reflection.AssemblyVersion(\"2.0\")>~ : Imports B",
     Version},
    {"Basic: a character without a spelling", VisualBasic,
     "Imports System~~\rImports System.Reflection\r<Assembly: AssemblyTitle(\"a\"\"b\\c\" & "
     "Microsoft.VisualBasic.ChrW(1) & \"{}\")>~\r<module: AssemblyTitle(\"a\\^b\") >\r<assembly: "
     "Own(~$~~\"~{{}}~x~\")\r",
     Strange},
    {"C#: an alias behind the last section", CSharp,
     "#!x^namespace N;^[module: Own(@\"a\\\") ]^^/* c */^using @R=System.Reflection;\032~~^[assembly: "
     "System.Reflection.AssemblyVersion(\"2.0\")]~",
     Version},
    {"J#: a package alone", JSharp,
     "package p;~~\r^/** @assembly System.Reflection.AssemblyVersion(\"2.0\") */~", Version},
    {"F#: a module without a body", FSharp,
     "~~[<assembly: System.Reflection.AssemblyVersion(\"2.0\")>]\r~module M =\r", Version},
    {"Basic: a condition without Then", VisualBasic,
     R"(#!x^#If True^Imports System^~~Imports System.Reflection^<Assembly: AssemblyTitle("a""b\c" & Microsoft.VisualBasic.ChrW(1) & "{}")>^~)",
     Strange},
    {"C++: behind an #include with its comment", Cpp,
     "#include \"y.h\"\t// c^~~[assembly:System::Reflection::AssemblyVersionAttribute(\"2.0\")];^~^/* a^ b "
     "*/",
     Version},
    {"C++: an alias of the namespace from the root", Cpp,
     "namespace "
     "R=::System::Reflection;~~\r^[assembly:System::Reflection::AssemblyTitleAttribute(\"a\\\"b\\\\c\\001{}"
     "\")];~",
     Strange},
    {"Basic knows no strings of another kind", VisualBasic,
     "<assembly: AssemblyTitle(~@~~\"a\"\"b~~\\c\" & Microsoft.VisualBasic.ChrW(1) & \"{}~\")>\032", Strange},
};

TEST(AssemblyInfo, ChangesEverySpellingAndNothingThatLooksLikeOne) {
  std::ranges::for_each(Spellings, Check);
  std::ranges::for_each(Escapes, Check);
}

TEST(AssemblyInfo, AddsWhatIsMissing) {
  std::ranges::for_each(Additions, Check);
}

TEST(AssemblyInfo, FindsItsPlaceInOddSources) {
  for (const auto& row : Oddities)
    Check(row);
}

TEST(AssemblyInfo, KeepsEncodingAndStrayBytes) {
  const TAssemblyInfoValues copyright{{u"AssemblyTitle", u"\u00A9"}};
  const TCase cases[] = {
      {"ANSI", CSharp, "// \xE9^[assembly: AssemblyTitle(\"~\x93~\xA9~\")]", copyright},
      {"UTF-8", CSharp, "// \x7F\u0080\u07FF\u0800\u20AC^[assembly: AssemblyTitle(\"~~\u00A9~\")]",
       copyright},
      {"ASCII becomes UTF-8", CSharp, "[assembly: AssemblyTitle(\"~~\u00A9~\")]", copyright},
      {"a mark with stray bytes behind it", CSharp,
       "\xEF\xBB\xBF// \xFF\xE2\x82 \U0001F600^[assembly: AssemblyTitle(\"~\xE9~\u00A9~\")]\xC3", copyright},
      {"a comment that ends in half a character", Cpp, "// \x95\\^[assembly:AssemblyTitle(\"~~\xA9~\")];",
       copyright},
  };
  std::ranges::for_each(cases, Check);

  const auto utf16 = [](std::u16string_view title, bool swapped) {
    const std::u16string text = u"// \u20AC\n[assembly: AssemblyTitle(\"" + std::u16string(title) + u"\")]";
    std::string bytes = "\xFF\xFE" + text::ToUtf16LE(text);
    for (std::size_t i = 0; swapped && i < bytes.size(); i += 2)
      std::swap(bytes[i], bytes[i + 1]);
    return bytes;
  };
  for (const bool swapped : {false, true})
    for (const std::string halfACharacter : {"", "x"})
      EXPECT_EQ(RewriteAssemblyInfo(utf16(u"", swapped) + halfACharacter, CSharp, copyright).Bytes,
                utf16(u"\u00A9", swapped) + halfACharacter);
}

TEST(AssemblyInfo, SaysWhatItDidNotDoAsAsked) {
  const std::string longName(61, 'x');
  const std::tuple<std::string, TAssemblyInfoValues, std::string> cases[] = {
      {"#if X\n[assembly: AssemblyTitle(\"o\")]\n#endif", Title,
       "AssemblyTitle in line 2 stands under a condition and is left as it is"},
      {"", Comment,
       "AssemblyComment is not an attribute of the .NET framework and the file has none of that name: it is "
       "not added"},
      {"\n[assembly: AssemblyTitle(A + B)]", Title,
       "the expression A + B in line 2 is replaced by the value"},
      {"[assembly: AssemblyTitle(" + longName + ")]", Title,
       "the expression " + longName.substr(0, 60) + "... in line 1 is replaced by the value"},
      {"[assembly: AssemblyTitle(\"N\")]", Title, ""},
  };
  for (const auto& [source, values, said] : cases)
    EXPECT_EQ(text::ToUtf8(text::Join(RewriteAssemblyInfo(source, CSharp, values).Messages, u"\n")), said)
        << source;
}

TEST(AssemblyInfo, RefusesWhatItCannotKeepWhole) {
  const std::tuple<std::string, std::u16string, const char*> cases[] = {
      {"// \xE9\n", u"\u4E2D", "the ANSI code page"},
      {"", u"\xD800", "UTF-8"},
      {"", u"\xD800x", "UTF-8"},
      {"", u"\xDC00", "UTF-8"},
      {"/* never closed", u"x", "not closed"},
      {std::string("c\0l\0", 4), u"x", "is not text"},
      {"\n[assembly: AssemblyTitle(\"\x83\x5C\"\n)]", u"x", "line 2 is not closed; if the file"},
  };
  for (const auto& [bytes, value, reason] : cases)
    EXPECT_THAT(tests::FailureOf([&] {
                  RewriteAssemblyInfo(bytes, CSharp, {{u"AssemblyTitle", value}});
                }),
                testing::HasSubstr(reason));
}

TEST(AssemblyInfo, WritesVersionsThatCompilersTake) {
  const std::tuple<std::u16string_view, std::u16string_view, std::string_view> cases[] = {
      {u"AssemblyVersion", u"2...", "2"},
      {u"AssemblyVersion", u"1.0.*.", "1.0.*"},
      {u"AssemblyVersion", u"1.02.3.*", "1.02.3.*"},
      {u"AssemblyVersion", u"65534.1", "65534.1"},
      {u"AssemblyVersion", u"1.65535", "65535 is more than 65534"},
      {u"AssemblyFileVersion", u"1.65535", "1.65535"},
      {u"AssemblyFileVersion", u"1.99999999999", "99999999999 is more than 65535"},
      {u"AssemblyVersion", u"...", "it is empty"},
      {u"AssemblyVersion", u"1..3", "a part in the middle is empty"},
      {u"AssemblyVersion", u"1.*", "\"*\" is no number"},
      {u"AssemblyVersion", u"1.0.*.4", "\"*\" is no number"},
      {u"AssemblyVersion", u"1.-1", "\"-1\" is no number"},
      {u"AssemblyVersion", u"1.2.3.4.5", "it has more than four parts"},
  };
  for (const auto& [name, version, expected] : cases) {
    const auto refused = CheckAssemblyVersion(name, version);
    EXPECT_TRUE(text::ToUtf8(refused.value_or(TrimAssemblyVersion(version))).ends_with(expected))
        << text::ToUtf8(version);
  }
}

// Sets what it is made with, and notes what it is told.
class TSaid : public IAssemblyInfoCallback {
public:
  explicit TSaid(TAssemblyInfoValues values) : values_(std::move(values)) {}
  std::string Log;
  void OnProcessFile(std::u16string_view /*fileName*/, IAssemblyInfoAttributes& updater) override {
    for (const auto& [name, value] : values_)
      updater.SetAttribute(name, value);
  }
  void AssemblyInfoProcessEntry(std::u16string_view name, std::u16string_view value) override {
    Entries += text::ToUtf8(name) + "=" + text::ToUtf8(value) + "\n";
  }
  void AssemblyInfoProcessMessage(std::u16string_view text) override { Log += text::ToUtf8(text) + "\n"; }
  std::string Entries;

private:
  TAssemblyInfoValues values_;
};

// A is made of O.cs, its AssemblyInfo file, C.cs and Version.cs, which is not on disk; B of what a row says.
class TUnits : public IAssemblyInfoUnits {
public:
  TAssemblyInfoUnit A{.Name = u"A", .Sources = {}, .Generated = {}},
      B{.Name = u"B", .Sources = {}, .Generated = {}};
  bool CIsAssemblyInfo = false;

  const TAssemblyInfoUnit& Current() override { return A; }
  std::vector<const TAssemblyInfoUnit*> UnitsOf(std::u16string_view source) override {
    std::vector<const TAssemblyInfoUnit*> units;
    for (const auto* unit : {&A, &B})
      if (std::ranges::find(unit->Sources, source) != unit->Sources.end()) units.push_back(unit);
    return units;
  }
  bool IsAssemblyInfoFile(std::u16string_view source) override {
    return CIsAssemblyInfo && source.ends_with(u"C.cs");
  }
};

TEST(AssemblyInfo, IsSharedOutAmongTheSourcesOfAnAssembly) {
  const std::string old = "[assembly: AssemblyVersion(\"0\")]";
  const std::string other = "C.cs: is changed for A, whose AssemblyInfo file lacks AssemblyVersion";
  const std::string ofBoth =
      other + ". It is also part of B; to stamp A alone, move the attributes into its own file";
  const std::string absent =
      "O.cs: AssemblyVersion added, although DIR/Version.cs, which the project compiles too, is "
      "not on disk: if the build makes it with the same attributes, make it before the stamping";
  const auto has = [](const std::string& where) {
    return "O.cs: AssemblyVersion is not added: B, which is made of this file too, has it already" + where +
           "; give A an AssemblyInfo file of its own";
  };
  struct TRow {
    const char* Name;
    std::string O, C;     // what they hold before
    std::string_view ofB; // its sources, and "+" where its build writes the version
    std::string Changed;  // the file that gets the version, none when empty
    std::string Said;
  };
  const TRow rows[] = {
      {"its own file", old, old, "C", "O.cs", ""},
      {"the one that has it", "", old, "", "C.cs", other},
      {"the same, of two", "", old, "C", "C.cs", ofBoth},
      {"new", "", "", "", "O.cs", absent},
      {"another has it from its build", "", "", "O+", "", has("")},
      {"another has it in a source", "", "", "OD", "", has(" in DIR/D.cs")},
      {"new in the file that is all another has", "", "", "C!", "C.cs", absent + "\nWarning : DIR/" + ofBoth},
      {"not there, where that one has it", "", "", "C!+", "O.cs", absent},
      {"what its build writes", "", "", "-", "",
       "O.cs: AssemblyVersion is not added: A has it written by its build; set it in the project file, "
       "or set GenerateAssemblyVersionAttribute to false there"},
  };
  for (const auto& row : rows) {
    const tests::TTemporaryFolder folder;
    TUnits units;
    const std::u16string own = folder.Write("O.cs", row.O);
    units.A.Sources = {own, folder.Write("C.cs", row.C), folder.Path("Version.cs")};
    folder.Write("D.cs", old);
    for (const char letter : row.ofB)
      if (std::isupper(static_cast<unsigned char>(letter)) != 0)
        units.B.Sources.push_back(folder.Path(std::string(1, letter) + ".cs"));
    if (row.ofB.ends_with('+')) units.B.Generated = {u"AssemblyVersion"};
    if (row.ofB == "-") units.A.Generated = {u"AssemblyVersion"};
    units.CIsAssemblyInfo = row.ofB.find('!') != std::string_view::npos;
    TSaid said(TAssemblyInfoValues{{u"AssemblyVersion", u"1.2"}});
    const auto updater = TBrannicAssemblyInfo::Create();
    updater->SetCallback(said);
    updater->SetUnits(&units, nullptr);
    updater->ProcessFile(own, true);
    for (const auto* file : {"O.cs", "C.cs"})
      EXPECT_EQ(folder.Read(file).find("1.2") != std::string::npos, row.Changed == file) << row.Name << file;
    EXPECT_EQ(folder.Plain(said.Log), row.Said.empty() ? "" : "Warning : DIR/" + row.Said + "\n") << row.Name;
    said.Log.clear();
    updater->ProcessFile(own, true);
    EXPECT_EQ(said.Log.empty(), !row.Changed.empty()) << row.Name << ", again: what was added is there now";
  }
}

TEST(AssemblyInfo, WarnsWhereAnotherProjectGetsAnotherValue) {
  const tests::TTemporaryFolder folder;
  const std::u16string file = folder.Write("O.cs", "\n");
  TAssemblyInfoHistory history;
  for (const auto& [unit, version, said] : {std::tuple(u"A", u"1", ""),
                                            {u"A", u"2", ""},
                                            {u"B", u"2", ""},
                                            {u"A", u"3",
                                             "Warning : DIR/O.cs: AssemblyVersion was \"2\" for B earlier in "
                                             "this run and is \"3\" for A now; give "
                                             "each project its own, or all the same\n"}}) {
    TUnits units;
    units.A.Name = unit;
    TSaid stamp(TAssemblyInfoValues{{u"AssemblyVersion", version}});
    const auto updater = TBrannicAssemblyInfo::Create();
    updater->SetCallback(stamp);
    updater->SetUnits(&units, &history);
    updater->ProcessFile(file, true);
    EXPECT_EQ(folder.Plain(stamp.Log), said);
  }
}

TEST(AssemblyInfo, WritesTheFileOnceAndReports) {
  const tests::TTemporaryFolder folder;
  const std::string old = "[assembly: AssemblyTitle(Names.Title)]\n";
  const std::u16string path = folder.Write("AssemblyInfo.CS", old);
  TSaid stamp(TAssemblyInfoValues{
      {u"AssemblyTitle", u"first"}, {u"AssemblyVersion", u"1.2.."}, {u"AssemblyTitle", u"N"}});
  const auto updater = TBrannicAssemblyInfo::Create();
  updater->SetCallback(stamp);
  updater->ProcessFile(path, false);
  EXPECT_EQ(*platform::ReadFile(path), old);
  updater->ProcessFile(path, true);
  EXPECT_EQ(*platform::ReadFile(path),
            "[assembly: AssemblyTitle(\"N\")]\n[assembly: AssemblyVersion(\"1.2\")]\n");
  const std::string said =
      "Warning : DIR/AssemblyInfo.CS: the expression Names.Title in line 1 is replaced by the value\n";
  EXPECT_EQ(folder.Plain(stamp.Log), said + said);
  EXPECT_EQ(stamp.Entries, "AssemblyTitle=N\nAssemblyVersion=1.2\nAssemblyTitle=N\nAssemblyVersion=1.2\n");
  // Nothing to change: a file that cannot be written is no obstacle.
  std::filesystem::permissions(folder.Native("AssemblyInfo.CS"), std::filesystem::perms::owner_read);
  EXPECT_NO_THROW(updater->ProcessFile(path, true));
  EXPECT_THROW(updater->ProcessFile(folder.Path("missing.vb"), true), EKxException);
  const std::u16string binary = folder.Write("b.cs", std::string_view("\0", 1));
  EXPECT_EQ(folder.Plain(tests::FailureOf([&] { updater->ProcessFile(binary, true); })),
            "Unable to update DIR/b.cs: the file is not text; save it as UTF-8, or as UTF-16 with a "
            "byte-order mark");
  stamp.Log.clear();
  updater->ProcessFile(folder.Path("a.txt"), true);
  EXPECT_EQ(folder.Plain(stamp.Log),
            "Warning : DIR/a.txt: is not updated: its extension is of no known language\n");
}

} // namespace
} // namespace kx
