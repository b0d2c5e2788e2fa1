#include "program/runner/DotNetInfo.h"

#include "foundation/platform/Files.h"
#include "foundation/platform/Registry.h"
#include "foundation/platform/System.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"

#include <algorithm>
#include <array>

namespace kx {

namespace {

// A version and its folder below that of the frameworks.
struct TVersion {
  std::u16string_view Name;
  std::u16string_view Folder;
};
constexpr auto Versions =
    std::to_array<TVersion>({{u"v2.0", u"v2.0.50727"}, {u"v3.5", u"v3.5"}, {u"v4.0", u"v4.0.30319"}});
constexpr auto Tools = std::to_array<std::u16string_view>({u"dotnet", u"msbuild", u"xbuild"});

} // namespace

std::vector<std::u16string_view> DotNetVersions() {
  std::vector<std::u16string_view> names;
  names.reserve(Versions.size());
  for (const TVersion& version : Versions)
    names.push_back(version.Name);
  return names;
}

TDotNetMachine ThisMachine() {
  return {platform::IsWindows(),          platform::ProgramDirectory(),      &platform::FindProgram,
          &platform::EnvironmentVariable, &platform::ReadLocalMachineString, &platform::FileExists};
}

TDotNetInfo::TDotNetInfo(const TOptionsStore& store, TDotNetMachine machine)
    : store_(store), machine_(std::move(machine)) {}

std::optional<std::u16string> TDotNetInfo::GetFrameworkDirectory(std::u16string_view version) {
  auto option = store_.Get({std::u16string(DotNetSection), std::u16string(version)});
  if (option && !option->empty()) return option;
  const auto known = std::ranges::find_if(
      Versions, [version](const TVersion& row) { return text::EqualsIgnoreCase(row.Name, version); });
  if (known == Versions.end()) return std::nullopt;
  if (machine_.IsWindows) return FromRegistry(known->Name, known->Folder);
  return HasTool() ? std::optional(machine_.ProgramFolder) : std::nullopt;
}

// MSBuild's own entry first; a framework that is installed without one is found beside the others.
std::optional<std::u16string> TDotNetInfo::FromRegistry(std::u16string_view version,
                                                        std::u16string_view folder) const {
  const std::u16string tools = u"SOFTWARE\\Microsoft\\MSBuild\\ToolsVersions\\";
  auto own = machine_.Registry(tools + std::u16string(version.substr(1)), u"MSBuildToolsPath");
  if (own && HoldsMSBuild(*own)) return own;
  const auto root = machine_.Registry(u"SOFTWARE\\Microsoft\\.NETFramework", u"InstallRoot");
  if (!root || root->empty()) return std::nullopt;
  auto found = text::JoinPath(*root, folder);
  return HoldsMSBuild(found) ? std::optional(std::move(found)) : std::nullopt;
}

bool TDotNetInfo::HoldsMSBuild(const std::u16string& folder) const {
  return !folder.empty() && machine_.FileExists(text::JoinPath(folder, u"MSBuild.exe"));
}

bool TDotNetInfo::HasTool() const {
  if (!machine_.Environment(u"KX_MSBUILD").value_or(u"").empty()) return true;
  return std::ranges::any_of(Tools, [this](auto tool) { return machine_.FindProgram(tool).has_value(); });
}

} // namespace kx
