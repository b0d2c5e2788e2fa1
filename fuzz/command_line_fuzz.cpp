// Command lines: arguments that are quoted are split into themselves.
#include "foundation/text/CommandLine.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "fuzz/FuzzTarget.h"
#include "package/buildaction/MSBuildLogger.h"

namespace kx::fuzz {
namespace {

using TArguments = std::vector<std::u16string>;

template <typename TQuote>
void CheckQuoting(const TArguments& arguments, const TQuote& quote) {
  std::u16string line;
  for (const auto& argument : arguments)
    line += (line.empty() ? u"" : u" ") + quote(argument);
  Require(text::SplitCommandLine(line) == arguments, "what is quoted is split into itself");
}

void Check(std::string_view bytes) {
  const std::u16string text = text::FromUtf8(bytes);
  TArguments arguments;
  for (const auto argument : text::Split(text, u'\n'))
    arguments.emplace_back(argument);
  CheckQuoting(arguments, text::QuoteArgument);
  CheckQuoting(arguments, text::QuoteArgumentIfNeeded);
  const auto split = text::SplitCommandLine(text);
  CheckQuoting(split, text::QuoteArgumentIfNeeded);
  for (const auto& argument : arguments) {
    const auto read = text::SplitCommandLine(QuoteMSBuildArg(argument, TCommandLineReader::SplitArguments));
    const auto expected = text::ReplaceAll(argument, u";", u"%3B");
    Require(argument.empty() || read == TArguments{expected}, "an argument of MSBuild stays one");
  }
}

const TRegistration registration({"command_line", Check});

} // namespace
} // namespace kx::fuzz
