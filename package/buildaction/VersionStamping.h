// Writes version numbers into a solution's files before it is built.
#pragma once

#include "package/assemblyinfo/AssemblyInfo.h"
#include "package/buildaction/KxVSDotNetAction.h"
#include "package/versioninfo/Brannic.VStudio.SolutionAssemblyUpdater.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace kx {

// What a property set of .NET values has goes to its place; the rest stays.
void LoadDotNetVersionInfo(const IPropertySet& set, TAssemblyInfoSettings& values);

// One stamping of the AssemblyInfo files of a solution's projects. The action's settings give the values, or
// the property set that they name; what the set lacks comes from the settings. Incremented numbers stay in
// the action.
class TAssemblyInfoStamping : private IAssemblyInfoCallback {
public:
  // `stop` ends a transfer; it outlives the stamping, as the action does.
  TAssemblyInfoStamping(TKxCustomVSDotNetAction& action, std::shared_ptr<IVSDotNetSolution> solution,
                        const TKxEvent& stop)
      : action_(action), solution_(std::move(solution)), stop_(stop), values_(action.AssemblyInfo()) {}

  bool Run();     // in a message group of its own; False with the reason in the log
  void CountUp(); // the numbers alone, where Run would; raises EKxException when they cannot be stored

private:
  bool TakeValues();
  bool IncrementNumbers();
  bool UpdateFiles();
  void UpdateSelected(IKxAssemblyInfoUpdater& updater);

  void OnProcessFile(std::u16string_view fileName, IAssemblyInfoAttributes& updater) override;
  void AssemblyInfoProcessEntry(std::u16string_view name, std::u16string_view value) override;
  void AssemblyInfoProcessMessage(std::u16string_view text) override;

  TKxCustomVSDotNetAction& action_;
  std::shared_ptr<IVSDotNetSolution> solution_;
  const TKxEvent& stop_;
  TAssemblyInfoSettings values_; // of this stamping
};

// One stamping of the version resources of a solution's C++ projects: of each project the one script that has
// any.
class TWin32Stamping {
public:
  TWin32Stamping(TKxCustomVSDotNetAction& action, std::shared_ptr<IVSDotNetSolution> solution)
      : action_(action), solution_(std::move(solution)) {}

  // Whether the numbers fit into a version resource; False with the reason in the log. Changes nothing, so
  // that it can be asked before anything else is stamped.
  bool CheckNumbers();
  bool Run();     // in a message group of its own; False with the reason in the log
  void CountUp(); // the number alone, where Run would; raises EKxException when it cannot be stored

private:
  bool TakeValues();
  void CountBuild(const IPropertySet* set);
  TVersionInfoValues Wanted(const IPropertySet* set) const;
  bool ExpandTexts();
  bool DoUpdateWin32VersionInfo();
  bool ApplyVersionInfo(const std::u16string& file);
  bool Attempt(std::u16string_view failure, const std::function<void()>& step);

  TKxCustomVSDotNetAction& action_;
  std::shared_ptr<IVSDotNetSolution> solution_;
  TVersionInfoValues values_; // of this stamping
};

// The files that the action's settings let it stamp, as far as the solution and the project files on this
// machine tell; projects on web servers are left out.
void CollectFilesToStamp(TKxCustomVSDotNetAction& action, const IVSDotNetSolution& solution,
                         text::TStringList& files);

} // namespace kx
