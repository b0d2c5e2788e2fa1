#include "program/cli/SecretArguments.h"

#include "foundation/platform/Console.h"
#include "foundation/platform/System.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "program/cli/Output.h"
#include "program/runner/Messages.h"
#include "program/runner/Project.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <optional>

namespace kx::cli {

namespace {

constexpr std::size_t LongestInput = std::size_t{1} << 20; // in bytes

using TNodes = std::vector<std::unique_ptr<TActionNode>>;

std::u16string OptionOf(const TSecretArgument& argument) {
  return argument.IsVariable ? u"--set-secret" : u"--secret";
}

// NAME and, behind "=", the environment's variable; that is empty for standard input.
std::pair<std::u16string, std::u16string> SplitArgument(const TSecretArgument& argument) {
  const std::u16string text = text::FromUtf8(argument.Text);
  const std::size_t equals = text.find(u'=');
  const std::u16string name = text.substr(0, equals);
  const bool isComplete = equals == text.npos || equals + 1 < text.size();
  if (!IsVariableName(name) || !isComplete)
    throw EUsage(OptionOf(argument) +
                 u" takes a name, or NAME=VARIABLE, the name of letters, digits, \"_\" and \".\".");
  return {name, equals == text.npos ? std::u16string() : text.substr(equals + 1)};
}

std::u16string WithoutLastLineEnd(std::u16string text) {
  if (text.ends_with(u'\n')) text.pop_back();
  if (text.ends_with(u'\r')) text.pop_back();
  return text;
}

// What standard input holds for `count` secrets; fewer when it ends before.
std::vector<std::u16string> ReadInput(std::size_t count) {
  const auto bytes = platform::ReadStandardInput(LongestInput);
  if (!bytes) throw EUsage(bytes.Message());
  std::string_view utf8 = *bytes;
  if (text::DetectByteOrderMark(utf8) == text::ByteOrderMark::Utf8)
    utf8.remove_prefix(text::LengthOf(text::ByteOrderMark::Utf8));
  const std::u16string text = text::FromUtf8(utf8);
  if (count == 1) return {WithoutLastLineEnd(text)};
  const auto lines = text::SplitLines(text);
  return {lines.begin(), lines.end()};
}

std::u16string ValueOf(const std::u16string& variable) {
  std::u16string value = platform::EnvironmentVariable(variable).value_or(u"");
  if (variable.starts_with(PassedSecret)) platform::ForgetEnvironmentVariable(variable);
  return value;
}

void TakeFromInput(std::vector<TGivenSecret*> wanted) {
  if (wanted.empty()) return;
  if (platform::IsInputTerminal()) {
    for (TGivenSecret* secret : wanted)
      secret->Value = text::FromUtf8(platform::AskForSecret(ForTerminal(secret->Name) + ": ").value_or(""));
    return;
  }
  auto values = ReadInput(wanted.size());
  for (std::size_t i = 0; i < std::min(values.size(), wanted.size()); ++i)
    wanted[i]->Value = std::move(values[i]);
}

void GiveTo(const TNodes& nodes, std::u16string_view action, std::u16string_view property,
            const std::u16string& value, TProjectFile* file, bool& given) {
  for (const auto& node : nodes) {
    const auto* found = node->FindProperty(property);
    const bool isMeant = action.empty() || text::EqualsIgnoreCase(node->Name(), action);
    if (isMeant && found != nullptr && IsClearSecret(*found)) {
      for (const auto* row : node->Properties())
        if (file != nullptr && row->Secret) file->KeepAsItStands(*node, *row);
      node->Set(property, value);
      given = true;
    }
    GiveTo(node->Children(), action, property, value, file, given);
  }
}

} // namespace

void DefineSecrets(CLI::App& command, std::vector<TSecretArgument>& arguments) {
  const auto add = [&command, &arguments](const char* option, bool isVariable, const char* type,
                                          const char* help) {
    command
        .add_option_function<std::vector<std::string>>(
            option,
            [&arguments, isVariable](const std::vector<std::string>& texts) {
              for (const auto& text : texts)
                arguments.push_back({isVariable, text});
            },
            help)
        ->type_name(type)
        ->trigger_on_parse()
        ->allow_extra_args(false);
  };
  add("--secret", false, "PROPERTY[=VARIABLE]",
      "A secret property of the actions (ACTION.PROPERTY: of one) for this run, read from standard input or "
      "from this "
      "variable of the environment");
  add("--set-secret", true, "NAME[=VARIABLE]", "As --set, the value read in the same way and shown nowhere");
}

TGivenSecrets TakeSecrets(const std::vector<TSecretArgument>& arguments, const THostSession& session) {
  TGivenSecrets secrets;
  secrets.reserve(arguments.size());
  std::vector<TGivenSecret*> fromInput;
  for (const auto& argument : arguments) {
    const auto [name, variable] = SplitArgument(argument);
    secrets.push_back({argument.IsVariable, name, {}});
    if (variable.empty())
      fromInput.push_back(&secrets.back());
    else
      secrets.back().Value = ValueOf(variable);
  }
  TakeFromInput(fromInput);
  for (std::size_t i = 0; i < secrets.size(); ++i) {
    if (secrets[i].Value.empty())
      throw EUsage(OptionOf(arguments[i]) + u": there is no value for " + secrets[i].Name + u".");
    session.Secrets()->Keep(secrets[i].Value);
  }
  return secrets;
}

std::vector<TProjectVariable> SecretVariables(const TGivenSecrets& secrets) {
  std::vector<TProjectVariable> variables;
  for (const auto& secret : secrets)
    if (secret.IsVariable)
      variables.push_back(
          {secret.Name, text::ReplaceAll(text::ReplaceAll(secret.Value, u"%", u"%%"), u"$", u"$$")});
  return variables;
}

void GiveSecrets(const TGivenSecrets& secrets, TProject& project, TProjectFile* file) {
  for (const auto& secret : secrets) {
    if (secret.IsVariable) continue;
    const std::size_t dot = secret.Name.rfind(u'.');
    const std::u16string action = dot == secret.Name.npos ? u"" : secret.Name.substr(0, dot);
    bool given = false;
    GiveTo(project.Actions(), action, secret.Name.substr(dot + 1), secret.Value, file,
           given); // npos + 1 is 0
    if (!given) throw EUsage(u"--secret: no action has a secret property " + Quoted(secret.Name) + u".");
  }
}

} // namespace kx::cli
