#include "program/cli/RunProject.h"

#include "foundation/platform/Console.h"
#include "foundation/platform/Files.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/WindowsPath.h"
#include "program/cli/CommonOptions.h"
#include "program/cli/ConsoleSink.h"
#include "program/cli/FileKinds.h"
#include "program/cli/HostSession.h"
#include "program/cli/Output.h"
#include "program/cli/Usage.h"
#include "program/report/HtmlReport.h"
#include "program/report/JUnitSink.h"
#include "program/report/JsonLinesSink.h"
#include "program/runner/Project.h"

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

namespace kx::cli {

namespace {

int ExitCodeOf(const TRunReport& report) {
  if (report.Result == TResultKind::Stopped) return ExitStopped;
  if (IsSuccess(report.Result)) return ExitSuccess;
  return report.NothingExecuted ? ExitInvalid : ExitFailed;
}

struct TOutputFile {
  const char16_t* Option;
  std::string TCommonOptions::*File;
  bool IsStream = false; // written as the run goes on: into a pipe or a device, too
};
constexpr std::array<TOutputFile, 3> OutputFiles{{{u"--log", &TCommonOptions::LogFile, true},
                                                  {u"--junit", &TCommonOptions::JUnitFile},
                                                  {u"--report", &TCommonOptions::ReportFile}}};

// What the actions will change, as far as it can be told; asked only about a file that no run has left.
bool IsChangedByRun(const TProjectRunner& runner, std::u16string_view file) {
  if (!platform::FileExists(file) || IsLeftByRun(file)) return false;
  const text::TStringList changed = runner.FilesToChange();
  return std::ranges::any_of(changed, [file](const auto& other) { return IsSameFile(file, other); });
}

// Whether it could be written, as long as nothing has been done yet. The messages name the file.
void RequireWritable(const TOutputFile& output, std::u16string_view file) {
  const std::u16string path = text::ExpandPath(file, platform::CurrentDirectory());
  const auto refuse = [&](std::u16string_view why) {
    throw EUsage(output.Option + (u": " + std::u16string(why)));
  };
  if (platform::DirectoryExists(path)) refuse(path + u" is a folder.");
  const std::u16string folder = text::ExtractFileDir(path);
  if (!platform::DirectoryExists(folder)) refuse(u"there is no folder " + folder);
  if (output.IsStream && platform::FileExists(path) && !IsRegularFile(path)) return;
  if (const auto allowed = platform::CheckSaveFile(path); !allowed) refuse(allowed.Message());
}

// Before anything is opened: what a run leaves never takes the place of what it reads, nor of something else
// that it leaves.
void RequireHarmlessOutput(const TCommonOptions& options, TProjectRunner& runner, THostSession& session) {
  std::vector<std::u16string> taken{runner.Project().FileName, session.Store().FileName(), session.KeyFile()};
  for (const auto& output : OutputFiles) {
    const std::u16string file = text::FromUtf8(options.*output.File);
    if (file.empty()) continue;
    RequireNotWrittenByHand(output.Option, file);
    const bool isTaken = std::ranges::any_of(
        taken, [&file](const auto& own) { return !own.empty() && IsSameFile(file, own); });
    if (isTaken || IsChangedByRun(runner, file))
      throw EUsage(output.Option + (u": " + file) + u" is a file of this run and would be replaced.");
    RequireWritable(output, file);
    taken.push_back(file);
  }
}

std::unique_ptr<TJsonLinesSink> OpenLog(const TCommonOptions& options) {
  if (options.LogFile.empty()) return nullptr;
  auto log = TJsonLinesSink::Create(text::FromUtf8(options.LogFile));
  if (!log) throw EUsage(u"--log: " + log.Message());
  return *std::move(log);
}

std::u16string FullPath(const std::string& file) {
  return text::ExpandPath(text::FromUtf8(file), platform::CurrentDirectory());
}

const TCiDialect* ChooseCi(const std::string& name) {
  if (name.empty()) return nullptr;
  return name == "auto" ? DetectCiDialect() : FindCiDialect(name);
}

std::u16string TitleOf(TProjectRunner& runner) {
  const TProject& project = runner.Project();
  if (!project.Name.empty()) return project.Name;
  return project.FileName.empty() ? u"kxhost" : text::ExtractFileName(project.FileName);
}

std::string WrittenLine(const char* what, const std::u16string& file) {
  return what + (" written to " + NameForTerminal(file)) + "\n";
}

// The files that a run leaves beside its log.
class TReports {
public:
  TReports(const TCommonOptions& options, TProjectRunner& runner) {
    if (!options.JUnitFile.empty()) {
      junitFile_ = FullPath(options.JUnitFile);
      runner.AddSink(junit_.emplace(text::ExtractFileDir(junitFile_)));
    }
    if (!options.ReportFile.empty()) {
      htmlFile_ = FullPath(options.ReportFile);
      runner.AddSink(html_.emplace(TitleOf(runner), text::ExtractFileDir(htmlFile_)));
    }
  }

  // False when one could not be written, which was then said; `lines` gets one for each that was.
  bool Write(const TRunReport& report, std::string& lines) {
    const auto junit = [this](const platform::PutBytes& put) { return junit_->Write(put); };
    const auto html = [this, &report](const platform::PutBytes& put) { return html_->Write(report, put); };
    bool written = true;
    if (junit_) written &= WriteFile("Unit tests", junitFile_, junit, lines);
    if (html_) written &= WriteFile("Report", htmlFile_, html, lines);
    return written;
  }

private:
  static bool WriteFile(const char* what, const std::u16string& file, const platform::WriteContent& content,
                        std::string& lines) {
    const auto written = platform::SaveFileInPieces(file, content);
    if (written) {
      lines += WrittenLine(what, file);
    } else {
      WriteError(u"kxhost: the report could not be written. " + written.Message());
    }
    return static_cast<bool>(written);
  }

  std::u16string junitFile_;
  std::u16string htmlFile_;
  std::optional<TJUnitSink> junit_;
  std::optional<THtmlReport> html_;
};

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

} // namespace

int RunProject(TProjectRunner& runner, THostSession& session, const TCommonOptions& options) {
  const TPalette palette = ChoosePalette(options.Color);
  RequireHarmlessOutput(options, runner, session);
  const auto log = OpenLog(options);
  if (log) runner.AddSink(*log);
  TReports reports(options, runner);
  if (options.DryRun) Print("Dry run: no tool is started and no file is changed.\n\n");
  const platform::InterruptHandler interrupts(session.Stop()); // what the run leaves is written in any case
  TRunReport report;
  {
    TConsoleSink console(options.Verbosity, palette, ChooseCi(options.Ci));
    runner.AddSink(console);
    report = runner.Run();
  }
  std::string end = EndTable(report, palette);
  std::string lines;
  const bool reported = reports.Write(report, lines);
  const bool logged = EndLog(log.get(), options, lines);
  if (options.Verbosity != TVerbosity::Quiet) end += lines;
  Print(end);
  const int exitCode = ExitCodeOf(report);
  // Whoever asked for them goes by them.
  return exitCode == ExitSuccess && !(reported && logged) ? ExitFailed : exitCode;
}

} // namespace kx::cli
