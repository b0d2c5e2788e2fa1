#include "program/cli/CommonOptions.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "program/cli/Usage.h"
#include "program/report/ReportFormats.h"
#include "program/runner/Messages.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <functional>
#include <vector>

namespace kx::cli {

namespace {

using TAdd = std::function<CLI::Option*(CLI::App& app, const std::string& name, TCommonOptions& options)>;

// One value each time it is given.
template <auto Member>
CLI::Option* AddList(CLI::App& app, const std::string& name, TCommonOptions& options) {
  return app.add_option(name, options.*Member)->allow_extra_args(false);
}

template <auto Member>
CLI::Option* AddFlag(CLI::App& app, const std::string& name, TCommonOptions& options) {
  return app.add_flag(name, options.*Member);
}

// A file that is written. "-" is no standard output here, which is for people, and "--dry-run" behind "--log"
// is a name that was forgotten: a run in earnest would follow.
template <typename TKeep>
CLI::Option* AddFile(CLI::App& app, const std::string& name, TKeep keep) {
  return app.add_option_function<std::string>(name, [keep, name](const std::string& file) {
    const std::u16string wide = text::FromUtf8(file);
    if (file.empty() || file.starts_with('-'))
      throw EUsage(text::FromUtf8(name) + u" takes the name of a file, not " + Quoted(wide) + u"." +
                   (file.empty() ? u"" : u" A file of that name is ./" + wide + u"."));
    keep(file);
  });
}

template <auto Member>
CLI::Option* AddOneFile(CLI::App& app, const std::string& name, TCommonOptions& options) {
  return AddFile(app, name, [&options](const std::string& file) { options.*Member = file; });
}

CLI::Option* AddReport(CLI::App& app, const std::string& name, TCommonOptions& options) {
  return AddFile(app, name, [&options, name](const std::string& file) { options.Reports[name] = file; });
}

// In the order of the enumerations.
constexpr std::array<std::u16string_view, 5> Verbosities{u"quiet", u"minimal", u"normal", u"detailed",
                                                         u"diagnostic"};
constexpr std::array<std::u16string_view, 3> Colors{u"auto", u"always", u"never"};
constexpr std::array<std::u16string_view, 5> CiSystems{u"github", u"azure", u"teamcity", u"gitlab", u"auto"};

template <auto Member, const auto& Names>
CLI::Option* AddChoice(CLI::App& app, const std::string& name, TCommonOptions& options) {
  auto* option = app.add_option_function<std::string>(name, [&options, name](const std::string& text) {
    using T = std::remove_reference_t<decltype(options.*Member)>;
    const std::size_t chosen = RequireChoice(text::FromUtf8(name), text::FromUtf8(text), Names);
    if constexpr (std::is_enum_v<T>) {
      options.*Member = static_cast<T>(chosen);
    } else {
      options.*Member = text::ToUtf8(Names[chosen]);
    }
  });
  OfferChoices(option, Names);
  return option;
}

struct TCommonOption {
  const char* Name;
  const char* Type; // empty for a flag
  const char* Help;
  std::string_view Commands; // those that use it; empty: all
  TAdd Add;
};

constexpr std::string_view All;
constexpr std::string_view Hosts =
    "run plan do validate edit actions schema options check"; // they open the store and the plug-ins
constexpr std::string_view Runs = "run do";
constexpr std::string_view Reporters = "run do report";
constexpr std::string_view Remembered = "run plan edit history";
constexpr std::string_view Readers =
    "run do validate inspect graph check report"; // they show what files hold

using T = TCommonOptions;
const std::vector<TCommonOption>& Options() {
  static const auto rows = [] {
    std::vector<TCommonOption> made{
        {"--options", "FILE", "The options store (default: in the user's configuration folder)", Hosts,
         AddOneFile<&T::OptionsFile>},
        {"--option", "SECTION.KEY=VALUE", "An option for this run only", Hosts, AddList<&T::Overrides>},
        {"--plugin", "FILE", "Load this plug-in too", Hosts, AddList<&T::Plugins>},
        {"--drive", "LETTER=FOLDER", "What a drive letter stands for", All, AddList<&T::Drives>},
        {"--color", "WHEN", "auto, always or never", All, AddChoice<&T::Color, Colors>},
        {"--verbosity", "LEVEL", "quiet, minimal, normal, detailed or diagnostic", Reporters,
         AddChoice<&T::Verbosity, Verbosities>},
        {"--dry-run", "", "Show what would be started and changed, and do neither", Runs,
         AddFlag<&T::DryRun>},
        {"--log", "FILE.jsonl", "Write every event of the run as a line of JSON", Runs,
         AddOneFile<&T::LogFile>},
        {"--history", "FILE",
         "The file that remembers the runs (default: one a project in the user's state folder)", Remembered,
         AddOneFile<&T::HistoryFile>},
        {"--no-history", "", "Neither remember a run nor ask for earlier ones", "run plan edit",
         AddFlag<&T::NoHistory>},
        {"--ci", "SYSTEM",
         "For the log of github, azure, teamcity, gitlab, or auto, the one it runs in: nothing that is shown "
         "is a command to it; a run folds groups and marks problems",
         Readers, AddChoice<&T::Ci, CiSystems>},
    };
    for (const TReportFormat& format : ReportFormats())
      made.push_back({format.Option, format.File, format.Help, Reporters, AddReport});
    return made;
  }();
  return rows;
}

std::vector<std::u16string> CommandsOf(const TCommonOption& option) {
  std::vector<std::u16string> names;
  const std::u16string commands = text::FromAscii(option.Commands);
  for (const auto name : text::Split(commands, u' '))
    names.emplace_back(name);
  return names;
}

bool IsUsedBy(const TCommonOption& option, std::string_view command) {
  const auto commands = CommandsOf(option);
  return option.Commands == All || std::ranges::find(commands, text::FromAscii(command)) != commands.end();
}

} // namespace

std::u16string ListOf(std::span<const std::u16string> names, std::u16string_view lastWord) {
  std::u16string list;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (i > 0) list += i + 1 == names.size() ? u" " + std::u16string(lastWord) + u" " : u", ";
    list += names[i];
  }
  return list;
}

std::size_t RequireChoice(std::u16string_view option, std::u16string_view text,
                          std::span<const std::u16string_view> names) {
  const auto found = std::ranges::find_if(
      names, [text](std::u16string_view name) { return text::EqualsIgnoreCase(name, text); });
  if (found != names.end()) return static_cast<std::size_t>(found - names.begin());
  const std::vector<std::u16string> all(names.begin(), names.end());
  throw EUsage(std::u16string(option) + u" takes " + ListOf(all, u"or") + u", not " + Quoted(text) + u"." +
               DidYouMean(text, all));
}

history::TPlace HistoryOf(const TCommonOptions& options) {
  return {.Off = options.NoHistory || options.DryRun, .File = text::FromUtf8(options.HistoryFile)};
}

// A validator that lets everything pass keeps them in its name: the library shows that nowhere.
constexpr std::string_view ChoicesName = "choices:";

void OfferChoices(CLI::Option* option, std::span<const std::u16string_view> names) {
  std::string list(ChoicesName);
  for (const auto name : names)
    list += text::ToUtf8(name) + "\n";
  option->check(CLI::Validator([](std::string&) { return std::string(); }, "", list));
}

std::vector<std::u16string> ChoicesOf(CLI::Option& option) {
  std::vector<std::u16string> names;
  try {
    const std::u16string list = text::FromUtf8(option.get_validator(0)->get_name());
    if (list.starts_with(text::FromAscii(ChoicesName)))
      for (const auto name : text::SplitLines(std::u16string_view(list).substr(ChoicesName.size())))
        if (!name.empty()) names.emplace_back(name);
  } catch (const CLI::OptionNotFound&) { // it has none
  }
  return names;
}

void DefineCommonOptions(CLI::App& app, TCommonOptions& options) {
  app.fallthrough();
  app.allow_windows_style_options(false); // "/srv/a.sln" is a file on Windows, too
  for (const TCommonOption& row : Options()) {
    CLI::Option* option = row.Add(app, row.Name, options)->description(row.Help);
    if (*row.Type != '\0') option->type_name(row.Type);
    if (row.Commands == Runs || row.Commands == Reporters) option->group("Options of run, do and report");
  }
}

std::string CommonOptionsHelp(const CLI::App& app, std::string_view command) {
  std::string help = "Common options:\n";
  for (const TCommonOption& row : Options())
    if (IsUsedBy(row, command)) help += CLI::Formatter().make_option(app.get_option(row.Name), false);
  return help;
}

bool IsCommonOptionOf(std::string_view option, std::string_view command) {
  const auto row = std::ranges::find(Options(), option, &TCommonOption::Name);
  return row == Options().end() || IsUsedBy(*row, command);
}

void CheckCommonOptions(const CLI::App& app, std::string_view command) {
  for (const TCommonOption& row : Options())
    if (app.get_option(row.Name)->count() > 0 && !IsUsedBy(row, command))
      throw EUsage(text::FromAscii(row.Name) + u" is an option of " + ListOf(CommandsOf(row), u"and") +
                   u"; " + text::FromAscii(command) + u" does not use it.");
}

} // namespace kx::cli
