#include "versioninfo/KxRCVersionInfo.h"

#include "host/Exceptions.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <random>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size); // the fuzzer's; aborts

namespace kx {
namespace {

class ResourceScriptWriter : public testing::Test {
protected:
  std::string Content(std::string_view name = "app.rc") const { return folder_.Read(name); }

  // Parses and saves as it stands; the new content, where "<>" stands for the block, or the refusal.
  std::string Stamp(std::string_view script) {
    static_cast<void>(folder_.Write("app.rc", script));
    const auto container = std::make_shared<TVersionInfoContainer>();
    const auto parser = GetVersionInfoParser(container, folder_.Path("app.rc"));
    try {
      parser->Parse();
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
};

struct TCase {
  const char* Name;
  std::string_view Script;
  std::string_view Expected;
};

TEST_F(ResourceScriptWriter, ReplacesTheBlockAndKeepsTheRestAndTheFirstOriginal) {
  using namespace std::string_view_literals;
  static constexpr TCase cases[] = {
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
  for (const auto& row : cases)
    EXPECT_EQ(Stamp(row.Script), row.Expected) << row.Name;
  EXPECT_EQ(Content("app.rc.orig"), cases[0].Script) << "the file before the first rewriting";
}

TEST_F(ResourceScriptWriter, WarnsWhereWindowsWillNotSeeTheVersion) {
  static_cast<void>(folder_.Write("own/all.h", "// x\r\n# include \"Deeper.h\"\n"));
  static_cast<void>(folder_.Write("deeper.h", "/* */\n#define VS_VERSION_INFO 1\n#include \"deeper.h\"\n"));
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
    static_cast<void>(Stamp(script));
    EXPECT_EQ(warnings_.starts_with("Warning : "), warned) << script << warnings_;
  }
  static_cast<void>(Stamp("\xEF\xBB\xBF#include <winver.h>\n\xD0\xAF\xF0\x9F\x98\x80\n"));
  EXPECT_TRUE(warnings_.starts_with("Warning : 2 characters of ")) << warnings_;
}

TEST(MutatedResourceScripts, AreReadAndRewrittenOrRefused) {
  const std::string seed =
      "#include <a.h>\n1 VERSIONINFO\nFILEVERSION 1,2,3,4\nFILEFLAGS 0x3fL\nBEGIN\n"
      "BLOCK \"StringFileInfo\"\nBEGIN\nBLOCK \"0\"\nBEGIN\nVALUE \"A\", \"x\\0\"\nEND\nEND\n"
      "BLOCK \"VarFileInfo\"\nBEGIN\nVALUE \"Translation\", 0x409, 1252\nEND\nEND\n";
  static constexpr const char* pieces[] = {"\"",    "\\",      "\n", "VALUE \"B\", \"\\\"",
                                           "END\n", "BEGIN\n", "=",  ""};
  std::mt19937 random(1);
  for (int i = 0; i < 3000; ++i) {
    std::string script = seed;
    for (int edits = 0; edits < 4; ++edits)
      script.replace(random() % script.size(), random() % 6, pieces[random() % std::size(pieces)]);
    LLVMFuzzerTestOneInput(reinterpret_cast<const unsigned char*>(script.data()), script.size());
  }
}

} // namespace
} // namespace kx
