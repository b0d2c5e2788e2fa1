// kxhost do: one action without a project file.
#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "program/cli/Commands.h"
#include "program/cli/CommonOptions.h"
#include "program/cli/FileKinds.h"
#include "program/cli/HostSession.h"
#include "program/cli/RunArguments.h"
#include "program/cli/RunProject.h"
#include "program/cli/SecretArguments.h"
#include "program/cli/Usage.h"
#include "program/runner/Project.h"
#include "program/runner/Run.h"

#include <CLI/CLI.hpp>

#include <map>
#include <memory>

namespace kx::cli {

namespace {

struct TDoArguments {
  std::string Action;
  std::vector<std::string> Properties;
  TRunArguments Run;
  std::vector<std::string> SetValues;
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

// Without a project file the property sets that an action names come from here: SET.NAME=VALUE.
void AddPropertySets(TProject& project, const std::vector<std::string>& texts) {
  std::map<std::u16string, std::shared_ptr<TProjectPropertySet>, text::IgnoreCaseLess> sets;
  for (const auto& utf8 : texts) {
    const std::u16string text = text::FromUtf8(utf8);
    const std::size_t equals = text.find(u'=');
    const std::size_t dot = text.substr(0, equals).rfind(u'.');
    if (equals == std::u16string::npos || dot == std::u16string::npos)
      throw EUsage(u"Values of property sets are given as SET.NAME=VALUE, not " + text + u".");
    auto& set = sets[text.substr(0, dot)];
    if (set == nullptr) {
      set = std::make_shared<TProjectPropertySet>(text.substr(0, dot), TPropertySetKind::Win32);
      project.PropertySets.Add(set);
    }
    if (!set->Add(text.substr(dot + 1, equals - dot - 1), WithHostLineEnds(text.substr(equals + 1))))
      throw EUsage(text.substr(0, equals) + u" is given twice.");
  }
}

void Configure(TProject& project, const TDoArguments& arguments) {
  try {
    TActionNode& node = project.AddAction(text::FromUtf8(arguments.Action));
    for (const auto& assignment : ParseAssignments(node, arguments.Properties))
      node.Set(assignment.Property->Name, assignment.Text);
  } catch (const EKxException& error) {
    const std::u16string kind = DescribeFileKind(text::FromUtf8(arguments.Action));
    throw EUsage(kind.empty() ? error.Message() : kind);
  }
}

int Do(const TDoArguments& arguments, const TCommonOptions& common) {
  THostSession session(common);
  const TGivenSecrets secrets = TakeSecrets(arguments.Run.Secrets, session);
  TRunSettings settings = RunSettingsOf(arguments.Run, session, common.DryRun);
  for (auto& variable : SecretVariables(secrets))
    settings.Variables.push_back(std::move(variable));
  TProjectRunner runner(session.Services(), session.Stop(), std::move(settings));
  AddPropertySets(runner.Project(), arguments.SetValues);
  Configure(runner.Project(), arguments);
  GiveSecrets(secrets, runner.Project(), nullptr);
  const int exitCode = RunProject(runner, session, common, arguments.Run.Gates);
  if (!common.DryRun) session.SaveOptions();
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
  DefineRunArguments(command, arguments->Run);
  DefineGates(command, arguments->Run.Gates);
  DefineSecrets(command, arguments->Run.Secrets);
  command
      .add_option("--property-set", arguments->SetValues,
                  "SET.NAME=VALUE: a value of a property set that the action names; repeat it for each value")
      ->type_name("SET.NAME=VALUE")
      ->allow_extra_args(false);
  command.callback([arguments, &common, &exitCode] { exitCode = Do(*arguments, common); });
}

} // namespace kx::cli
