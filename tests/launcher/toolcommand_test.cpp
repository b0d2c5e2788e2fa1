#include "tools/launcher/ToolCommand.h"

#include <gtest/gtest.h>

namespace kx::launcher {
namespace {

using Arguments = std::vector<std::string>;
using enum ToolKind;

TEST(ToolCommand, TranslatesForEachTool) {
  // The argument given and what becomes of it; nothing when it is left out.
  const std::tuple<ToolKind, std::string, std::optional<std::string>> rows[] = {
      {DotNet, "-nr:false", "-nr:false"},
      {MSBuild, "-V:Quiet", "-V:Quiet"},
      {XBuild, "-V:quiet", "/v:quiet"},
      {XBuild, "-maxcpucount:2", std::nullopt},
      {XBuild, "/nr:false", std::nullopt},
      {XBuild, "/bl:x.binlog", std::nullopt},
      {XBuild, "/noautorsp", "/noautorsp"}, // begins like one that is left out
      {XBuild, "/m.sln", "/m.sln"},         // a file in the root folder
      {XBuild, "", ""},
      {XBuild, "/logger:A,/opt/kx bin/A.dll", "/logger:A,/opt/kx bin/A.dll"},
      {XBuild, "/p:Platform=Any CPU;D=A%3BB\\C;E=;", "/p:Platform=Any CPU;D=A%3BB\\C;E=;"},
      {XBuild, "/p:OutDir=/tmp/out\\;D=A\\", "/p:OutDir=/tmp/out/;D=A\\"},
      {DotNet, "--property:ReferencePath=/a\\b%3B/c\\d", "--property:ReferencePath=/a/b%3B/c/d"},
      {MSBuild, "/p:OutDir=C:\\out\\;Tool=C:\\t\\", "/p:OutDir=/drive/out/;Tool=C:\\t\\"},
      {MSBuild, "/p:ReferencePath=c:\\a%3Brel\\b", "/p:ReferencePath=/drive/a%3Brel/b"},
  };
  const auto folderOnDrive = [](const std::string& folder) {
    return "/drive" + folder.substr(2, folder.find_last_not_of('/') - 1);
  };
  for (const auto& [kind, given, becomes] : rows) {
    Arguments expected{"/bin/tool"};
    if (kind == DotNet) expected.emplace_back("msbuild");
    if (becomes) expected.push_back(*becomes);
    expected.emplace_back("App.sln");
    EXPECT_EQ(ToolCommand({kind, "/bin/tool"}, Arguments{given, "App.sln"}, folderOnDrive), expected);
  }
}

TEST(FindFileArgument, SkipsSwitches) {
  EXPECT_EQ(FindFileArgument(Arguments{"/t:Build", "-v:q", "@Build.rsp", ""}), std::nullopt);
  EXPECT_EQ(FindFileArgument(Arguments{"/noconlog", "/srv/a:b/App.sln", "b.sln"}), 1U);
  EXPECT_EQ(FindFileArgument(Arguments{"/nologo", "C:\\src\\App.sln"}), 1U);
  EXPECT_EQ(FindFileArgument(Arguments{"/App.sln"}), 0U);
}

} // namespace
} // namespace kx::launcher
