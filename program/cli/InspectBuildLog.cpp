#include "contract/Actions.h"
#include "program/cli/Inspect.h"

#include "foundation/platform/Files.h"
#include "foundation/text/Encoding.h"
#include "package/buildaction/BuildLog.h"
#include "program/cli/FindingLines.h"
#include "program/cli/LogReader.h"
#include "program/cli/Output.h"
#include "program/findings/FindingJson.h"
#include "program/findings/SourceFiles.h"
#include "program/findings/ToolFindings.h"
#include "program/report/ResultJson.h"
#include "program/report/ResultRows.h"
#include "program/runner/ToolProjects.h"

namespace kx::cli {

namespace {

using TOnLine = std::function<void(std::u16string_view line)>;

TBuildLogVerdict Analyse(const std::u16string& file, const TInspectOptions& options,
                         TBuildLog::TOnLine onMessage, const TOnLine& onLine = {}) {
  TBuildLog log(options.MSBuild.value_or(false), static_cast<TVSDotNetVersion>(options.VSVersion),
                std::move(onMessage));
  ForEachLogLine(file, options.Encoding, [&](std::u16string_view line) {
    log.Feed(line);
    if (onLine) onLine(line);
  });
  return log.Verdict();
}

// "App (Debug|Win32): failed, 1 error, 2 warnings"
std::string DescribeProject(const TProjectResult& project) {
  const auto& configuration = project.Configuration;
  return ForTerminal(project.Project + (configuration.empty() ? u"" : u" (" + configuration + u")")) + ": " +
         WordOf(project.Result) + ", " + CountText(project.Counts.Errors, "error") + ", " +
         CountText(project.Counts.Warnings, "warning");
}

class TInspectedLog : public IInspected {
public:
  TInspectedLog(TBuildLogVerdict verdict, bool isMSBuild, std::vector<TProjectResult> projects,
                TFindingList findings)
      : verdict_(std::move(verdict)),
        hasSummary_(isMSBuild ? verdict_.HasMSBuildSummary : verdict_.HasDevEnvSummary),
        hasOtherSummary_(isMSBuild ? verdict_.HasDevEnvSummary : verdict_.HasMSBuildSummary),
        projects_(std::move(projects)), moreFindings_(findings.More()), findings_(findings.Take()) {
    SetFingerprints(findings_, FindSourceRoot(platform::CurrentDirectory()));
  }

  void WriteMembers(TJsonWriter& json) const override {
    json.Member("errors", verdict_.Errors);
    json.Member("warnings", verdict_.Warnings);
    json.Member("failed", verdict_.Failed);
    json.ValuesMember("statuses", verdict_.Statuses);
    json.ArrayMember("metrics", [&] {
      for (const auto& metric : verdict_.Metrics)
        json.Array([&] {
          json.Value(metric.first == TBuildCount::Errors ? "Errors" : "Warnings");
          json.Value(metric.second);
        });
    });
    json.Member("hasSummary", hasSummary_);
    json.Member("hasOtherSummary", hasOtherSummary_);
    json.ArrayMember("projects", [&] {
      for (const auto& project : projects_)
        json.Object([&] { WriteProject(project, json); });
    });
    json.ArrayMember("findings", [&] {
      for (const auto& finding : findings_)
        json.Object([&] { WriteFinding(finding, json); });
    });
    json.Member("moreFindings", moreFindings_);
  }

  void Describe(TOutput& output) const override {
    const auto number = [](std::int64_t value) { return std::to_string(value); };
    const auto& statuses = verdict_.Statuses;
    output.Write("Errors    " + number(verdict_.Errors) + "\nWarnings  " + number(verdict_.Warnings) + "\n");
    if (verdict_.Failed) output.Write("The tool's own summary names a failed project.\n");
    output.Write("Lines     " + number(statuses[0]) + " plain, " + number(statuses[1]) + " success, " +
                 number(statuses[2]) + " warning, " + number(statuses[3]) + " error\n" + ReasonOfCounts());
    for (const auto& project : projects_)
      output.Write("Project   " + DescribeProject(project) + "\n");
    const std::string lines = FindingLines(findings_, moreFindings_, "(--json gives all)", TPalette(false));
    if (!lines.empty()) output.Write("\n" + lines);
  }

private:
  // Why the counts are not those of the lines.
  std::string ReasonOfCounts() const {
    if (!hasSummary_)
      return hasOtherSummary_
                 ? "The summary in this log is that of the other tool: change --tool.\n"
                 : "Errors and warnings are those that the tool's summary counts, and this log holds none.\n";
    if (verdict_.Statuses[2] == verdict_.Warnings && verdict_.Statuses[3] == verdict_.Errors) return {};
    return "Errors and warnings are those that the tool's summary counts; lines are told by the words in "
           "them.\n";
  }

  TBuildLogVerdict verdict_;
  bool hasSummary_;
  bool hasOtherSummary_;
  std::vector<TProjectResult> projects_;
  std::int64_t moreFindings_;
  std::vector<TFinding> findings_;
};

} // namespace

TInspected InspectBuildLog(const std::u16string& file, const TInspectOptions& options) {
  TFindingList list;
  TToolFindings findings(list);
  TToolProjects projects;
  TBuildLogVerdict verdict = Analyse(file, options, {}, [&](std::u16string_view line) {
    projects.Read(line, {});
    findings.Read(line, [&](const TFinding& finding) { projects.Count(line, finding); });
  });
  return std::make_shared<TInspectedLog>(std::move(verdict), options.MSBuild.value_or(false),
                                         projects.Take({}, TResultKind::Failed), std::move(list));
}

void PrintBuildLogLines(const std::u16string& file, const TInspectOptions& options, TOutput& output) {
  Analyse(file, options, [&output](TStatusTag status, std::u16string_view line) {
    output.Write(std::to_string(static_cast<int>(status)) + "\t" + text::ToUtf8(line) + "\n");
  });
}

} // namespace kx::cli
