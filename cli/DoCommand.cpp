// kxhost do: one action without a project file.
#include "cli/Common.h"
#include "text/Encoding.h"
#include "text/Text.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <set>

namespace kx::cli {

namespace {

struct TDoArguments {
  std::string Action;
  std::vector<std::string> Properties;
  std::vector<std::string> Variables;
};

struct TAssignment {
  const TKxPublishedProperty* Property;
  std::u16string Text;
};

// One assignment a property; a list takes one a line.
std::vector<TAssignment> ParseAssignments(const TActionNode& node, const std::vector<std::string>& texts) {
  std::vector<TAssignment> assignments;
  for (const auto& utf8 : texts) {
    const std::u16string text = text::FromUtf8(utf8);
    const std::size_t equals = text.find(u'=');
    if (equals == std::u16string::npos || equals == 0)
      throw EUsage(u"Properties are given as Property=Value, not " + text + u".");
    const TKxPublishedProperty& property = node.RequireProperty(text.substr(0, equals));
    const std::u16string value = text.substr(equals + 1);
    const auto before =
        std::find_if(assignments.begin(), assignments.end(),
                     [&property](const TAssignment& row) { return row.Property == &property; });
    if (before == assignments.end()) {
      assignments.push_back({&property, value});
    } else if (property.Kind == TKxPropertyKind::StringList) {
      before->Text += u"\r\n" + value;
    } else {
      throw EUsage(std::u16string(property.Name) + u" is given twice.");
    }
  }
  return assignments;
}

void Configure(TProject& project, const TDoArguments& arguments) {
  try {
    TActionNode& node = project.AddAction(text::FromUtf8(arguments.Action));
    for (const auto& assignment : ParseAssignments(node, arguments.Properties))
      node.Set(assignment.Property->Name, assignment.Text);
  } catch (const EKxException& error) {
    throw EUsage(error.Message());
  }
}

int Do(const TDoArguments& arguments, const TCommonOptions& common) {
  THostSession session(common);
  TProjectRunner runner(session.Services(), session.Stop(),
                        {ParseVariables(arguments.Variables), session.KeyFile()});
  Configure(runner.Project(), arguments);
  const int exitCode = RunProject(runner, session, common);
  session.SaveOptions();
  return exitCode;
}

} // namespace

void DefineDo(CLI::App& command, const TCommonOptions& common, int& exitCode) {
  const auto arguments = std::make_shared<TDoArguments>();
  command.add_option("ACTION", arguments->Action, "The action's type (kxhost actions lists them)")
      ->required();
  command
      .add_option("PROPERTIES", arguments->Properties, "Property=Value; repeat a list property for each line")
      ->type_name("Property=Value");
  command.add_option("--set", arguments->Variables, "NAME=VALUE: a variable for expressions")
      ->type_name("NAME=VALUE")
      ->allow_extra_args(false);
  command.callback([arguments, &common, &exitCode] { exitCode = Do(*arguments, common); });
}

} // namespace kx::cli
