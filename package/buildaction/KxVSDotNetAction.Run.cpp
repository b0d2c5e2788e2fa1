#include "package/buildaction/KxVSDotNetAction.Run.h"

#include "contract/Utilities.h"
#include "foundation/platform/Files.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "package/buildaction/ConfigurationNames.h"
#include "package/buildaction/DevEnvCommandLine.h"
#include "package/buildaction/MSBuildCommandLine.h"
#include "package/buildaction/ProjectSearch.h"
#include "package/buildaction/ProjectSelection.h"
#include "package/buildaction/VersionStamping.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace kx {

namespace {

// A log can claim any number of errors; the counters stay at their largest value.
void AddSaturating(std::int32_t& total, std::int32_t number) {
  const std::int64_t sum = std::int64_t{total} + number;
  total = sum > std::numeric_limits<std::int32_t>::max() ? std::numeric_limits<std::int32_t>::max()
                                                         : static_cast<std::int32_t>(sum);
}

} // namespace

TBuildRun::TBuildRun(TKxCustomVSDotNetAction& action, IKxActionHost& host, TBuildProgress& progress,
                     TKxEvent& terminate)
    : action_(action), host_(host), progress_(progress), terminate_(terminate), structuredOutput_(action) {}

bool TBuildRun::Execute() {
  progress_.Errors = 0;
  progress_.Warnings = 0;
  std::u16string configuration;
  if (!action_.TryExpandExpression(u"Solution Configuration Name", action_.Solution().SolutionConfiguration,
                                   true, configuration))
    return false;
  if (!action_.VerifyExecutable(action_.UsingMSBuild())) return false;
  solution_ = LoadSolution();
  const auto configurations = FindConfigurations(configuration);
  if (!VerifySetupTool(configurations) || !StampVersions()) return false;
  structuredOutput_.Start(solution_->GetFileName(), action_.MSBuild().StructuredOutput);
  const bool succeeded = BuildAll(configurations);
  if (succeeded && fruitfulRuns_ == 0) ReportNothingBuilt(configurations);
  return succeeded;
}

bool TBuildRun::BuildAll(const std::vector<std::u16string>& configurations) {
  bool succeeded = true;
  WarnOfMissingProjects(configurations);
  for (const auto& name : configurations) {
    if (IsStopped()) return succeeded && SayStopped();
    succeeded = BuildConfiguration(name);
  }
  return succeeded;
}

// A tool that is given the solution says so itself, and a selection has to be found.
void TBuildRun::WarnOfMissingProjects(std::span<const std::u16string> configurations) {
  if (action_.Solution().BuildType != TVSDotNetBuildType::btIncludeDisabledProjects) return;
  if (const auto missing = MissingProjects(*solution_, configurations); !missing.empty())
    action_.SendMessage(u"Warning : " + missing + u". They are not built.", TStatusTag::stWarning);
}

std::shared_ptr<IVSDotNetSolution> TBuildRun::LoadSolution() {
  std::u16string name;
  if (!action_.TryExpandExpression(u"Solution File Name", action_.Solution().Solution, true, name))
    throw EFailAction(u"Failed to expand solution file name.");
  name = action_.FullProjectPath(name);
  if (!platform::FileExists(name))
    throw EFailAction(u"Solution File " + DoubleQuoteString(name) + u" does not exist");
  try {
    return OpenSolution(name, false, &host_.Stop());
  } catch (const std::exception& error) {
    if (host_.Stop().IsRaised()) throw;
    action_.WarnOfPlace(error);
    throw EFailAction(u"Error Parsing Solution File : " + MessageOf(error));
  }
}

std::vector<std::u16string> TBuildRun::FindConfigurations(const std::u16string& wanted) {
  std::u16string error;
  auto matched = MatchConfigurations(*solution_, wanted, action_.Solution().UseRegExOnConfigName, error);
  if (!error.empty())
    action_.SendMessage(u"Error matching config regular expression : " + error, TStatusTag::stError);
  if (const auto guess = GuessedConfiguration(*solution_, wanted, matched); !guess.empty())
    action_.SendMessage(u"Warning : " + guess, TStatusTag::stWarning);
  if (!matched.empty()) return matched;
  // A name that the solution does not know still goes to the tool, which then says so. Where projects are
  // built one by one no tool is asked: the solution alone says what a configuration means to them.
  const bool toolDecides = action_.Solution().BuildType == TVSDotNetBuildType::btAllProjects &&
                           MayToolKnowConfiguration(*solution_, wanted);
  if (!toolDecides)
    action_.ReportBreach(KxVerdictRules::NoConfiguration, MissingConfiguration(*solution_, wanted));
  return {wanted};
}

// Setup projects need devenv, however the others are built; without one nothing is begun.
bool TBuildRun::VerifySetupTool(const std::vector<std::u16string>& configurations) {
  return !action_.NeedsDevEnv(*solution_, configurations) || action_.VerifyExecutable(false);
}

// AssemblyInfo first; a failed stamping ends the action before any tool runs.
bool TBuildRun::StampVersions() {
  TWin32Stamping win32(action_, solution_);
  if (action_.Win32Stamp().UpdateWin32Resource && !win32.CheckNumbers()) return false;
  if (action_.AssemblyInfo().UpdateAssemblyInfo &&
      !TAssemblyInfoStamping(action_, solution_, terminate_).Run())
    return false;
  return !action_.Win32Stamp().UpdateWin32Resource || win32.Run();
}

bool TBuildRun::BuildConfiguration(const std::u16string& configuration) {
  const auto parts = text::Split(configuration, u'|');
  progress_.ConfigName = parts.size() > 1 ? parts[0] : std::u16string_view(configuration);
  progress_.PlatformName = parts.size() > 1 ? parts[1] : std::u16string_view();
  structuredOutput_.ResetCounts();
  const int fruitfulBefore = fruitfulRuns_;
  action_.StartConfiguration(configuration);
  const bool succeeded = PerformBuild(configuration);
  if (action_.MSBuild().StructuredOutput && action_.UsingMSBuild()) ReportStructuredCounts();
  const TKxOutcome done =
      fruitfulRuns_ > fruitfulBefore ? TKxOutcome::koSucceeded : TKxOutcome::koNothingToDo;
  action_.EndConfiguration(succeeded ? done : TKxOutcome::koFailed);
  return succeeded;
}

void TBuildRun::ReportNothingBuilt(const std::vector<std::u16string>& configurations) {
  const std::u16string solution = text::ExtractFileName(solution_->GetFileName());
  action_.ReportBreach(KxVerdictRules::NothingBuilt,
                       toolRuns_ == 0
                           ? u"Nothing was built: none of the projects is part of " +
                                 text::Join(configurations, u", ") + u"."
                           : u"Nothing was built: the tool built none of the projects of " + solution +
                                 u" and found none up to date. They are missing, of a kind that it leaves "
                                 u"out, or not part of " +
                                 text::Join(configurations, u", ") + u".");
}

bool TBuildRun::IsStopped() const {
  return terminate_.IsRaised() || host_.Stop().IsRaised();
}

bool TBuildRun::SayStopped() {
  action_.SendMessage(TerminatedByUser, TStatusTag::stError);
  return false;
}

void TBuildRun::ReportStructuredCounts() {
  Count(TBuildCount::Errors, structuredOutput_.ErrorCount());
  Count(TBuildCount::Warnings, structuredOutput_.WarningCount());
}

bool TBuildRun::PerformBuild(const std::u16string& configuration) {
  analysis_.emplace(TBuildOutputOptions{action_.UsingMSBuild(), action_.MSBuild().StructuredOutput,
                                        action_.Solution().VStudioVersion},
                    static_cast<IBuildOutputSink&>(*this));
  if (action_.Solution().BuildType == TVSDotNetBuildType::btAllProjects) return BuildSolution(configuration);
  if (action_.Solution().BuildAction == TVSDotNetBuildAction::baRebuild)
    return RebuildProjects(configuration);
  return BuildProjects(configuration, action_.Solution().BuildAction);
}

bool TBuildRun::BuildSolution(const std::u16string& configuration) {
  TKxMessageGroup group(action_, u"Solution " + solution_->GetFileName());
  auto parameters = ExpandExtraParameters();
  if (!parameters) return false;
  const bool useMSBuild = action_.UsingMSBuild();
  const TVSDotNetBuildAction buildAction = action_.Solution().BuildAction;
  *parameters += useMSBuild ? MSBuildParameters(configuration, false, buildAction)
                            : DevEnvCommandLine(action_.Solution(), configuration, buildAction);
  EnsureTrailingSpace(*parameters);
  *parameters += DoubleQuoteString(solution_->GetFileName());
  return group.Close(RunCompiler(*parameters, useMSBuild));
}

// All of them are cleaned before the first is built: a project by project rebuild would clean what the next
// one needs.
bool TBuildRun::RebuildProjects(const std::u16string& configuration) {
  TKxMessageGroup group(action_, u"Cleaning Projects");
  if (!group.Close(BuildProjects(configuration, TVSDotNetBuildAction::baClean))) return false;
  return BuildProjects(configuration, TVSDotNetBuildAction::baBuild);
}

bool TBuildRun::BuildProjects(const std::u16string& configuration, TVSDotNetBuildAction buildAction) {
  const auto ids = ReadProjects();
  if (!ids) return false;
  WarnOfSharedIdentifiers();
  for (const auto& id : *ids) {
    const auto project = solution_->GetProjects()->FindByID(id);
    if (!project) {
      action_.SendMessage(u"Warning : Project " + id +
                              u" was not found in the solution file. You may need to reconfigure the action.",
                          TStatusTag::stWarning);
    } else if (!BuildProject(*project, configuration, action_.UsingMSBuild(), buildAction)) {
      return false;
    }
  }
  return true;
}

std::optional<text::TStringList> TBuildRun::ReadProjects() {
  if (action_.Solution().BuildType == TVSDotNetBuildType::btSelectedProjects) return ReadSelectedProjects();
  text::TStringList ids;
  const auto projects = solution_->GetProjects();
  for (int i = 0; i < projects->GetCount(); ++i)
    ids.Add(projects->GetItem(i)->GetProjectID());
  return ids;
}

std::optional<text::TStringList> TBuildRun::ReadSelectedProjects() {
  const text::TStringList selected =
      action_.ResolveProjects(u"SelectedProjects", action_.Solution().SelectedProjects, *solution_);
  if (selected.IsEmpty()) {
    action_.SendMessage(u"No Projects selected to build", TStatusTag::stError);
    return std::nullopt;
  }
  text::TStringList ids;
  const TProjectIds wanted = SetOf(selected);
  TProjectIds known;
  const auto projects = solution_->GetProjects();
  for (int i = 0; i < projects->GetCount(); ++i) {
    const std::u16string id = projects->GetItem(i)->GetProjectID();
    known.insert(id);
    if (wanted.contains(id)) ids.Add(id);
  }
  const auto isKnown = [&known](const std::u16string& entry) { return known.contains(entry); };
  if (std::all_of(selected.begin(), selected.end(), isKnown)) return ids;
  action_.SendMessage(
      u"A Project selected is no longer part of this solution, please open the action properties "
      u"dialog and select the correct projects",
      TStatusTag::stError);
  return std::nullopt;
}

bool TBuildRun::BuildProject(const IVSDotNetProject& project, const std::u16string& configuration,
                             bool useMSBuild, TVSDotNetBuildAction buildAction) {
  if (useMSBuild && IsSetupProject(project)) {
    action_.SendMessage(
        u"Warning : Setup project " + project.GetName() +
            u" cannot be built with MSBuild. This project will be built with VisualStudio instead.",
        TStatusTag::stWarning);
    return BuildProject(project, configuration, false, buildAction);
  }
  TKxMessageGroup group(action_, u"Project " + project.GetName());
  action_.SendMessage(u"Processing Project : " + project.GetName());
  auto parameters = ExpandExtraParameters();
  if (!parameters) return false;
  const auto projectConfiguration = project.GetConfig(configuration);
  if (projectConfiguration.empty()) {
    action_.SendMessage(u"Project " + DoubleQuoteString(project.GetName()) +
                        u" is not built in solution configuration " + configuration);
    return group.Close(true);
  }
  action_.SendMessage(u"Building project configuration " + DoubleQuoteString(projectConfiguration) +
                      u" for solution configuration " + DoubleQuoteString(configuration));
  if (useMSBuild) WarnOfCutFolder();
  *parameters += ProjectParameters(project, projectConfiguration, configuration, useMSBuild, buildAction);
  return group.Close(RunCompiler(*parameters, useMSBuild));
}

void TBuildRun::WarnOfSharedIdentifiers() {
  if (std::exchange(checkedIdentifiers_, true)) return;
  const auto shared = ExplainSharedIdentifiers(*solution_, action_.ProjectsToBuild(*solution_));
  if (!shared.empty()) action_.SendMessage(u"Warning : " + shared, TStatusTag::stWarning);
}

// MSBuild is told the solution's folder without quotes.
void TBuildRun::WarnOfCutFolder() {
  const std::u16string warning = warnedOfFolder_ ? std::u16string() : WhyFolderIsCut(*solution_);
  if (warning.empty()) return;
  warnedOfFolder_ = true;
  action_.SendMessage(u"Warning : " + warning, TStatusTag::stWarning);
}

// The text of ExtraCmdLineParams, which stands in front of all other parameters.
std::optional<std::u16string> TBuildRun::ExpandExtraParameters() {
  std::u16string parameters;
  if (!action_.TryExpandExpression(u"ExtraCmdLineParams", action_.Solution().ExtraCmdLineParams, false,
                                   parameters))
    return std::nullopt;
  EnsureTrailingSpace(parameters);
  return parameters;
}

std::u16string TBuildRun::ProjectParameters(const IVSDotNetProject& project,
                                            std::u16string_view projectConfiguration,
                                            const std::u16string& configuration, bool useMSBuild,
                                            TVSDotNetBuildAction buildAction) {
  const std::u16string file = DoubleQuoteString(project.GetFileName());
  if (!useMSBuild)
    return DevEnvCommandLine(action_.Solution(), configuration, buildAction) + u" /project " + file + u" " +
           DoubleQuoteString(solution_->GetFileName());
  const bool anyCPU = WritesAnyCPUWithoutBlank(*solution_, project, projectConfiguration);
  std::u16string parameters = MSBuildParameters(projectConfiguration, anyCPU, buildAction);
  EnsureTrailingSpace(parameters);
  parameters += u"/p:solutionDir=" + SolutionDirectory(*solution_);
  EnsureTrailingSpace(parameters);
  return parameters + file;
}

// With the properties in the log, since the switch that holds them is hard to read.
std::u16string TBuildRun::MSBuildParameters(std::u16string_view configuration, bool anyCPU,
                                            TVSDotNetBuildAction buildAction) {
  const TTextExpander expander{
      [this](std::u16string_view label, std::u16string_view text, std::u16string& result) {
        return action_.TryExpandExpression(label, text, false, result);
      },
      [this](std::u16string_view text) { return action_.ExpandExpression(text); }};
  const auto framework = FrameworkOf(action_.Solution().VStudioVersion);
  const std::u16string logger =
      text::JoinPath(TPathUtils::GetAppPath(), structuredOutput_.GetLoggerAssembly(framework));
  const auto line = MSBuildCommandLine(action_.Solution(), action_.MSBuild(),
                                       {configuration, anyCPU, buildAction, logger}, expander);
  TKxMessageGroup group(action_, u"MSBuild Properties");
  for (const auto& property : line.Properties)
    action_.SendMessage(property);
  group.CloseNormal();
  return line.Text;
}

bool TBuildRun::RunCompiler(const std::u16string& parameters, bool useMSBuild) {
  if (IsStopped()) return SayStopped();
  const auto process = action_.NewActionProcess();
  TKxProcessSettings& settings = process->Settings();
  settings.Executable = action_.GetExecutable(useMSBuild);
  settings.Parameters = parameters;
  settings.StartingDirectory = text::ExtractFileDir(solution_->GetFileName());
  settings.TerminateEvent = &terminate_;
  action_.SendMessage(u"Running " + settings.Executable + u" with parameters : " + parameters);
  action_.SendMessage(u"------");
  analysis_->BeginRun(useMSBuild);
  structuredOutput_.BeginRun();
  ++toolRuns_;
  RunProcess(*process);
  NoteBuilt(useMSBuild);
  return JudgeRun(*process);
}

void TBuildRun::RunProcess(IKxProcess& process) {
  try {
    process.Run();
  } catch (const std::exception& error) {
    structuredOutput_.EndRun();
    action_.SendMessage(u"Error Running " + process.Settings().Executable + u" : " + MessageOf(error),
                        TStatusTag::stError);
    throw;
  }
  structuredOutput_.EndRun();
}

// A tool that says nothing about projects is believed. xbuild prints nothing about those that were clean
// before it cleans them.
void TBuildRun::NoteBuilt(bool useMSBuild) {
  const bool structured = useMSBuild && action_.MSBuild().StructuredOutput;
  const bool isSilent = useMSBuild && action_.Solution().BuildAction == TVSDotNetBuildAction::baClean;
  const bool none = structured ? structuredOutput_.BuiltProjects() == 0
                               : !isSilent && analysis_->BuiltProjects() == TBuiltProjects::None;
  if (!none) ++fruitfulRuns_;
}

bool TBuildRun::JudgeRun(IKxProcess& process) {
  if (process.GetExitCode() == ExitCodeTerminated) return SayStopped();
  if (!TKxCustomVSDotNetAction::CheckProcessCleanExit(process)) {
    action_.SendMessage(process.Settings().Executable + u" returned Error code : " +
                            text::FromInteger(process.GetExitCode()),
                        TStatusTag::stError);
    return false;
  }
  if (!analysis_->HasFailed()) return true;
  action_.SendMessage(u"One or more projects failed to build.", TStatusTag::stError);
  return false;
}

void TBuildRun::ReadOutput(std::u16string_view chunk) {
  if (analysis_) analysis_->Feed(chunk);
}

void TBuildRun::Count(TBuildCount what, std::int32_t number) {
  const bool isErrors = what == TBuildCount::Errors;
  AddSaturating(isErrors ? progress_.Errors : progress_.Warnings, number);
  action_.SendMetricInt(u"Compiler", isErrors ? u"Errors" : u"Warnings", number);
}

} // namespace kx
