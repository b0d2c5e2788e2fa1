#include "program/cli/ConsoleSink.h"
#include "program/cli/Output.h"
#include "program/cli/Table.h"

#include <cctype>

namespace kx::cli {

namespace {

// "Finished with failures: ..."; the word alone is painted.
std::string EndLine(const TRunReport& report, const TPalette& palette) {
  std::string word = WordOf(report.Result);
  word.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(word.front())));
  return palette.Paint(word, StatusOf(report.Result)) + ": " + TotalsText(report) + "; " +
         FormatElapsed(report.Elapsed) + "\n";
}

} // namespace

std::string EndTable(const TRunReport& report, const TPalette& palette) {
  TTable table({{"Action"},
                {"Configuration"},
                {"Result", false, true},
                {"Errors", true},
                {"Warnings", true},
                {"Time", true}});
  for (const auto& result : ResultRows(report.Actions)) {
    const std::string indent(static_cast<std::size_t>(result.Nesting) * 2, ' ');
    table.Add({indent + NameForTerminal(result.Action), NameForTerminal(result.Configuration), result.Word(),
               std::to_string(result.Counts.Errors), std::to_string(result.Counts.Warnings),
               FormatElapsed(result.Elapsed)},
              result.Status());
  }
  return "\n" + (table.IsEmpty() ? "" : table.Text(palette) + "\n") + EndLine(report, palette);
}

} // namespace kx::cli
