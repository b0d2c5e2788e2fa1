// kxhost actions: what the loaded plug-ins offer, printed from the tables themselves.
#include "contract/Pages.h"
#include "foundation/platform/Console.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "program/cli/Commands.h"
#include "program/cli/CommonOptions.h"
#include "program/cli/HostSession.h"
#include "program/cli/Output.h"
#include "program/cli/Usage.h"
#include "program/editor/EditorDesign.h"
#include "program/runner/Project.h"
#include "program/runner/Run.h"
#include "program/runner/ServiceRegistry.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <map>
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

// Where a property stands on the pages of its action, and what its values are called there.
struct TPlaceOnPage {
  std::u16string Group;
  std::vector<std::u16string> Labels;
};
using TPlaces = std::map<std::u16string, TPlaceOnPage, text::IgnoreCaseLess>;

void AddOnce(std::vector<std::u16string>& groups, const std::u16string& group) {
  if (std::ranges::find(groups, group) == groups.end()) groups.push_back(group);
}

void AddPlaces(const TKxPageClass& pageClass, TCustomKxAction& action, TPlaces& places,
               std::vector<std::u16string>& groups) {
  const auto page = pageClass.Create();
  page->InitFrame();
  page->InitPage(action);
  std::u16string group = page->PageName();
  AddOnce(groups, group);
  for (const TKxPageField& field : page->Fields()) {
    if (field.Kind == TKxFieldKind::Heading) {
      const std::size_t end = field.Label.find_last_not_of(u": ") + 1;
      group = page->PageName() + u": " + field.Label.substr(0, end);
      AddOnce(groups, group);
    } else if (!field.Property.empty()) {
      places.try_emplace(field.Property, TPlaceOnPage{group, field.Items});
    }
  }
}

TJson TextsToJson(const auto& texts) {
  TJson array = TJson::array();
  for (const auto& text : texts)
    array.push_back(text::ToUtf8(text));
  return array;
}

TJson PropertyToJson(const TKxPublishedProperty& property, TCustomKxAction& action, bool hidden,
                     const TPlaces& places) {
  const auto place = places.find(property.Name);
  TJson object{{"name", text::ToUtf8(property.Name)}, {"kind", KindName(property.Kind)}};
  if (property.Enumeration != nullptr) {
    object["values"] = TextsToJson(property.Enumeration->Values);
    const bool isLabelled =
        place != places.end() && place->second.Labels.size() == property.Enumeration->Values.size();
    if (isLabelled) object["labels"] = TextsToJson(place->second.Labels);
  }
  object["default"] = property.Secret ? "" : text::ToUtf8(PropertyToText(property, property.Get(action)));
  object["stored"] = property.Stored;
  object["readOnly"] = property.ReadOnly;
  object["hidden"] = hidden;
  object["group"] = place == places.end() ? "" : text::ToUtf8(place->second.Group);
  object["help"] = text::ToUtf8(property.Help);
  return object;
}

// The defaults are those of a new action.
TJson ActionToJson(const TRegisteredAction& type, TProject& project) {
  const TActionNode& node = project.AddAction(type.Identifier);
  text::TStringList hidden;
  node.Action().GetHiddenProperties(hidden);
  TPlaces places;
  std::vector<std::u16string> groups;
  for (const auto& pages : project.Services().Pages())
    if (pages.Class == type.Class)
      for (const TKxPageClass* page : pages.Pages)
        AddPlaces(*page, node.Action(), places, groups);
  TJson properties = TJson::array();
  for (const TKxPublishedProperty* property : node.Properties())
    properties.push_back(
        PropertyToJson(*property, node.Action(), hidden.IndexOf(property->Name).has_value(), places));
  return {{"type", text::ToUtf8(type.Identifier)},
          {"name", text::ToUtf8(node.Action().GetActionName())},
          {"category", text::ToUtf8(type.Category)},
          {"keywords", text::ToUtf8(node.Action().GetActionKeywords())},
          {"image", project.Services().FindImage(type.Identifier)},
          {"groups", TextsToJson(groups)},
          {"properties", std::move(properties)}};
}

std::string TextOf(const TJson& object, const char* key) {
  return object[key].get<std::string>();
}

std::string DescribeValues(const TJson& property) {
  const TJson& values = property["values"];
  std::string text;
  if (!property.contains("labels")) {
    for (const auto& value : values)
      text += (text.empty() ? "      one of " : ", ") + value.get<std::string>();
    return text + "\n";
  }
  for (std::size_t i = 0; i < values.size(); ++i)
    text += "      " + values[i].get<std::string>() + ": " + property["labels"][i].get<std::string>() + "\n";
  return text;
}

std::string DescribeProperty(const TJson& property) {
  const std::string standard = TextOf(property, "default");
  std::string out = "  " + TextOf(property, "name") + ": " + TextOf(property, "kind") +
                    (standard.empty() ? "" : " = " + standard);
  if (property["readOnly"].get<bool>()) out += "  (read-only)";
  out += "\n      " + TextOf(property, "help") + "\n";
  if (property.contains("values")) out += DescribeValues(property);
  return out;
}

std::string DescribeGroup(const TJson& action, const std::string& group, const std::string& title) {
  std::string out;
  for (const auto& property : action["properties"])
    if (TextOf(property, "group") == group) out += DescribeProperty(property);
  return out.empty() || title.empty() ? out : "\n" + title + "\n" + out;
}

std::string Headline(const TJson& action) {
  return TextOf(action, "type") + "  " + TextOf(action, "name") + "  (" + TextOf(action, "category") + ")\n";
}

// Grouped as the pages of an editor are.
std::string Describe(const TJson& action) {
  std::string out = Headline(action);
  for (const auto& group : action["groups"])
    out += DescribeGroup(action, group.get<std::string>(), group.get<std::string>());
  out += DescribeGroup(action, "", action["groups"].empty() ? "" : "On no page of the editor");
  return out +
         "\nAn enumeration takes a name or its number, counted from 0; a list one entry a line (in a project "
         "file <Line> elements, on the command line the property again).\n";
}

int ListActions(const std::string& wanted, bool json, const TCommonOptions& common) {
  editor::TEditorDesign design; // with it the plug-ins register their pages
  THostSession session(common, {&design, &design});
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
      output.Write(Headline(action));
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
