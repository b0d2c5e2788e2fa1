#include "program/runner/ProjectText.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "program/runner/ElementText.h"
#include "program/runner/Messages.h"
#include "program/runner/ProjectReader.h"

#include <algorithm>

namespace kx {

namespace {

constexpr auto npos = std::string_view::npos;

// From the blanks in front of the attribute to its closing quote; nothing when the tag lacks it.
std::optional<TByteSpan> FindAttribute(std::string_view bytes, const TProjectElement& element,
                                       std::string_view name) {
  std::size_t at = bytes.find_first_of(" \t\r\n/>", element.Whole.Begin);
  for (;;) {
    const std::size_t blanks = at;
    at = bytes.find_first_not_of(" \t\r\n", at);
    if (bytes[at] == '/' || bytes[at] == '>') return std::nullopt;
    const std::size_t end = bytes.find_first_of(" \t\r\n=", at);
    const std::size_t quote = bytes.find_first_of("\"'", end);
    const std::size_t close = bytes.find(bytes[quote], quote + 1) + 1;
    if (bytes.substr(at, end - at) == name) return TByteSpan{blanks, close};
    at = close;
  }
}

const TProjectElement* FindNamed(const TProjectElement& list, std::u16string_view name) {
  const auto found = std::ranges::find_if(list.Children, [&](const TProjectElement& child) {
    return text::EqualsIgnoreCase(child.Attribute(u"Name").value_or(u""), name);
  });
  return found == list.Children.end() ? nullptr : &*found;
}

bool BeginsWith(std::span<const std::size_t> path, std::span<const std::size_t> start) {
  return path.size() >= start.size() && std::ranges::equal(path.first(start.size()), start);
}

[[noreturn]] void RefuseMissing(std::u16string_view kind, std::u16string_view name) {
  throw EKxException(u"The project has no " + std::u16string(kind) + u" " + Quoted(name) + u".");
}

} // namespace

TProjectText::TProjectText(std::string bytes) : bytes_(std::move(bytes)) {
  root_ = ParseProjectXml(bytes_, u"");
}

void TProjectText::Apply(const TTextEdits& edits) {
  std::string changed = edits.Apply(bytes_);
  root_ = ParseProjectXml(changed, u"");
  bytes_ = std::move(changed);
}

const TProjectElement& TProjectText::ActionAt(std::span<const std::size_t> path) const {
  const TProjectElement* list = path.empty() ? nullptr : ListAt(path.first(path.size() - 1));
  if (list == nullptr || path.back() >= list->Children.size())
    throw EKxException(u"The project has no such action any more.");
  return list->Children[path.back()];
}

const TProjectElement& TProjectText::HolderAt(std::span<const std::size_t> path) const {
  return path.empty() ? root_ : ActionAt(path);
}

const TProjectElement* TProjectText::ListAt(std::span<const std::size_t> path) const {
  return ActionsOf(HolderAt(path));
}

// Nothing else stands on the lines of the element, but for a comment behind it.
bool TProjectText::StandsOnLines(const TProjectElement& element) const {
  TTextEdits none;
  const TElementText layout(bytes_, none);
  const std::string_view text = bytes_;
  const std::size_t line = text.rfind('\n', element.Whole.Begin) + 1;
  const std::size_t end = layout.EndOfLineBehind(element);
  const std::size_t feed = text.find('\n', end);
  return line > 0 && feed != npos && IsBlankText(text.substr(line, element.Whole.Begin - line)) &&
         IsBlankText(text.substr(end, feed - end));
}

// The whole lines of such an element, with the lines right above that are one comment.
TByteSpan TProjectText::Lines(const TProjectElement& element, bool withComments) const {
  const std::string_view text = bytes_;
  TByteSpan lines{text.rfind('\n', element.Whole.Begin) + 1, text.find('\n', element.Whole.End) + 1};
  while (withComments && lines.Begin > 1) {
    std::string_view above = text.substr(0, lines.Begin - 1);
    while (!above.empty() && IsBlankText(above.substr(above.size() - 1)))
      above.remove_suffix(1);
    const std::size_t open = above.rfind("<!--");
    // A comment holds no "--", so the last one that opens is the one that ends here.
    if (!above.ends_with("-->") || open == npos) break;
    const std::size_t line = above.rfind('\n', open) + 1;
    if (line == 0 || !IsBlankText(above.substr(line, open - line))) break;
    lines.Begin = line;
  }
  return lines;
}

// Where lines begin with a tag and the blanks before it mean nothing: texts of properties stay as they are.
void TProjectText::CollectLineStarts(const TProjectElement& element, std::vector<std::size_t>& starts) const {
  starts.push_back(element.Whole.Begin);
  for (const auto& child : element.Children)
    CollectLineStarts(child, starts);
  if (!element.Children.empty()) starts.push_back(element.Content.End);
}

std::string TProjectText::Indented(const TProjectElement& element, TByteSpan span, std::size_t from,
                                   const std::string& to) const {
  const std::string_view text = bytes_;
  std::vector<std::size_t> starts;
  CollectLineStarts(element, starts);
  for (std::size_t at = text.find("<!--", span.Begin); at < element.Whole.Begin;
       at = text.find("<!--", at + 1))
    starts.push_back(at);
  TTextEdits edits;
  for (const std::size_t at : starts) {
    const std::size_t line = text.rfind('\n', at) + 1;
    if (line < span.Begin || !IsBlankText(text.substr(line, at - line))) continue;
    edits.Replace({line - span.Begin, std::min(line + from, at) - span.Begin}, to);
  }
  return edits.Apply(text.substr(span.Begin, span.End - span.Begin));
}

void TProjectText::InsertText(TElementText& layout, TTextEdits& edits, const TActionPath& at,
                              const TProjectElement& copied) const {
  const std::span<const std::size_t> holderPath = std::span(at).first(at.size() - 1);
  const TProjectElement& holder = HolderAt(holderPath);
  const TProjectElement* list = ActionsOf(holder);
  const bool lines = StandsOnLines(copied);
  const TByteSpan span = lines ? Lines(copied, true) : copied.Whole;
  const auto indented = [&](const std::string& indent) {
    return Indented(copied, span, layout.IndentOf(copied).size(), indent);
  };
  // InsertInto puts the line's beginning and end around what it is given.
  const auto bare = [&](const std::string& indent) {
    const std::string text = indented(indent);
    return text.substr(text.find('<'), text.find_last_not_of(" \t\r\n") + 1 - text.find('<'));
  };
  if (list == nullptr) {
    const std::string outer = layout.ChildIndent(holder);
    const TProjectElement* last = holder.Children.empty() ? nullptr : &holder.Children.back();
    layout.InsertInto(holder, last,
                      {"<Actions>" + layout.LineEnd() + outer + layout.Step() + bare(outer + layout.Step()) +
                       layout.LineEnd() + outer + "</Actions>"});
    return;
  }
  if (at.back() >= list->Children.size()) {
    const std::string indent = layout.ChildIndent(*list);
    layout.InsertInto(*list, list->Children.empty() ? nullptr : &list->Children.back(), {bare(indent)});
    return;
  }
  const TProjectElement& next = list->Children[at.back()];
  if (StandsOnLines(next)) {
    const std::string indent = layout.IndentOf(next);
    edits.Insert(Lines(next, true).Begin, indent + bare(indent) + layout.LineEnd());
  } else {
    edits.Insert(next.Whole.Begin, bare(layout.IndentOf(next)));
  }
}

void TProjectText::MoveAction(const TActionPath& from, const TActionPath& to) {
  const TProjectElement& moved = ActionAt(from);
  if (to.empty()) throw EKxException(u"There is no such place for an action.");
  if (to.size() > from.size() && BeginsWith(to, from))
    throw EKxException(u"A loop cannot be moved into itself.");
  const bool sameList = to.size() == from.size() && BeginsWith(to, std::span(from).first(from.size() - 1));
  if (sameList && (to.back() == from.back() || to.back() == from.back() + 1)) return;
  TTextEdits edits;
  TElementText layout(bytes_, edits);
  InsertText(layout, edits, to, moved);
  if (StandsOnLines(moved)) {
    edits.Replace(Lines(moved, true), {});
  } else {
    edits.Replace(moved.Whole, {});
  }
  Apply(edits);
}

void TProjectText::CopyAction(const TActionPath& from, const TActionPath& to) {
  const TProjectElement& copied = ActionAt(from);
  if (to.empty()) throw EKxException(u"There is no such place for an action.");
  TTextEdits edits;
  TElementText layout(bytes_, edits);
  InsertText(layout, edits, to, copied);
  Apply(edits);
}

void TProjectText::RemoveAction(const TActionPath& path) {
  const TProjectElement& removed = ActionAt(path);
  TTextEdits edits;
  edits.Replace(StandsOnLines(removed) ? Lines(removed, false) : removed.Whole, {});
  Apply(edits);
}

void TProjectText::SetActionAttribute(const TActionPath& path, std::u16string_view name,
                                      std::optional<std::u16string_view> value) {
  const TProjectElement& action = ActionAt(path);
  const auto present = FindAttribute(bytes_, action, text::ToUtf8(name));
  TTextEdits edits;
  const std::string text = value ? AttributeText(name, *value) : std::string();
  if (present) {
    edits.Replace(*present, text);
  } else if (value) {
    const auto type = FindAttribute(bytes_, action, "Type"); // which every action has
    edits.Insert(type->End, text);
  }
  Apply(edits);
}

// The list of this name in the project; made when it is missing, in front of what follows it by custom.
const TProjectElement& TProjectText::ListNamed(std::u16string_view name) {
  if (const auto* list = root_.Child(name)) return *list;
  TTextEdits edits;
  TElementText layout(bytes_, edits);
  layout.InsertInto(root_, root_.Child(u"Variables"), {"<" + text::ToUtf8(name) + "/>"});
  Apply(edits);
  return *root_.Child(name);
}

void TProjectText::SetNamed(const TProjectElement& list, std::u16string_view element,
                            std::u16string_view name, std::optional<std::u16string_view> value) {
  const TProjectElement* present = FindNamed(list, name);
  TTextEdits edits;
  TElementText layout(bytes_, edits);
  const std::string tag = text::ToUtf8(element);
  if (!value) {
    if (present == nullptr) RefuseMissing(element == u"Variable" ? u"variable" : u"value", name);
    layout.Remove(*present);
  } else if (present == nullptr) {
    layout.InsertInto(
        list, list.Children.empty() ? nullptr : &list.Children.back(),
        {"<" + tag + AttributeText(u"Name", name) + ">" + layout.Escaped(*value) + "</" + tag + ">"});
  } else if (present->IsSelfClosing) {
    const std::size_t slash = bytes_.find_last_not_of(" \t\r\n", present->Whole.End - 3) + 1;
    edits.Replace({slash, present->Whole.End}, ">" + layout.Escaped(*value) + "</" + tag + ">");
  } else {
    edits.Replace(present->Content, layout.Escaped(*value));
  }
  Apply(edits);
}

std::vector<TProjectText::TSetText> TProjectText::PropertySets() const {
  std::vector<TSetText> sets;
  const TProjectElement* list = root_.Child(u"PropertySets");
  if (list == nullptr) return sets;
  for (const auto& element : list->Children) {
    sets.push_back({element.Attribute(u"Name").value_or(u""), element.Attribute(u"Kind").value_or(u""), {}});
    for (const auto& value : element.Children)
      sets.back().Values.push_back({value.Attribute(u"Name").value_or(u""), value.Text});
  }
  return sets;
}

void TProjectText::SetVariable(std::u16string_view name, std::optional<std::u16string_view> value) {
  if (!value && root_.Child(u"Variables") == nullptr) RefuseMissing(u"variable", name);
  SetNamed(ListNamed(u"Variables"), u"Variable", name, value);
}

const TProjectElement& TProjectText::RequireSet(std::u16string_view name) const {
  const TProjectElement* list = root_.Child(u"PropertySets");
  const TProjectElement* set = list == nullptr ? nullptr : FindNamed(*list, name);
  if (set == nullptr) RefuseMissing(u"property set", name);
  return *set;
}

void TProjectText::AddPropertySet(std::u16string_view name, std::u16string_view kind) {
  const TProjectElement& list = ListNamed(u"PropertySets");
  TTextEdits edits;
  TElementText layout(bytes_, edits);
  layout.InsertInto(list, list.Children.empty() ? nullptr : &list.Children.back(),
                    {"<PropertySet" + AttributeText(u"Name", name) + AttributeText(u"Kind", kind) + "/>"});
  Apply(edits);
}

void TProjectText::RemovePropertySet(std::u16string_view name) {
  const TProjectElement& set = RequireSet(name);
  TTextEdits edits;
  TElementText(bytes_, edits).Remove(set);
  Apply(edits);
}

void TProjectText::SetPropertySetValue(std::u16string_view set, std::u16string_view name,
                                       std::optional<std::u16string_view> value) {
  SetNamed(RequireSet(set), u"Value", name, value);
}

} // namespace kx
