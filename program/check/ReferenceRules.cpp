// Rules about the projects of a solution together: their references, configurations and versions.
#include "foundation/text/WindowsPath.h"
#include "package/solution/VSDotNetVersions.h"
#include "package/solution/VSNETSLN.Order.h"
#include "program/check/SolutionModel.h"
#include "program/check/SolutionRules.h"

#include <algorithm>

namespace kx::check {

namespace {

// Calls with the project of the solution, what is known of it, and its place in the file.
template <typename TVisit>
void ForEachKnown(const TCheckedSolution& solution, const TVisit& visit) {
  for (std::size_t i = 0; i < solution.Projects.size(); ++i)
    if (solution.Projects[i]) visit(solution.Facts.Projects[i], *solution.Projects[i], i);
}

// "Debug|AnyCPU" for "Debug|Any CPU"; in the oldest projects a configuration has no platform.
std::u16string WithoutBlanks(std::u16string_view configuration, TProjectForm form) {
  if (form == TProjectForm::Old) return std::u16string(configuration.substr(0, configuration.find(u'|')));
  return text::ReplaceAll(configuration, u" ", u"");
}

bool HasConfiguration(const TProjectFacts& project, std::u16string_view wanted) {
  const std::u16string name = WithoutBlanks(wanted, project.Form);
  return std::ranges::any_of(project.Configurations, [&](const std::u16string& known) {
    return text::EqualsIgnoreCase(WithoutBlanks(known, project.Form), name);
  });
}

// Finds projects of a solution by what references call them.
class TReferenceFinder {
public:
  explicit TReferenceFinder(const TSolutionFacts& facts) {
    for (std::size_t i = 0; i < facts.Projects.size(); ++i) {
      const TSolutionProject& project = facts.Projects[i];
      byId_.try_emplace(project.Id, i);
      if (project.IsFile()) byFile_.try_emplace(text::ExpandPath(project.Path, facts.Folder), i);
    }
  }

  std::optional<std::size_t> Find(const TProjectReference& reference, const TProjectFacts& project) const {
    if (!reference.Path.empty()) {
      const auto file = byFile_.find(text::ExpandPath(reference.Path, project.Folder));
      if (file != byFile_.end()) return file->second;
    }
    const auto id = byId_.find(reference.Id);
    return id == byId_.end() ? std::nullopt : std::optional(id->second);
  }

private:
  std::map<std::u16string, std::size_t, text::IgnoreCaseLess> byId_;
  std::map<std::u16string, std::size_t, text::IgnoreCaseLess> byFile_;
};

std::u16string NameOf(const TProjectReference& reference) {
  return reference.Path.empty() ? reference.Id : reference.Path;
}

// "3.5" of "v3.5" as 35; nothing for what is no such version.
std::optional<std::int32_t> FrameworkNumber(std::u16string_view framework) {
  if (framework.starts_with(u'v')) framework.remove_prefix(1);
  const std::size_t dot = framework.find(u'.');
  if (dot == std::u16string_view::npos) return std::nullopt;
  const auto major = text::ToInteger(framework.substr(0, dot));
  const auto minor = text::ToInteger(framework.substr(dot + 1, 1));
  return major && minor ? std::optional(*major * 10 + *minor) : std::nullopt;
}

const TVSDotNetVersionRow* RowOfFormat(std::int32_t format) {
  const auto* row = std::ranges::find(VSDotNetVersions, format, &TVSDotNetVersionRow::Format);
  return row == VSDotNetVersions.end() ? nullptr : row;
}

// Where each project stands in the build order.
std::vector<std::size_t> PlacesInOrder(const TSolutionFacts& facts) {
  const auto order = OrderByDependancies(ModelOf(facts, true), nullptr);
  std::vector<std::size_t> places(order.size());
  for (std::size_t i = 0; i < order.size(); ++i)
    places[order[i]] = i;
  return places;
}

// Without zeros at the end: "1.2" of "1.2.0.0".
std::u16string ShortVersion(std::u16string version) {
  while (version.ends_with(u".0"))
    version.resize(version.size() - 2);
  return version;
}

struct TVersionPlace {
  std::u16string Version;
  std::u16string File;
  int Line;
};

std::vector<TVersionPlace> NativeVersions(const TVersionFacts& facts) {
  std::vector<TVersionPlace> versions;
  for (const TScriptFacts& script : facts.Scripts)
    if (!script.FileVersion.empty() && script.FileVersion != u"0.0.0.0") // macros are not followed
      versions.push_back({script.FileVersion, script.File, script.Line});
  return versions;
}

// Of a file, else of the assembly; one with an asterisk is another at each build.
std::vector<TVersionPlace> ManagedVersions(const TVersionFacts& facts) {
  for (const std::u16string_view name : {u"AssemblyFileVersion", u"AssemblyVersion"})
    for (const TStatedAttribute& attribute : facts.Attributes)
      if (text::EqualsIgnoreCase(attribute.Name, name) && attribute.Value.find(u'*') == std::u16string::npos)
        return {{attribute.Value, attribute.File, attribute.Line}};
  return {};
}

} // namespace

void FindUnknownMappings(const TCheckedSolution& solution, TRuleReport& report) {
  ForEachKnown(solution, [&](const TSolutionProject& project, const TKnownProject& known, std::size_t) {
    if (known.Facts.Configurations.empty()) return;
    std::set<std::u16string, text::IgnoreCaseLess> said;
    for (const TMapping& mapping : project.Mappings)
      if (!HasConfiguration(known.Facts, mapping.Project) && said.insert(mapping.Project).second)
        report.Say(mapping.Line,
                   project.Name + u" has no configuration " + mapping.Project + u"; it has " +
                       Shortlist({known.Facts.Configurations.begin(), known.Facts.Configurations.end()}),
                   {.Project = project.Name});
  });
}

void FindReferencesOutside(const TCheckedSolution& solution, TRuleReport& report) {
  const TReferenceFinder finder(solution.Facts);
  ForEachKnown(solution, [&](const TSolutionProject& project, const TKnownProject& known, std::size_t) {
    for (const TProjectReference& reference : known.Facts.References)
      if (!finder.Find(reference, known.Facts))
        report.Say(reference.Line,
                   project.Name + u" references " + NameOf(reference) + u", which is not in " +
                       text::ExtractFileName(solution.Facts.File),
                   {.Project = project.Name, .File = known.Facts.File});
  });
}

void FindReferencesNotOrdered(const TCheckedSolution& solution, TRuleReport& report) {
  if (!CirclesAmong(ModelOf(solution.Facts, true)).empty()) return; // there is no order
  const auto places = PlacesInOrder(solution.Facts);
  const TReferenceFinder finder(solution.Facts);
  ForEachKnown(solution, [&](const TSolutionProject& project, const TKnownProject& known, std::size_t i) {
    for (const TProjectReference& reference : known.Facts.References)
      if (const auto needed = finder.Find(reference, known.Facts); needed && places[*needed] > places[i])
        report.Say(project.Line,
                   project.Name + u" references " + solution.Facts.Projects[*needed].Name +
                       u", which stands behind it in the build order",
                   {.Project = project.Name,
                    .Steps = {report.Step(reference.Line, u"the reference", known.Facts.File)}});
  });
}

void FindNewFrameworks(const TCheckedSolution& solution, TRuleReport& report) {
  const auto* row = RowOfFormat(solution.Facts.Format());
  const auto newest = row == nullptr ? std::nullopt : FrameworkNumber(row->Framework);
  if (!newest) return;
  ForEachKnown(solution, [&](const TSolutionProject& project, const TKnownProject& known, std::size_t) {
    const auto framework = FrameworkNumber(known.Facts.Framework);
    if (framework && *framework > *newest)
      report.Say(known.Facts.FrameworkLine,
                 project.Name + u" is for .NET " + known.Facts.Framework + u", " +
                     text::ExtractFileName(solution.Facts.File) + u" for " +
                     std::u16string(row->DisplayName) + u" with " + std::u16string(row->Framework),
                 {.Project = project.Name, .File = known.Facts.File});
  });
}

// Only where no version is the same on both sides: several products may share a solution.
void FindDifferentVersions(const TCheckedSolution& solution, TRuleReport& report) {
  std::map<std::u16string, TVersionPlace> native, managed;
  ForEachKnown(solution, [&](const TSolutionProject&, const TKnownProject& known, std::size_t) {
    for (auto& place : NativeVersions(known.Versions))
      native.try_emplace(ShortVersion(place.Version), place);
    for (auto& place : ManagedVersions(known.Versions))
      managed.try_emplace(ShortVersion(place.Version), place);
  });
  const bool agree =
      std::ranges::any_of(native, [&](const auto& version) { return managed.contains(version.first); });
  if (native.empty() || managed.empty() || agree) return;
  std::vector<TFindingStep> steps;
  for (const auto* side : {&native, &managed})
    for (const auto& [version, place] : *side)
      steps.push_back(report.Step(place.Line, place.Version, place.File));
  report.Say(0,
             u"No native file has the version of an assembly: " + native.begin()->second.Version + u" and " +
                 managed.begin()->second.Version,
             {.Steps = std::move(steps)});
}

} // namespace kx::check
