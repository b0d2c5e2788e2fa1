#include "cli/Common.h"
#include "cli/ConsoleSink.h"
#include "cli/FileKinds.h"
#include "platform/Console.h"
#include "platform/Files.h"
#include "report/HtmlReport.h"
#include "report/JUnitSink.h"
#include "report/JsonLinesSink.h"
#include "text/Encoding.h"
#include "text/WindowsPath.h"

#include <array>
#include <optional>

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
};
constexpr std::array<TOutputFile, 3> OutputFiles{{{u"--log", &TCommonOptions::LogFile},
                                                  {u"--junit", &TCommonOptions::JUnitFile},
                                                  {u"--report", &TCommonOptions::ReportFile}}};

// Before anything is opened: what a run leaves never takes the place of what it reads.
void RequireHarmlessOutput(const TCommonOptions& options, TProjectRunner& runner, THostSession& session) {
  const std::array<std::u16string, 3> read{runner.Project().FileName, session.Store().FileName(),
                                           session.KeyFile()};
  for (const auto& output : OutputFiles) {
    const std::u16string file = text::FromUtf8(options.*output.File);
    if (file.empty()) continue;
    RequireNotWrittenByHand(output.Option, file);
    for (const auto& own : read)
      if (!own.empty() && IsSameFile(file, own))
        throw EUsage(output.Option + (u": " + file) + u" is a file of this run and would be replaced.");
  }
}

std::unique_ptr<TJsonLinesSink> OpenLog(const TCommonOptions& options) {
  if (options.LogFile.empty()) return nullptr;
  auto log = TJsonLinesSink::Create(text::FromUtf8(options.LogFile));
  if (!log) throw EUsage(u"--log: " + log.Message());
  return *std::move(log);
}

// A report that is written when the run has ended; its folder is looked at before, so that no long build ends
// without its report.
std::u16string ReportFile(const char16_t* option, const std::string& file) {
  std::u16string path = text::ExpandPath(text::FromUtf8(file), platform::CurrentDirectory());
  if (platform::DirectoryExists(path)) throw EUsage(option + (u": " + path) + u" is a folder.");
  const std::u16string folder = text::ExtractFileDir(path);
  if (!platform::DirectoryExists(folder)) throw EUsage(option + (u": there is no folder " + folder));
  return path;
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
      junitFile_ = ReportFile(u"--junit", options.JUnitFile);
      runner.AddSink(junit_.emplace(text::ExtractFileDir(junitFile_)));
    }
    if (!options.ReportFile.empty()) {
      htmlFile_ = ReportFile(u"--report", options.ReportFile);
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
bool EndLog(const TJsonLinesSink* log, const TCommonOptions& options, std::string& lines) {
  if (log == nullptr) return true;
  const std::u16string file = text::ExpandPath(text::FromUtf8(options.LogFile), platform::CurrentDirectory());
  if (log->HasFailed()) {
    WriteError(u"kxhost: the log " + file + u" could not be written completely.");
  } else {
    lines += WrittenLine("Log", file);
  }
  return !log->HasFailed();
}

} // namespace

int RunProject(TProjectRunner& runner, THostSession& session, const TCommonOptions& options) {
  const TPalette palette = ChoosePalette(options.Color);
  RequireHarmlessOutput(options, runner, session);
  const auto log = OpenLog(options);
  if (log) runner.AddSink(*log);
  TReports reports(options, runner);
  if (options.DryRun) Print("Dry run: no tool is started and no file is changed.\n\n");
  TRunReport report;
  {
    TConsoleSink console(options.Verbosity, palette, ChooseCi(options.Ci));
    runner.AddSink(console);
    const platform::InterruptHandler interrupts(session.Stop());
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
