#include "contract/ProcessActions.h"

#include "contract/FileUpdates.h"
#include "foundation/text/CommandLine.h"
#include "foundation/text/Text.h"

namespace kx {

void TKxCommandLineBuilder::Reset(int /*option*/) {
  text_.clear();
}

void TKxCommandLineBuilder::Add(std::u16string_view switchText, std::u16string_view value,
                                TCommandLineOption option) {
  if (!text_.empty()) text_ += u' ';
  text_ += switchText;
  const bool endsInBackslash = !value.empty() && value.back() == u'\\';
  if (option == TCommandLineOption::QuoteValue && endsInBackslash) {
    text_ += text::QuoteArgument(value);
  } else if (option == TCommandLineOption::QuoteValue && !value.empty()) {
    text_ += text::QuoteArgumentIfNeeded(value);
  } else {
    text_ += value;
  }
}

bool TKxMultiExecAction::Execute() {
  Host(); // an action that no host runs cannot run processes
  return true;
}

std::shared_ptr<IKxProcess> TKxMultiExecAction::NewActionProcess() {
  auto process = Host().NewProcess(*this);
  process->Settings().OnStdOutData = [this](IKxProcess& from, std::u16string_view line) {
    OnStdOutData(from, line);
  };
  process->Settings().OnStdErrData = [this](IKxProcess& from, std::u16string_view line) {
    OnStdErrData(from, line);
  };
  return process;
}

bool TKxMultiExecAction::CheckProcessCleanExit(const IKxProcess& process) {
  return process.GetExitCode() == 0;
}

void TKxMultiExecAction::OnStdOutData(IKxProcess& /*process*/, std::u16string_view text) {
  SendMessage(text);
}
void TKxMultiExecAction::OnStdErrData(IKxProcess& /*process*/, std::u16string_view text) {
  SendMessage(text);
}

bool TKxExecuteAbstractAction::Execute() {
  if (!TKxMultiExecAction::Execute()) return false;
  const auto process = NewActionProcess();
  TKxProcessSettings& settings = process->Settings();
  settings.Executable = GetExecutable();
  if (!GetStartingDir(settings.StartingDirectory)) return false;
  settings.StartingDirectory = FullProjectPath(settings.StartingDirectory);
  TKxCommandLineBuilder builder;
  if (!GetCommandLine(builder)) return false;
  settings.Parameters = builder.Text();
  SendMessage(u"Running " + settings.Executable + u" with parameters : " + settings.Parameters);
  process->Run();
  if (FileUpdates().IsDryRun()) return true; // nothing ran that could have a result
  if (process->GetExitCode() == ExitCodeTerminated) {
    SendMessage(TerminatedByUser, TStatusTag::stError);
    InterpretStopped();
    return false;
  }
  return InterpretResult(process->GetExitCode());
}

bool TKxExecuteAbstractAction::InterpretResult(int exitCode) {
  if (exitCode == 0) return true;
  SendMessage(GetExecutable() + u" returned Error code : " + text::FromInteger(exitCode),
              TStatusTag::stError);
  return false;
}

} // namespace kx
