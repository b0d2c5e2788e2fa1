#include "cli/Common.h"
#include "cli/ConsoleSink.h"
#include "platform/Console.h"
#include "platform/Files.h"
#include "report/HtmlReport.h"
#include "report/JUnitSink.h"
#include "report/JsonLinesSink.h"
#include "text/Encoding.h"
#include "text/WindowsPath.h"

#include <optional>

namespace kx::cli {

namespace {

int ExitCodeOf(const TRunReport& report) {
  if (report.Result == TResultKind::Stopped) return ExitStopped;
  if (IsSuccess(report.Result)) return ExitSuccess;
  return report.NothingExecuted ? ExitInvalid : ExitFailed;
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

// The files that a run leaves beside its log.
class TReports {
public:
  TReports(const TCommonOptions& options, TProjectRunner& runner) : html_(TitleOf(runner)) {
    if (!options.JUnitFile.empty()) {
      junitFile_ = ReportFile(u"--junit", options.JUnitFile);
      runner.AddSink(junit_);
    }
    if (!options.ReportFile.empty()) {
      htmlFile_ = ReportFile(u"--report", options.ReportFile);
      runner.AddSink(html_);
    }
  }

  // A report that cannot be written changes nothing about the run.
  void Write(const TRunReport& report) const {
    if (!junitFile_.empty()) WriteFile(junitFile_, junit_.Document());
    if (!htmlFile_.empty()) WriteFile(htmlFile_, html_.Page(report));
  }

private:
  static void WriteFile(const std::u16string& file, const std::string& bytes) {
    const auto written = platform::SaveFile(file, bytes);
    if (!written) WriteError(u"Warning : the report could not be written. " + written.Message());
  }

  std::u16string junitFile_;
  std::u16string htmlFile_;
  TJUnitSink junit_;
  THtmlReport html_;
};

} // namespace

int RunProject(TProjectRunner& runner, THostSession& session, const TCommonOptions& options) {
  const TPalette palette = ChoosePalette(options.Color);
  const auto log = OpenLog(options);
  if (log) runner.AddSink(*log);
  const TReports reports(options, runner);
  if (options.DryRun)
    platform::WriteConsole(platform::ConsoleStream::Output,
                           "Dry run: no tool is started and no file is changed.\n\n");
  TRunReport report;
  {
    TConsoleSink console(options.Verbosity, palette, ChooseCi(options.Ci));
    runner.AddSink(console);
    const platform::InterruptHandler interrupts(session.Stop());
    report = runner.Run();
  }
  platform::WriteConsole(platform::ConsoleStream::Output, EndTable(report, palette));
  reports.Write(report);
  if (log && log->HasFailed())
    WriteError(u"Warning : the log " + text::FromUtf8(options.LogFile) +
               u" could not be written completely.");
  return ExitCodeOf(report);
}

} // namespace kx::cli
