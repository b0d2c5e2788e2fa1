// The command line of kxhost graph.
#include "foundation/text/Encoding.h"
#include "program/cli/Commands.h"
#include "program/cli/Graph.h"
#include "program/cli/HostSession.h"
#include "program/cli/Inspect.h"
#include "program/cli/Output.h"
#include "program/cli/Usage.h"

#include <CLI/CLI.hpp>

#include <array>
#include <memory>

namespace kx::cli {

namespace {

struct TGraphArguments {
  std::string Solution;
  std::string Format = "dot";
  std::string Around;
};

// In the order of their names.
constexpr std::array<std::u16string_view, 4> GraphFormats{u"dot", u"mermaid", u"svg", u"json"};
constexpr std::array GraphWriters{WriteDot, WriteMermaid, WriteSvg, WriteGraphJson};

int DrawGraph(const TGraphArguments& arguments, const TCommonOptions& common) {
  const std::size_t format = RequireChoice(u"--format", text::FromUtf8(arguments.Format), GraphFormats);
  MapDrives(common.Drives);
  try {
    const TGraph graph =
        GraphOfSolution(text::FromUtf8(arguments.Solution), text::FromUtf8(arguments.Around));
    TOutput output;
    GraphWriters[format](graph, [&output](std::string_view utf8) { output.Write(utf8); });
    return ExitSuccess;
  } catch (const EKxException& error) {
    WriteError(ReasonOf(error));
    return ExitFailed;
  }
}

} // namespace

void DefineGraph(CLI::App& command, const TCommonOptions& common, int& exitCode) {
  const auto arguments = std::make_shared<TGraphArguments>();
  command.add_option("SOLUTION", arguments->Solution, "The solution (.sln)")->required();
  OfferChoices(
      command
          .add_option("--format", arguments->Format,
                      "dot (for Graphviz, the default), mermaid (for Markdown), svg (a picture) or json")
          ->type_name("FORMAT"),
      GraphFormats);
  command
      .add_option("--around", arguments->Around,
                  "Only this project (name, id or path), what it needs and what needs it")
      ->type_name("NAME");
  command.callback([arguments, &common, &exitCode] { exitCode = DrawGraph(*arguments, common); });
}

} // namespace kx::cli
