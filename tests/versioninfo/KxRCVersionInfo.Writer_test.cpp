#include "versioninfo/KxRCVersionInfo.h"

#include "host/Exceptions.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <iterator>

namespace kx {
namespace {

class ResourceScriptWriter : public testing::Test {
protected:
  std::string Content(std::string_view name = "app.rc") const {
    std::ifstream file(folder_.Native(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

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

TEST_F(ResourceScriptWriter, ReplacesTheBlockAndNothingElse) {
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
  for (const auto& row : cases) {
    EXPECT_EQ(Stamp(row.Script), row.Expected) << row.Name;
    std::filesystem::remove(folder_.Native("app.rc.orig"));
  }
}

TEST_F(ResourceScriptWriter, KeepsTheFirstOriginalAndChangesNothingTheSecondTime) {
  const std::string script =
      "#include <winver.h>\n1 VERSIONINFO\nBEGIN\nBLOCK \"StringFileInfo\"\nBEGIN\n"
      "BLOCK \"0\"\nBEGIN\nVALUE \"SpecialBuild\", \"C:\\\\x\\251 \\\"\nEND\nEND\nEND\n";
  static_cast<void>(Stamp(script));
  const std::string once = Content();
  EXPECT_NE(once.find("VALUE \"SpecialBuild\", \"C:\\\\x\\251 \\\\\""), std::string::npos) << once;
  static_cast<void>(Stamp(once));
  EXPECT_EQ(Content(), once);
  EXPECT_EQ(Content("app.rc.orig"), script);
}

TEST_F(ResourceScriptWriter, WarnsWhereWindowsWillNotSeeTheVersion) {
  static_cast<void>(folder_.Write("own/all.h", "// x\r\n# include \"Deeper.h\"\n"));
  static_cast<void>(folder_.Write("deeper.h", "/* */\n#define VS_VERSION_INFO 1\n"));
  static_cast<void>(folder_.Write("loop.h", "#include \"loop.h\"\n"));
  const std::string block = "1 VERSIONINFO\nBEGIN\nEND\n";
  for (const std::string& seen :
       {"#include \"afxres.h\"\n" + block, " #  include <sys/WINVER.H> // x\n" + block,
        "#include \"own\\all.h\"\n" + block}) {
    static_cast<void>(Stamp(seen));
    EXPECT_EQ(warnings_, "") << seen;
  }
  for (const std::string& hidden :
       {block, block + "#include <winver.h>\n", "\"#include \"\"afxres.h\"\"\"\n" + block,
        "/*\n#include <winver.h>\n*/\n" + block, "#include \"loop.h\"\n#include \"missing.h\"\n" + block}) {
    static_cast<void>(Stamp(hidden));
    EXPECT_NE(warnings_.find("Warning : "), std::string::npos) << hidden;
  }
  static_cast<void>(Stamp("\xEF\xBB\xBF#include <winver.h>\n\xD0\xAF\xF0\x9F\x98\x80\n"));
  EXPECT_EQ(warnings_.rfind("Warning : 2 characters of ", 0), 0U) << warnings_;
}

} // namespace
} // namespace kx
