#include "program/cli/RunOutputs.h"

#include "foundation/platform/Files.h"
#include "foundation/platform/System.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/WindowsPath.h"
#include "program/cli/ConsoleSink.h"
#include "program/cli/FileKinds.h"
#include "program/cli/FindingLines.h"
#include "program/cli/Output.h"
#include "program/cli/Usage.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace kx::cli {

namespace {

int ExitCodeOf(const TRunReport& report) {
  if (report.Result == TResultKind::Stopped) return ExitStopped;
  if (IsSuccess(report.Result)) return ExitSuccess;
  return report.NothingExecuted ? ExitInvalid : ExitFailed;
}

struct TOutputFile {
  std::u16string Option;
  std::u16string File;
  bool IsStream = false; // written as the run goes on: into a pipe or a device, too
  bool MayFail = false;  // the run goes on without it
};

// Those that are wanted.
std::vector<TOutputFile> OutputFiles(const TCommonOptions& options, const TGates& gates) {
  std::vector<TOutputFile> files;
  if (!options.LogFile.empty()) files.push_back({u"--log", text::FromUtf8(options.LogFile), true});
  for (const auto& [option, file] : options.Reports)
    files.push_back({text::FromUtf8(option), text::FromUtf8(file)});
  if (!options.HistoryFile.empty())
    files.push_back({u"--history", text::FromUtf8(options.HistoryFile), false, true});
  if (gates.Writes()) files.push_back({u"--baseline", gates.BaselineFile()});
  return files;
}

// Whether it could be written, as long as nothing has been done yet. The messages name the file.
void RequireWritable(const TOutputFile& output) {
  const std::u16string path = text::ExpandPath(output.File, platform::CurrentDirectory());
  const auto refuse = [&](std::u16string_view why) {
    throw EUsage(output.Option + u": " + std::u16string(why));
  };
  if (platform::DirectoryExists(path)) refuse(path + u" is a folder.");
  const std::u16string folder = text::ExtractFileDir(path);
  if (!platform::DirectoryExists(folder)) refuse(u"there is no folder " + folder);
  if (output.IsStream && platform::FileExists(path) && !IsRegularFile(path)) return;
  if (const auto allowed = platform::CheckSaveFile(path); !allowed) refuse(allowed.Message());
}

std::u16string FullPath(const std::string& file) {
  return text::ExpandPath(text::FromUtf8(file), platform::CurrentDirectory());
}

std::string WrittenLine(const char* what, const std::u16string& file) {
  return what + (" written to " + NameForTerminal(file)) + "\n";
}

// What went wrong once more, where nothing stands between.
std::string ClosingList(const TRunReport& report, const TCommonOptions& options, const TPalette& palette) {
  if (options.Verbosity == TVerbosity::Quiet) return {};
  std::string rest = "(--report FILE.html or --sarif FILE.sarif shows all)";
  for (const TReportFormat& format : ReportFormats()) {
    const auto wanted = options.Reports.find(format.Option);
    if (wanted != options.Reports.end() && format.HasFindings) rest = "in " + wanted->second;
  }
  const std::string lines = FindingLines(report.Findings, report.MoreFindings, rest, palette);
  return lines.empty() ? lines : "\n" + lines;
}

// The page that a CI system shows beside the log. It is a courtesy: what cannot be written is left out.
void GiveCiSummary(const TCiDialect* ci, const TRunReport& report) {
  if (ci == nullptr || ci->SummaryVariable.empty()) return;
  const std::u16string given = platform::EnvironmentVariable(ci->SummaryVariable).value_or(u"");
  if (given.empty()) return;
  const std::string page = CiSummary(report);
  if (ci->Summary == nullptr) {
    std::ofstream(std::filesystem::path(platform::ResolveForWriting(given)), std::ios::binary | std::ios::app)
        << page;
    return;
  }
  const std::u16string file = text::JoinPath(given, u"kxhost-summary.md");
  if (platform::SaveFile(file, page)) PrintCommand(ci->Summary(file));
}

// The same for the log.
bool EndLog(TJsonLinesSink* log, const TCommonOptions& options, std::string& lines) {
  if (log == nullptr) return true;
  const std::u16string file = FullPath(options.LogFile);
  const auto written = log->Close();
  if (written) {
    lines += WrittenLine("Log", file);
  } else {
    WriteError(u"kxhost: the log " + file + u" could not be written completely. " + written.Message());
  }
  return static_cast<bool>(written);
}

bool WriteReport(const char* what, const std::u16string& file, const platform::WriteContent& content,
                 std::string& lines) {
  const auto written = platform::SaveFileInPieces(file, content);
  if (written) {
    lines += WrittenLine(what, file);
  } else {
    WriteError(u"kxhost: the report could not be written. " + written.Message());
  }
  return static_cast<bool>(written);
}

} // namespace

void RequireHarmlessOutput(const TCommonOptions& options, const TGates& gates,
                           std::vector<std::u16string> taken,
                           const std::function<bool(std::u16string_view file)>& isChanged) {
  for (const TOutputFile& output : OutputFiles(options, gates)) {
    RequireNotWrittenByHand(output.Option, output.File);
    const bool isTaken = std::ranges::any_of(
        taken, [&output](const auto& own) { return !own.empty() && IsSameFile(output.File, own); });
    if (isTaken || isChanged(output.File))
      throw EUsage(output.Option + u": " + output.File + u" is a file of this run and would be replaced.");
    if (!output.MayFail) RequireWritable(output);
    taken.push_back(output.File);
  }
}

TReports::TReports(const TCommonOptions& options, std::u16string_view title) {
  for (const TReportFormat& format : ReportFormats()) {
    const auto wanted = options.Reports.find(format.Option);
    if (wanted == options.Reports.end()) continue;
    const std::u16string file = FullPath(wanted->second);
    reports_.push_back({&format, file, format.Begin(title, text::ExtractFileDir(file))});
  }
}

bool TReports::Write(const TRunReport& report, std::string& lines) {
  bool written = true;
  for (const auto& wanted : reports_)
    written &= WriteReport(
        wanted.Format->Name, wanted.File,
        [&](const platform::PutBytes& put) { return wanted.Report->Write(report, put); }, lines);
  return written;
}

int EndRun(const TRunReport& report, TReports& reports, TJsonLinesSink* log, const TGates& gates,
           const TCommonOptions& options) {
  const TPalette palette = ChoosePalette(options.Color);
  std::string end = ClosingList(report, options, palette) + EndTable(report, palette);
  std::string lines;
  const bool reported = reports.Write(report, lines);
  const bool logged = EndLog(log, options, lines);
  if (options.Verbosity != TVerbosity::Quiet) end += lines;
  if (!options.DryRun) GiveCiSummary(ChooseCiDialect(options.Ci), report);
  int exitCode = ExitCodeOf(report);
  if (!options.DryRun) {
    const bool isComplete = IsSuccess(report.Result) && !report.IsPartial;
    const TFound found{report.Findings, report.MoreFindings, report.Root, isComplete};
    exitCode = gates.Apply(found, palette, exitCode, end);
  }
  Print(end);
  // Whoever asked for them goes by them.
  return exitCode == ExitSuccess && !(reported && logged) ? ExitFailed : exitCode;
}

} // namespace kx::cli
