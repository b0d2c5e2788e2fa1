#include "launcher/FindTool.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>

#include <unistd.h>

namespace kx::launcher {
namespace {

namespace fs = std::filesystem;

// A machine with these programs on its search path.
struct Machine {
  std::map<std::string, std::string, std::less<>> Programs;

  std::string Choose(std::string_view wanted = "") const {
    const auto tool = FindTool(wanted, [this](std::string_view name) -> std::optional<std::string> {
      const auto found = Programs.find(name);
      if (found == Programs.end()) return std::nullopt;
      return found->second;
    });
    static const char* const kinds[] = {"dotnet:", "msbuild:", "xbuild:"};
    return tool ? kinds[static_cast<int>(tool->Kind)] + tool->Path : "none";
  }
};

class FindToolTest : public testing::Test {
protected:
  FindToolTest() { Make(folder_ / "dotnet"); }
  ~FindToolTest() override { fs::remove_all(folder_); }

  void Make(const fs::path& file) {
    fs::create_directories(file.parent_path());
    std::ofstream(file) << "";
  }
  std::string Dotnet() const { return (folder_ / "dotnet").string(); }

  fs::path folder_ = fs::path(testing::TempDir()) / ("kx-findtool-" + std::to_string(::getpid()));
};

TEST_F(FindToolTest, TakesTheFirstThatCanBuild) {
  const Machine all{{{"dotnet", Dotnet()}, {"msbuild", "/bin/msbuild"}, {"xbuild", "/bin/xbuild"}}};
  EXPECT_EQ(all.Choose(), "msbuild:/bin/msbuild") << "a dotnet without an SDK has nothing to build with";
  fs::create_directories(folder_ / "sdk" / "8.0.100");
  EXPECT_EQ(all.Choose(), "msbuild:/bin/msbuild") << "an SDK folder that an uninstaller left behind";
  Make(folder_ / "sdk" / "8.0.200" / "MSBuild.dll");
  EXPECT_EQ(all.Choose(), "dotnet:" + Dotnet());

  const fs::path link = folder_ / "bin" / "dotnet";
  fs::create_directories(link.parent_path());
  fs::create_symlink(folder_ / "dotnet", link);
  EXPECT_EQ((Machine{{{"dotnet", link.string()}}}.Choose()), "dotnet:" + link.string())
      << "the SDK lies beside the program that the link names";
  EXPECT_EQ((Machine{{{"dotnet", "/nowhere/dotnet"}, {"xbuild", "/bin/xbuild"}}}.Choose()),
            "xbuild:/bin/xbuild");
  EXPECT_EQ(Machine{}.Choose(), "none");
}

TEST_F(FindToolTest, TakesTheOneThatIsNamed) {
  const Machine machine{{{"dotnet", Dotnet()},
                         {"msbuild", "/bin/msbuild"},
                         {"xbuild", "/bin/xbuild"},
                         {"/opt/my tools/xbuild", "/opt/my tools/xbuild"},
                         {"/opt/MSBuild/build.sh", "/opt/MSBuild/build.sh"}}};
  const std::pair<const char*, std::string> rows[] = {
      {"xbuild", "xbuild:/bin/xbuild"},
      {"msbuild", "msbuild:/bin/msbuild"},
      {"dotnet", "dotnet:" + Dotnet()},
      {"dotnet msbuild", "dotnet:" + Dotnet()},
      {"/opt/my tools/xbuild", "xbuild:/opt/my tools/xbuild"},
      {"/opt/MSBuild/build.sh", "msbuild:/opt/MSBuild/build.sh"},
      {"nmake", "none"},
  };
  for (const auto& [wanted, expected] : rows)
    EXPECT_EQ(machine.Choose(wanted), expected) << wanted;
}

} // namespace
} // namespace kx::launcher
