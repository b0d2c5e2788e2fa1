#include "runner/DotNetInfo.h"

#include "platform/Files.h"
#include "platform/System.h"

#include <algorithm>
#include <array>

namespace kx {

namespace {

constexpr std::array<std::u16string_view, 3> Versions{u"v2.0", u"v3.5", u"v4.0"};
constexpr std::array<std::u16string_view, 3> Tools{u"dotnet", u"msbuild", u"xbuild"};

} // namespace

TDotNetMachine ThisMachine() {
  return {platform::IsWindows(), platform::ProgramDirectory(), &platform::FindProgram,
          &platform::EnvironmentVariable, &platform::ReadLocalMachineString};
}

TDotNetInfo::TDotNetInfo(const TOptionsStore& store, TDotNetMachine machine)
    : store_(store), machine_(std::move(machine)) {}

std::optional<std::u16string> TDotNetInfo::GetFrameworkDirectory(std::u16string_view version) {
  auto option = store_.Get({u"DotNetFramework", std::u16string(version)});
  if (option && !option->empty()) return option;
  const auto known =
      std::ranges::find_if(Versions, [version](auto name) { return text::EqualsIgnoreCase(name, version); });
  if (known == Versions.end()) return std::nullopt;
  if (machine_.IsWindows) return FromRegistry(*known);
  return HasTool() ? std::optional(machine_.ProgramFolder) : std::nullopt;
}

std::optional<std::u16string> TDotNetInfo::FromRegistry(std::u16string_view version) const {
  auto folder =
      machine_.Registry(u"SOFTWARE\\Microsoft\\MSBuild\\ToolsVersions\\" + std::u16string(version.substr(1)),
                        u"MSBuildToolsPath");
  return folder && !folder->empty() ? folder : std::nullopt;
}

bool TDotNetInfo::HasTool() const {
  if (!machine_.Environment(u"KX_MSBUILD").value_or(u"").empty()) return true;
  return std::ranges::any_of(Tools, [this](auto tool) { return machine_.FindProgram(tool).has_value(); });
}

} // namespace kx
