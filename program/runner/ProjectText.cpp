#include "program/runner/ProjectText.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "program/runner/ElementText.h"
#include "program/runner/Messages.h"
#include "program/runner/ProjectReader.h"

#include <algorithm>
#include <array>

namespace kx {

namespace {

constexpr auto npos = std::string_view::npos;

// What the rows of the project, of a loop or of a group stand in; null: there is no list yet.
const TProjectElement* ListOf(const TProjectElement& holder) {
  return IsGroup(holder) ? &holder : ActionsOf(holder);
}

void RequirePlace(const TRowPath& at) {
  if (at.empty()) throw EKxException(u"There is no such place for an action.");
}

bool BeginsWith(std::span<const std::size_t> path, std::span<const std::size_t> start) {
  return path.size() >= start.size() && std::ranges::equal(path.first(start.size()), start);
}

} // namespace

TProjectText::TProjectText(std::string bytes) : bytes_(std::move(bytes)) {
  root_ = ParseProjectXml(bytes_, u"");
}

void TProjectText::RefuseMissing(std::u16string_view kind, std::u16string_view name) {
  throw EKxException(u"The project has no " + std::u16string(kind) + u" " + Quoted(name) + u".");
}

void TProjectText::Apply(const TTextEdits& edits) {
  std::string changed = edits.Apply(bytes_);
  root_ = ParseProjectXml(changed, u"");
  bytes_ = std::move(changed);
}

const TProjectElement& TProjectText::RowAt(std::span<const std::size_t> row) const {
  const TProjectElement* list = row.empty() ? nullptr : ListOf(HolderAt(row.first(row.size() - 1)));
  if (list == nullptr || row.back() >= list->Children.size())
    throw EKxException(u"The project has no such action any more.");
  return list->Children[row.back()];
}

const TProjectElement& TProjectText::HolderAt(std::span<const std::size_t> row) const {
  return row.empty() ? root_ : RowAt(row);
}

std::size_t TProjectText::RowsIn(const TRowPath& row) const {
  const TProjectElement* list = ListOf(HolderAt(row));
  return list == nullptr ? 0 : list->Children.size();
}

TRowPath TProjectText::RowOfAction(const TActionPath& path) const {
  if (path.empty()) return path;
  std::size_t before = 0; // actions, in the rows before
  for (std::size_t i = 0; i < RowsIn({}); ++i) {
    const TProjectElement& row = RowAt(std::array{i});
    const std::size_t actions = IsGroup(row) ? row.Children.size() : 1;
    if (path.front() < before + actions) {
      TRowPath found{i};
      if (IsGroup(row)) found.push_back(path.front() - before);
      found.insert(found.end(), path.begin() + 1, path.end());
      return found;
    }
    before += actions;
  }
  throw EKxException(u"The project has no such action any more.");
}

TRowPath TProjectText::RowOfGroup(std::size_t group) const {
  const auto groups = Groups();
  if (group >= groups.size()) throw EKxException(u"The project has no such group any more.");
  return {groups[group].Row};
}

std::optional<TActionPath> TProjectText::ActionAt(const TRowPath& row) const {
  if (IsGroup(RowAt(row))) return std::nullopt;
  std::size_t before = 0;
  for (std::size_t i = 0; i < row.front(); ++i) {
    const TProjectElement& other = RowAt(std::array{i});
    before += IsGroup(other) ? other.Children.size() : 1;
  }
  const bool isInGroup = IsGroup(RowAt(std::span(row).first(1)));
  TActionPath path{before + (isInGroup ? row[1] : 0)};
  path.insert(path.end(), row.begin() + (isInGroup ? 2 : 1), row.end());
  return path;
}

std::vector<TProjectText::TGroupText> TProjectText::Groups() const {
  std::vector<TGroupText> groups;
  for (std::size_t i = 0; i < RowsIn({}); ++i) {
    const TProjectElement& row = RowAt(std::array{i});
    if (!IsGroup(row)) continue;
    groups.push_back({row.Attribute(u"Name").value_or(u""), row.Attribute(u"Needs"), i, row.Children.size()});
  }
  return groups;
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

void TProjectText::InsertAt(TElementText& layout, TTextEdits& edits, const TRowPath& at,
                            const std::function<std::string(const std::string&)>& text) const {
  const TProjectElement& holder = HolderAt(std::span(at).first(at.size() - 1));
  const TProjectElement* list = ListOf(holder);
  if (list == nullptr) {
    const std::string outer = layout.ChildIndent(holder);
    const TProjectElement* last = holder.Children.empty() ? nullptr : &holder.Children.back();
    layout.InsertInto(holder, last,
                      {"<Actions>" + layout.LineEnd() + outer + layout.Step() + text(outer + layout.Step()) +
                       layout.LineEnd() + outer + "</Actions>"});
    return;
  }
  if (at.back() >= list->Children.size()) {
    const TProjectElement* last = list->Children.empty() ? nullptr : &list->Children.back();
    layout.InsertInto(*list, last, {text(layout.ChildIndent(*list))});
    return;
  }
  const TProjectElement& next = list->Children[at.back()];
  const std::string indent = layout.IndentOf(next);
  if (StandsOnLines(next)) {
    edits.Insert(Lines(next, true).Begin, indent + text(indent) + layout.LineEnd());
  } else {
    edits.Insert(next.Whole.Begin, text(indent));
  }
}

void TProjectText::InsertCopy(TElementText& layout, TTextEdits& edits, const TRowPath& at,
                              const TProjectElement& copied) const {
  const TByteSpan span = StandsOnLines(copied) ? Lines(copied, true) : copied.Whole;
  // The beginning and the end of the line are there.
  InsertAt(layout, edits, at, [&](const std::string& indent) {
    const std::string text = Indented(copied, span, layout.IndentOf(copied).size(), indent);
    return text.substr(text.find('<'), text.find_last_not_of(" \t\r\n") + 1 - text.find('<'));
  });
}

void TProjectText::MoveRow(const TRowPath& from, const TRowPath& to) {
  const TProjectElement& moved = RowAt(from);
  RequirePlace(to);
  if (to.size() > from.size() && BeginsWith(to, from))
    throw EKxException(u"What holds actions cannot be moved into itself.");
  const bool sameList = to.size() == from.size() && BeginsWith(to, std::span(from).first(from.size() - 1));
  if (sameList && (to.back() == from.back() || to.back() == from.back() + 1)) return;
  TTextEdits edits;
  TElementText layout(bytes_, edits);
  InsertCopy(layout, edits, to, moved);
  edits.Replace(StandsOnLines(moved) ? Lines(moved, true) : moved.Whole, {});
  Apply(edits);
}

void TProjectText::CopyRow(const TRowPath& from, const TRowPath& to) {
  const TProjectElement& copied = RowAt(from);
  RequirePlace(to);
  TTextEdits edits;
  TElementText layout(bytes_, edits);
  InsertCopy(layout, edits, to, copied);
  Apply(edits);
}

void TProjectText::RemoveRow(const TRowPath& row) {
  const TProjectElement& removed = RowAt(row);
  TTextEdits edits;
  edits.Replace(StandsOnLines(removed) ? Lines(removed, false) : removed.Whole, {});
  Apply(edits);
}

void TProjectText::SetAttribute(const TRowPath& row, std::u16string_view name,
                                std::optional<std::u16string_view> value) {
  const TProjectElement& element = RowAt(row);
  const auto present = FindAttribute(bytes_, element, text::ToUtf8(name));
  TTextEdits edits;
  const std::string text = value ? AttributeText(name, *value) : std::string();
  if (present) {
    edits.Replace(*present, text);
  } else if (value) {
    // Behind the one that each of them has.
    const auto first = FindAttribute(bytes_, element, IsGroup(element) ? "Name" : "Type");
    edits.Insert(first->End, text);
  }
  Apply(edits);
}

void TProjectText::AddGroup(std::u16string_view name, const TRowPath& at) {
  if (text::Trim(name).empty()) throw EKxException(u"A group has a name.");
  RequirePlace(at);
  TTextEdits edits;
  TElementText layout(bytes_, edits);
  InsertAt(layout, edits, at, [&](const std::string& indent) {
    return "<Group" + AttributeText(u"Name", name) + ">" + layout.LineEnd() + indent + "</Group>";
  });
  Apply(edits);
}

void TProjectText::DissolveGroup(const TRowPath& row) {
  const TProjectElement& group = RowAt(row);
  if (!IsGroup(group)) throw EKxException(u"That is no group.");
  TTextEdits edits;
  TElementText layout(bytes_, edits);
  for (const auto& action : group.Children)
    InsertCopy(layout, edits, row, action);
  edits.Replace(StandsOnLines(group) ? Lines(group, false) : group.Whole, {});
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
  const TProjectElement* present = list.Named(name);
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
  const TProjectElement* set = list == nullptr ? nullptr : list->Named(name);
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
