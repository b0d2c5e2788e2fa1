#include "runner/ActionWriter.h"

#include "host/Xml.h"
#include "runner/ProjectReader.h"
#include "runner/References.h"
#include "text/Encoding.h"

#include <algorithm>

namespace kx {

namespace {

constexpr auto npos = std::string_view::npos;

bool IsCompared(const TKxPublishedProperty& property) {
  return property.Kind != TKxPropertyKind::StringList && !property.ReadOnly && !IsClearSecret(property);
}

std::u16string TextOf(const TActionNode& node, const TKxPublishedProperty& property) {
  return PropertyToText(property, property.Get(node.Action()));
}

bool HasClearSecret(const TActionSource& source) {
  return std::ranges::any_of(source.Element->Children, [&source](const TProjectElement& child) {
    const auto* property = source.Node->FindProperty(child.Name);
    return property != nullptr && IsClearSecret(*property);
  });
}

bool HasChanged(const TActionSource& source, const TKxPublishedProperty& property) {
  const auto was = source.Baseline.find(&property);
  if (was == source.Baseline.end()) return false;
  const std::u16string now = TextOf(*source.Node, property);
  return now != was->second && KeepsReferences(was->second, now);
}

bool HasElement(const TProjectElement& action, const TKxPublishedProperty& property) {
  return std::ranges::any_of(action.Children, [&property](const TProjectElement& child) {
    return text::EqualsIgnoreCase(child.Name, property.Name);
  });
}

// Whether anything that would be written has changed: a stored value, or one that the file states.
bool IsChanged(const TActionSource& source) {
  const auto& properties = source.Node->Properties();
  return HasClearSecret(source) || std::ranges::any_of(properties, [&source](const auto* property) {
           return (property->Stored || HasElement(*source.Element, *property)) &&
                  HasChanged(source, *property);
         });
}

std::string LineEndOf(std::string_view bytes) {
  const std::size_t feed = bytes.find('\n');
  return feed != npos && feed > 0 && bytes[feed - 1] == '\r' ? "\r\n" : "\n";
}

bool IsBlank(std::string_view text) {
  return text.find_first_not_of(" \t\r") == npos;
}

} // namespace

TActionSource::TActionSource(const TActionNode& node, const TProjectElement& element)
    : Node(&node), Element(&element) {
  for (const auto* property : node.Properties())
    if (IsCompared(*property)) Baseline.emplace(property, TextOf(node, *property));
}

TActionWriter::TActionWriter(std::string_view bytes, TTextEdits& edits)
    : bytes_(bytes), edits_(edits), lineEnd_(LineEndOf(bytes)),
      step_(bytes.find("\n\t") != npos ? "\t" : "  ") {}

std::string TActionWriter::Escaped(std::u16string_view text) const {
  // Quotation marks need no escape in the text of an element; a bare CR would be read as a line end.
  std::u16string escaped = text::ReplaceAll(XmlEscape(text), u"&quot;", u"\"");
  escaped = text::ReplaceAll(escaped, u"\r\n", u"\n");
  escaped = text::ReplaceAll(escaped, u"\r", u"&#13;");
  return text::ToUtf8(text::ReplaceAll(escaped, u"\n", text::FromAscii(lineEnd_)));
}

std::string TActionWriter::ListLines(const text::TStringList& list, const std::string& indent) const {
  std::string lines;
  for (const auto& line : list)
    lines += lineEnd_ + indent + step_ + "<Line>" + Escaped(line) + "</Line>";
  return lines.empty() ? lines : lines + lineEnd_ + indent;
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
    content = Escaped(PropertyToText(property, value));
  }
  if (content.empty()) return "<" + name + "/>";
  return "<" + name + attribute + ">" + content + "</" + name + ">";
}

std::string TActionWriter::Action(const TActionNode& node, const std::string& indent) const {
  const auto attribute = [](std::string_view name, std::u16string_view value) {
    return " " + std::string(name) + "=\"" + text::ToUtf8(XmlEscape(value)) + "\"";
  };
  std::string text = "<Action" + attribute("Type", node.Type().Identifier);
  if (!node.Name().empty()) text += attribute("Name", node.Name());
  if (node.ContinueOnError()) text += attribute("ContinueOnError", u"true");
  text += ">";
  const std::string inner = indent + step_;
  for (const auto* property : node.Properties())
    if (property->Stored) text += lineEnd_ + inner + Property(node, *property, inner);
  std::vector<const TActionNode*> children;
  for (const auto& child : node.Children())
    children.push_back(child.get());
  if (!children.empty()) text += lineEnd_ + inner + Actions(children, inner);
  return text + lineEnd_ + indent + "</Action>";
}

std::string TActionWriter::Actions(const std::vector<const TActionNode*>& nodes,
                                   const std::string& indent) const {
  std::string text = "<Actions>";
  for (const auto* node : nodes)
    text += lineEnd_ + indent + step_ + Action(*node, indent + step_);
  return text + lineEnd_ + indent + "</Actions>";
}

// The blanks in front of an element that begins its line; nothing for one that does not.
std::string TActionWriter::IndentOf(const TProjectElement& element) const {
  const std::string_view before = bytes_.substr(0, element.Whole.Begin);
  const std::string_view line = before.substr(before.rfind('\n') + 1);
  return IsBlank(line) ? std::string(line) : std::string();
}

std::string TActionWriter::ChildIndent(const TProjectElement& parent) const {
  const std::string own = IndentOf(parent);
  const std::string first = parent.Children.empty() ? std::string() : IndentOf(parent.Children.front());
  return first.size() > own.size() ? first : own + step_;
}

void TActionWriter::Remove(const TProjectElement& element) {
  TByteSpan span = element.Whole;
  const std::string_view before = bytes_.substr(0, span.Begin);
  const std::size_t lineBreak = before.rfind('\n');
  const std::string_view behind = bytes_.substr(span.End, bytes_.find('\n', span.End) - span.End);
  if (lineBreak != npos && IsBlank(before.substr(lineBreak + 1)) && IsBlank(behind))
    span.Begin = lineBreak - (lineBreak > 0 && bytes_[lineBreak - 1] == '\r' ? 1 : 0);
  edits_.Replace(span, {});
}

// A comment behind an element, on its line, belongs to it.
std::size_t TActionWriter::EndOfLineBehind(const TProjectElement& element) const {
  const std::size_t at = element.Whole.End;
  std::string_view rest = bytes_.substr(at, bytes_.find('\n', at) - at);
  while (!rest.empty() && IsBlank(rest.substr(rest.size() - 1)))
    rest.remove_suffix(1);
  const std::size_t comment = rest.find_first_not_of(" \t");
  const bool isComment =
      comment != npos && rest.substr(comment).starts_with("<!--") && rest.find("-->") == rest.size() - 3;
  return at + (isComment ? rest.size() : 0);
}

void TActionWriter::InsertInto(const TProjectElement& parent, const TProjectElement* last,
                               const std::vector<std::string>& elements) {
  if (elements.empty()) return;
  std::string text;
  for (const auto& element : elements)
    text += lineEnd_ + ChildIndent(parent) + element;
  const std::string closing = lineEnd_ + IndentOf(parent);
  if (parent.IsSelfClosing) {
    const std::size_t slash = bytes_.find_last_not_of(" \t\r\n", parent.Whole.End - 3) + 1;
    const std::string tag = "</" + text::ToUtf8(parent.Name) + ">";
    edits_.Replace({slash, parent.Whole.End}, ">" + text + closing + tag);
    return;
  }
  const std::size_t at = last == nullptr ? parent.Content.Begin : EndOfLineBehind(*last);
  const std::string_view behind = bytes_.substr(at);
  const std::size_t next = behind.find_first_not_of(" \t\r");
  const bool lineGoesOn = next == npos || behind[next] != '\n';
  edits_.Insert(at, lineGoesOn ? text + closing : text);
}

void TActionWriter::Append(const TProjectElement& parent, const std::vector<const TActionNode*>& added) {
  if (added.empty()) return;
  const TProjectElement* list = ActionsOf(parent);
  if (list == nullptr) {
    const TProjectElement* last = parent.Children.empty() ? nullptr : &parent.Children.back();
    InsertInto(parent, last, {Actions(added, ChildIndent(parent))});
    return;
  }
  std::vector<std::string> elements;
  elements.reserve(added.size());
  for (const auto* node : added)
    elements.push_back(Action(*node, ChildIndent(*list)));
  InsertInto(*list, list->Children.empty() ? nullptr : &list->Children.back(), elements);
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
    const bool renewed = property.Secret && HasClearSecret(source);
    if (IsClearSecret(property)) {
      Remove(child);
    } else if (renewed || HasChanged(source, property)) {
      edits_.Replace(child.Whole, Property(*source.Node, property, IndentOf(child)));
    }
  }
  if (IsChanged(source))
    for (const auto* property : source.Node->Properties())
      if (property->Stored && !HasElement(action, *property))
        missing.push_back(Property(*source.Node, *property, ChildIndent(action)));
  if (list == nullptr && !added.empty()) missing.push_back(Actions(added, ChildIndent(action)));
  InsertInto(action, last, missing);
  if (list != nullptr) Append(action, added);
}

} // namespace kx
