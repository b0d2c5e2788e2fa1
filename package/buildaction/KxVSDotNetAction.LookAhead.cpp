#include "package/buildaction/KxVSDotNetAction.h"
#include "contract/Utilities.h"
#include "foundation/platform/Files.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "package/assemblyinfo/AssemblyInfoVersion.h"
#include "package/buildaction/ConfigurationNames.h"
#include "package/buildaction/KxVSDotNetOptions.h"
#include "package/buildaction/MSBuildCommandLine.h"
#include "package/buildaction/ProjectSearch.h"
#include "package/buildaction/ProjectSelection.h"
#include "package/buildaction/VersionStamping.h"
#include "package/versioninfo/Brannic.VStudio.SolutionAssemblyUpdater.h"
#include "package/web/WebAddress.h"

namespace kx {

namespace {

// One look at the settings of an action: each step adds what a run would stumble over. Entries name the
// property.
class TBuildOutlook {
public:
  TBuildOutlook(TKxCustomVSDotNetAction& action, IKxActionValidationError& errors, const TKxEvent* stop)
      : action_(action), errors_(errors), stop_(stop) {}

  void Look();

private:
  using TPropertySet = std::shared_ptr<const IPropertySet>;

  void CheckTool(bool useMSBuild);
  void CheckWarningLists();
  void CheckAssemblyInfo();
  void CheckAssemblyVersion(std::u16string_view attribute, std::u16string_view property,
                            const TVersionQuadruple& version);
  void CheckWin32Values();
  TPropertySet CheckPropertySet(std::u16string_view property, const std::u16string& name);
  void CheckSolution();
  std::shared_ptr<IVSDotNetSolution> OpenSolution();
  std::vector<std::u16string> CheckConfiguration(const IVSDotNetSolution& solution);
  void CheckProjects(const IVSDotNetSolution& solution, const std::vector<std::u16string>& configurations);
  void CheckWebProjects(const IVSDotNetSolution& solution);
  void CheckSelection(const IVSDotNetSolution& solution, std::u16string_view property,
                      const text::TStringList& entries);

  TKxCustomVSDotNetAction& action_;
  IKxActionValidationError& errors_;
  const TKxEvent* stop_;
};

void TBuildOutlook::Look() {
  CheckTool(action_.UsingMSBuild());
  if (action_.UsingMSBuild()) CheckWarningLists();
  if (action_.AssemblyInfo().UpdateAssemblyInfo) CheckAssemblyInfo();
  if (action_.Win32Stamp().UpdateWin32Resource) CheckWin32Values();
  CheckSolution();
}

void TBuildOutlook::CheckTool(bool useMSBuild) {
  const auto executable = action_.ForeseeExecutable(useMSBuild);
  if (!executable || (!executable->empty() && platform::FileExists(*executable))) return;
  const std::u16string message =
      executable->empty() ? action_.HowToFindTool(useMSBuild) : u"Executable not found : " + *executable;
  if (message.empty()) return;
  if (useMSBuild)
    errors_.Add(u".NET Framework Settings", message);
  else
    errors_.Add(u"VisualStudio.NET Options", message, VSDotNetOptions());
}

void TBuildOutlook::CheckWarningLists() {
  const TMSBuildSettings& settings = action_.MSBuild();
  if (!settings.OverrideWarnings) return;
  const auto check = [this](std::u16string_view property, const std::u16string& text) {
    const auto list = action_.ForeseeExpression(text);
    if (list && !IsWarningList(*list))
      errors_.Add(property, DoubleQuoteString(*list) +
                                u" is not valid. Only warning numbers, separated by semicolons, can be "
                                u"specified.");
  };
  if (!settings.AllWarningsAsErrors && settings.SelectedWarningsAsErrors)
    check(u"WarningsAsErrors", settings.WarningsAsErrors);
  if (settings.DisableSelectedWarnings) check(u"DisableWarnings", settings.DisableWarnings);
}

TBuildOutlook::TPropertySet TBuildOutlook::CheckPropertySet(std::u16string_view property,
                                                            const std::u16string& name) {
  auto set = action_.GetPropertySetService().Find(name);
  if (name.empty())
    errors_.Add(property, u"The name of the property set is blank.");
  else if (set == nullptr)
    errors_.Add(property, u"Unable to find property set: " + name);
  return set;
}

void TBuildOutlook::CheckAssemblyInfo() {
  const TAssemblyInfoSettings& settings = action_.AssemblyInfo();
  TAssemblyInfoSettings values = settings;
  if (settings.UsePropertySet) {
    const auto set = CheckPropertySet(u"DotNetVersionInfoPropertySetName", settings.PropertySetName);
    if (set == nullptr) return;
    LoadDotNetVersionInfo(*set, values);
  }
  if (values.UpdateVersion) CheckAssemblyVersion(u"AssemblyVersion", u"AssemblyVersion", values.Version);
  if (!values.UpdateFileVersion) return;
  if (values.LinkFileVersion)
    CheckAssemblyVersion(u"AssemblyFileVersion", u"AssemblyVersion", values.Version);
  else
    CheckAssemblyVersion(u"AssemblyFileVersion", u"AssemblyFileVersion", values.FileVersion);
}

void TBuildOutlook::CheckAssemblyVersion(std::u16string_view attribute, std::u16string_view property,
                                         const TVersionQuadruple& version) {
  const auto text = action_.ForeseeExpression(version.Text());
  if (!text) return;
  if (const auto refused = kx::CheckAssemblyVersion(attribute, text::ReplaceAll(*text, u"|", u".")))
    errors_.Add(property, *refused);
}

void TBuildOutlook::CheckWin32Values() {
  const TWin32StampSettings& settings = action_.Win32Stamp();
  TVersionInfoContainer values;
  values.Values() = action_.Win32Values().Values();
  std::u16string_view property = u"UpdateWin32Resource";
  if (settings.UsePropertySet) {
    property = u"Win32VersionInfoPropertySetName";
    const auto set = CheckPropertySet(property, settings.PropertySetName);
    if (set == nullptr) return;
    try {
      TVersionInfo::LoadFromPropertySet(*set, values);
    } catch (const std::exception& error) {
      errors_.Add(property, MessageOf(error));
      return;
    }
  }
  if (const auto refused = TVersionInfo::CheckNumbers(values.Values())) errors_.Add(property, *refused);
}

void TBuildOutlook::CheckSolution() {
  const auto solution = OpenSolution();
  if (!solution) return;
  const auto configurations = CheckConfiguration(*solution);
  const TVSDotNetBuildType buildType = action_.Solution().BuildType;
  if (buildType != TVSDotNetBuildType::btAllProjects) CheckProjects(*solution, configurations);
  // One by one they are left out. Of a whole solution the tool may not build those that are missing, unless
  // it is all of them.
  const bool mayBeLeftOut =
      buildType == TVSDotNetBuildType::btAllProjects && solution->GetProjects()->GetCount() > 0;
  if (buildType != TVSDotNetBuildType::btSelectedProjects && !mayBeLeftOut)
    if (const auto missing = MissingProjects(*solution, configurations); !missing.empty())
      errors_.Add(u"Solution", missing);
  const TAssemblyInfoSettings& assemblyInfo = action_.AssemblyInfo();
  if (assemblyInfo.UpdateAssemblyInfo) CheckWebProjects(*solution);
  if (assemblyInfo.UpdateAssemblyInfo && assemblyInfo.ApplyTo != TVSDotNetBuildType::btAllProjects)
    CheckSelection(*solution, u"AssemblySelectedProjects", assemblyInfo.SelectedProjects);
  const TWin32StampSettings& win32 = action_.Win32Stamp();
  if (win32.UpdateWin32Resource && win32.ApplyTo != TVSDotNetBuildType::btAllProjects)
    CheckSelection(*solution, u"ResourceSelectedProjects", win32.SelectedProjects);
}

void TBuildOutlook::CheckWebProjects(const IVSDotNetSolution& solution) {
  if (action_.WebProjects().DetectMethod != TProjLocDetectMethod::useWebDAV) return;
  const auto projects = solution.GetProjects();
  for (int i = 0; i < projects->GetCount(); ++i)
    if (IsWebAddress(projects->GetItem(i)->GetFileName()) && action_.IsWebDAVPasswordLost())
      errors_.Add(u"WebDAVPassword", std::u16string(LostWebDAVPassword) + u".");
}

std::shared_ptr<IVSDotNetSolution> TBuildOutlook::OpenSolution() {
  const auto name = action_.ForeseeExpression(action_.Solution().Solution);
  if (!name || action_.Solution().Solution.empty()) return nullptr;
  const std::u16string file = name->empty() ? *name : action_.FullProjectPath(*name);
  if (!platform::FileExists(file)) {
    errors_.Add(u"Solution", u"Solution File " + DoubleQuoteString(file) + u" does not exist");
    return nullptr;
  }
  try {
    return LookAtSolution(file, false, stop_);
  } catch (const std::exception& error) {
    errors_.Add(u"Solution", u"Error Parsing Solution File : " + MessageOf(error));
    return nullptr;
  }
}

// The configurations that a run would build; empty when that is not known.
std::vector<std::u16string> TBuildOutlook::CheckConfiguration(const IVSDotNetSolution& solution) {
  const TSolutionSettings& settings = action_.Solution();
  const auto wanted = action_.ForeseeExpression(settings.SolutionConfiguration);
  if (!wanted) return {};
  std::u16string problem;
  auto matched = MatchConfigurations(solution, *wanted, settings.UseRegExOnConfigName, problem);
  const bool toolDecides =
      settings.BuildType == TVSDotNetBuildType::btAllProjects && MayToolKnowConfiguration(solution, *wanted);
  if (wanted->empty())
    problem = u"A configuration is required.";
  else if (problem.empty() && matched.empty() && !toolDecides)
    problem = MissingConfiguration(solution, *wanted);
  else if (problem.empty())
    problem = GuessedConfiguration(solution, *wanted, matched);
  if (!problem.empty()) errors_.Add(u"SolutionConfiguration", problem);
  return matched;
}

void TBuildOutlook::CheckProjects(const IVSDotNetSolution& solution,
                                  const std::vector<std::u16string>& configurations) {
  const TSolutionSettings& settings = action_.Solution();
  if (settings.BuildType == TVSDotNetBuildType::btSelectedProjects)
    CheckSelection(solution, u"SelectedProjects", settings.SelectedProjects);
  if (action_.NeedsDevEnv(solution, configurations)) CheckTool(false);
  bool anyIsBuilt = false;
  bool anyByMSBuild = false;
  const auto projects = action_.ProjectsToBuild(solution);
  for (const auto& project : projects) {
    const bool isBuilt = IsBuiltIn(*project, configurations);
    anyIsBuilt |= isBuilt;
    anyByMSBuild |= isBuilt && action_.UsingMSBuild() && !IsSetupProject(*project);
  }
  if (const auto cut = anyByMSBuild ? WhyFolderIsCut(solution) : std::u16string(); !cut.empty())
    errors_.Add(u"Solution", cut);
  if (const auto shared = ExplainSharedIdentifiers(solution, projects); !shared.empty())
    errors_.Add(u"Solution", shared);
  if (!configurations.empty() && !projects.empty() && !anyIsBuilt)
    errors_.Add(u"BuildType",
                u"None of the projects to build is part of " + text::Join(configurations, u", ") + u".");
}

void TBuildOutlook::CheckSelection(const IVSDotNetSolution& solution, std::u16string_view property,
                                   const text::TStringList& entries) {
  if (entries.IsEmpty()) errors_.Add(property, u"No projects are selected.");
  text::TStringList foreseen;
  for (const auto& entry : entries)
    if (action_.ForeseeExpression(entry)) foreseen.Add(entry);
  const auto selection =
      ResolveSelection(solution, foreseen, [this](auto text) { return action_.ExpandExpression(text); });
  TSelectionExplanations explanations(solution);
  for (const auto& entry : selection.Unresolved)
    errors_.Add(property, explanations.Explain(entry));
}

} // namespace

void TKxCustomVSDotNetAction::LookAhead(IKxActionValidationError& errors) {
  TBuildOutlook(*this, errors, IsAttached() ? &Host().Stop() : nullptr).Look();
}

} // namespace kx
