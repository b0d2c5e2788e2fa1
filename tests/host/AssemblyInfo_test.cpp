#include "host/AssemblyInfo.h"

#include "host/AssemblyInfoRewriter.h"
#include "host/AssemblyInfoVersion.h"
#include "host/Exceptions.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <random>

namespace kx {
namespace {

using enum TAssemblyInfoLanguage;

const TAssemblyInfoValues Title{{u"AssemblyTitle", u"N"}};

struct TCase {
  const char* What;
  TAssemblyInfoLanguage Language;
  std::string Source;
  std::string Expected = {}; // empty: the source as it was
  TAssemblyInfoValues Values = Title;
};

void Check(const TCase& row) {
  const std::string& expected = row.Expected.empty() ? row.Source : row.Expected;
  const std::string once = RewriteAssemblyInfo(row.Source, row.Language, row.Values).Bytes;
  EXPECT_EQ(once, expected) << row.What;
  EXPECT_EQ(RewriteAssemblyInfo(once, row.Language, row.Values).Bytes, once) << row.What << ", again";
}

const TCase Spellings[] = {
    {"the usual one", CSharp, "[assembly: AssemblyTitle(\"o\")]", "[assembly: AssemblyTitle(\"N\")]"},
    {"suffix and namespace", CSharp, "[assembly:global::System.Reflection.AssemblyTitleAttribute(\"o\")]",
     "[assembly:global::System.Reflection.AssemblyTitleAttribute(\"N\")]"},
    {"blanks and comments between", CSharp, "[ assembly\t:\n AssemblyTitle /* ) */ ( \"o\" // \"\n) ]",
     "[ assembly\t:\n AssemblyTitle /* ) */ ( \"N\" // \"\n) ]"},
    {"second in the bracket", CSharp, "[assembly: A(typeof(X[,])), AssemblyTitle(@\"a\"\"b\")]",
     "[assembly: A(typeof(X[,])), AssemblyTitle(@\"N\")]"},
    {"an expression", CSharp, "[assembly: AssemblyTitle(\"a\" + (B.C) + \")\")]",
     "[assembly: AssemblyTitle(\"N\")]"},
    {"a parameter by its name", CSharp, "[assembly: AssemblyTitle(title: \"o\")]",
     "[assembly: AssemblyTitle(title: \"N\")]"},
    {"no parentheses", CSharp, "[assembly: AssemblyTitle]", "[assembly: AssemblyTitle(\"N\")]"},
    {"by an alias of the namespace", CSharp,
     "using R = System.Reflection;\n[assembly: R.AssemblyTitle(\"o\")]",
     "using R = System.Reflection;\n[assembly: R.AssemblyTitle(\"N\")]"},
    {"the same value in another spelling", CSharp, "[assembly: AssemblyTitle(\"\\u004e\")]", ""},
    {"escapes in names", CSharp, "[@assembly: \\u0041ssemblyTitle(\"o\")]",
     "[@assembly: \\u0041ssemblyTitle(\"N\")]"},
    {"strings with parts to be computed", CSharp, "[assembly: AssemblyTitle($@\"{\"\"\"a\"\"\"}\\\")]",
     "[assembly: AssemblyTitle(\"N\")]"},
    {"the same value in a raw string", CSharp, "[assembly: AssemblyTitle(\"\"\"N\"\"\")]", ""},
    {"signs that begin no string", CSharp, "$$@$ [assembly: AssemblyTitle($@\"o\")]",
     "$$@$ [assembly: AssemblyTitle(\"N\")]"},
    {"more quotation marks than a string begins with", FSharp, "[<assembly: AssemblyTitle(\"\"\"\"o\"\"\")>]",
     "[<assembly: AssemblyTitle(\"N\")>]"},
    {"brackets that close in another line", VisualBasic, "Dim [[x\n<Assembly: [AssemblyTitle](\"o\")>",
     "Dim [[x\n<Assembly: [AssemblyTitle](\"N\")>"},
    {"names in brackets", VisualBasic, "<Assembly: [System].[Reflection].[assemblytitle](\"o\")>",
     "<Assembly: [System].[Reflection].[assemblytitle](\"N\")>"},
    {"Visual Basic", VisualBasic, "<ASSEMBLY: Foo(1), _\n Assembly: assemblytitle(\"a \"\"b\"\")\")> ' \"",
     "<ASSEMBLY: Foo(1), _\n Assembly: assemblytitle(\"N\")> ' \""},
    {"typographic quotation marks", VisualBasic, "<Assembly: AssemblyTitle(\u201Co\u201D)>",
     "<Assembly: AssemblyTitle(\"N\")>"},
    {"wide strings of C++", Cpp, "[assembly:::System::Reflection::AssemblyTitleAttribute(L\"a\" L\"b\")];",
     "[assembly:::System::Reflection::AssemblyTitleAttribute(L\"N\")];"},
    {"F# with and without parentheses", FSharp, "[<assembly: B 1; assembly: AssemblyTitle \"o\">]\ndo ()",
     "[<assembly: B 1; assembly: AssemblyTitle \"N\">]\ndo ()"},
    {"F# with line ends between", FSharp,
     "[<assembly: AssemblyTitle \"o\"\n  assembly: AssemblyCompany \"c\"\n  assembly: Foo>]\ndo ()",
     "[<assembly: AssemblyTitle \"N\"\n  assembly: AssemblyCompany \"c\"\n  assembly: Foo>]\ndo ()"},
    {"F# names in backquotes", FSharp, "[<assembly: ``AssemblyTitle``\n  \"o\">]",
     "[<assembly: ``AssemblyTitle``\n  \"N\">]"},
    {"a J# documentation comment", JSharp, "/** @assembly Foo(\"\")\n *  @assembly AssemblyTitle(\"o\") */",
     "/** @assembly Foo(\"\")\n *  @assembly AssemblyTitle(\"N\") */"},
};

// In each the one real attribute stands first, so that nothing is added.
const TCase Elsewhere[] = {
    {"comments", CSharp, "// [assembly: AssemblyTitle(\"a\")]\n/* [assembly: AssemblyTitle(\"b\")] */"},
    {"strings", CSharp,
     "class C { string a = @\"\\\"\"[assembly: AssemblyTitle(1)]\", b = $\"{\"[assembly: "
     "AssemblyTitle(1)]\"}\", "
     "c = \"\"\"\n\"[assembly: AssemblyTitle(1)]\n\"\"\"; char d = '\"'; string e = 'd' + \"'[assembly: "
     "AssemblyTitle(1)]\"; }"},
    {"switched off for certain", CSharp,
     "#if !DEFINED\n#if false\n[assembly: AssemblyTitle(\"a\n#endif\n#endif"},
    {"of a class of one's own", CSharp,
     "[assembly: My.AssemblyTitle(\"a\")]\n[module: AssemblyTitle(\"b\")]"},
    {"Visual Basic comments", VisualBasic,
     "REM <Assembly: AssemblyTitle(\"a\")>\n' <Assembly: AssemblyTitle(1)>"},
    {"C++ raw strings and continued comments", Cpp,
     "auto s = R\"x()\" [assembly:AssemblyTitle(\"\")]; )x\"; // \\\n[assembly:AssemblyTitle(\"\")];\n#if 0\n"
     "[assembly:AssemblyTitle(\"\")];\n#endif"},
    {"strings that a condition leaves open", CSharp, "#if X\nstring s = \"\n#endif"},
    {"nested F# comments", FSharp,
     "(* (* *) \"*)\" [<assembly: AssemblyTitle(\"a\")>] *)\nlet f (x: 'a) = '\"'"},
    {"J# comments of other kinds", JSharp,
     "// @assembly AssemblyTitle(\"\")\n/** see @assembly AssemblyTitle(\"\") */"},
};

const TCase Additions[] = {
    {"like the last one", CSharp, "\t[assembly:AssemblyCompanyAttribute (\"\")] // c\r\nclass C {}\n",
     "\t[assembly:AssemblyCompanyAttribute (\"\")] // c\r\n\t[assembly:AssemblyTitleAttribute "
     "(\"N\")]\r\nclass C "
     "{}\n"},
    {"before the code of a class in the same line", CSharp,
     "using System.Reflection;\n[assembly: A] sealed\nclass C {}",
     "using System.Reflection;\n[assembly: A]\n[assembly: AssemblyTitle(\"N\")] sealed\nclass C {}"},
    {"behind a last line without end", CSharp, "using System.Reflection;\n[assembly: A]",
     "using System.Reflection;\n[assembly: A]\n[assembly: AssemblyTitle(\"N\")]"},
    {"before code in the same line", CSharp, "[assembly: AssemblyCompany(\"\")] class C {}",
     "[assembly: AssemblyCompany(\"\")]\r\n[assembly: AssemblyTitle(\"N\")] class C {}"},
    {"with its import", CSharp, "using System;\n[assembly: CLSCompliant(true)]\n",
     "using System;\nusing System.Reflection;\n[assembly: CLSCompliant(true)]\n[assembly: "
     "AssemblyTitle(\"N\")]\n"},
    {"with its namespace", CSharp, "// c\nclass C {}\n",
     "// c\n[assembly: System.Reflection.AssemblyTitle(\"N\")]\nclass C {}\n"},
    {"outside a condition", CSharp, "using System.Reflection;\n[assembly: A]\n#if X\n[assembly: B]\n#endif\n",
     "using System.Reflection;\n[assembly: A]\n[assembly: AssemblyTitle(\"N\")]\n#if X\n[assembly: "
     "B]\n#endif\n"},
    {"into an empty file", VisualBasic, "", "<Assembly: System.Reflection.AssemblyTitle(\"N\")>\r\n"},
    {"behind the options", VisualBasic, "Option Strict On\nModule M\nEnd Module\n",
     "Option Strict On\n<Assembly: System.Reflection.AssemblyTitle(\"N\")>\nModule M\nEnd Module\n"},
    {"behind the includes", Cpp, "#include \"stdafx.h\"\nint i;\n",
     "#include \"stdafx.h\"\n[assembly:System::Reflection::AssemblyTitleAttribute(\"N\")];\nint i;\n"},
    {"with something to stand before", FSharp, "module M\n",
     "module M\n[<assembly: System.Reflection.AssemblyTitle(\"N\")>]\ndo ()\n"},
    {"behind a documentation comment", JSharp, "/** @assembly AssemblyCompany(\"\") */\n",
     "/** @assembly AssemblyCompany(\"\") */\n/** @assembly AssemblyTitle(\"N\") */\n"},
    {"not where a condition may hold it", CSharp, "#if X\n[assembly: AssemblyTitle(\"o\")]\n#endif\n", ""},
    {"not when the framework has none", CSharp, "class C {}\n", "", {{u"AssemblyComment", u"c"}}},
    {"but changed where the file has it",
     CSharp,
     "[assembly: My.AssemblyComment(\"\")]",
     "[assembly: My.AssemblyComment(\"c\")]",
     {{u"AssemblyComment", u"c"}}},
};

const TCase Conditions[] = {
    {"a symbol of the file", CSharp, "#define A\n#if A && !B || A\n[assembly: AssemblyTitle(\"o\")]\n#endif",
     "#define A\n#if A && !B || A\n[assembly: AssemblyTitle(\"N\")]\n#endif"},
    {"the other branch", CSharp,
     "#if (true)\n[assembly: AssemblyTitle(\"o\")]\n#elif X\n[assembly: "
     "AssemblyTitle(\"p\")]\n#else\n[assembly: AssemblyTitle(\"q\")]\n#endif",
     "#if (true)\n[assembly: AssemblyTitle(\"N\")]\n#elif X\n[assembly: "
     "AssemblyTitle(\"p\")]\n#else\n[assembly: "
     "AssemblyTitle(\"q\")]\n#endif"},
    {"inside the argument", CSharp, "[assembly: AssemblyTitle(\n#if X\n\"o\"\n#else\n\"p\"\n#endif\n)]", ""},
    {"a header's own guard", Cpp, "#ifndef H\n#define H\n[assembly:AssemblyTitle(\"o\")];\n#endif",
     "#ifndef H\n#define H\n[assembly:AssemblyTitle(\"N\")];\n#endif"},
    {"numbers compared", Cpp, "#define V 2\n#if V == 1\n[assembly:AssemblyTitle(\"o\")];\n#endif", ""},
    {"Visual Basic constants", VisualBasic,
     "#Const A = True\n#If A And Not False Then\n<Assembly: "
     "AssemblyTitle(\"o\")>\n#Else\n<Assembly: AssemblyTitle(\"p\")>\n#End If",
     "#Const A = True\n#If A And Not False Then\n<Assembly: AssemblyTitle(\"N\")>\n#Else\n<Assembly: "
     "AssemblyTitle(\"p\")>\n#End If"},
};

const TAssemblyInfoValues Nasty{{u"AssemblyTitle", u"\"\\\n*/?\?/"}};
const TCase Escapes[] = {
    {"C#", CSharp, "[assembly: AssemblyTitle(@\"\")]", R"x([assembly: AssemblyTitle("\"\\\n*/??/")])x",
     Nasty},
    {"C++", Cpp, "[assembly:AssemblyTitle(L\"\")];", R"x([assembly:AssemblyTitle(L"\"\\\n*/?\?/")];)x",
     Nasty},
    {"J#", JSharp, "/** @assembly AssemblyTitle(\"\") */",
     R"x(/** @assembly AssemblyTitle("\"\\\n*\057??/") */)x", Nasty},
    {"F#", FSharp, "[<assembly: AssemblyTitle(\"\")>]", R"x([<assembly: AssemblyTitle("\"\\\n*/??/")>])x",
     Nasty},
    {"Visual Basic", VisualBasic, "<Assembly: AssemblyTitle(\"\")>",
     R"x(<Assembly: AssemblyTitle("""\" & Microsoft.VisualBasic.ChrW(10) & "*/??/")>)x", Nasty},
};

TEST(AssemblyInfo, ChangesEverySpelling) {
  std::ranges::for_each(Spellings, Check);
}

TEST(AssemblyInfo, LeavesAloneWhatIsNoAttributeOfTheAssembly) {
  for (TCase row : Elsewhere) {
    const TCase* usual = std::ranges::find(Spellings, row.Language, &TCase::Language);
    row.Expected = usual->Expected + "\n" + row.Source;
    row.Source.insert(0, usual->Source + "\n");
    Check(row);
  }
}

TEST(AssemblyInfo, AddsWhatIsMissing) {
  std::ranges::for_each(Additions, Check);
  for (const std::string name :
       {"Title", "Description", "Configuration", "Company", "Product", "Copyright", "Trademark", "Culture",
        "Version", "FileVersion", "DefaultAlias", "InformationalVersion"}) {
    const std::string attribute = "Assembly" + name;
    Check({attribute.c_str(),
           CSharp,
           "",
           "[assembly: System.Reflection." + attribute + "(\"1.0\")]\r\n",
           {{text::FromAscii(attribute), u"1.0"}}});
  }
}

TEST(AssemblyInfo, DecidesConditionsThatTheFileDecides) {
  std::ranges::for_each(Conditions, Check);
}

TEST(AssemblyInfo, EscapesAsTheLanguageWants) {
  std::ranges::for_each(Escapes, Check);
}

TEST(AssemblyInfo, KeepsEncodingAndStrayBytes) {
  const TAssemblyInfoValues copyright{{u"AssemblyTitle", u"\u00A9"}};
  const auto utf16 = [](std::u16string_view text) { return "\xFF\xFE" + text::ToUtf16LE(text); };
  const auto swapped = [](std::string bytes) {
    for (std::size_t i = 0; i < bytes.size(); i += 2)
      std::swap(bytes[i], bytes[i + 1]);
    return bytes;
  };
  const std::string little = utf16(u"// \u20AC\n[assembly: AssemblyTitle(\"\")]");
  const std::string stamped = utf16(u"// \u20AC\n[assembly: AssemblyTitle(\"\u00A9\")]");
  const TCase cases[] = {
      {"ANSI", CSharp, "// \xE9\n[assembly: AssemblyTitle(\"\x93\")]",
       "// \xE9\n[assembly: AssemblyTitle(\"\xA9\")]", copyright},
      {"UTF-8", CSharp, "// \u20AC\n[assembly: AssemblyTitle(\"\")]",
       "// \u20AC\n[assembly: AssemblyTitle(\"\u00A9\")]", copyright},
      {"ASCII becomes UTF-8", CSharp, "[assembly: AssemblyTitle(\"\")]",
       "[assembly: AssemblyTitle(\"\u00A9\")]", copyright},
      {"a mark with stray bytes behind it", CSharp,
       "\xEF\xBB\xBF// \xFF\xE2\x82 \U0001F600\n[assembly: AssemblyTitle(\"\xE9\")]\xC3",
       "\xEF\xBB\xBF// \xFF\xE2\x82 \U0001F600\n[assembly: AssemblyTitle(\"\u00A9\")]\xC3", copyright},
      {"a comment that ends in half a character", Cpp, "// \x95\\\n[assembly:AssemblyTitle(\"\")];",
       "// \x95\\\n[assembly:AssemblyTitle(\"\xA9\")];", copyright},
      {"UTF-16", CSharp, little, stamped, copyright},
      {"UTF-16 with half a character behind it", CSharp, little + "x", stamped + "x", copyright},
      {"UTF-16 with high bytes first", CSharp, swapped(little), swapped(stamped), copyright},
  };
  std::ranges::for_each(cases, Check);
}

TEST(AssemblyInfo, NamesTheLineOfEachExpression) {
  for (const std::string end : {"\n", "\r\n", "\r"}) {
    const std::string source = "//" + end + "[assembly: AssemblyProduct(A + B)]" + end + end +
                               "[assembly: AssemblyTitle(A + B)]" + end + "[assembly: AssemblyTitle(A + B)]";
    const auto messages =
        RewriteAssemblyInfo(source, CSharp, {{u"AssemblyTitle", u"N"}, {u"AssemblyProduct", u"N"}}).Messages;
    std::vector<std::u16string> lines;
    for (const auto& message : messages)
      lines.push_back(message.substr(message.find(u"line "), 6));
    EXPECT_EQ(lines, (std::vector<std::u16string>{u"line 4", u"line 5", u"line 2"})) << end.size();
  }
}

TEST(AssemblyInfo, RefusesWhatItCannotKeepWhole) {
  const auto message = [](std::string_view bytes, std::u16string value) {
    try {
      RewriteAssemblyInfo(bytes, CSharp, {{u"AssemblyTitle", std::move(value)}});
    } catch (const EKxException& error) {
      return std::string(error.what());
    }
    return std::string();
  };
  EXPECT_NE(message("// \xE9\n", u"\u4E2D").find("the ANSI code page"), std::string::npos);
  EXPECT_NE(message("", u"\xD800").find("UTF-8"), std::string::npos);
  EXPECT_NE(message("/* never closed", u"x").find("not closed"), std::string::npos);
  EXPECT_NE(message(std::string("c\0l\0", 4), u"x").find("is not text"), std::string::npos);
  EXPECT_NE(
      message("\n[assembly: AssemblyTitle(\"\x83\x5C\"\n)]", u"x").find("line 2 is not closed; if the file"),
      std::string::npos);
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

class TStamp : public IAssemblyInfoCallback {
public:
  std::vector<std::string> Log;
  void OnProcessFile(std::u16string_view /*fileName*/, IAssemblyInfoAttributes& updater) override {
    updater.SetAttribute(u"AssemblyTitle", u"first");
    updater.SetAttribute(u"AssemblyVersion", u"1.2..");
    updater.SetAttribute(u"AssemblyTitle", u"N");
  }
  void AssemblyInfoProcessEntry(std::u16string_view name, std::u16string_view value) override {
    Log.push_back(text::ToUtf8(name) + "=" + text::ToUtf8(value));
  }
  void AssemblyInfoProcessMessage(std::u16string_view text) override {
    const std::size_t name = text.find(u"AssemblyInfo.CS: ");
    Log.push_back(text::ToUtf8(text.substr(name, text.find(u"in line") - name)));
  }
};

TEST(AssemblyInfo, WritesTheFileOnceAndReports) {
  const tests::TTemporaryFolder folder;
  const std::string old = "[assembly: AssemblyTitle(Names.Title)]\n";
  const std::u16string path = folder.Write("AssemblyInfo.CS", old);
  TStamp stamp;
  const auto updater = TBrannicAssemblyInfo::Create();
  updater->SetCallback(stamp);
  updater->ProcessFile(path, false);
  EXPECT_EQ(*platform::ReadFile(path), old);
  updater->ProcessFile(path, true);
  EXPECT_EQ(*platform::ReadFile(path),
            "[assembly: AssemblyTitle(\"N\")]\n[assembly: AssemblyVersion(\"1.2\")]\n");
  const std::string said = "AssemblyInfo.CS: the expression Names.Title ";
  EXPECT_EQ(stamp.Log, (std::vector<std::string>{said, "AssemblyTitle=N", "AssemblyVersion=1.2", said,
                                                 "AssemblyTitle=N", "AssemblyVersion=1.2"}));
  // Nothing to change: a file that cannot be written is no obstacle.
  std::filesystem::permissions(folder.Native("AssemblyInfo.CS"), std::filesystem::perms::owner_read);
  EXPECT_NO_THROW(updater->ProcessFile(path, true));
  EXPECT_THROW(updater->ProcessFile(folder.Path("missing.vb"), true), EKxException);
}

// Cut, doubled and shuffled pieces of all the sources above: whatever becomes of them, stamping again must
// change nothing.
TEST(AssemblyInfo, IsStableOnMutatedFiles) {
  std::vector<TCase> sources(std::begin(Additions), std::end(Additions));
  sources.insert(sources.end(), std::begin(Spellings), std::end(Spellings));
  sources.insert(sources.end(), std::begin(Conditions), std::end(Conditions));
  sources.insert(sources.end(), std::begin(Elsewhere), std::end(Elsewhere));
  std::minstd_rand random(20100412);
  const auto below = [&random](std::size_t limit) { return limit == 0 ? 0 : random() % limit; };
  int stamped = 0;
  for (int round = 0; round < 3000; ++round) {
    const TCase& row = sources[below(sources.size())];
    std::string source = row.Source + "\n" + sources[below(sources.size())].Source;
    for (std::size_t change = below(4) + 1; change > 0; --change) {
      const std::string piece = source.substr(below(source.size()), below(9));
      source.replace(below(source.size()), below(3), piece);
    }
    try {
      const std::string once = RewriteAssemblyInfo(source, row.Language, Nasty).Bytes;
      ASSERT_EQ(RewriteAssemblyInfo(once, row.Language, Nasty).Bytes, once) << source;
      ++stamped;
    } catch (const EKxException&) { // beyond what can be stamped
    }
  }
  EXPECT_GT(stamped, 2000);
}

} // namespace
} // namespace kx
