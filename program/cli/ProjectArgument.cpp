#include "program/cli/ProjectArgument.h"

#include "foundation/platform/Files.h"
#include "foundation/platform/System.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "program/cli/FileKinds.h"
#include "program/cli/Usage.h"

#include <CLI/CLI.hpp>

#include <vector>

namespace kx::cli {

namespace {

std::vector<std::u16string> ProjectsOf(const std::u16string& folder) {
  const auto entries = platform::ListDirectory(folder);
  if (!entries) throw EUsage(entries.Message());
  std::vector<std::u16string> names;
  for (const auto& entry : *entries)
    if (!entry.IsDirectory && text::EndsWithIgnoreCase(entry.Name, u".kxproj")) names.push_back(entry.Name);
  return names;
}

bool CanBeFile(const std::u16string& word) {
  return text::EndsWithIgnoreCase(word, u".kxproj") || word.find_first_of(u"/\\") != word.npos ||
         platform::FileExists(word) || platform::DirectoryExists(word);
}

std::u16string OnlyProject() {
  const std::u16string folder = platform::CurrentDirectory();
  const auto names = ProjectsOf(folder);
  if (names.size() == 1) return names.front();
  if (!names.empty())
    throw EUsage(u"Which build project? " + folder + u" holds " + ListOf(names, u"and") + u".");
  throw EUsage(u"No build project was named, and " + folder +
               u" holds none. \"kxhost init SOLUTION\" writes one.");
}

} // namespace

void DefineProject(CLI::App& command, std::optional<std::string>& file) {
  command.add_option("PROJECT", file,
                     "The build project (*.kxproj); may be left out where the current folder holds only one");
}

void DefineProjectAndNames(CLI::App& command, TProjectSelection& selection) {
  DefineProject(command, selection.File);
  command.add_option("NAME", selection.Names,
                     "Only these actions and groups of the project, and what they need");
}

std::u16string RequireProject(TProjectSelection& selection) {
  if (selection.File && !CanBeFile(text::FromUtf8(*selection.File)) &&
      ProjectsOf(platform::CurrentDirectory()).size() == 1) {
    selection.Names.insert(selection.Names.begin(), *std::move(selection.File));
    selection.File.reset();
  }
  return RequireProject(selection.File);
}

std::u16string RequireProject(const std::optional<std::string>& file) {
  std::u16string name = file ? text::FromUtf8(*file) : OnlyProject();
  RequireBuildProject(name);
  return name;
}

} // namespace kx::cli
