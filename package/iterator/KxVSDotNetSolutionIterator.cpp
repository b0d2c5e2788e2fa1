#include "package/iterator/KxVSDotNetSolutionIterator.h"

#include "contract/Utilities.h"
#include "foundation/platform/Files.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"

#include <array>

namespace kx {

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

std::u16string TKxVSSolutionIterator::EmptyMessage(const std::u16string& path) const {
  const int count = LookAtSolution(path, true, &Host().Stop())->GetProjects()->GetCount();
  if (count == 0) return u"The loop has no pass: the solution " + path + u" has no projects.";
  return u"The loop has no pass: the solution " + path + u" names " + text::FromInteger(count) +
         u" projects, and none is on disk. With IncludeProjectsNotFound they are visited all the same.";
}

void TKxVSSolutionIterator::ReadProjects(const IVSDotNetSolution& solution) {
  const auto projects = solution.GetProjects();
  SendMessage(u"Found " + text::FromInteger(projects->GetCount()) + u" projects:");
  // They come sorted, in the order in which a build takes them.
  if (SortByDependency) SendMessage(u"Sorting in dependency order...");
  values_.Clear();
  for (int i = 0; i < projects->GetCount(); ++i) {
    const auto project = SortByDependency ? projects->GetItem(i) : projects->GetItemInFileOrder(i);
    SendMessage(project->GetName() + u" - " + project->GetFileName() + u" - " + project->GetProjectID());
    values_.Add(GetValue(*project));
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
