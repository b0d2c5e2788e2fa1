#include "program/check/SolutionRules.h"

#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "package/solution/VSDotNetVersions.h"
#include "package/solution/VSNETSLN.Order.h"
#include "program/check/SolutionModel.h"

#include <algorithm>
#include <set>

namespace kx::check {

namespace {

using TNames = std::set<std::u16string, text::IgnoreCaseLess>;

std::u16string LineWord(int line) {
  return u"line " + text::FromInteger(line);
}

// The first project of each key, and a finding for each later one.
template <typename TKey>
void FindShared(const TSolutionFacts& facts, TRuleReport& report, const std::u16string& what,
                const TKey& keyOf) {
  std::map<std::u16string, const TSolutionProject*, text::IgnoreCaseLess> first;
  for (const TSolutionProject& project : facts.Projects) {
    const std::u16string key = keyOf(project);
    if (key.empty()) continue;
    const auto [known, isNew] = first.try_emplace(key, &project);
    if (!isNew)
      report.Say(project.Line,
                 project.Name + u" has the " + what + u" of " + known->second->Name + u" (" +
                     LineWord(known->second->Line) + u")",
                 {.Project = project.Name, .Steps = {report.Step(known->second->Line, u"the first one")}});
  }
}

int LineOfNeed(const IVSDotNetProject& project, const IVSDotNetProject& needed) {
  const auto needs = project.GetDependancies();
  for (int i = 0; i < needs->GetCount(); ++i)
    if (text::EqualsIgnoreCase(needs->GetItem(i), needed.GetProjectID())) return needs->GetLine(i);
  return 0;
}

std::vector<TFindingStep> StepsOf(const std::vector<std::shared_ptr<IVSDotNetProject>>& projects,
                                  const std::vector<std::size_t>& circle, const TRuleReport& report) {
  std::vector<TFindingStep> steps;
  steps.reserve(circle.size());
  for (std::size_t i = 0; i < circle.size(); ++i) {
    const IVSDotNetProject& project = *projects[circle[i]];
    const IVSDotNetProject& needed = *projects[circle[(i + 1) % circle.size()]];
    steps.push_back(
        report.Step(LineOfNeed(project, needed), project.GetName() + u" needs " + needed.GetName()));
  }
  return steps;
}

// Whether the solution can say in which of its configurations the project is built.
bool TakesMappings(const TSolutionProject& project) {
  static constexpr std::array<std::u16string_view, 5> without{u".shproj", u".vcxitems", u".dbp", u".etp",
                                                              u".wdproj"};
  const std::u16string extension = text::ExtractFileExt(project.Path);
  return project.IsFile() && std::ranges::none_of(without, [&extension](std::u16string_view end) {
           return text::EqualsIgnoreCase(extension, end);
         });
}

bool HasActiveMapping(const TSolutionProject& project) {
  return std::ranges::any_of(project.Mappings, &TMapping::IsActive);
}

std::vector<std::u16string> MissingMappings(const TSolutionProject& project, const TSolutionFacts& facts) {
  TNames mapped;
  for (const TMapping& mapping : project.Mappings)
    if (mapping.IsActive) mapped.insert(mapping.Solution);
  std::vector<std::u16string> missing;
  for (const TLineText& configuration : facts.Configurations)
    if (!mapped.contains(configuration.Text)) missing.push_back(configuration.Text);
  return missing;
}

// All that names an identifier means the first project that has it.
bool IsFirstOfId(const TSolutionProject& project, const TSolutionFacts& facts) {
  return facts.Find(project.Id) == &project;
}

using TProjectGroup = std::vector<const TSolutionProject*>;

// One finding for all of them: they are mostly the result of one doing.
void SayOfGroup(const TProjectGroup& group, const std::u16string& what, TRuleReport& report) {
  if (group.empty()) return;
  const TSolutionProject& first = *group.front();
  if (group.size() == 1) return report.Say(first.Line, first.Name + u" has" + what, {.Project = first.Name});
  std::vector<TFindingStep> steps;
  steps.reserve(group.size());
  for (const TSolutionProject* project : group)
    steps.push_back(report.Step(project->Line, project->Name));
  report.Say(first.Line,
             text::FromInteger(static_cast<std::int64_t>(group.size())) + u" projects have" + what,
             {.Project = first.Name, .Steps = std::move(steps)});
}

// What the comment behind the header calls the product, and the format that it writes.
struct TProduct {
  std::u16string_view Name;
  std::int32_t Format;
};
constexpr std::array<TProduct, 4> Products{
    {{u" 2005", 9}, {u" 2008", 10}, {u" 2010", 11}, {u"Visual Studio 10", 11}}};
constexpr std::int32_t NewFormat = 12; // of all products since

std::int32_t FormatOfProduct(std::u16string_view product) {
  const auto* known = std::ranges::find_if(Products, [product](const TProduct& row) {
    return product.find(row.Name) != std::u16string_view::npos;
  });
  return known == Products.end() ? NewFormat : known->Format;
}

// Projects with files: how many there are, and the positions of those that are missing.
struct TPresence {
  std::size_t Count = 0;
  std::vector<std::size_t> Missing = {};
};

TPresence PresenceOf(const TCheckedSolution& solution) {
  TPresence presence;
  for (std::size_t i = 0; i < solution.Files.size(); ++i) {
    if (solution.Files[i] == nullptr) continue;
    ++presence.Count;
    if (!solution.Files[i]->Exists) presence.Missing.push_back(i);
  }
  return presence;
}

} // namespace

void FindUnreadableSolution(const TCheckedSolution& solution, TRuleReport& report) {
  const TSolutionFacts& facts = solution.Facts;
  if (!facts.Error.empty()) return report.Say(0, facts.Error);
  if (facts.Headers.empty())
    return report.Say(1, u"No line says \"Microsoft Visual Studio Solution File, Format Version ...\"");
  if (facts.GlobalLine == 0) report.Say(facts.Headers.front().Line, u"The solution has no Global section");
  for (const TLineText& line : facts.BadProjects)
    report.Say(line.Line, u"A project needs a name, a file and an identifier: " + line.Text);
}

void FindContradictingHeaders(const TCheckedSolution& solution, TRuleReport& report) {
  const TSolutionFacts& facts = solution.Facts;
  for (std::size_t i = 1; i < facts.Headers.size(); ++i)
    report.Say(facts.Headers[i].Line, u"A second header, of format " + facts.Headers[i].Text +
                                          u"; the first one says " + facts.Headers.front().Text + u" (" +
                                          LineWord(facts.Headers.front().Line) + u")");
  if (facts.Headers.empty() || facts.Product.Line == 0) return;
  const std::int32_t format = FormatOfProduct(facts.Product.Text);
  if (format != facts.Format())
    report.Say(facts.Product.Line, facts.Product.Text + u" writes format " + text::FromInteger(format) +
                                       u".00, but the header says " + facts.Headers.front().Text);
}

void FindNewFormat(const TCheckedSolution& solution, TRuleReport& report) {
  if (solution.Facts.Format() > VSDotNetVersions.back().Format)
    report.Say(solution.Facts.Headers.front().Line,
               u"Format " + solution.Facts.Headers.front().Text + u" is newer than Visual Studio 2010");
}

void FindDoubtfulEncoding(const TCheckedSolution& solution, TRuleReport& report) {
  const TSolutionFacts& facts = solution.Facts;
  if (facts.Doubt != TTextDoubt::None && !facts.Headers.empty() &&
      facts.DoubtLine < facts.Headers.front().Line)
    return report.Say(facts.DoubtLine, u"The file begins with a damaged byte-order mark");
  switch (facts.Doubt) {
  case TTextDoubt::None:
    return;
  case TTextDoubt::Ansi:
    return report.Say(facts.DoubtLine,
                      u"Letters are in the code page of the machine that wrote them; nothing says which");
  case TTextDoubt::Unmarked:
    return report.Say(facts.DoubtLine,
                      u"Letters are in UTF-8, but no byte-order mark says so: Visual Studio and MSBuild take "
                      u"them for those of the machine's code page");
  case TTextDoubt::Lost:
    return report.Say(facts.DoubtLine, u"A letter was lost: U+FFFD stands in its place");
  }
}

void FindOpenSections(const TCheckedSolution& solution, TRuleReport& report) {
  for (const TLineText& opened : solution.Facts.NotClosed)
    report.Say(opened.Line, opened.Text + u" is not closed");
  for (const TLineText& closed : solution.Facts.NotOpened)
    report.Say(closed.Line, closed.Text + u" closes nothing");
}

void FindMergeMarks(const TCheckedSolution& solution, TRuleReport& report) {
  if (const auto& marks = solution.Facts.MergeMarks; !marks.empty())
    report.Say(marks.front().Line, u"A merge was not finished: " + marks.front().Text);
}

void FindTextBehindEnd(const TCheckedSolution& solution, TRuleReport& report) {
  if (solution.Facts.LineBehindEnd > 0)
    report.Say(solution.Facts.LineBehindEnd, u"Text behind EndGlobal is read by nobody");
}

void FindCycles(const TCheckedSolution& solution, TRuleReport& report) {
  const auto projects = ModelOf(solution.Facts, true);
  for (const auto& circle : CirclesAmong(projects)) {
    auto steps = StepsOf(projects, circle, report);
    std::u16string way;
    for (const TFindingStep& step : steps)
      way += (way.empty() ? u"" : u", ") + step.Message + u" (" + LineWord(step.Place.Line) + u")";
    const int line = steps.front().Place.Line;
    report.Say(line, u"Projects need each other: " + way,
               {.Project = projects[circle.front()]->GetName(), .Steps = std::move(steps)});
  }
}

void FindUnknownNeeds(const TCheckedSolution& solution, TRuleReport& report) {
  const TSolutionFacts& facts = solution.Facts;
  const auto say = [&](const std::u16string& project, const std::u16string& id, int line) {
    if (facts.Find(id) == nullptr)
      report.Say(line, project + u" needs " + id + u", which no project of the solution has",
                 {.Project = project});
  };
  for (const TSolutionProject& project : facts.Projects)
    for (const TLineText& need : project.Needs)
      say(project.Name, need.Text, need.Line);
  for (const TOldNeed& need : facts.OldNeeds)
    if (const auto* owner = facts.Find(need.Owner)) say(owner->Name, need.Needed, need.Line);
}

// Formats before 8 have no other place for them.
void FindOldNeeds(const TCheckedSolution& solution, TRuleReport& report) {
  const TSolutionFacts& facts = solution.Facts;
  if (facts.OldNeeds.empty() || facts.Format() < VSDotNetVersions[1].Format) return;
  if (const auto own = ModelOf(facts, false), all = ModelOf(facts, true);
      !CirclesAmong(all).empty() || OrderByDependancies(own, nullptr) == OrderByDependancies(all, nullptr))
    return;
  std::vector<TFindingStep> steps;
  for (const TOldNeed& need : facts.OldNeeds) {
    const auto *owner = facts.Find(need.Owner), *needed = facts.Find(need.Needed);
    if (owner != nullptr && needed != nullptr)
      steps.push_back(report.Step(need.Line, owner->Name + u" needs " + needed->Name));
  }
  const int line = facts.OldNeeds.front().Line;
  report.Say(line, u"Dependencies in the Global section change the build order", {.Steps = std::move(steps)});
}

void FindSharedIds(const TCheckedSolution& solution, TRuleReport& report) {
  FindShared(solution.Facts, report, u"identifier",
             [](const TSolutionProject& project) { return project.Id; });
}

void FindSharedNames(const TCheckedSolution& solution, TRuleReport& report) {
  FindShared(solution.Facts, report, u"name", [&](const TSolutionProject& project) {
    const bool isOwn = !project.IsFolder() && IsFirstOfId(project, solution.Facts);
    return isOwn ? project.Folder + u"\n" + project.Name : std::u16string();
  });
}

void FindSharedFiles(const TCheckedSolution& solution, TRuleReport& report) {
  FindShared(solution.Facts, report, u"file", [&](const TSolutionProject& project) {
    const bool isOwn = project.IsFile() && IsFirstOfId(project, solution.Facts);
    return isOwn ? text::ExpandPath(project.Path, solution.Facts.Folder) : std::u16string();
  });
}

void FindMissingProjects(const TCheckedSolution& solution, TRuleReport& report) {
  const TPresence presence = PresenceOf(solution);
  if (presence.Missing.size() == presence.Count) return; // FindNoProjects
  for (const std::size_t i : presence.Missing) {
    const TSolutionProject& project = solution.Facts.Projects[i];
    report.Say(project.Line, u"There is no file " + project.Path, {.Project = project.Name});
  }
}

void FindNoProjects(const TCheckedSolution& solution, TRuleReport& report) {
  const TPresence presence = PresenceOf(solution);
  if (presence.Count == 0 || presence.Missing.size() < presence.Count) return;
  std::vector<std::u16string> paths;
  paths.reserve(presence.Missing.size());
  for (const std::size_t i : presence.Missing)
    paths.push_back(solution.Facts.Projects[i].Path);
  report.Say(solution.Facts.Projects[presence.Missing.front()].Line,
             u"None of its projects is there: " + Shortlist(paths));
}

void FindOtherSpellings(const TCheckedSolution& solution, TRuleReport& report) {
  for (std::size_t i = 0; i < solution.Files.size(); ++i) {
    if (solution.Files[i] == nullptr || solution.Files[i]->Spelling.empty()) continue;
    const TSolutionProject& project = solution.Facts.Projects[i];
    report.Say(project.Line, project.Path + u" is called " + solution.Files[i]->Spelling + u" on the disk",
               {.Project = project.Name});
  }
}

void FindStrangeProjects(const TCheckedSolution& solution, TRuleReport& report) {
  static constexpr auto built = std::to_array<std::u16string_view>(
      {u".csproj",  u".vbproj",  u".vjsproj", u".vcproj",  u".vcxproj",  u".fsproj",
       u".vdproj",  u".csdproj", u".vbdproj", u".dbproj",  u".sqlproj",  u".wixproj",
       u".booproj", u".proj",    u".pyproj",  u".rptproj", u".wdproj",   u".modelproj",
       u".vddproj", u".nunit",   u".ccproj",  u".phpproj", u".shfbproj", u".ilproj"});
  for (const TSolutionProject& project : solution.Facts.Projects) {
    const std::u16string extension = text::ExtractFileExt(project.Path);
    const bool isKnown = std::ranges::any_of(
        built, [&extension](std::u16string_view known) { return text::EqualsIgnoreCase(known, extension); });
    if (project.IsFile() && !isKnown)
      report.Say(project.Line,
                 project.Path + u" is of a kind that neither MSBuild nor Visual Studio 2002 to 2010 builds",
                 {.Project = project.Name});
  }
}

void FindUnmapped(const TCheckedSolution& solution, TRuleReport& report) {
  if (solution.Facts.Configurations.empty()) return;
  TProjectGroup group;
  for (const TSolutionProject& project : solution.Facts.Projects)
    if (TakesMappings(project) && !HasActiveMapping(project) && IsFirstOfId(project, solution.Facts))
      group.push_back(&project);
  SayOfGroup(group, u" no configuration in any configuration of the solution", report);
}

void FindHalfMapped(const TCheckedSolution& solution, TRuleReport& report) {
  std::map<std::vector<std::u16string>, TProjectGroup> groups; // by the configurations that are missing
  for (const TSolutionProject& project : solution.Facts.Projects) {
    if (!TakesMappings(project) || !HasActiveMapping(project)) continue;
    auto missing = MissingMappings(project, solution.Facts);
    if (!missing.empty()) groups[std::move(missing)].push_back(&project);
  }
  for (const auto& [missing, group] : groups)
    SayOfGroup(group, u" no configuration in " + Shortlist(missing), report);
}

void FindNeverBuilt(const TCheckedSolution& solution, TRuleReport& report) {
  for (const TSolutionProject& project : solution.Facts.Projects) {
    const bool isBuilt = std::ranges::any_of(project.Mappings, std::not_fn(&TMapping::IsActive));
    if (TakesMappings(project) && HasActiveMapping(project) && !isBuilt)
      report.Say(project.Line, project.Name + u" has configurations, but none of the solution's builds it",
                 {.Project = project.Name});
  }
}

} // namespace kx::check
