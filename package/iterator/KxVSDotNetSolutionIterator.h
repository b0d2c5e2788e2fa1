// The action SOLUTIONITERATOR: a loop over the projects of a Visual Studio solution.
#pragma once

#include "contract/Iterator.h"
#include "foundation/text/StringList.h"
#include "package/solution/VSNETSLN.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kx {

// What the loop variable holds of each project. Stored as its ordinal.
enum class TVSIterateSolutionValue : std::int32_t { svName, svRelativePath, svFullPath, svProjectId };

const TKxEnumeration& VSIterateSolutionValueEnumeration();

// Runs its child actions once for each project. All values are read before the first pass, so children may
// change the solution; it is read anew by each execution. A solution that is missing or cannot be read fails
// the loop with a message.
class TKxVSSolutionIterator : public TKxBaseIterator {
public:
  static const TKxActionClass& Class();

  std::u16string Solution; // may hold references; a relative one is seen from the project file's folder
  TVSIterateSolutionValue IterateValue = TVSIterateSolutionValue::svFullPath;
  bool SortByDependency = true;
  bool IncludeProjectsNotFound = false;

  const TKxPropertyTable& PublishedProperties() const override;
  std::u16string GetFormattedDescription() const override;
  std::u16string GetActionName() const override { return u"VS.NET Solution Iterator"; }
  std::u16string GetActionKeywords() const override { return u"Visual Studio VisualStudio Project"; }
  std::u16string GetPassUnit() const override { return u"project"; }
  void LookAhead(IKxActionValidationError& errors) override;
  // A pass follows those of the projects that its project depends on, also by way of projects without a pass.
  std::optional<std::vector<TKxPass>> Passes() override;
  void GetFilesToRead(text::TStringList& files) override;

protected:
  std::u16string GetCurrentValue() override;
  bool BeforeFirstIteration() override;
  std::u16string GetEmptyMessage() const override { return emptyMessage_; }

private:
  void ReadProjects(const IVSDotNetSolution& solution);
  std::vector<std::shared_ptr<IVSDotNetProject>> ProjectsOf(const IVSDotNetSolution& solution) const;
  std::u16string GetValue(const IVSDotNetProject& project);
  std::u16string EmptyMessage(const std::u16string& path) const; // raises what LookAtSolution raises

  text::TStringList values_;    // one a pass
  std::u16string emptyMessage_; // when there are none
};

} // namespace kx
