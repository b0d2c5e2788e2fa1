#include "tools/launcher/FindTool.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <map>

namespace kx::launcher {
namespace {

namespace fs = std::filesystem;

using Programs = std::map<std::string, std::string, std::less<>>;

// What is taken on a machine with these programs on its search path.
std::string Choose(const Programs& programs, std::string_view wanted = "") {
  const auto tool = FindTool(wanted, [&](std::string_view name) {
    const auto found = programs.find(name);
    return found == programs.end() ? std::nullopt : std::optional(found->second);
  });
  static const char* const kinds[] = {"dotnet:", "msbuild:", "xbuild:"};
  return tool ? kinds[static_cast<int>(tool->Kind)] + tool->Path : "none";
}

TEST(FindTool, TakesTheOneThatIsNamedOrTheFirstThatCanBuild) {
  const tests::TTemporaryFolder folder;
  folder.Write("root/dotnet");
  fs::create_symlink("root/dotnet", folder.Native("dotnet"));
  const std::string dotnet = folder.Native("dotnet").string(), named = "/opt/my tools/xbuild";
  const Programs all{
      {"dotnet", dotnet}, {"msbuild", "/bin/msbuild"}, {"xbuild", "/bin/xbuild"}, {named, named}};
  fs::create_directories(folder.Native("root/sdk/8.0.100"));
  EXPECT_EQ(Choose(all), "msbuild:/bin/msbuild") << "there is no SDK";
  EXPECT_EQ(Choose(all, "dotnet msbuild"), "dotnet:" + dotnet);
  folder.Write("root/sdk/8.0.200/MSBuild.dll");
  EXPECT_EQ(Choose(all), "dotnet:" + dotnet);
  EXPECT_EQ(Choose(all, "xbuild"), "xbuild:/bin/xbuild");
  EXPECT_EQ(Choose(all, named), "xbuild:" + named);
  EXPECT_EQ(Choose(all, "nmake"), "none");
  EXPECT_EQ(Choose({}), "none");
}

} // namespace
} // namespace kx::launcher
