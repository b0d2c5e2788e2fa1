#include "program/runner/ActionWriter.h"

#include "foundation/text/Encoding.h"
#include "program/runner/ProjectReader.h"
#include "program/runner/References.h"

#include <algorithm>

namespace kx {

namespace {

bool IsCompared(const TKxPublishedProperty& property) {
  return !property.ReadOnly && !IsClearSecret(property);
}

std::u16string TextOf(TCustomKxAction& action, const TKxPublishedProperty& property) {
  return PropertyToText(property, property.Get(action));
}

bool HasClearSecret(const TActionSource& source) {
  return std::ranges::any_of(source.Element->Children, [&source](const TProjectElement& child) {
    const auto* property = source.Node->FindProperty(child.Name);
    return property != nullptr && IsClearSecret(*property);
  });
}

// A list that nobody edited is left alone, since reading one may normalise it.
bool HasChanged(const TActionSource& source, const TKxPublishedProperty& property) {
  const std::u16string* was = source.Baseline.Find(property);
  if (was == nullptr) return false;
  const std::u16string now = TextOf(source.Node->Action(), property);
  if (source.Edited.contains(&property)) return now != *was;
  return property.Kind != TKxPropertyKind::StringList && now != *was && KeepsReferences(*was, now);
}

// The encrypted form of a secret follows the clear one, which the file loses.
bool MustBeWritten(const TActionSource& source, const TKxPublishedProperty& property) {
  if (source.Untouched.contains(&property)) return false;
  return HasChanged(source, property) || (property.Secret && HasClearSecret(source));
}

bool HasElement(const TProjectElement& action, const TKxPublishedProperty& property) {
  return std::ranges::any_of(action.Children, [&property](const TProjectElement& child) {
    return text::EqualsIgnoreCase(child.Name, property.Name);
  });
}

// What a new action has to say: all that a file without it would not mean.
std::vector<const TKxPublishedProperty*> WorthStating(const TActionNode& node) {
  const auto untouched = node.Type().Class->Create();
  std::vector<const TKxPublishedProperty*> stated;
  for (const auto* property : node.Properties())
    if (property->Stored &&
        (property->DefaultVaries || property->Get(*untouched) != property->Get(node.Action())))
      stated.push_back(property);
  return stated;
}

} // namespace

TPropertyTexts::TPropertyTexts(const TActionNode& node) {
  const auto untouched = node.Type().Class->Create();
  for (const auto* property : node.Properties())
    if (IsCompared(*property)) texts_.emplace(property, TextOf(*untouched, *property));
}

TPropertyTexts::TPropertyTexts(const TActionNode& node, const TPropertyTexts& defaults)
    : defaults_(&defaults) {
  for (const auto* property : node.Properties()) {
    if (!IsCompared(*property)) continue;
    std::u16string text = TextOf(node.Action(), *property);
    const std::u16string* usual = defaults.Find(*property);
    if (usual == nullptr || *usual != text) texts_.emplace(property, std::move(text));
  }
}

const std::u16string* TPropertyTexts::Find(const TKxPublishedProperty& property) const {
  const auto own = texts_.find(&property);
  if (own != texts_.end()) return &own->second;
  return defaults_ == nullptr ? nullptr : defaults_->Find(property);
}

std::vector<const TKxPublishedProperty*> ChangedProperties(const TActionSource& source) {
  std::vector<const TKxPublishedProperty*> changed;
  for (const auto* property : source.Node->Properties())
    if (!IsClearSecret(*property) && (property->Stored || HasElement(*source.Element, *property)) &&
        MustBeWritten(source, *property))
      changed.push_back(property);
  return changed;
}

TActionWriter::TActionWriter(std::string_view bytes, TTextEdits& edits) : text_(bytes, edits) {}

std::string TActionWriter::ListLines(const text::TStringList& list, const std::string& indent) const {
  std::string lines;
  for (const auto& line : list)
    lines += text_.LineEnd() + indent + text_.Step() + "<Line>" + text_.Escaped(line) + "</Line>";
  return lines.empty() ? lines : lines + text_.LineEnd() + indent;
}

std::string TActionWriter::Property(const TActionNode& node, const TKxPublishedProperty& property,
                                    const std::string& indent) const {
  const TKxPropertyValue value = property.Get(node.Action());
  const std::string name = text::ToUtf8(property.Name);
  std::string attribute;
  std::string content;
  if (const auto* list = std::get_if<text::TStringList>(&value)) {
    content = ListLines(*list, indent);
  } else if (property.Kind == TKxPropertyKind::Enumeration) {
    attribute = " Name=\"" + text::ToUtf8(PropertyToText(property, value)) + "\"";
    content = std::to_string(std::get<std::int32_t>(value));
  } else {
    content = text_.Escaped(PropertyToText(property, value));
  }
  if (content.empty()) return "<" + name + "/>";
  return "<" + name + attribute + ">" + content + "</" + name + ">";
}

std::string TActionWriter::Action(const TActionNode& node, const std::string& indent) const {
  std::string text = "<Action" + AttributeText(u"Type", node.Type().Identifier);
  if (!node.Name().empty()) text += AttributeText(u"Name", node.Name());
  if (node.OnFailure() != TOnFailure::Stop)
    text += AttributeText(u"ContinueOnError", node.OnFailure() == TOnFailure::Ignore ? u"ignore" : u"true");
  for (const TTermAttribute& attribute : TermAttributes())
    if (const auto stated = attribute.Text(node.Terms())) text += AttributeText(attribute.Name, *stated);
  const std::string inner = indent + text_.Step();
  std::string content;
  for (const auto* property : WorthStating(node))
    content += text_.LineEnd() + inner + Property(node, *property, inner);
  std::vector<const TActionNode*> children;
  for (const auto& child : node.Children())
    children.push_back(child.get());
  if (!children.empty()) content += text_.LineEnd() + inner + Actions(children, inner);
  return content.empty() ? text + "/>" : text + ">" + content + text_.LineEnd() + indent + "</Action>";
}

std::string TActionWriter::Actions(const std::vector<const TActionNode*>& nodes,
                                   const std::string& indent) const {
  std::string text = "<Actions>";
  for (const auto* node : nodes)
    text += text_.LineEnd() + indent + text_.Step() + Action(*node, indent + text_.Step());
  return text + text_.LineEnd() + indent + "</Actions>";
}

void TActionWriter::Append(const TProjectElement& parent, const std::vector<const TActionNode*>& added) {
  if (added.empty()) return;
  const TProjectElement* list = ActionsOf(parent);
  if (list == nullptr) {
    const TProjectElement* last = parent.Children.empty() ? nullptr : &parent.Children.back();
    text_.InsertInto(parent, last, {Actions(added, text_.ChildIndent(parent))});
    return;
  }
  std::vector<std::string> elements;
  elements.reserve(added.size());
  for (const auto* node : added)
    elements.push_back(Action(*node, text_.ChildIndent(*list)));
  text_.InsertInto(*list, list->Children.empty() ? nullptr : &list->Children.back(), elements);
}

void TActionWriter::Update(const TActionSource& source, const std::vector<const TActionNode*>& added) {
  const TProjectElement& action = *source.Element;
  const TProjectElement* list = ActionsOf(action);
  std::vector<std::string> missing;
  const TProjectElement* last = nullptr;
  for (const auto& child : action.Children) {
    if (&child == list) continue;
    last = &child;
    const TKxPublishedProperty& property = source.Node->RequireProperty(child.Name);
    if (IsClearSecret(property) && !source.Untouched.contains(&property)) {
      text_.Remove(child);
    } else if (MustBeWritten(source, property)) {
      text_.Replace(child, Property(*source.Node, property, text_.IndentOf(child)));
    }
  }
  for (const auto* property : source.Node->Properties())
    if (property->Stored && !HasElement(action, *property) && MustBeWritten(source, *property))
      missing.push_back(Property(*source.Node, *property, text_.ChildIndent(action)));
  if (list == nullptr && !added.empty()) missing.push_back(Actions(added, text_.ChildIndent(action)));
  text_.InsertInto(action, last, missing);
  if (list != nullptr) Append(action, added);
}

} // namespace kx
