// kxhost actions: what the loaded plug-ins offer, printed from the tables themselves.
#include "cli/Common.h"
#include "platform/Console.h"
#include "text/Encoding.h"
#include "text/Text.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <memory>

namespace kx::cli {

namespace {

using TJson = nlohmann::ordered_json;

const char* KindName(TKxPropertyKind kind) {
  switch (kind) {
  case TKxPropertyKind::Boolean:
    return "Boolean";
  case TKxPropertyKind::Integer:
    return "Integer";
  case TKxPropertyKind::Enumeration:
    return "enumeration";
  case TKxPropertyKind::String:
    return "text";
  case TKxPropertyKind::StringList:
    return "list";
  }
  return "";
}

TJson PropertyToJson(const TKxPublishedProperty& property, TCustomKxAction& action, bool hidden) {
  TJson object{{"name", text::ToUtf8(property.Name)}, {"kind", KindName(property.Kind)}};
  if (property.Enumeration != nullptr) {
    TJson values = TJson::array();
    for (const auto value : property.Enumeration->Values)
      values.push_back(text::ToUtf8(value));
    object["values"] = std::move(values);
  }
  object["default"] = property.Secret ? "" : text::ToUtf8(PropertyToText(property, property.Get(action)));
  object["stored"] = property.Stored;
  object["readOnly"] = property.ReadOnly;
  object["hidden"] = hidden;
  object["help"] = text::ToUtf8(property.Help);
  return object;
}

// The defaults are those of a new action.
TJson ActionToJson(const TRegisteredAction& type, TProject& project) {
  const TActionNode& node = project.AddAction(type.Identifier);
  text::TStringList hidden;
  node.Action().GetHiddenProperties(hidden);
  TJson properties = TJson::array();
  for (const TKxPublishedProperty* property : node.Properties())
    properties.push_back(
        PropertyToJson(*property, node.Action(), hidden.IndexOf(property->Name).has_value()));
  return {{"type", text::ToUtf8(type.Identifier)},
          {"name", text::ToUtf8(node.Action().GetActionName())},
          {"category", text::ToUtf8(type.Category)},
          {"keywords", text::ToUtf8(node.Action().GetActionKeywords())},
          {"image", project.Services().FindImage(type.Identifier)},
          {"properties", std::move(properties)}};
}

std::string Joined(const TJson& values) {
  std::string text;
  for (const auto& value : values)
    text += (text.empty() ? "" : ", ") + value.get<std::string>();
  return text;
}

std::string DefaultText(const TJson& property) {
  const auto text = property["default"].get<std::string>();
  return text.empty() ? "" : " = " + text;
}

std::string Describe(const TJson& action) {
  std::string out = action["type"].get<std::string>() + "  " + action["name"].get<std::string>() + "  (" +
                    action["category"].get<std::string>() + ")\n";
  for (const auto& property : action["properties"]) {
    out += "  " + property["name"].get<std::string>() + ": " + property["kind"].get<std::string>() +
           DefaultText(property);
    if (property["readOnly"].get<bool>()) out += "  (read-only)";
    out += "\n      " + property["help"].get<std::string>() + "\n";
    if (property.contains("values")) out += "      one of " + Joined(property["values"]) + "\n";
  }
  return out;
}

int ListActions(const std::string& wanted, bool json, const TCommonOptions& common) {
  THostSession session(common);
  TProjectRunner runner(session.Services(), session.Stop(), {{}, session.KeyFile()});
  TJson actions = TJson::array();
  try {
    if (!wanted.empty()) {
      actions.push_back(
          ActionToJson(session.Services().RequireAction(text::FromUtf8(wanted)), runner.Project()));
    } else {
      for (const auto& type : session.Services().Actions())
        actions.push_back(ActionToJson(type, runner.Project()));
    }
  } catch (const EKxException& error) {
    throw EUsage(error.Message());
  }
  TOutput output;
  if (json) {
    output.Write(ToLine(wanted.empty() ? actions : actions[0]));
  } else if (!wanted.empty()) {
    output.Write(Describe(actions[0]));
  } else {
    for (const auto& action : actions)
      output.Write(action["type"].get<std::string>() + "  " + action["name"].get<std::string>() + "  (" +
                   action["category"].get<std::string>() + ")\n");
  }
  return ExitSuccess;
}

} // namespace

void DefineActions(CLI::App& command, const TCommonOptions& common, int& exitCode) {
  const auto wanted = std::make_shared<std::string>();
  const auto json = std::make_shared<bool>(false);
  command.add_option("ACTION", *wanted, "Show the properties, defaults and help of this type");
  command.add_flag("--json", *json, "As JSON");
  command.callback([=, &common, &exitCode] { exitCode = ListActions(*wanted, *json, common); });
}

} // namespace kx::cli
