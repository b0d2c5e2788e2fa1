// kxhost completion: what shells ask for while a command line is typed.
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "program/cli/Commands.h"
#include "program/cli/Completion.h"
#include "program/cli/Output.h"
#include "program/cli/ShellWords.h"
#include "program/cli/Usage.h"

#include <CLI/CLI.hpp>

#include <array>
#include <memory>
#include <optional>

namespace kx::assets {

extern const std::string_view Bash; // program/cli/completion
extern const std::string_view Zsh;
extern const std::string_view Fish;
extern const std::string_view PowerShell;

} // namespace kx::assets

namespace kx::cli {

namespace {

// In the order of TShell.
constexpr std::array<std::u16string_view, 4> Shells{u"bash", u"zsh", u"fish", u"powershell"};
// A line of the answer that stands for the names of files.
constexpr std::string_view Files = ":files";

// In that order, too. Each asks "kxhost completion SHELL -- LINE", which answers a line for each word: the
// word, a tab, its help.
constexpr std::array<const std::string_view*, 4> Scripts{&assets::Bash, &assets::Zsh, &assets::Fish,
                                                         &assets::PowerShell};

struct TCompletionArguments {
  std::string Shell;
  std::optional<std::string> Line;
};

void Answer(CLI::App& app, const std::string& line, TShell shell, const TCommonOptions& common) {
  const TTypedLine typed = SplitTyped(text::FromUtf8(line), shell);
  if (typed.Words.size() < 2) return; // the program's name itself
  const auto found = Complete(app, std::span(typed.Words).subspan(1), common);
  TOutput output;
  for (const TCandidate& candidate : found.Candidates)
    output.Write(text::ToUtf8(CompletedWord(candidate.Word, typed, shell)) + "\t" +
                 text::ToUtf8(candidate.Help) + "\n");
  if (found.TakesFiles) output.Write(std::string(Files) + "\n");
}

} // namespace

void DefineCompletion(CLI::App& command, const TCommonOptions& common, int& exitCode) {
  const auto arguments = std::make_shared<TCompletionArguments>();
  OfferChoices(command.add_option("SHELL", arguments->Shell, "bash, zsh, fish or powershell")->required(),
               Shells);
  command.add_option("LINE", arguments->Line,
                     "What may complete this line, as the shell's script asks; left out: the script");
  command.callback([&command, arguments, &common, &exitCode] {
    const std::size_t shell = RequireChoice(u"SHELL", text::FromUtf8(arguments->Shell), Shells);
    exitCode = ExitSuccess;
    if (arguments->Line) {
      Answer(*command.get_parent(), *arguments->Line, static_cast<TShell>(shell), common);
    } else {
      Print(*Scripts.at(shell));
    }
  });
}

} // namespace kx::cli
