#include "tools/launcher/ToolCommand.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>

namespace kx::launcher {
namespace {

struct Switch {
  std::string Name;       // in lower case, without its "/" or "-"
  std::string_view Value; // with its colon; empty when there is none
};

std::string Lower(std::string_view text) {
  std::string lower(text);
  std::ranges::transform(lower, lower.begin(),
                         [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return lower;
}

std::optional<Switch> ParseSwitch(std::string_view argument) {
  const bool slash = argument.starts_with('/');
  if (!slash && !argument.starts_with('-')) return std::nullopt;
  argument.remove_prefix(argument.starts_with("--") ? 2 : 1);
  const auto name = argument.substr(0, argument.find(':'));
  const bool plain =
      std::ranges::all_of(name, [](unsigned char c) { return std::isalnum(c) != 0 || c == '?'; });
  if (slash && (name.empty() || !plain)) return std::nullopt;
  return Switch{Lower(name), argument.substr(name.size())};
}

// Switches that say how to build, not what, and that xbuild lacks.
constexpr std::array XBuildLacks = {
    "m",   "maxcpucount", "nr", "nodereuse",      "bl",     "binarylogger",           "ds", "detailedsummary",
    "low", "lowpriority", "tl", "terminallogger", "ignore", "ignoreprojectextensions"};

bool IsFolderProperty(std::string_view assignment) {
  const auto equals = assignment.find('=');
  if (equals == std::string_view::npos) return false;
  const auto name = Lower(assignment.substr(0, equals));
  return name.ends_with("dir") || name.ends_with("path") || name.ends_with("directory") ||
         name.ends_with("folder");
}

std::string SystemFolder(std::string folder, const FolderOnDrive& folderOnDrive) {
  std::ranges::replace(folder, '\\', '/');
  const bool onDrive = folder.size() > 2 && std::isalpha(static_cast<unsigned char>(folder[0])) != 0 &&
                       folder[1] == ':' && folder[2] == '/';
  if (!onDrive) return folder;
  const bool closed = folder.ends_with('/');
  auto found = folderOnDrive(folder);
  if (closed && !found.ends_with('/')) found += '/';
  return found;
}

// Calls `part` for the text between the separators and joins what it gives.
template <typename Part>
std::string MapParts(std::string_view text, std::string_view separator, Part part) {
  std::string result;
  for (std::size_t start = 0; start <= text.size();) {
    const auto end = std::min(text.find(separator, start), text.size());
    if (start != 0) result += separator;
    result += part(std::string(text.substr(start, end - start)));
    start = end + separator.size();
  }
  return result;
}

// `assignments` is "Name=Value;Name=Value"; a ";" inside a value arrives as %3B.
std::string WithSystemFolders(std::string_view assignments, const FolderOnDrive& folderOnDrive) {
  return MapParts(assignments, ";", [&](std::string assignment) {
    if (!IsFolderProperty(assignment)) return assignment;
    const auto value = assignment.find('=') + 1;
    return assignment.substr(0, value) +
           MapParts(std::string_view(assignment).substr(value), "%3B",
                    [&](auto folder) { return SystemFolder(std::move(folder), folderOnDrive); });
  });
}

std::optional<std::string> Translate(ToolKind kind, const std::string& argument,
                                     const FolderOnDrive& folderOnDrive) {
  const auto parsed = ParseSwitch(argument);
  if (!parsed) return argument;
  if (kind == ToolKind::XBuild && std::ranges::find(XBuildLacks, parsed->Name) != XBuildLacks.end())
    return std::nullopt;
  const auto head = kind == ToolKind::XBuild ? "/" + parsed->Name
                                             : argument.substr(0, argument.size() - parsed->Value.size());
  const bool properties = parsed->Name == "p" || parsed->Name == "property";
  return head + (properties ? WithSystemFolders(parsed->Value, folderOnDrive) : std::string(parsed->Value));
}

} // namespace

std::optional<std::size_t> FindFileArgument(std::span<const std::string> arguments) {
  const auto found = std::ranges::find_if(arguments, [](const std::string& argument) {
    return !argument.empty() && !argument.starts_with('@') && !ParseSwitch(argument);
  });
  if (found == arguments.end()) return std::nullopt;
  return static_cast<std::size_t>(found - arguments.begin());
}

std::vector<std::string> ToolCommand(const Tool& tool, std::span<const std::string> arguments,
                                     const FolderOnDrive& folderOnDrive) {
  std::vector<std::string> command{tool.Path};
  if (tool.Kind == ToolKind::DotNet) command.emplace_back("msbuild");
  for (const auto& argument : arguments)
    if (auto translated = Translate(tool.Kind, argument, folderOnDrive))
      command.push_back(*std::move(translated));
  return command;
}

} // namespace kx::launcher
