#include "program/check/ProjectRules.h"

#include "foundation/text/WindowsPath.h"
#include "package/assemblyinfo/AssemblyInfoVersion.h"

#include <algorithm>
#include <map>
#include <unordered_map>

namespace kx::check {

namespace {

using TFirstLines = std::unordered_map<std::u16string, int, text::IgnoreCaseHash, text::IgnoreCaseEqual>;

std::u16string Number(std::size_t count) {
  return text::FromInteger(static_cast<std::int64_t>(count));
}

// The files of a list that are not there: each by itself, or in one finding where most of them are missing.
void SayMissing(const TCheckedProject& project, const std::vector<TListedFile>& files,
                std::u16string_view what, std::u16string_view whats, TRuleReport& report) {
  std::vector<const TListedFile*> missing;
  std::size_t used = 0;
  for (const TListedFile& file : files) {
    if (!file.IsUsed) continue;
    ++used;
    if (!project.Disk.Find(project.Facts.Folder, file.Path).Exists) missing.push_back(&file);
  }
  constexpr std::size_t few = 2;
  if (missing.size() <= few || missing.size() * 2 <= used) {
    for (const TListedFile* file : missing)
      report.Say(file->Line, u"There is no " + std::u16string(what) + u" " + file->Path);
    return;
  }
  std::vector<TFindingStep> steps;
  steps.reserve(missing.size());
  for (const TListedFile* file : missing)
    steps.push_back(report.Step(file->Line, file->Path));
  const int line = missing.front()->Line;
  report.Say(line,
             Number(missing.size()) + u" of " + Number(used) + u" " + std::u16string(whats) +
                 u" are not there",
             {.Steps = std::move(steps)});
}

} // namespace

void FindUnreadableProject(const TCheckedProject& project, TRuleReport& report) {
  if (!project.Facts.Error.empty()) report.Say(project.Facts.ErrorLine, project.Facts.Error);
}

void FindMissingSources(const TCheckedProject& project, TRuleReport& report) {
  SayMissing(project, project.Facts.Sources, u"source", u"sources", report);
}

void FindMissingHints(const TCheckedProject& project, TRuleReport& report) {
  SayMissing(project, project.Facts.Hints, u"referenced assembly", u"referenced assemblies", report);
}

void FindSourcesSpelledOtherwise(const TCheckedProject& project, TRuleReport& report) {
  for (const TListedFile& source : project.Facts.Sources)
    if (const auto& spelling = project.Disk.Find(project.Facts.Folder, source.Path).Spelling;
        !spelling.empty())
      report.Say(source.Line, source.Path + u" is called " + spelling + u" on the disk");
}

void FindSourcesListedTwice(const TCheckedProject& project, TRuleReport& report) {
  TFirstLines first;
  for (const TListedFile& source : project.Facts.Sources) {
    if (!source.IsUsed) continue;
    const std::u16string file = text::ExpandPath(source.Path, project.Facts.Folder);
    const auto [known, isNew] = first.try_emplace(source.Kind + u"\n" + file, source.Line);
    if (!isNew)
      report.Say(source.Line, source.Path + u" is listed already in line " + text::FromInteger(known->second),
                 {.Steps = {report.Step(known->second, u"the first one")}});
  }
}

void FindNoAssemblyInfo(const TCheckedProject& project, TRuleReport& report) {
  const bool hasOne = std::ranges::any_of(project.Facts.Sources, [](const TListedFile& source) {
    return source.Kind == u"Compile" && // GlobalAssemblyInfo.cs is one, too
           text::FindIgnoreCase(source.Path, u"AssemblyInfo") != std::u16string::npos;
  });
  if (project.Facts.IsManaged() && !project.Facts.IsSdkStyle && !hasOne &&
      project.Versions.Attributes.empty())
    report.Say(0, u"The project compiles no AssemblyInfo file, so its assembly has no version of its own");
}

void FindSeveralAssemblyInfos(const TCheckedProject& project, TRuleReport& report) {
  const auto& files = project.Versions.AssemblyInfos;
  if (files.size() < 2) return;
  std::vector<TFindingStep> steps;
  steps.reserve(files.size());
  for (const std::u16string& file : files)
    steps.push_back(report.Step(0, u"one of them", file));
  report.Say(0, u"The project compiles " + Number(files.size()) + u" AssemblyInfo files",
             {.Steps = std::move(steps)});
}

void FindAttributesTwice(const TCheckedProject& project, TRuleReport& report) {
  std::map<std::u16string, const TStatedAttribute*, text::IgnoreCaseLess> first;
  for (const TStatedAttribute& attribute : project.Versions.Attributes) {
    const auto [known, isNew] = first.try_emplace(attribute.Name, &attribute);
    if (!isNew)
      report.Say(attribute.Line, attribute.Name + u" is there a second time",
                 {.Steps = {report.Step(known->second->Line, u"the first one", known->second->File)},
                  .File = attribute.File});
  }
}

void FindImpossibleVersions(const TCheckedProject& project, TRuleReport& report) {
  for (const TStatedAttribute& attribute : project.Versions.Attributes)
    if (IsAssemblyVersionAttribute(attribute.Name))
      if (const auto reason = CheckAssemblyVersion(attribute.Name, attribute.Value))
        report.Say(attribute.Line, *reason, {.File = attribute.File});
  for (const TScriptFacts& script : project.Versions.Scripts)
    if (script.TooLarge) report.Say(script.Line, *script.TooLarge, {.File = script.File});
}

void FindRefusedScripts(const TCheckedProject& project, TRuleReport& report) {
  for (const TScriptFacts& script : project.Versions.Scripts)
    if (!script.Error.empty()) report.Say(script.Line, script.Error, {.File = script.File});
}

void FindUnseenScripts(const TCheckedProject& project, TRuleReport& report) {
  for (const TScriptFacts& script : project.Versions.Scripts)
    if (!script.IsSeen)
      report.Say(script.Line, u"No header before the version block defines VS_VERSION_INFO",
                 {.File = script.File});
}

void FindLossesOfScripts(const TCheckedProject& project, TRuleReport& report) {
  for (const TScriptFacts& script : project.Versions.Scripts)
    for (const std::u16string& loss : script.Losses)
      report.Say(script.Line, u"Stamping " + loss, {.File = script.File});
}

} // namespace kx::check
