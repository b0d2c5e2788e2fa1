#include "tools/launcher/FindTool.h"

#include "foundation/platform/Files.h"
#include "foundation/text/WindowsPath.h"

#include <algorithm>
#include <array>
#include <filesystem>

namespace kx::launcher {
namespace {

namespace fs = std::filesystem;

struct Candidate {
  std::string_view Name;
  ToolKind Kind;
};
constexpr std::array Candidates = {Candidate{"dotnet", ToolKind::DotNet},
                                   Candidate{"msbuild", ToolKind::MSBuild},
                                   Candidate{"xbuild", ToolKind::XBuild}};

// The runtime alone has a program "dotnet" too, but nothing to build with.
bool HasSdk(const std::string& dotnet) {
  std::error_code error;
  const auto program = fs::canonical(dotnet, error);
  if (error) return false;
  const std::u16string folder = (program.parent_path() / "sdk").u16string();
  const auto sdks = platform::ListDirectory(folder);
  return sdks && std::ranges::any_of(*sdks, [&folder](const platform::FolderEntry& sdk) {
           return platform::FileExists(text::JoinPath(folder, text::JoinPath(sdk.Name, u"MSBuild.dll")));
         });
}

ToolKind KindOf(const std::string& path) {
  const auto stem = fs::path(path).stem().string();
  const auto known = std::ranges::find(Candidates, std::string_view(stem), &Candidate::Name);
  return known == Candidates.end() ? ToolKind::MSBuild : known->Kind;
}

} // namespace

std::optional<Tool> FindTool(std::string_view wanted, const ProgramLookup& find) {
  if (!wanted.empty()) {
    const auto path = find(wanted == "dotnet msbuild" ? "dotnet" : wanted);
    if (!path) return std::nullopt;
    return Tool{KindOf(*path), *path};
  }
  for (const auto& candidate : Candidates) {
    const auto path = find(candidate.Name);
    if (path && (candidate.Kind != ToolKind::DotNet || HasSdk(*path))) return Tool{candidate.Kind, *path};
  }
  return std::nullopt;
}

} // namespace kx::launcher
