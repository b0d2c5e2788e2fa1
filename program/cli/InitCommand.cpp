// kxhost init: a first build project for a solution.
#include "foundation/formats/Xml.h"
#include "foundation/platform/Files.h"
#include "foundation/platform/System.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "package/solution/VSNETSLN.h"
#include "program/check/SolutionFacts.h"
#include "program/cli/Commands.h"
#include "program/cli/FileKinds.h"
#include "program/cli/HostSession.h"
#include "program/cli/Output.h"
#include "program/cli/Usage.h"
#include "program/editor/ProjectPaths.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <memory>

namespace kx::cli {

namespace {

using check::TSolutionFacts;

struct TInitArguments {
  std::string Solution;
  std::string Project;
};

// "--" ends comments, and a path may hold it.
std::u16string CommentText(std::u16string_view text) {
  return text::ReplaceAll(text, u"--", u"- -");
}

std::u16string Comment(std::u16string_view indent, std::u16string_view text) {
  return std::u16string(indent) + u"<!-- " + CommentText(text) + u" -->\n";
}

std::u16string Element(std::u16string_view name, std::u16string_view text) {
  return u"      <" + std::u16string(name) + u">" + XmlEscape(text) + u"</" + std::u16string(name) + u">\n";
}

// What people release, for all platforms where the solution has such a one; else the first of the solution.
std::u16string UsualConfiguration(const TSolutionFacts& facts) {
  for (const std::u16string_view wanted : {u"Release|Any CPU", u"Release|Mixed Platforms", u"Release"})
    for (const auto& configuration : facts.Configurations)
      if (configuration.Text.starts_with(wanted)) return configuration.Text;
  return facts.Configurations.empty() ? u"Release" : facts.Configurations.front().Text;
}

std::u16string AllConfigurations(const TSolutionFacts& facts) {
  constexpr std::size_t enough = 12;
  std::u16string names;
  for (std::size_t i = 0; i < std::min(enough, facts.Configurations.size()); ++i)
    names += (i == 0 ? u"" : u", ") + facts.Configurations[i].Text;
  return names.empty()
             ? u"The solution names none."
             : u"The solution has " + names + (facts.Configurations.size() > enough ? u", ..." : u"");
}

TVSDotNetVersion VersionOf(const TSolutionFacts& facts) {
  const auto row = std::ranges::find(VSDotNetVersions, facts.Format(), &TVSDotNetVersionRow::Format);
  return row == VSDotNetVersions.end() ? TVSDotNetVersion::vs2010
                                       : static_cast<TVSDotNetVersion>(row - VSDotNetVersions.begin());
}

// Why MSBuild alone cannot build the solution; empty where it can.
std::u16string NeedOfDevEnv(const TSolutionFacts& facts) {
  if (FrameworkOf(VersionOf(facts)).empty())
    return u"A solution of this age is built by Visual Studio itself (devenv.com).";
  struct TKind {
    std::u16string_view Extension, What;
  };
  constexpr std::array kinds{TKind{u".vcproj", u"a C++ project of before 2010"},
                             TKind{u".vdproj", u"a setup project"}};
  for (const auto& kind : kinds)
    for (const auto& project : facts.Projects)
      if (text::EndsWithIgnoreCase(project.Path, kind.Extension))
        return project.Name + u" is " + std::u16string(kind.What) +
               u", which Visual Studio itself (devenv.com) builds. True: MSBuild";
  return {};
}

std::u16string Version(const TSolutionFacts& facts, std::u16string_view property) {
  const auto version = static_cast<std::size_t>(VersionOf(facts));
  return u"      <" + std::u16string(property) + u" Name=\"" +
         std::u16string(VSDotNetVersionNames.at(version)) + u"\">" +
         text::FromInteger(static_cast<std::int64_t>(version)) + u"</" + std::u16string(property) + u">\n";
}

std::u16string BuildAction(const TSolutionFacts& facts, const std::u16string& solution,
                           const std::u16string& name) {
  const std::u16string devenv = NeedOfDevEnv(facts);
  return u"    <Action Type=\"DEVENV\" Name=\"" + XmlEscape(u"Build " + name) + u"\">\n" +
         Element(u"Solution", solution) + Element(u"SolutionConfiguration", u"%Configuration%") +
         Version(facts, u"VStudioVersion") +
         (devenv.empty() ? std::u16string() : Comment(u"      ", devenv)) +
         Element(u"UseMSBuild", devenv.empty() ? u"True" : u"False") + u"    </Action>\n";
}

// What the project's file says in the first group that fits; XPath 1.0.
std::u16string ProjectValue(const TXmlDocument& document, std::u16string_view condition,
                            std::u16string_view name) {
  const auto elements =
      document.SelectNodes(u"//*[local-name()='PropertyGroup'][" + std::u16string(condition) +
                           u"]/*[local-name()='" + std::u16string(name) + u"']");
  return elements.empty() ? std::u16string() : std::u16string(text::Trim(elements.front().Text()));
}

// Where a project of unit tests leaves its assembly; empty for another project. Quotation marks in the
// configuration's name would end the expression.
std::u16string TestAssembly(const std::u16string& file, std::u16string_view configuration) {
  constexpr std::u16string_view testProject = u"3AC096D0-A1C2-E12C-1390-A8335801FDAB";
  TXmlDocument document;
  if (!document.Load(file)) return {};
  if (text::FindIgnoreCase(ProjectValue(document, u"true()", u"ProjectTypeGuids"), testProject) ==
      std::u16string::npos)
    return {};
  const std::u16string name = ProjectValue(document, u"true()", u"AssemblyName");
  if (name.empty()) return {};
  std::u16string folder;
  if (configuration.find(u'\'') == configuration.npos)
    folder = ProjectValue(document, u"contains(@Condition,'" + std::u16string(configuration) + u"')",
                          u"OutputPath");
  if (folder.empty()) folder = u"bin\\" + std::u16string(configuration);
  return text::JoinPath(text::ExpandPath(folder, text::ExtractFileDir(file)), name + u".dll");
}

std::u16string TestAction(const TSolutionFacts& facts, const std::u16string& folder) {
  const std::u16string usual = UsualConfiguration(facts);
  const std::u16string configuration = usual.substr(0, usual.find(u'|'));
  std::u16string assemblies;
  for (const auto& project : facts.Projects) {
    if (!project.IsFile()) continue;
    const std::u16string assembly = TestAssembly(text::ExpandPath(project.Path, facts.Folder), configuration);
    if (!assembly.empty())
      assemblies += (assemblies.empty() ? u"" : u"\n") + editor::PathForProject(assembly, folder, false);
  }
  if (assemblies.empty()) return {};
  return u"    <Action Type=\"MSTEST\" Name=\"Run the tests\">\n" +
         Comment(u"      ", u"The assemblies of the test projects, one a line, where " + configuration +
                                u" leaves them") +
         Element(u"AssemblyFileName", assemblies) + Version(facts, u"VisualStudioVer") + u"    </Action>\n";
}

// `solution` and `file` as the user is to see them, `folder` the one that the project will stand in.
std::u16string ProjectText(const TSolutionFacts& facts, const std::u16string& solution,
                           const std::u16string& folder, const std::u16string& file) {
  const std::u16string name = text::ChangeFileExt(text::ExtractFileName(solution), u"");
  return u"<?xml version=\"1.0\" encoding=\"utf-8\"?>\n" +
         Comment(u"", u"Builds " + text::ExtractFileName(solution) + u": \"kxhost run " + file +
                          u"\". \"kxhost edit " + file + u"\" shows all settings.") +
         u"<BuildProject Name=\"" + XmlEscape(name) + u"\">\n  <Variables>\n" +
         Comment(u"    ",
                 AllConfigurations(facts) + u". An expression builds all that it matches: ^Release") +
         u"    <Variable Name=\"Configuration\">" + XmlEscape(UsualConfiguration(facts)) +
         u"</Variable>\n  </Variables>\n  <Actions>\n" + BuildAction(facts, solution, name) +
         TestAction(facts, folder) + u"  </Actions>\n</BuildProject>\n";
}

TSolutionFacts RequireSolution(const std::u16string& file) {
  if (platform::DirectoryExists(file)) throw EUsage(file + u" is a folder; init takes a solution.");
  if (!platform::FileExists(file)) throw EKxException(NoSuchFile(file));
  const std::u16string_view extension = ExtensionOfKind(file);
  if (!extension.empty() && extension != u".sln") throw EUsage(DescribeFileKind(file));
  TSolutionFacts facts = check::ReadSolutionFacts(file);
  if (!facts.Error.empty()) throw EKxException(file + u": " + facts.Error);
  LookAtSolution(file, true); // says why a run would refuse it
  return facts;
}

void WriteProject(const TInitArguments& arguments, const TCommonOptions& common) {
  MapDrives(common.Drives);
  const std::u16string current = platform::CurrentDirectory();
  const std::u16string solution = text::ExpandPath(text::FromUtf8(arguments.Solution), current);
  const TSolutionFacts facts = RequireSolution(solution);
  const std::u16string file = arguments.Project.empty()
                                  ? text::ChangeFileExt(solution, u".kxproj")
                                  : text::ExpandPath(text::FromUtf8(arguments.Project), current);
  const std::u16string name = text::ExtractFileName(file);
  const std::u16string folder = text::ExtractFileDir(file);
  const std::u16string seen = editor::PathForProject(solution, folder, true);
  const auto written = platform::SaveNewFile(file, text::ToUtf8(ProjectText(facts, seen, folder, name)));
  if (!written) throw EKxException(written.Message());
  if (!*written) throw EKxException(file + u" is there already; it stays as it is.");
  Print("Wrote " + ForTerminal(file) + ".\nNext: kxhost validate " + ForTerminal(name) +
        ", then kxhost run " + ForTerminal(name) + ".\n");
}

} // namespace

void DefineInit(CLI::App& command, const TCommonOptions& common, int& exitCode) {
  const auto arguments = std::make_shared<TInitArguments>();
  command.add_option("SOLUTION", arguments->Solution, "The solution (.sln)")->required();
  command.add_option("PROJECT", arguments->Project,
                     "The file that is written; left out: the solution's name with .kxproj, beside it");
  command.callback([arguments, &common, &exitCode] {
    try {
      WriteProject(*arguments, common);
      exitCode = ExitSuccess;
    } catch (const EUsage&) {
      throw;
    } catch (const EKxException& error) {
      WriteError(u"kxhost: " + error.Message());
      exitCode = ExitFailed;
    }
  });
}

} // namespace kx::cli
