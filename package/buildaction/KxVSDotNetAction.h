// The action DEVENV: builds a Visual Studio solution, or chosen projects of it, with devenv.com or
// MSBuild.exe.
#pragma once

#include "contract/ProcessActions.h"
#include "contract/Services.h"
#include "package/assemblyinfo/AssemblyInfo.h"
#include "package/buildaction/BuildSettings.h"
#include "package/buildaction/ProjectSearch.h"

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace kx {

class TBuildRun;

// What an execution has counted, and which configuration it builds: what the last one has left stays
// readable.
struct TBuildProgress {
  std::int32_t Errors = 0;
  std::int32_t Warnings = 0;
  std::u16string ConfigName;
  std::u16string PlatformName;
};

// All of the action: its settings (one struct a concern), what the host asks of it, and the operations on
// projects that scripts and editors share. What lives for one execution only is in TBuildRun.
class TKxCustomVSDotNetAction : public TKxMultiExecAction {
public:
  TKxCustomVSDotNetAction();
  ~TKxCustomVSDotNetAction() override;

  TSolutionSettings& Solution() { return solution_; }
  const TSolutionSettings& Solution() const { return solution_; }
  TMSBuildSettings& MSBuild() { return msbuild_; }
  const TMSBuildSettings& MSBuild() const { return msbuild_; }
  TAssemblyInfoSettings& AssemblyInfo() { return assemblyInfo_; }
  TWin32StampSettings& Win32Stamp() { return win32Stamp_; }
  TVersionInfoContainer& Win32Values() { return win32Values_; }
  TWebProjectSettings& WebProjects() { return webProjects_; }
  TAssemblyInfoHistory& StampHistory() { return stampHistory_; } // of all executions

  // devenv.com is used otherwise: MSBuild came with Visual Studio 2005.
  bool UsingMSBuild() const;
  std::int32_t GetCompilerErrorCount() const { return progress_.Errors; }
  std::int32_t GetCompilerWarningCount() const { return progress_.Warnings; }

  // Properties that do more than store.
  void SetAutoIncAssemblyRevisionNo(bool value);
  void SetAutoIncAssemblyBuildNumber(bool value);
  void SetAutoIncAssemblyFileRevisionNo(bool value);
  void SetAutoIncAssemblyFileBuildNumber(bool value);
  void SetAutoIncBuild(bool value);
  void SetCodePage(std::int32_t value);     // 0 stands for the default, 1252
  std::u16string GetWebDAVPassword() const; // empty when it cannot be decrypted on this machine
  bool IsWebDAVPasswordLost() const;        // then
  // The value it already has changes nothing: so one that cannot be decrypted here is kept.
  void SetWebDAVPassword(std::u16string_view clear);

  // The three selections, their entries turned into project ids where the solution knows them. What is stored
  // stays as it is: an entry with variables means another project in each pass of a loop.
  text::TStringList GetSelectedProjects();
  text::TStringList GetAssemblySelectedProjects();
  text::TStringList GetResourceSelectedProjects();
  // For a run over `solution`: the ids as the solution spells them. An entry that means no project stays and
  // is said, with the property's name.
  text::TStringList ResolveProjects(std::u16string_view property, const text::TStringList& entries,
                                    const IVSDotNetSolution& solution);

  // In build order. Silent, and so for looking ahead too.
  TFoundProjects ProjectsToBuild(const IVSDotNetSolution& solution);
  // Setup projects among them are left to devenv, whatever builds the others.
  bool NeedsDevEnv(const IVSDotNetSolution& solution, std::span<const std::u16string> configurations);

  // Of the project that `text` means: its name, id, file or path in the solution. Empty when there is none
  // and when the solution cannot be opened; these never raise.
  std::u16string GetProjectID(std::u16string_view text);
  std::u16string GetProjectName(std::u16string_view text);
  std::u16string GetProjectPath(std::u16string_view text); // the full path of its file
  std::u16string GetAllSolutionConfigurations();           // one a line

  // The tool's full path; empty when it is not installed.
  std::u16string GetExecutable(bool useMSBuild);
  bool VerifyExecutable(bool useMSBuild);                           // says it when it is not
  std::optional<std::u16string> ForeseeExecutable(bool useMSBuild); // as ForeseeExpression
  // For a tool that is not installed: which option says where it is, and how to set it. Empty for a version
  // that has no such tool.
  std::u16string HowToFindTool(bool useMSBuild) const;

  // For the run of an execution.
  using TKxMultiExecAction::CheckProcessCleanExit;
  using TKxMultiExecAction::NewActionProcess;

  bool Execute() override;
  void CountUp() override;
  bool Validate(IKxActionValidationError& errors) override;
  void LookAhead(IKxActionValidationError& errors) override;
  void GetFilesToChange(text::TStringList& files) override;
  void GetFilesToRead(text::TStringList& files) override;
  void GetRequirements(text::TStringList& words) const override;
  void TerminateAction() override { terminate_.Raise(); }
  bool CanTerminate() const override { return true; }
  bool RequiresSync() const override { return false; }
  std::u16string GetActionName() const override { return u"Build VS.Net Solution"; }
  std::u16string GetActionKeywords() const override { return u"VisualStudio"; }
  std::u16string GetFormattedDescription() const override;
  std::u16string GetQuickHelpFilename() const override { return u"Plugins\\VSDotNet.html"; }
  int GetHelpTopicID() const override { return 1300; }
  void GetHiddenProperties(text::TStringList& names) const override;
  void GetPropertyAlias(text::TStringList& aliases) const override;
  void GetPropertyHelp(text::TStringList& help) const override;
  void CollectLocalVariables(text::TStringList& names, bool withTypes, bool withDescriptions) const override;
  bool GetLocalVariableValue(std::u16string_view name, std::u16string& value) const override;
  std::u16string ActionExpandExpression(std::u16string_view text) const override;

protected:
  void OnStdOutData(IKxProcess& process, std::u16string_view text) override;

private:
  // Null when it cannot be opened, or is being opened already (an expression in `Solution` that asks for a
  // project).
  class TLookedAt;
  std::shared_ptr<TLookedAt> TryLookAt(); // null when there is nothing to look at
  std::shared_ptr<IVSDotNetSolution> TryOpenSolution();
  text::TStringList WithProjectIDs(const text::TStringList& entries);
  void ExplainMissingTool(bool useMSBuild);
  void SetAutoIncrement(bool& flag, bool value, bool partner, std::u16string_view property);

  TSolutionSettings solution_;
  TMSBuildSettings msbuild_;
  TAssemblyInfoSettings assemblyInfo_;
  TWin32StampSettings win32Stamp_;
  TVersionInfoContainer win32Values_;
  TWebProjectSettings webProjects_;
  TAssemblyInfoHistory stampHistory_;

  TKxEvent terminate_;
  TBuildRun* run_ = nullptr; // while Execute runs
  TBuildProgress progress_;
  bool opening_ = false;
};

// The registered class: publishes the properties.
class TKxVSDotNetAction : public TKxCustomVSDotNetAction {
public:
  static const TKxActionClass& Class();
  const TKxPropertyTable& PublishedProperties() const override;

  // For scripts: the action's operations of the same names.
  static std::u16string GetProjectIDFunction(TCustomKxAction& action, std::u16string_view argument);
  static std::u16string GetProjectNameFunction(TCustomKxAction& action, std::u16string_view argument);
  static std::u16string GetProjectPathFunction(TCustomKxAction& action, std::u16string_view argument);
};

// The editor of the properties that name the solution and its configuration.
struct TSolutionEditor {
  static std::u16string_view GetPage() { return u"Solution"; }
  static const TKxPropertyEditorClass& Class();
};

} // namespace kx
