#include "program/runner/DotNetInfo.h"

#include "foundation/text/Text.h"

#include <gtest/gtest.h>

namespace kx::tests {
namespace {

TEST(DotNetInfo, FindsTheFolderOfEachFrameworkWhereTheMachineKeepsIt) {
  constexpr std::u16string_view tools = u"SOFTWARE\\Microsoft\\MSBuild\\ToolsVersions\\4.0 MSBuildToolsPath";
  constexpr std::u16string_view root = u"SOFTWARE\\Microsoft\\.NETFramework InstallRoot";
  using TTexts = std::map<std::u16string, std::u16string>;
  const struct {
    const char* Case;
    bool IsWindows;
    std::u16string_view Version;
    std::u16string Option;
    TTexts Machine; // registry values, variables, programs and files
    std::u16string Folder;
  } rows[] = {
      {"the option", false, u"v4.0", u"/own", {}, u"/own"},
      {"the option of a version that is not known", true, u"v9", u"C:\\own", {}, u"C:\\own"},
      {"no such version", false, u"v9", u"", {{u"dotnet", u"/bin/dotnet"}}, u""},
      {"nothing", false, u"v4.0", u"", {}, u""},
      {"dotnet", false, u"V4.0", u"", {{u"dotnet", u""}}, u"/program"},
      {"msbuild", false, u"v2.0", u"", {{u"msbuild", u""}}, u"/program"},
      {"xbuild", false, u"v3.5", u"", {{u"xbuild", u""}}, u"/program"},
      {"a tool by its variable", false, u"v3.5", u"", {{u"KX_MSBUILD", u"/x"}}, u"/program"},
      {"an empty variable", false, u"v3.5", u"", {{u"KX_MSBUILD", u""}}, u""},
      {"Windows asks no search path", true, u"v4.0", u"", {{u"dotnet", u""}}, u""},
      {"MSBuild's own entry",
       true,
       u"v4.0",
       u"",
       {{std::u16string(tools), u"C:\\m"}, {u"C:\\m\\MSBuild.exe", u""}, {std::u16string(root), u"C:\\f"}},
       u"C:\\m"},
      {"an entry without a program",
       true,
       u"v4.0",
       u"",
       {{std::u16string(tools), u"C:\\m"},
        {std::u16string(root), u"C:\\f"},
        {u"C:\\f\\v4.0.30319\\MSBuild.exe", u""}},
       u"C:\\f\\v4.0.30319"},
      {"beside the others, 2.0",
       true,
       u"v2.0",
       u"",
       {{std::u16string(root), u"C:\\f"}, {u"C:\\f\\v2.0.50727\\MSBuild.exe", u""}},
       u"C:\\f\\v2.0.50727"},
      {"beside the others, 3.5",
       true,
       u"v3.5",
       u"",
       {{std::u16string(root), u"C:\\f"}, {u"C:\\f\\v3.5\\MSBuild.exe", u""}},
       u"C:\\f\\v3.5"},
      {"nowhere", true, u"v3.5", u"", {{std::u16string(root), u"C:\\f"}}, u""},
      {"an empty root", true, u"v3.5", u"", {{std::u16string(root), u""}, {u"v3.5\\MSBuild.exe", u""}}, u""},
  };
  for (const auto& row : rows) {
    TOptionsStore store;
    if (!row.Option.empty())
      store.Override(std::u16string(u"DotNetFramework.") + std::u16string(row.Version) + u"=" + row.Option);
    const auto find = [&row](std::u16string_view name) -> std::optional<std::u16string> {
      const auto found = row.Machine.find(std::u16string(name));
      return found == row.Machine.end() ? std::nullopt : std::optional(found->second);
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
