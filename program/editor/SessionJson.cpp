#include "program/editor/SessionJson.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <map>

namespace kx::editor {

namespace {

// In the order of TKxFieldKind and TKxButtonKind.
constexpr std::array<const char*, 11> FieldKinds{"heading", "note", "choice", "check",  "text",    "secret",
                                                 "integer", "list", "file",   "folder", "dropdown"};
constexpr char GroupMark = 'g'; // of the ids of groups
constexpr std::array<const char*, 3> ButtonKinds{"browse", "accept", "custom"};

TJson TextsJson(const std::vector<std::u16string>& texts) {
  TJson list = TJson::array();
  for (const auto& one : texts)
    list.push_back(text::ToUtf8(one));
  return list;
}

TJson FieldJson(const TKxPageField& field) {
  TJson buttons = TJson::array();
  for (const auto& button : field.Buttons)
    buttons.push_back({{"kind", ButtonKinds.at(static_cast<std::size_t>(button.Kind))},
                       {"hint", text::ToUtf8(button.Hint)}});
  return {{"name", text::ToUtf8(field.Name)},
          {"kind", FieldKinds.at(static_cast<std::size_t>(field.Kind))},
          {"label", text::ToUtf8(field.Label)},
          {"property", text::ToUtf8(field.Property)},
          {"group", text::ToUtf8(field.Group)},
          {"hint", text::ToUtf8(field.Hint)},
          {"title", text::ToUtf8(field.Title)},
          {"filter", text::ToUtf8(field.Filter)},
          {"buttons", buttons},
          {"offers", text::ToUtf8(field.OffersTitle)},
          {"needs", field.Enabled ? "" : text::ToUtf8(field.Needs)},
          {"takesNewItems", field.TakesNewItems},
          {"value", field.Kind == TKxFieldKind::Secret ? "" : text::ToUtf8(field.Value)},
          {"enabled", field.Enabled},
          {"items", TextsJson(field.Items)},
          {"isSet", field.IsSet},
          {"error", text::ToUtf8(field.Error)}};
}

TJson NodeJson(const TActionNode& node, const TActionPath& path) {
  TJson row = {{"id", PathText(path)},
               {"type", text::ToUtf8(node.Type().Identifier)},
               {"typeName", text::ToUtf8(node.Action().GetActionName())},
               {"name", text::ToUtf8(node.Name())},
               {"isLoop", node.Iterator() != nullptr}};
  if (node.Iterator() == nullptr) return row;
  row["children"] = TJson::array();
  for (std::size_t i = 0; i < node.Children().size(); ++i) {
    TActionPath inner = path;
    inner.push_back(i);
    row["children"].push_back(NodeJson(*node.Children()[i], inner));
  }
  return row;
}

std::string GroupId(std::size_t group) {
  return GroupMark + std::to_string(group);
}

// As the page shows and sends it: that nothing is needed is another thing than nothing said.
std::string NeedsValue(const std::optional<std::u16string>& needs) {
  return text::ToUtf8(needs && needs->empty() ? NoNeeds : needs.value_or(u""));
}

std::u16string_view WithoutColon(std::u16string_view label) {
  label = text::Trim(label);
  return label.ends_with(u':') ? text::Trim(label.substr(0, label.size() - 1)) : label;
}

// "Metadata File", "MetadataFile" and "Metadata file :" are the same place.
std::u16string Letters(std::u16string_view text) {
  std::u16string letters;
  for (const char16_t c : text)
    if (c != u' ' && c != u':' && c != u'.') letters += text::FoldCase(c);
  return letters;
}

bool IsPlace(const TKxPageField& field, std::u16string_view place) {
  const auto same = [wanted = Letters(place)](std::u16string_view name) { return Letters(name) == wanted; };
  return same(field.Label) || same(field.Property) || same(field.Name) ||
         std::ranges::any_of(field.Places, same);
}

void FindPlace(const TPages& pages, std::u16string_view place, TJson& row) {
  if (place.empty()) return;
  for (std::size_t i = 0; i < pages.size(); ++i)
    for (const auto& field : pages[i]->Fields()) {
      if (field.Name.empty() || !IsPlace(field, place)) continue; // a heading cannot be gone to
      row["page"] = i;
      row["field"] = text::ToUtf8(field.Name);
      return;
    }
  for (std::size_t i = 0; i < pages.size(); ++i)
    if (Letters(pages[i]->PageName()) == Letters(place)) row["page"] = i;
}

} // namespace

std::string PathText(const TActionPath& path) {
  std::string text;
  for (const std::size_t position : path)
    text += (text.empty() ? "" : "/") + std::to_string(position);
  return text;
}

TActionPath ParsePath(std::string_view text) {
  TActionPath path;
  const char* at = text.data();
  const char* const end = at + text.size();
  while (at != end) {
    std::size_t position = 0;
    const auto [next, error] = std::from_chars(at, end, position);
    const bool goesOn = next != end && *next == '/' && next + 1 != end;
    if (error != std::errc() || (next != end && !goesOn)) throw EKxException(u"That names no action.");
    path.push_back(position);
    at = goesOn ? next + 1 : end;
  }
  return path;
}

TRowPath RowOfId(const TProjectText& text, std::string_view id) {
  if (!id.starts_with(GroupMark)) return text.RowOfAction(ParsePath(id));
  const TActionPath group = ParsePath(id.substr(1));
  return text.RowOfGroup(group.size() == 1 ? group.front() : std::string::npos);
}

std::string IdOfRow(const TProjectText& text, const TRowPath& row) {
  if (const auto action = text.ActionAt(row)) return PathText(*action);
  return GroupId(static_cast<std::size_t>(
      std::ranges::count_if(text.Groups(), [&](const auto& group) { return group.Row < row.front(); })));
}

TJson PageJson(const TKxPropertyPage& page) {
  TJson fields = TJson::array();
  for (const auto& field : page.Fields())
    fields.push_back(FieldJson(field));
  return {{"name", text::ToUtf8(page.PageName())}, {"fields", fields}};
}

void AddDefaults(TJson& pages, const TPages& defaults) {
  for (std::size_t page = 0; page < defaults.size(); ++page)
    for (std::size_t i = 0; i < defaults[page]->Fields().size(); ++i)
      pages.at(page).at("fields").at(i)["default"] = text::ToUtf8(defaults[page]->Fields()[i].Value);
}

void TellApart(TJson& pages) {
  std::map<std::string, int> named;
  for (const auto& page : pages)
    ++named[page["name"].get<std::string>()];
  for (auto& page : pages) {
    if (named[page["name"].get<std::string>()] == 1) continue;
    const auto heading = std::ranges::find_if(
        page["fields"], [](const TJson& field) { return field["kind"] == FieldKinds.front(); });
    if (heading == page["fields"].end()) continue;
    const auto label = text::FromUtf8((*heading)["label"].get<std::string>());
    page["name"] = page["name"].get<std::string>() + ": " + text::ToUtf8(WithoutColon(label));
  }
}

TJson OffersJson(const TKxFieldOffers& offers) {
  const auto rows = [](const std::vector<TKxFieldOffer>& offered) {
    TJson list = TJson::array();
    for (const auto& item : offered)
      list.push_back({{"value", text::ToUtf8(item.Value)},
                      {"label", text::ToUtf8(item.Label)},
                      {"chosen", item.Chosen},
                      {"lines", TextsJson(item.Lines)},
                      {"cells", TextsJson(item.Cells)},
                      {"folders", TextsJson(item.Folders)}});
    return list;
  };
  return {{"items", rows(offers.Items)},
          {"columns", rows(offers.Columns)},
          {"error", text::ToUtf8(offers.Error)}};
}

TKxButtonKind ParseButton(std::string_view name) {
  const auto found = std::ranges::find(ButtonKinds, name);
  if (found == ButtonKinds.end()) throw EKxException(u"There is no such button.");
  return static_cast<TKxButtonKind>(found - ButtonKinds.begin());
}

TJson TermsJson(const TActionNode& node, bool isOutermost) {
  TJson terms = TJson::array();
  for (const TTermAttribute& attribute : TermAttributes()) {
    const bool applies = (isOutermost || !attribute.IsOutermostOnly) &&
                         (node.Iterator() != nullptr || !attribute.IsOfLoopsOnly);
    const auto value = attribute.Text(node.Terms());
    terms.push_back({{"name", text::ToUtf8(attribute.Name)},
                     {"help", text::ToUtf8(attribute.Help)},
                     {"applies", applies},
                     {"value", NeedsValue(value)}});
  }
  return terms;
}

TJson TreeJson(const TProject& project, const TProjectText& text) {
  TJson rows = TJson::array();
  const auto groups = text.Groups();
  std::size_t action = 0;
  std::size_t group = 0;
  const auto actionsInto = [&](TJson& list, std::size_t count) {
    for (; count > 0; --count, ++action)
      list.push_back(NodeJson(*project.Actions()[action], {action}));
  };
  for (std::size_t row = 0; row < text.RowsIn({}); ++row) {
    if (group == groups.size() || groups[group].Row != row) {
      actionsInto(rows, 1);
      continue;
    }
    TJson children = TJson::array();
    actionsInto(children, groups[group].Actions);
    rows.push_back({{"id", GroupId(group)},
                    {"isGroup", true},
                    {"typeName", "Group"},
                    {"name", text::ToUtf8(groups[group].Name)},
                    {"needs", NeedsValue(groups[group].Needs)},
                    {"children", std::move(children)}});
    ++group;
  }
  return rows;
}

TJson VariablesJson(const TProject& project) {
  TJson list = TJson::array();
  for (const auto& variable : project.Variables)
    list.push_back({{"name", text::ToUtf8(variable.Name)}, {"value", text::ToUtf8(variable.Value)}});
  return list;
}

TJson PropertySetsJson(const TProjectText& text) {
  TJson list = TJson::array();
  for (const auto& set : text.PropertySets()) {
    TJson values = TJson::array();
    for (const auto& value : set.Values)
      values.push_back({{"name", text::ToUtf8(value.Name)}, {"value", text::ToUtf8(value.Value)}});
    list.push_back({{"name", text::ToUtf8(set.Name)}, {"kind", text::ToUtf8(set.Kind)}, {"values", values}});
  }
  return list;
}

TJson ActionTypesJson(const TServiceRegistry& services) {
  TJson list = TJson::array();
  for (const auto& type : services.Actions()) {
    const auto action = type.Class->Create();
    list.push_back({{"type", text::ToUtf8(type.Identifier)},
                    {"name", text::ToUtf8(action->GetActionName())},
                    {"category", text::ToUtf8(type.Category)},
                    {"isLoop", dynamic_cast<TKxBaseIterator*>(action.get()) != nullptr},
                    {"image", !services.FindImage(type.Identifier).empty()}});
  }
  return list;
}

TJson ValidationJson(const std::vector<TValidationEntry>& entries, const TEditedProject& validated,
                     TEditedProject& project) {
  TJson list = TJson::array();
  for (const auto& entry : entries) {
    const TActionPath path = entry.Node == nullptr ? TActionPath() : validated.PathOf(*entry.Node);
    TJson row = {{"id", PathText(path)},
                 {"action", text::ToUtf8(entry.Action)},
                 {"place", text::ToUtf8(entry.Page)},
                 {"message", text::ToUtf8(entry.Message)},
                 {"options", entry.Options == nullptr ? "" : text::ToUtf8(entry.Options->Name)}};
    if (entry.Node != nullptr) FindPlace(project.PagesOf(project.NodeAt(path)), entry.Page, row);
    list.push_back(std::move(row));
  }
  return list;
}

TJson FolderJson(const TChooserFolder& folder) {
  return {{"path", text::ToUtf8(folder.Path)},   {"parent", text::ToUtf8(folder.Parent)},
          {"isThere", folder.IsThere},           {"folders", TextsJson(folder.Folders)},
          {"files", TextsJson(folder.Files)},    {"more", folder.More},
          {"error", text::ToUtf8(folder.Error)}, {"separator", text::IsPosixPath(folder.Path) ? "/" : "\\"}};
}

TJson SourceJson(const TSourceLines& source) {
  return {{"file", text::ToUtf8(source.File)},
          {"line", source.Line},
          {"first", source.First},
          {"lines", TextsJson(source.Lines)}};
}

} // namespace kx::editor
