#include "program/check/Check.h"

#include "foundation/platform/Files.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/WindowsPath.h"
#include "program/check/BuildProjectFacts.h"
#include "program/check/Configurations.h"
#include "program/check/ProjectRules.h"
#include "program/check/SolutionRules.h"

#include <algorithm>

namespace kx::check {

namespace {

// In the order of checking: projects that no solution has named come last.
constexpr std::array<std::u16string_view, 8> CheckedExtensions{
    u".sln", u".csproj", u".vbproj", u".vjsproj", u".fsproj", u".vcproj", u".vcxproj", u".kxproj"};

std::size_t PlaceOfKind(std::u16string_view name) {
  const std::u16string extension = text::ExtractFileExt(name);
  const auto* found = std::ranges::find_if(CheckedExtensions, [&extension](std::u16string_view checked) {
    return text::EqualsIgnoreCase(checked, extension);
  });
  return static_cast<std::size_t>(found - CheckedExtensions.begin());
}

// Links may lead in circles, so there is an end to the depth.
void CollectFiles(const std::u16string& folder, int depth, TFilesToCheck& found) {
  constexpr int deepest = 32;
  if (depth > deepest) return;
  const auto entries = platform::ListDirectory(folder);
  if (!entries) return found.Troubles.push_back(entries.Message());
  for (const auto& entry : *entries) {
    const std::u16string path = text::JoinPath(folder, entry.Name);
    if (entry.IsDirectory && !entry.Name.starts_with(u'.')) CollectFiles(path, depth + 1, found);
    if (!entry.IsDirectory && PlaceOfKind(entry.Name) < CheckedExtensions.size()) found.Files.push_back(path);
  }
}

template <typename TSubject>
void ApplyRules(const TCheckLevels& levels, const std::u16string& file, const TSubject& subject,
                std::vector<TFinding>& findings) {
  using TLook = void (*)(const TSubject&, TRuleReport&);
  for (const TCheckRule& rule : CheckRules()) {
    const auto* look = std::get_if<TLook>(&rule.Look);
    const TCheckLevel level = levels.Of(rule);
    if (look == nullptr || !level) continue;
    TRuleReport report(rule, *level, file, findings);
    (*look)(subject, report);
  }
}

} // namespace

TFilesToCheck FilesToCheck(const std::u16string& path) {
  const std::u16string full = text::ExpandPath(path, platform::CurrentDirectory());
  if (platform::FileExists(full)) return {.Files = {full}};
  if (!platform::DirectoryExists(full)) throw EKxException(u"There is no file or folder " + path + u".");
  TFilesToCheck found;
  CollectFiles(full, 0, found);
  if (found.Files.empty() && found.Troubles.empty())
    found.Troubles.push_back(u"There is no solution, project or build project in " + full + u".");
  std::ranges::stable_sort(found.Files, {}, PlaceOfKind);
  return found;
}

void TChecker::CheckSolution(const std::u16string& file) {
  ++files_;
  const TSolutionFacts facts = ReadSolutionFacts(file);
  TCheckedSolution solution{.Facts = facts, .Files = {}, .Projects = {}};
  for (const TSolutionProject& project : facts.Projects) {
    const TNamedFile* named = project.IsFile() ? &disk_.Find(facts.Folder, project.Path) : nullptr;
    const bool isThere = named != nullptr && named->Exists && !named->IsFolder;
    solution.Files.push_back(named);
    solution.Projects.push_back(isThere ? KnowProject(text::ExpandPath(project.Path, facts.Folder))
                                        : nullptr);
  }
  ApplyRules(levels_, file, solution, findings_);
}

void TChecker::CheckProject(const std::u16string& file) {
  static_cast<void>(KnowProject(file));
}

void TChecker::CheckBuildProject(const TBuildProjectFacts& project) {
  ++files_;
  ApplyRules(levels_, project.File, project, findings_);
}

std::vector<std::u16string> TChecker::CheckConfiguration(const std::u16string& file,
                                                         const std::u16string& wanted) {
  TConfigurationMatch match = MatchConfigurations(file, wanted);
  ApplyRules(levels_, file, match, findings_);
  return std::move(match.Names);
}

std::shared_ptr<const TKnownProject> TChecker::KnowProject(const std::u16string& file) {
  const auto [known, isNew] = projects_.try_emplace(file);
  if (!isNew) return known->second;
  auto project = std::make_shared<TKnownProject>();
  project->Facts = ReadProjectFacts(file);
  project->Versions = ReadVersionFacts(project->Facts, disk_);
  known->second = project;
  ApplyRules(levels_, file, TCheckedProject{project->Facts, project->Versions, disk_}, findings_);
  return project;
}

std::vector<TFinding> TChecker::TakeFindings() {
  std::map<std::u16string, std::size_t> order;
  for (const TFinding& finding : findings_)
    order.try_emplace(finding.Place.File, order.size());
  std::ranges::stable_sort(findings_, {}, [&order](const TFinding& finding) {
    return std::pair(order.at(finding.Place.File), finding.Place.Line);
  });
  return std::move(findings_);
}

} // namespace kx::check
