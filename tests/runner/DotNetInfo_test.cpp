#include "runner/DotNetInfo.h"

#include "text/Encoding.h"

#include <gtest/gtest.h>

namespace kx::tests {
namespace {

TEST(DotNetInfo, AsksTheOptionThenTheMachine) {
  const struct {
    const char* Name;
    bool IsWindows;
    std::u16string_view Tool, Variable, Option, Version;
    std::optional<std::u16string> Folder;
  } cases[] = {
      {"an option counts everywhere", false, u"", u"", u"C:\\Fx", u"v4.0", u"C:\\Fx"},
      {"an option counts before the machine", true, u"", u"", u"C:\\Fx", u"v3.5", u"C:\\Fx"},
      {"the launcher, when it has a tool to run", false, u"xbuild", u"", u"", u"v2.0", u"/opt/kx"},
      {"any of the tools", false, u"dotnet", u"", u"", u"V3.5", u"/opt/kx"},
      {"the tool that the user names", false, u"", u"/my/msbuild", u"", u"v4.0", u"/opt/kx"},
      {"no tool", false, u"devenv", u"", u"", u"v4.0", std::nullopt},
      {"a version that nobody knows", false, u"xbuild", u"", u"", u"v9.9", std::nullopt},
      {"the registry", true, u"xbuild", u"x", u"", u"v3.5", u"C:\\Windows\\Fx35\\"},
      {"not in the registry", true, u"xbuild", u"x", u"", u"v2.0", std::nullopt},
  };
  for (const auto& row : cases) {
    TOptionsStore store;
    if (!row.Option.empty()) store.Set({u"DotNetFramework", std::u16string(row.Version)}, row.Option);
    TDotNetMachine machine;
    machine.IsWindows = row.IsWindows;
    machine.ProgramFolder = u"/opt/kx";
    machine.FindProgram = [&row](std::u16string_view program) {
      return program == row.Tool ? std::optional<std::u16string>(u"/usr/bin/tool") : std::nullopt;
    };
    machine.Environment = [&row](std::u16string_view name) {
      return name == u"KX_MSBUILD" ? std::optional<std::u16string>(row.Variable) : std::nullopt;
    };
    machine.Registry = [](std::u16string_view key, std::u16string_view value) {
      return key == u"SOFTWARE\\Microsoft\\MSBuild\\ToolsVersions\\3.5" && value == u"MSBuildToolsPath"
                 ? std::optional<std::u16string>(u"C:\\Windows\\Fx35\\")
                 : std::nullopt;
    };
    EXPECT_EQ(TDotNetInfo(store, machine).GetFrameworkDirectory(row.Version), row.Folder) << row.Name;
  }
}

} // namespace
} // namespace kx::tests
