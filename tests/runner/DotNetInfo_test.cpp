#include "program/runner/DotNetInfo.h"

#include "foundation/text/Text.h"

#include <gtest/gtest.h>

namespace kx::tests {
namespace {

TEST(DotNetInfo, FindsTheFolderOfEachFrameworkWhereTheMachineKeepsIt) {
  constexpr std::u16string_view tools = u"SOFTWARE\\Microsoft\\MSBuild\\ToolsVersions\\4.0 MSBuildToolsPath=";
  constexpr std::u16string_view root = u"SOFTWARE\\Microsoft\\.NETFramework InstallRoot=";
  const std::u16string installed = std::u16string(root) + u"C:\\f";
  const std::u16string entry = installed + u"|" + std::u16string(tools) + u"C:\\m";
  const struct {
    const char* Case;
    std::u16string_view Version, Option;
    std::u16string Machine; // registry values, variables, programs and files
    std::u16string Folder;
    bool IsWindows = true;
  } rows[] = {
      {"the option", u"v4.0", u"/own", u"", u"/own", false},
      {"the option of a version that is not known", u"v9", u"C:\\own", u"", u"C:\\own"},
      {"no such version", u"v9", u"", u"dotnet=/bin/dotnet", u"", false},
      {"nothing", u"v4.0", u"", u"", u"", false},
      {"dotnet", u"V4.0", u"", u"dotnet=", u"/program", false},
      {"msbuild", u"v2.0", u"", u"msbuild=", u"/program", false},
      {"xbuild", u"v3.5", u"", u"xbuild=", u"/program", false},
      {"a tool by its variable", u"v3.5", u"", u"KX_MSBUILD=/x", u"/program", false},
      {"an empty variable", u"v3.5", u"", u"KX_MSBUILD=", u"", false},
      {"Windows asks no search path", u"v4.0", u"", u"dotnet=", u""},
      {"MSBuild's own entry", u"v4.0", u"", entry + u"|C:\\m\\MSBuild.exe=", u"C:\\m"},
      {"one without a program", u"v4.0", u"", entry + u"|C:\\f\\v4.0.30319\\MSBuild.exe=",
       u"C:\\f\\v4.0.30319"},
      {"beside the others, 2.0", u"v2.0", u"", installed + u"|C:\\f\\v2.0.50727\\MSBuild.exe=",
       u"C:\\f\\v2.0.50727"},
      {"beside the others, 3.5", u"v3.5", u"", installed + u"|C:\\f\\v3.5\\MSBuild.exe=", u"C:\\f\\v3.5"},
      {"nowhere", u"v3.5", u"", installed, u""},
      {"an empty root", u"v3.5", u"", std::u16string(root) + u"|v3.5\\MSBuild.exe=", u""},
  };
  for (const auto& row : rows) {
    TOptionsStore store;
    if (!row.Option.empty()) store.Set({u"DotNetFramework", std::u16string(row.Version)}, row.Option);
    const auto find = [&row](std::u16string_view name) -> std::optional<std::u16string> {
      for (const auto line : text::Split(row.Machine, u'|'))
        if (const auto at = line.find(u'='); line.substr(0, at) == name)
          return std::u16string(line.substr(at + 1));
      return std::nullopt;
    };
    const TDotNetMachine machine{
        row.IsWindows,
        u"/program",
        find,
        find,
        [&find](std::u16string_view key, std::u16string_view value) {
          return find(std::u16string(key) + u" " + std::u16string(value));
        },
        [&find](std::u16string_view path) { return find(text::ReplaceAll(path, u"/", u"\\")).has_value(); }};
    const auto folder = TDotNetInfo(store, machine).GetFrameworkDirectory(row.Version).value_or(u"");
    EXPECT_EQ(text::ReplaceAll(folder, row.IsWindows ? u"/" : u"?", u"\\"), row.Folder) << row.Case;
  }
}

} // namespace
} // namespace kx::tests
