// kxhost history: what earlier runs of a build project left.
#include "foundation/platform/Files.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "program/cli/Commands.h"
#include "program/cli/HistoryOutput.h"
#include "program/cli/HostSession.h"
#include "program/cli/Output.h"
#include "program/cli/ProjectArgument.h"
#include "program/cli/Usage.h"
#include "program/history/HistoryJson.h"

#include <CLI/CLI.hpp>

#include <array>
#include <memory>
#include <optional>

namespace kx::cli {

namespace {

struct THistoryArguments {
  std::optional<std::string> Project;
  std::string Run;
  std::int64_t Last = 0; // 0: as many as the question usually looks at
  bool Json = false;
};

// `members` writes the members of the one object.
template <typename TMembers>
void PrintJson(const TMembers& members) {
  TOutput output;
  TJsonWriter json([&output](std::string_view utf8) { output.Write(utf8); });
  json.Object([&] { members(json); });
  json.EndLine();
  json.Flush();
}

// An answer that is a list: as an array of that name, or as lines.
template <typename TAnswers, typename TWrite, typename TLines>
void Show(const TAnswers& answers, const THistoryArguments& arguments, const TCommonOptions& common,
          const char* name, const TWrite& write, const TLines& lines) {
  if (!arguments.Json) return Print(lines(answers, ChoosePalette(common.Color)));
  PrintJson([&](TJsonWriter& json) {
    json.ArrayMember(name, [&] {
      for (const auto& answer : answers)
        json.Object([&] { write(answer, json); });
    });
  });
}

std::int64_t LastOr(const THistoryArguments& arguments, std::int64_t usual) {
  return arguments.Last > 0 ? arguments.Last : usual;
}

void ShowRuns(history::THistory& asked, const THistoryArguments& arguments, const TCommonOptions& common) {
  Show(asked.Runs(LastOr(arguments, 20)), arguments, common, "runs", history::WriteRun, RunLines);
}

history::TNumber RunOf(const std::string& text, history::THistory& asked) {
  if (text == "last") return asked.LastRun();
  const auto number = text::ToInteger(text::FromUtf8(text));
  if (!number || *number < 1)
    throw EUsage(u"RUN is a number or \"last\", not " + text::FromUtf8(text) + u".");
  return *number;
}

void ShowRun(history::THistory& asked, const THistoryArguments& arguments, const TCommonOptions& common) {
  const history::TNumber run = RunOf(arguments.Run, asked);
  const auto details = asked.Details(run);
  if (!details) throw EKxException(u"There is no run " + text::FromInteger(run) + u" in the history.");
  if (!arguments.Json) return Print(DetailLines(*details, ChoosePalette(common.Color)));
  PrintJson([&](TJsonWriter& json) { history::WriteDetails(*details, json); });
}

void ShowTests(history::THistory& asked, const THistoryArguments& arguments, const TCommonOptions& common) {
  Show(asked.Tests(LastOr(arguments, 100)), arguments, common, "tests", history::WriteTest, TestLines);
}

void ShowFindings(history::THistory& asked, const THistoryArguments& arguments,
                  const TCommonOptions& common) {
  constexpr void (*write)(const history::TKnownFinding&, TJsonWriter&) = history::WriteFinding;
  Show(asked.Findings(), arguments, common, "findings", write, KnownFindingLines);
}

void ShowTimes(history::THistory& asked, const THistoryArguments& arguments, const TCommonOptions& common) {
  Show(asked.Times(LastOr(arguments, 100)), arguments, common, "times", history::WriteTime, TimeLines);
}

struct TQuestion {
  const char* Name;
  const char* Help;
  void (*Answer)(history::THistory& asked, const THistoryArguments& arguments, const TCommonOptions& common);
  bool HasLast;
};
constexpr std::array<TQuestion, 5> Questions{{
    {"list", "The last runs, 20 unless said otherwise (the default)", ShowRuns, true},
    {"show", "One run: where it ran, its parts, what was wrong", ShowRun, false},
    {"tests", "Flaky and slowest tests of the last 100 runs", ShowTests, true},
    {"findings", "What is wrong, and since which run without a break", ShowFindings, false},
    {"times",
     "How long runs, actions, configurations and projects take that succeed, of the last 100 runs: the "
     "median, between what times eight in ten lie, and how much slower the newer half is",
     ShowTimes, true},
}};

int Answer(const TQuestion& question, const THistoryArguments& arguments, const TCommonOptions& common) {
  MapDrives(common.Drives);
  const history::TPlace place = HistoryOf(common);
  const std::u16string file = place.FileFor(place.IsOwn() ? RequireProject(arguments.Project) : place.File);
  if (!platform::FileExists(file)) {
    WriteError(u"There is no history yet: " + file + u" is not there.");
    return ExitFailed;
  }
  try {
    history::THistory asked(file);
    question.Answer(asked, arguments, common);
    return ExitSuccess;
  } catch (const EUsage&) {
    throw;
  } catch (const EKxException& error) {
    WriteError(u"kxhost: the history " + file + u": " + error.Message());
    return ExitFailed;
  }
}

} // namespace

void DefineHistory(CLI::App& command, const TCommonOptions& common, int& exitCode) {
  const auto arguments = std::make_shared<THistoryArguments>();
  command.require_subcommand(0, 1);
  const auto define = [&arguments](CLI::App& app, const TQuestion& question) {
    DefineProject(app, arguments->Project);
    app.add_flag("--json", arguments->Json, "For programs");
    if (question.HasLast)
      app.add_option("--last", arguments->Last, "Look at so many runs")
          ->type_name("RUNS")
          ->check(CLI::PositiveNumber);
  };
  for (const TQuestion& question : Questions) {
    CLI::App* asked = command.add_subcommand(question.Name, question.Help);
    if (question.Answer == ShowRun)
      asked->add_option("RUN", arguments->Run, "Its number, or \"last\"")->required();
    define(*asked, question);
  }
  define(command, Questions.front());
  command.callback([arguments, &command, &common, &exitCode] {
    const TQuestion* question = &Questions.front();
    for (const TQuestion& other : Questions)
      if (command.get_subcommand(other.Name)->parsed()) question = &other;
    // What "history" itself takes is taken behind each question.
    if (!question->HasLast && arguments->Last > 0)
      throw EUsage(u"\"kxhost history " + text::FromAscii(question->Name) + u"\" has no option --last.");
    exitCode = Answer(*question, *arguments, common);
  });
}

} // namespace kx::cli
