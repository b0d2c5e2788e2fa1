#include "package/versioninfo/KxRCVersionInfo.h"

#include "foundation/text/Exceptions.h"
#include "tests/support/Failure.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kx {
namespace {

// The values that were read in one line, or the message of the refusal.
std::string Read(std::string_view script) {
  const tests::TTemporaryFolder folder;
  folder.Write("app.rc", script);
  const auto container = std::make_shared<TVersionInfoContainer>();
  try {
    GetVersionInfoParser(container, folder.Path("app.rc"))->Parse();
  } catch (const EKxParseError& error) {
    return std::string(error.what()) + " @" + std::to_string(error.Line());
  }
  const TVersionInfoValues& v = container->Values();
  std::string out;
  for (const auto number : {v.MajorVersion, v.MinorVersion, v.ReleaseVersion, v.BuildVersion})
    out += std::to_string(number) + ".";
  for (const auto& [flag, letter] : {std::pair(v.IsDebug, 'D'),
                                     {v.IsPreRelease, 'R'},
                                     {v.IsSpecial, 'S'},
                                     {v.IsPrivate, 'P'},
                                     {v.IsDLL, 'L'}})
    if (flag) out += letter;
  out += " " + std::to_string(v.Locale) + "/" + std::to_string(v.CodePage);
  for (const auto& line : v.Strings)
    out += " " + text::ToUtf8(line);
  return out;
}

TEST(ResourceScriptReader, ReadsWhatResourceEditorsWrite) {
  const std::tuple<const char*, const char*, const char*> cases[] = {
      {"no version block", "1 ICON \"a.ico\"\nBEGIN\nBEGIN\n", "0.0.0.0. 1033/1252"},
      {"a quoted word opens nothing", "X \"VERSIONINFO\"\nFILEVERSION 1,2,3,4\n", "0.0.0.0. 1033/1252"},
      {"bare commas", "1 VERSIONINFO\n FileVersion 1,-2,3,4\n", "1.-2.3.4. 1033/1252"},
      {"blanks after the commas", "1 VERSIONINFO\nFILEVERSION 1, 2, 3, 4\n", "0.0.0.0. 1033/1252"},
      {"two hexadecimal digits", "1 VERSIONINFO\nFILEFLAGSMASK 0x17L\nFILEFLAGS 0x3fL\nFILETYPE 0x2\n",
       "0.0.0.0.DRSPL 1033/1252"},
      {"one digit and a suffix", "1 VERSIONINFO\nFILEFLAGS 0x1L\nFILETYPE 0x2L\n", "0.0.0.0. 1033/1252"},
      {"header after the block began", "1 VERSIONINFO\nBEGIN\nFILEOS 4\n", "Unexpected FILEOS @3"},
      {"product version anywhere", "1 VERSIONINFO\nBEGIN\nPRODUCTVERSION 1\nEND\n", "0.0.0.0. 1033/1252"},
      {"second begin", "1 VERSIONINFO\nBEGIN\nBEGIN\n", "Unexpected BEGIN @3"},
      {"end before begin", "1 VERSIONINFO\nEND\n", "Unexpected END @2"},
      {"strings, then the translation",
       "1 VERSIONINFO\nBEGIN\nBLOCK \"StringFileInfo\"\nBEGIN\nBLOCK \"040904b0\"\nBEGIN\n"
       "VALUE \"A\", \"x\\0\"\n  VALUE \"B\", NAME\nEND\nEND\nBLOCK \"VarFileInfo\"\nBEGIN\n"
       "VALUE \"Translation\", 0x40c, 1250\nEND\nEND\n",
       "0.0.0.0. 1036/1250 A=x B="},
      {"a block among values",
       "1 VERSIONINFO\nBEGIN\nBLOCK \"StringFileInfo\"\nBEGIN\nVALUE \"A\", \"x\"\nBLOCK \"b\"\n",
       "Unexpected BLOCK @6"},
      {"translation first hides the strings",
       "1 VERSIONINFO\nBEGIN\nBLOCK \"VarFileInfo\"\nBEGIN\nVALUE \"Translation\", 0409, 1252\nEND\n"
       "BLOCK \"StringFileInfo\"\nBEGIN\nVALUE \"A\", \"x\"\nEND\nEND\n",
       "0.0.0.0. 409/1252"},
      {"upper-case digits end the locale",
       "1 VERSIONINFO\nBEGIN\nBLOCK \"VarFileInfo\"\nBEGIN\nVALUE \"Translation\", 0x040C, 1252\n",
       "0.0.0.0. 64/1252"},
      {"two blanks before Translation",
       "1 VERSIONINFO\nBEGIN\nBLOCK \"VarFileInfo\"\nBEGIN\nVALUE  \"Translation\", 0x409, 1252\n",
       "Unable to parse file @4"},
  };
  for (const auto& [name, script, expected] : cases)
    EXPECT_EQ(Read(script), expected) << name;
}

TEST(ResourceScriptReader, NamesAFileThatItCannotRead) {
  const auto parser = GetVersionInfoParser(std::make_shared<TVersionInfoContainer>(), u"/nowhere/app.rc");
  EXPECT_NE(tests::FailureOf([&] { parser->Parse(); }).find("app.rc"), std::string::npos);
}

} // namespace
} // namespace kx
