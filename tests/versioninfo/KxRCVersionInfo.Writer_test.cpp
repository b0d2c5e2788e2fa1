#include "package/versioninfo/KxRCVersionInfo.h"

#include "foundation/text/Exceptions.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kx {
namespace {

class ResourceScriptWriter : public testing::Test {
protected:
  std::string Content() const { return folder_.Read("app.rc"); }

  // Parses and saves, with a new text of this name as far as one is given; the new content, where "<>" stands
  // for the block, or the refusal.
  std::string Stamp(std::string_view script, std::u16string_view name = {}, std::u16string_view text = {}) {
    folder_.Write("app.rc", script);
    const auto container = std::make_shared<TVersionInfoContainer>();
    const auto parser = GetVersionInfoParser(container, folder_.Path("app.rc"));
    try {
      parser->Parse();
      if (!name.empty()) SetVersionText(container->Values(), name, text);
      losses_ = folder_.Plain(text::ToUtf8(parser->FindLosses(*container).GetText()));
      EXPECT_TRUE(parser->Save(*container));
    } catch (const EKxParseError& error) {
      EXPECT_EQ(Content(), script);
      return error.what();
    }
    warnings_ = text::ToUtf8(parser->GetWarnings().GetText());
    text::TStringList block{VersionBlockHeader};
    TVersionInfo::GenerateVersionInfoRC(*container, block, false);
    std::string content = Content();
    const std::string expected = text::ToUtf8(block.GetText());
    const std::size_t at = content.find(expected);
    return at == std::string::npos ? content : content.replace(at, expected.size(), "<>");
  }

  tests::TTemporaryFolder folder_;
  std::string warnings_;
  std::string losses_; // said before the file was written
};

TEST_F(ResourceScriptWriter, ReplacesTheBlockAndKeepsTheRestAndTheFirstOriginal) {
  using namespace std::string_view_literals;
  static constexpr std::tuple<const char*, std::string_view, std::string_view> cases[] = {
      {"no block", "// a\n1 ICON \"a.ico\"", "// a\r\n1 ICON \"a.ico\"\r\n<>"},
      {"a block between others",
       "a\n1 VERSIONINFO\nFILEOS 4\nBEGIN\n// gone\nBLOCK \"x\"\nBEGIN\nEND\nEND\nb\n", "a\r\n<>b\r\n"},
      {"a second block stays", "1 VERSIONINFO\nBEGIN\nEND\n2 VERSIONINFO\nBEGIN\nBEGIN\n",
       "<>2 VERSIONINFO\r\nBEGIN\r\nBEGIN\r\n"},
      {"a block without end", "a\r\n1 VERSIONINFO\r\nBEGIN\r\nb\r\n", "a\r\n<>"},
      {"UTF-16 becomes ANSI", "\xFF\xFE\xE9\0\x1D\x04\n\0"sv, "\xE9?\r\n<>"},
      {"bytes of the code page stay", "\xE9\x81\xFF\n", "\xE9\x81\xFF\r\n<>"},
      {"one begin too many", "1 VERSIONINFO\nBEGIN\nBEGIN\n", "Unexpected BEGIN"},
      {"an end without begin", "1 VERSIONINFO\nEND\n", "Unexpected END"},
  };
  for (const auto& [name, script, expected] : cases)
    EXPECT_EQ(Stamp(script), expected) << name;
  EXPECT_EQ(folder_.Read("app.rc.orig"), std::get<1>(cases[0])) << "the file before the first rewriting";
}

TEST_F(ResourceScriptWriter, WarnsWhereWindowsWillNotSeeTheVersion) {
  folder_.Write("own/all.h", "// x\r\n# include \"Deeper.h\"\n");
  folder_.Write("deeper.h", "/* */\n#define VS_VERSION_INFO 1\n#include \"deeper.h\"\n");
  const std::string block = "1 VERSIONINFO\nBEGIN\nEND\n";
  const std::pair<std::string, bool> cases[] = {
      {"#include \"afxres.h\"\n" + block, false},
      {" #  include <sys/WINVER.H> // x\n" + block, false},
      {"#include \"own\\all.h\"\n" + block, false},
      {block + "#include <winver.h>\n", true},
      {"\"#include \"\"afxres.h\"\"\"\n" + block, true},
      {"/*\n#include <winver.h>\n*/\n#include \"missing.h\"\n" + block, true},
  };
  for (const auto& [script, warned] : cases) {
    Stamp(script);
    EXPECT_EQ(warnings_.starts_with("Warning : "), warned) << script << warnings_;
  }
  Stamp("\xEF\xBB\xBF#include <winver.h>\n\xD0\xAF\xF0\x9F\x98\x80\n");
  EXPECT_TRUE(warnings_.starts_with("Warning : 2 characters of ")) << warnings_;
  EXPECT_TRUE(warnings_.ends_with("is kept in app.rc.orig2.\r\n")) << "the first copy is another script";
}

// A block as the generator writes it, with something in place of `from`.
std::string Block(std::string_view from = {}, std::string_view to = {}) {
  std::string block =
      "#include <winver.h>\r\n1 VERSIONINFO\r\n FILEVERSION 1,2,3,4\r\n PRODUCTVERSION 1,2,3,4\r\n "
      "FILEFLAGSMASK VS_FFI_FILEFLAGSMASK\r\n FILEFLAGS 0x00\r\n FILEOS 0x40004L\r\n FILETYPE VFT_APP\r\n "
      "FILESUBTYPE 0x0L\r\nBEGIN\r\n BLOCK \"StringFileInfo\"\r\n BEGIN\r\n  BLOCK \"040904E4\"\r\n  "
      "BEGIN\r\n   VALUE \"CompanyName\", \"We\\0\"\r\n  END\r\n END\r\n BLOCK \"VarFileInfo\"\r\n BEGIN\r\n "
      " VALUE \"Translation\", 0x409, 1252\r\n END\r\nEND\r\n// behind\r\n";
  if (!from.empty()) block.replace(block.find(from), from.size(), to);
  return block;
}

TEST_F(ResourceScriptWriter, SaysBeforehandWhatRewritingLoses) {
  const auto check = [this](const char* name, const std::string& script, const std::string& loss) {
    Stamp(script);
    const std::string said = loss.empty() ? "" : "Warning : DIR/app.rc: stamping " + loss;
    EXPECT_TRUE(losses_.starts_with(said) && losses_.empty() == said.empty()) << name << "\n" << losses_;
    Stamp(Content());
    EXPECT_EQ(losses_, "") << name << ", again";
  };
  const std::tuple<const char*, const char*, const char*, const char*> cases[] = {
      {"what compiles to the same", "", "", ""},
      {"numbers with blanks", "FILEVERSION 1,2,3,4", "FILEVERSION 1, 2, 3, 4",
       "changes FILEVERSION 1, 2, 3, 4 to 0, 0, 0, 0, PRODUCTVERSION 1, 2, 3, 4 to 0, 0, 0, 0 in"},
      {"a macro for a number", "1,2,3,4", "APP_VERSION", "changes FILEVERSION APP_VERSION to 0, 0, 0, 0,"},
      {"a file type", "VFT_APP", "0x2L", "changes FILETYPE 0x2L to 0x1L in"},
      {"a system", "0x40004L", "VOS__WINDOWS32", "changes FILEOS VOS__WINDOWS32 to 0x40004L in"},
      {"a macro for a text", R"("We\0")", R"(COMPANY "\0")",
       R"x(loses the texts CompanyName (COMPANY "\0");)x"},
      {"a wide text", "\"We", "L\"We", R"x(loses the texts CompanyName (L"We\0");)x"},
      {"doubled quotation marks", "We", "\"\"We\"\"", R"x(loses the texts CompanyName ("""We""\0");)x"},
      {"a text in the next line", "Name\", ", "Name\",\r\n", R"x(loses the texts CompanyName ("We\0");)x"},
      {"a further language", "  END\r\n END",
       "  END\r\n BLOCK \"040704e4\"\r\n BEGIN\r\n VALUE \"A\", \"b\"\r\n END\r\n END",
       "loses the language 040704e4 of"},
      {"a language that the translation does not say", "040904E4", "040704b0",
       "loses the language 040704b0 of"},
      {"more translations", "1252", "1252, 0x407, 1252",
       "changes Translation 0x409, 1252, 0x407, 1252 to 0x409, 1252 in"},
      {"the translation first", " BLOCK \"Str",
       " BLOCK \"VarFileInfo\"\r\nBEGIN\r\nVALUE \"Translation\", 0x409, 1252\r\nEND\r\n BLOCK \"Str",
       R"x(loses the texts CompanyName ("We\0");)x"},
      {"comments and conditions", " FILEFLAGS ", "#ifdef X // c\r\n#endif\r\n FILEFLAGS ",
       "loses #ifdef X // c, #endif of"},
  };
  for (const auto& [name, from, to, loss] : cases)
    check(name, Block(from, to), loss);
  check("braces", "1 VERSIONINFO\r\n{\r\n}\r\n2 ICON \"a.ico\"\r\n",
        "loses lines 4 to 4, which stand behind the end of");
  check("a double-byte character before a digit", "#pragma code_page(932)\r\n" + Block("We\\0", "\x94\\0"),
        "loses the texts CompanyName (");
  Stamp(Block("\"We", "L\"We"), u"CompanyName", u"They");
  EXPECT_EQ(losses_, "") << "asked for";
}

TEST_F(ResourceScriptWriter, KeepsUtf8ThatAPragmaAsksFor) {
  const std::string script = "#pragma code_page(65001)\r\n// \u042F\r\n" + Block();
  const std::string stamped = "\u042F\r\n#include <winver.h>\r\n<>// behind\r\n";
  for (const std::string mark : {"", "\xEF\xBB\xBF"}) {
    EXPECT_EQ(Stamp(mark + script, u"Comments", u"\u20AC"),
              mark + "#pragma code_page(65001)\r\n// " + stamped);
    EXPECT_EQ(warnings_ + losses_, "");
  }
  Stamp("#pragma code_page(65001)\r\n// \xE9\r\n" + Block());
  EXPECT_TRUE(losses_.starts_with("Warning : DIR/app.rc is not in UTF-8")) << losses_;
  Stamp("#pragma code_page(1251)\r\n" + Block(), u"Comments", u"\u00E9");
  EXPECT_TRUE(losses_.starts_with("Warning : DIR/app.rc: stamping writes characters")) << losses_;
}

// What cannot stand in a line is written so that the script compiles, and reads back the same.
TEST_F(ResourceScriptWriter, WritesControlCharactersAsEscapes) {
  const std::u16string text = u"a\r\nb\tc\x01\\d";
  Stamp(Block(), u"Comments", text);
  const std::string once = Content();
  EXPECT_NE(once.find(R"(VALUE "Comments", "a\r\nb\tc\001\\d")"), std::string::npos) << once;
  Stamp(once, u"Comments", text);
  EXPECT_EQ(Content(), once);
}

TEST_F(ResourceScriptWriter, DoublesABackslashAtTheEndOfATextUnlessItIsHalfACharacter) {
  for (const auto& [end, kept] : {std::pair("\x83\x5C", "\x83\x5C"), {"We\\", "We\\\\"}}) {
    Stamp(Block("We\\0", end));
    EXPECT_NE(Content().find(std::string("VALUE \"CompanyName\", \"") + kept + "\"\r\n"), std::string::npos)
        << Content();
  }
}

} // namespace
} // namespace kx
