// One execution of the Build action.
#pragma once

#include "package/buildaction/BuildOutputAnalysis.h"
#include "package/buildaction/KxVSDotNetAction.h"
#include "package/buildaction/MSBuildLogger.h"

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kx {

// Owns what lives for one execution: the solution, the reader of the structured logger's lines, and the
// analysis of the output of one configuration. The action passes the tool's output on to it. Every message
// group that it opens is closed on every path.
class TBuildRun : private IBuildOutputSink {
public:
  // `terminate`, once raised, ends the tool and the execution.
  TBuildRun(TKxCustomVSDotNetAction& action, IKxActionHost& host, TBuildProgress& progress,
            TKxEvent& terminate);

  // The result of the last configuration: a failed one does not keep the next from being built, a request to
  // stop does. Raises EFailAction.
  bool Execute();
  void ReadOutput(std::u16string_view chunk);

private:
  // Who gives False or nothing has said why; who has not raises EFailAction with the reason.
  std::shared_ptr<IVSDotNetSolution> LoadSolution();
  std::vector<std::u16string> FindConfigurations(const std::u16string& wanted);
  bool VerifySetupTool(const std::vector<std::u16string>& configurations);
  bool StampVersions();

  bool IsStopped() const;
  bool SayStopped(); // always False
  void WarnOfMissingProjects(std::span<const std::u16string> configurations);
  bool BuildAll(const std::vector<std::u16string>& configurations);
  bool BuildConfiguration(const std::u16string& configuration);
  void ReportNothingBuilt(const std::vector<std::u16string>& configurations);
  bool PerformBuild(const std::u16string& configuration);
  bool BuildSolution(const std::u16string& configuration);
  bool RebuildProjects(const std::u16string& configuration);
  bool BuildProjects(const std::u16string& configuration, TVSDotNetBuildAction buildAction);
  std::optional<text::TStringList> ReadProjects();
  std::optional<text::TStringList> ReadSelectedProjects();
  bool BuildProject(const IVSDotNetProject& project, const std::u16string& configuration, bool useMSBuild,
                    TVSDotNetBuildAction buildAction);

  std::optional<std::u16string> ExpandExtraParameters();
  std::u16string ProjectParameters(const IVSDotNetProject& project, std::u16string_view projectConfiguration,
                                   const std::u16string& configuration, bool useMSBuild,
                                   TVSDotNetBuildAction buildAction);
  std::u16string MSBuildParameters(std::u16string_view configuration, bool anyCPU,
                                   TVSDotNetBuildAction buildAction);
  bool RunCompiler(const std::u16string& parameters, bool useMSBuild);
  void WarnOfSharedIdentifiers();
  void WarnOfCutFolder();
  void RunProcess(IKxProcess& process);
  void NoteBuilt(bool useMSBuild);
  bool JudgeRun(IKxProcess& process);
  void ReportStructuredCounts();

  void Count(TBuildCount what, std::int32_t number) override;
  void Line(std::u16string_view line, TStatusTag status) override { action_.SendMessage(line, status); }
  void StructuredLine(std::u16string_view line) override { structuredOutput_.ProcessLine(line); }

  TKxCustomVSDotNetAction& action_;
  IKxActionHost& host_;
  TBuildProgress& progress_;
  TKxEvent& terminate_;
  TKxMSBuildStructuredOutputHelper structuredOutput_;
  std::shared_ptr<IVSDotNetSolution> solution_;
  std::optional<TBuildOutputAnalysis> analysis_;
  int toolRuns_ = 0;
  int fruitfulRuns_ = 0; // those that built a project, as far as the tool says
  bool checkedIdentifiers_ = false;
  bool warnedOfFolder_ = false;
};

} // namespace kx
