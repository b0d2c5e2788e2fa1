#include "launcher/ToolCommand.h"

#include <gtest/gtest.h>

namespace kx::launcher {
namespace {

using Arguments = std::vector<std::string>;

TEST(ToolCommand, TranslatesForEachTool) {
  struct Row {
    const char* Case;
    ToolKind Kind;
    Arguments Given;
    Arguments Expected;
  };
  const auto properties = "/p:Configuration=Debug;Platform=Any CPU;DefineConstants=A%3BB\\C";
  const std::vector<Row> rows = {
      {"dotnet gets its subcommand and every switch",
       ToolKind::DotNet,
       {"/t:Build", "/m:2", "-nr:false", "/work/App.sln"},
       {"msbuild", "/t:Build", "/m:2", "-nr:false", "/work/App.sln"}},
      {"msbuild keeps the spelling",
       ToolKind::MSBuild,
       {"-V:Quiet", "/M", "App.sln"},
       {"-V:Quiet", "/M", "App.sln"}},
      {"xbuild lacks parallel nodes and binary logs",
       ToolKind::XBuild,
       {"/m", "/M:4", "-maxcpucount:2", "/nr:false", "/NodeReuse:false", "/bl", "/bl:x.binlog", "/ds",
        "App.sln"},
       {"App.sln"}},
      {"xbuild has one spelling",
       ToolKind::XBuild,
       {"-V:quiet", "--T:Build", "/NoConLog", "/?"},
       {"/v:quiet", "/t:Build", "/noconlog", "/?"}},
      {"xbuild itself refuses what changes the build", ToolKind::XBuild, {"/pp:all.xml"}, {"/pp:all.xml"}},
      {"switches that begin like a dropped one stay",
       ToolKind::XBuild,
       {"/noautorsp", "/tv:4.0"},
       {"/noautorsp", "/tv:4.0"}},
      {"other values pass as they arrive", ToolKind::XBuild, {properties}, {properties}},
      {"folders lose their backslashes",
       ToolKind::XBuild,
       {"/p:Configuration=Debug;OutDir=/tmp/out\\;DefineConstants=A\\", "/p:solutionDir=/srv/My App\\"},
       {"/p:Configuration=Debug;OutDir=/tmp/out/;DefineConstants=A\\", "/p:solutionDir=/srv/My App/"}},
      {"folders for the other tools too",
       ToolKind::DotNet,
       {"--property:ReferencePath=/a\\b%3B/c\\d"},
       {"msbuild", "--property:ReferencePath=/a/b%3B/c/d"}},
      {"mapped drives in folders only",
       ToolKind::MSBuild,
       {"/p:OutDir=C:\\out\\;ReferencePath=c:\\a%3Brel\\b%3Bd:/e;Tool=C:\\t\\;WorkDir=C:x;BaseDir="},
       {"/p:OutDir=/drive/out/;ReferencePath=/drive/a%3Brel/b%3B/drive/e;Tool=C:\\t\\;WorkDir=C:x;BaseDir="}},
      {"empty properties and a closing semicolon survive", ToolKind::MSBuild, {"/p:A=;B=1;"}, {"/p:A=;B=1;"}},
      {"a logger with its path",
       ToolKind::XBuild,
       {"/logger:TandemorLogger,/opt/kx bin/TandemorLogger.dll"},
       {"/logger:TandemorLogger,/opt/kx bin/TandemorLogger.dll"}},
      {"a file in the root folder is no switch",
       ToolKind::XBuild,
       {"/App.sln", "/m.sln"},
       {"/App.sln", "/m.sln"}},
      {"response files and empty arguments", ToolKind::XBuild, {"@Build.rsp", ""}, {"@Build.rsp", ""}},
  };
  const auto folderOnDrive = [](const std::string& folder) {
    return "/drive" + folder.substr(2, folder.find_last_not_of('/') - 1);
  };
  for (const auto& row : rows) {
    auto expected = row.Expected;
    expected.insert(expected.begin(), "/bin/tool");
    EXPECT_EQ(ToolCommand({row.Kind, "/bin/tool"}, row.Given, folderOnDrive), expected) << row.Case;
  }
}

TEST(FindFileArgument, SkipsSwitches) {
  struct Row {
    const char* Case;
    Arguments Given;
    std::optional<std::size_t> Expected;
  };
  const std::vector<Row> rows = {
      {"none given", {"/t:Build", "-v:q", "@Build.rsp", ""}, std::nullopt},
      {"a path of this system behind switches", {"/t:Build", "/noconlog", "/srv/app/App.sln"}, 2},
      {"a Windows path", {"Lib\\Lib.csproj", "/m"}, 0},
      {"a drive", {"/nologo", "C:\\src\\App.sln"}, 1},
      {"a path with a colon", {"/srv/a:b/App.sln"}, 0},
      {"the first of two", {"a.csproj", "b.csproj"}, 0},
      {"a file in the root folder", {"/App.sln"}, 0},
  };
  for (const auto& row : rows)
    EXPECT_EQ(FindFileArgument(row.Given), row.Expected) << row.Case;
}

} // namespace
} // namespace kx::launcher
