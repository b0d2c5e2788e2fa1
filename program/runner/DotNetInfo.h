// Where the .NET frameworks are: the section DotNetFramework of the options store (keys v2.0, v3.5, v4.0),
// else what the machine says.
#pragma once

#include "contract/Services.h"
#include "program/runner/OptionsStore.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kx {

// The options: a folder that holds MSBuild.exe for each version.
inline constexpr std::u16string_view DotNetSection = u"DotNetFramework";
std::vector<std::u16string_view> DotNetVersions();

// How the machine is asked; replaced in tests.
struct TDotNetMachine {
  bool IsWindows = false;
  std::u16string ProgramFolder; // holds the launcher MSBuild.exe
  std::function<std::optional<std::u16string>(std::u16string_view program)> FindProgram;
  std::function<std::optional<std::u16string>(std::u16string_view name)> Environment;
  std::function<std::optional<std::u16string>(std::u16string_view key, std::u16string_view value)> Registry;
  std::function<bool(std::u16string_view path)> FileExists;
};
TDotNetMachine ThisMachine();

// Without an option, on Windows the registry names the folder, which counts when it holds MSBuild.exe: the
// entry of MSBuild's tools version, else the folder of that version below the frameworks' common one.
// Elsewhere the launcher beside this program stands for every framework, once a tool that it can run (dotnet,
// msbuild, xbuild) is on the search path or the variable KX_MSBUILD names one.
class TDotNetInfo : public IKxDotNetInfo {
public:
  explicit TDotNetInfo(const TOptionsStore& store,
                       TDotNetMachine machine = ThisMachine()); // store: outlives it
  std::optional<std::u16string> GetFrameworkDirectory(std::u16string_view version) override;

private:
  std::optional<std::u16string> FromRegistry(std::u16string_view version, std::u16string_view folder) const;
  bool HoldsMSBuild(const std::u16string& folder) const;
  bool HasTool() const;

  const TOptionsStore& store_;
  TDotNetMachine machine_;
};

} // namespace kx
