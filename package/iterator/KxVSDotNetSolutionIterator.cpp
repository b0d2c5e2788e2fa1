#include "package/iterator/KxVSDotNetSolutionIterator.h"

#include "contract/Utilities.h"
#include "foundation/platform/Files.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"

#include <algorithm>
#include <array>
#include <map>
#include <set>

namespace kx {

namespace {

using TProjects = std::vector<std::shared_ptr<IVSDotNetProject>>;

// Which passes depend on which, by their places.
class TPassOrder {
public:
  TPassOrder(const TProjects& passes, const TProjects& all) : passes_(passes), all_(all) {
    for (const auto& project : all)
      others_.emplace(project->GetProjectID(), project.get());
    for (std::size_t i = 0; i < passes.size(); ++i)
      places_.emplace(passes[i]->GetProjectID(), i);
  }

  // Of two that depend on each other the one that the loop visits first goes first: visiting the projects in
  // the order of the file is the user's choice.
  std::vector<std::vector<std::size_t>> Needs() const {
    std::vector<std::set<std::size_t>> needs(passes_.size());
    for (std::size_t i = 0; i < passes_.size(); ++i)
      for (const std::size_t other : DependenciesOf(*passes_[i]))
        if (other != i) needs[std::max(i, other)].insert(std::min(i, other));
    std::vector<std::vector<std::size_t>> lists;
    lists.reserve(needs.size());
    for (const auto& places : needs)
      lists.emplace_back(places.begin(), places.end());
    return lists;
  }

private:
  // Also those that a project without a pass stands between.
  std::set<std::size_t> DependenciesOf(const IVSDotNetProject& project) const {
    std::set<std::size_t> found;
    std::set<const IVSDotNetProject*> seen;
    std::vector<const IVSDotNetProject*> open{&project};
    while (!open.empty()) {
      const auto ids = open.back()->GetDependancies();
      open.pop_back();
      for (const auto& id : ids->GetList()) {
        const auto pass = places_.find(id);
        const auto other = others_.find(id);
        if (pass != places_.end())
          found.insert(pass->second);
        else if (other != others_.end() && seen.insert(other->second).second)
          open.push_back(other->second);
      }
    }
    return found;
  }

  const TProjects& passes_;
  const TProjects all_; // which others_ has in it
  std::map<std::u16string, std::size_t, text::IgnoreCaseLess> places_;
  std::map<std::u16string, const IVSDotNetProject*, text::IgnoreCaseLess> others_;
};

} // namespace

const TKxEnumeration& VSIterateSolutionValueEnumeration() {
  static constexpr std::array<std::u16string_view, 4> names{u"svName", u"svRelativePath", u"svFullPath",
                                                            u"svProjectId"};
  static constexpr TKxEnumeration enumeration{u"TVSIterateSolutionValue", names};
  return enumeration;
}

const TKxActionClass& TKxVSSolutionIterator::Class() {
  static const TKxActionClass iteratorClass{
      u"TKxVSSolutionIterator",
      []() -> std::unique_ptr<TCustomKxAction> { return std::make_unique<TKxVSSolutionIterator>(); }};
  return iteratorClass;
}

const TKxPropertyTable& TKxVSSolutionIterator::PublishedProperties() const {
  using T = TKxVSSolutionIterator;
  static const TKxPropertyTable table(
      TKxPropertyRows<T>()
          .Field(u"Solution", &T::Solution, u"The solution file (*.sln).")
          .Field(u"IterateValue", &T::IterateValue, VSIterateSolutionValueEnumeration(),
                 u"What the loop variable holds: the project's name, its path as the solution writes it, its "
                 u"full path or its id.")
          .Field(
              u"SortByDependency", &T::SortByDependency,
              u"Visit each project behind those it depends on; otherwise in the order of the solution file.")
          .Field(u"IncludeProjectsNotFound", &T::IncludeProjectsNotFound,
                 u"Visit projects too whose files are not found on disk.")
          .Take());
  return table;
}

std::u16string TKxVSSolutionIterator::GetFormattedDescription() const {
  return u"VS.NET Solution Iterator [ " + Solution + u" ]";
}

std::u16string TKxVSSolutionIterator::GetCurrentValue() {
  return values_[static_cast<std::size_t>(GetCurrentIteration() - 1)];
}

bool TKxVSSolutionIterator::BeforeFirstIteration() {
  std::u16string path;
  if (!TryExpandExpression(u"Solution Path", Solution, true, path)) return false;
  path = FullProjectPath(path);
  if (!platform::FileExists(path)) {
    SendMessage(u"Solution not found : " + path, TStatusTag::stError);
    return false;
  }
  SendMessage(u"Loading solution file : " + path);
  try {
    ReadProjects(*OpenSolution(path, IncludeProjectsNotFound, &Host().Stop()));
    if (values_.IsEmpty()) emptyMessage_ = EmptyMessage(path);
  } catch (const std::exception& error) {
    SendMessage(u"Failed to load solution file : " + MessageOf(error), TStatusTag::stError);
    WarnOfPlace(error);
    return false;
  }
  SetIterationCount(static_cast<int>(values_.Count()));
  return true;
}

void TKxVSSolutionIterator::LookAhead(IKxActionValidationError& errors) {
  TKxBaseIterator::LookAhead(errors);
  const auto expanded = ForeseeExpression(Solution);
  if (!expanded) return;
  const std::u16string path = FullProjectPath(*expanded);
  const auto refuse = [&errors](const std::u16string& message) { errors.Add(u"Solution", message); };
  if (expanded->empty()) {
    refuse(u"A value is required.");
  } else if (!platform::FileExists(path)) {
    refuse(u"Solution not found : " + path);
  } else {
    try {
      if (LookAtSolution(path, IncludeProjectsNotFound, &Host().Stop())->GetProjects()->GetCount() == 0)
        refuse(EmptyMessage(path));
    } catch (const std::exception& error) {
      refuse(u"Failed to load solution file : " + MessageOf(error));
    }
  }
}

void TKxVSSolutionIterator::GetFilesToRead(text::TStringList& files) {
  const auto solution = ForeseeExpression(Solution);
  if (solution && !solution->empty()) files.Add(FullProjectPath(*solution));
}

std::u16string TKxVSSolutionIterator::EmptyMessage(const std::u16string& path) const {
  const int count = LookAtSolution(path, true, &Host().Stop())->GetProjects()->GetCount();
  if (count == 0) return u"The loop has no pass: the solution " + path + u" has no projects.";
  return u"The loop has no pass: the solution " + path + u" names " + text::FromInteger(count) +
         u" projects, and none is on disk. With IncludeProjectsNotFound they are visited all the same.";
}

// They come sorted, in the order in which a build takes them.
std::vector<std::shared_ptr<IVSDotNetProject>>
TKxVSSolutionIterator::ProjectsOf(const IVSDotNetSolution& solution) const {
  const auto projects = solution.GetProjects();
  std::vector<std::shared_ptr<IVSDotNetProject>> list;
  list.reserve(static_cast<std::size_t>(projects->GetCount()));
  for (int i = 0; i < projects->GetCount(); ++i)
    list.push_back(SortByDependency ? projects->GetItem(i) : projects->GetItemInFileOrder(i));
  return list;
}

void TKxVSSolutionIterator::ReadProjects(const IVSDotNetSolution& solution) {
  SendMessage(u"Found " + text::FromInteger(solution.GetProjects()->GetCount()) + u" projects:");
  if (SortByDependency) SendMessage(u"Sorting in dependency order...");
  values_.Clear();
  for (const auto& project : ProjectsOf(solution)) {
    SendMessage(project->GetName() + u" - " + project->GetFileName() + u" - " + project->GetProjectID());
    values_.Add(GetValue(*project));
  }
}

std::optional<std::vector<TKxPass>> TKxVSSolutionIterator::Passes() {
  const auto expanded = ForeseeExpression(Solution);
  if (!expanded || expanded->empty()) return std::nullopt;
  try {
    const std::u16string path = FullProjectPath(*expanded);
    const auto solution = LookAtSolution(path, IncludeProjectsNotFound, &Host().Stop());
    const auto projects = ProjectsOf(*solution);
    // What a project that is left out depends on, the solution says only where it is not left out.
    const bool isWhole = solution->GetProjectsNotFound().empty();
    const auto whole = isWhole ? solution : LookAtSolution(path, true, &Host().Stop());
    const auto needs = TPassOrder(projects, ProjectsOf(*whole)).Needs();
    std::vector<TKxPass> passes;
    passes.reserve(projects.size());
    for (std::size_t i = 0; i < projects.size(); ++i)
      passes.push_back({GetValue(*projects[i]), needs[i]});
    return passes;
  } catch (const std::exception&) {
    return std::nullopt; // whoever runs the loop is told why
  }
}

std::u16string TKxVSSolutionIterator::GetValue(const IVSDotNetProject& project) {
  switch (IterateValue) {
  case TVSIterateSolutionValue::svName:
    return project.GetName();
  case TVSIterateSolutionValue::svRelativePath:
    return project.GetFileName();
  case TVSIterateSolutionValue::svFullPath:
    return TPathUtils::ExpandRelativePath(project.GetFileName(),
                                          text::ExtractFileDir(FullProjectPath(ExpandExpression(Solution))));
  case TVSIterateSolutionValue::svProjectId:
    return project.GetProjectID();
  }
  return {};
}

} // namespace kx
