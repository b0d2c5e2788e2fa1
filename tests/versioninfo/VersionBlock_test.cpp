#include "package/versioninfo/VersionBlock.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"

#include <gtest/gtest.h>

namespace kx {
namespace {

text::TStringList Lines(std::string_view script) {
  text::TStringList lines;
  lines.SetText(text::FromUtf8(script));
  return lines;
}

// "NAME value" of the head; "[language]"; "name=value" of the texts; "+extra"; a line end within a value is
// "^".
std::string Content(std::string_view block, bool doubleByte = false) {
  const TVersionBlockContent content =
      ReadVersionBlockContent(Lines("1 VERSIONINFO\n" + std::string(block)), doubleByte);
  std::u16string shown;
  for (const auto& [name, written, value] : content.Head)
    shown += name + u" " + value + u" ";
  for (const auto& language : content.Languages)
    shown += u"[" + language + u"] ";
  for (const auto& [name, written, value] : content.Texts)
    shown += name + u"=" + text::ReplaceAll(value, u"\n", u"^") + u" ";
  for (const auto& extra : content.Extras)
    shown += u"+" + extra + u" ";
  return text::ToUtf8(shown);
}

std::string Strings(const std::string& values) {
  return "BEGIN\nBLOCK \"StringFileInfo\"\nBEGIN\nBLOCK \"040904E4\"\nBEGIN\n" + values + "\nEND\nEND\nEND\n";
}

// The numbers are those of the system's headers.
TEST(VersionBlockContent, IsWhatAResourceCompilerMakesOfIt) {
  const std::tuple<const char*, std::string, std::string_view> rows[] = {
      {"flags", "FILEFLAGSMASK VS_FFI_FILEFLAGSMASK\nFILEFLAGS VS_FF_DEBUG|VS_FF_PATCHED",
       "FILEFLAGSMASK 63 FILEFLAGS 5 "},
      {"each flag",
       "FILEFLAGS VS_FF_DEBUG, VS_FF_PRERELEASE, VS_FF_PATCHED, VS_FF_PRIVATEBUILD, VS_FF_INFOINFERRED, "
       "VS_FF_SPECIALBUILD",
       "FILEFLAGS 1,2,4,8,16,32 "},
      {"systems",
       "FILEOS VOS_UNKNOWN, VOS_DOS, VOS_NT, VOS__WINDOWS16, VOS__WINDOWS32, VOS_DOS_WINDOWS16, "
       "VOS_DOS_WINDOWS32, VOS_NT_WINDOWS32",
       "FILEOS 0,65536,262144,1,4,65537,65540,262148 "},
      {"types",
       "FILETYPE VFT_UNKNOWN, VFT_APP, VFT_DLL, VFT_DRV, VFT_FONT, VFT_VXD, VFT_STATIC_LIB\nFILESUBTYPE "
       "VFT2_UNKNOWN",
       "FILETYPE 0,1,2,3,4,5,7 FILESUBTYPE 0 "},
      {"forms of numbers", "FILEVERSION 0x1F, 0XaL, 7UL, (1 | 2) + 4\nPRODUCTVERSION 4294967295",
       "FILEVERSION 31,10,7,7 PRODUCTVERSION 4294967295 "},
      {"what is no number", "FILEVERSION 1,  9a\nPRODUCTVERSION 1-2\nFILEOS 0x\nFILETYPE 99999999999",
       "FILEVERSION 1, 9a PRODUCTVERSION 1 - 2 FILEOS 0x FILETYPE 99999999999 "},
      {"memory options and others", "PURE DISCARDABLE X\nFILEOS 4", "FILEOS 4 +X "},
      {"texts, some with a NUL, joined or by name",
       Strings("VALUE \"A\", \"x\" \"y\\0z\"\nVALUE \"B\" L\"\"\"q\"\"\"\nVALUE \"C\", NAME\nVALUE D, \"d\""),
       "[040904e4] A=xy B=\"q\" C=^NAME D=d "},
      {"escapes", Strings(R"(VALUE "A", "\101\7\1012 \\ \" \t\x")"),
       "[040904e4] A=A\x07"
       "A2 \\ \" \\t\\x "},
      {"of the first language only",
       "{ BLOCK \"StringFileInfo\" { BLOCK \"A\" { VALUE \"A\", \"1\" } BLOCK \"B\" { VALUE \"A\", \"2\" } } "
       "}",
       "[a] [b] A=1 "},
      {"a translation in two numbers",
       "BEGIN\nBLOCK \"VarFileInfo\"\nBEGIN\nVALUE \"translation\", 0x409, 1252", "translation 1033,1252 "},
      {"each extra once, and only up to the end",
       "// a\n#if  1 \n/* b\n FILEOS 9 */ FILEOS 4 // c\n#if  1\nBEGIN\nodd END\n// d\n#endif",
       "FILEOS 4 +odd +comments +#if  1 "},
      {"a comment of some lines alone", "/* b\n FILEOS 9 */ FILEOS 4", "FILEOS 4 +comments "},
      {"comment marks within a text", Strings("VALUE \"A\", \"// /* \\\" #\""), "[040904e4] A=// /* \" # "},
  };
  for (const auto& [name, block, content] : rows)
    EXPECT_EQ(Content(block), content) << name;
  const std::string halves = Strings("VALUE \"A\", \"\xC3\xA9\\\" \"b\"");
  EXPECT_EQ(Content(halves, true), "[040904e4] A=\xC3\xA9\\b ");
  EXPECT_EQ(Content(halves), "[040904e4] A=\xC3\xA9\" ^b ");
}

} // namespace
} // namespace kx
