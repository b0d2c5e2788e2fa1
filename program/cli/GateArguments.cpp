#include "program/cli/GateArguments.h"

#include "foundation/platform/Files.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "program/cli/FindingLines.h"
#include "program/cli/Output.h"
#include "program/cli/Usage.h"

#include <CLI/CLI.hpp>

namespace kx::cli {

namespace {

TGateSettings SettingsOf(const TGateArguments& arguments) {
  TGateSettings settings;
  if (!arguments.Baseline.empty())
    settings.Baseline = text::ExpandPath(text::FromUtf8(arguments.Baseline), platform::CurrentDirectory());
  try {
    if (!arguments.FailOn.empty()) settings.FailOn = ReadFailOn(text::FromUtf8(arguments.FailOn));
  } catch (const EKxException& error) {
    throw EUsage(u"--fail-on: " + error.Message());
  }
  try {
    if (!arguments.MaxWarnings.empty())
      settings.MaxWarnings = ReadMaxWarnings(text::FromUtf8(arguments.MaxWarnings));
  } catch (const EKxException& error) {
    throw EUsage(u"--max-warnings: " + error.Message());
  }
  return settings;
}

std::string Summary(const TGateResult& result, const TFound& found) {
  std::string text = std::to_string(result.New.size()) + " new, " + std::to_string(result.Known) + " known";
  if (found.IsComplete) text += ", " + std::to_string(result.Fixed) + " fixed";
  if (found.IsComplete && result.Fixed > 0) text += " (--write-baseline takes them out)";
  return text;
}

} // namespace

void DefineGates(CLI::App& command, TGateArguments& arguments) {
  command
      .add_option("--baseline", arguments.Baseline,
                  "The findings that are known; only new ones stop the command")
      ->type_name("FILE");
  command.add_flag("--write-baseline", arguments.WriteBaseline, "Write that file with what is found now");
  OfferChoices(command
                   .add_option("--fail-on", arguments.FailOn,
                               "never, error, warning or new-warning (default with a baseline): exit code 4 "
                               "where there is one")
                   ->type_name("WHAT"),
               FailOnWords());
  command.add_option("--max-warnings", arguments.MaxWarnings, "Exit code 4 where there are more")
      ->type_name("NUMBER");
}

TGates::TGates(const TGateArguments& arguments, const TGateSettings& own)
    : settings_(SettingsOf(arguments).Or(own)), writes_(arguments.WriteBaseline) {
  if (!settings_.Baseline.empty()) return;
  if (writes_) throw EUsage(u"--write-baseline writes the file that --baseline names: give it, too.");
  if (settings_.FailOn == TFailOn::NewWarning)
    throw EUsage(u"--fail-on new-warning compares with the file that --baseline names: give it, too.");
}

bool TGates::CountFindings() const {
  return !settings_.Baseline.empty() || settings_.MaxWarnings ||
         settings_.FailOn.value_or(TFailOn::Never) != TFailOn::Never;
}

int TGates::Write(const TFound& found, int exitCode, std::string& lines) const {
  if (found.More > 0) {
    WriteError(u"kxhost: the baseline is not written: there are " + text::FromInteger(found.More) +
               u" findings more than are kept.");
    return exitCode == ExitSuccess ? ExitFailed : exitCode;
  }
  if (!found.IsComplete) {
    WriteError(u"kxhost: the baseline is not written: the run is none that says all.");
    return exitCode == ExitSuccess ? ExitFailed : exitCode;
  }
  const TBaseline baseline(found.Findings, found.Root);
  const auto saved = baseline.Save(settings_.Baseline);
  if (saved) {
    lines += "Baseline of " + std::to_string(baseline.Size()) + " findings written to " +
             NameForTerminal(settings_.Baseline) + "\n";
    return exitCode;
  }
  WriteError(u"kxhost: the baseline could not be written. " + saved.Message());
  return exitCode == ExitSuccess ? ExitFailed : exitCode;
}

int TGates::Apply(const TFound& found, const TPalette& palette, int exitCode, std::string& lines) const {
  if (writes_) return Write(found, exitCode, lines);
  const auto baseline = TBaseline::Load(settings_.Baseline);
  if (!baseline) {
    WriteError(u"kxhost: the baseline could not be read. " + baseline.Message());
    return exitCode == ExitSuccess ? ExitFailed : exitCode;
  }
  const TGateResult result = CheckGates(found.Findings, found.More, settings_, *baseline);
  if (!settings_.Baseline.empty()) {
    lines += "Baseline " + NameForTerminal(settings_.Baseline) + ": ";
    lines += baseline->WasThere() ? Summary(result, found) + "\n"
                                  : "there is none yet, so nothing is held up; --write-baseline writes it\n";
    if (baseline->WasThere()) lines += FindingLines(result.New, 0, "new", palette);
  }
  for (const auto& broken : result.Broken)
    lines += palette.Paint("Stopped by a gate", TStatusTag::stError) + ": " + text::ToUtf8(broken) + "\n";
  return exitCode == ExitSuccess && !result.Broken.empty() ? ExitGate : exitCode;
}

} // namespace kx::cli
