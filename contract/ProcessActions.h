// The bases of actions that run external processes.
#pragma once

#include "contract/Actions.h"

namespace kx {

// How TKxCommandLineBuilder writes a value behind its switch.
enum class TCommandLineOption {
  Plain = 0,      // as it is
  QuoteValue = 4, // in double quotes where it has blanks, quotes or a backslash at its end, so that it
                  // arrives as one argument; a backslash before the closing quote is doubled
};

// Builds the parameters of one program, switch by switch.
class ICommandLineBuilder {
public:
  virtual ~ICommandLineBuilder() = default;
  virtual void Reset(int option) = 0; // 0 is the only value in use: empties the text
  virtual void Add(std::u16string_view switchText, std::u16string_view value, TCommandLineOption option) = 0;
};

class TKxCommandLineBuilder : public ICommandLineBuilder {
public:
  void Reset(int option) override;
  void Add(std::u16string_view switchText, std::u16string_view value, TCommandLineOption option) override;
  const std::u16string& Text() const { return text_; }

private:
  std::u16string text_;
};

// An action that runs processes of its own making, any number of them.
class TKxMultiExecAction : public TCustomKxAction {
public:
  // Called first by the overrides: True when the action may go on.
  bool Execute() override;

protected:
  // A new process whose output goes to the two hooks.
  std::shared_ptr<IKxProcess> NewActionProcess();
  static bool CheckProcessCleanExit(const IKxProcess& process); // it ended by itself with exit code 0

  virtual void OnStdOutData(IKxProcess& process, std::u16string_view text);
  virtual void OnStdErrData(IKxProcess& process, std::u16string_view text);
};

// An action that runs one process: the hooks say which, Execute does it.
class TKxExecuteAbstractAction : public TKxMultiExecAction {
public:
  bool Execute() override;

protected:
  virtual std::u16string GetExecutable() = 0;
  // A relative folder is seen from the project's, which an empty one means. False when it could not be
  // expanded; nothing is run then.
  virtual bool GetStartingDir(std::u16string& folder) {
    folder.clear();
    return true;
  }
  // False when an expression could not be expanded; nothing is run then.
  virtual bool GetCommandLine(ICommandLineBuilder& builder) = 0;
  // Decides the action's result from the exit code. Not called in a dry run.
  virtual bool InterpretResult(int exitCode);
  // In its place for a run that the user stopped: what it has left may still be of use.
  virtual void InterpretStopped() {}
};

} // namespace kx
