#include "program/runner/ProjectText.h"
#include "contract/Iterator.h"
#include "foundation/formats/Xml.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "program/runner/ActionTerms.h"
#include "program/runner/ElementText.h"
#include "program/runner/Messages.h"
#include "program/runner/ProjectReader.h"
#include "program/runner/References.h"
#include "program/runner/TextEdits.h"

#include <algorithm>

namespace kx {

namespace {

using TVisit = std::function<void(const TProjectElement&)>;

void ForEachElement(const TProjectElement& element, const TVisit& visit) {
  visit(element);
  for (const auto& child : element.Children)
    ForEachElement(child, visit);
}

bool IsAction(const TProjectElement& element) {
  return element.Name == u"Action";
}

bool IsNamed(const TProjectElement& element, std::u16string_view name) {
  return text::EqualsIgnoreCase(element.Attribute(u"Name").value_or(u""), name);
}

// Between its quotes.
std::optional<TByteSpan> ValueSpan(std::string_view bytes, const TProjectElement& element,
                                   std::string_view name) {
  const auto whole = FindAttribute(bytes, element, name);
  if (!whole) return std::nullopt;
  return TByteSpan{bytes.find(bytes[whole->End - 1], whole->Begin) + 1, whole->End - 1};
}

// Where a text may refer to something: what stands in elements, and the conditions of actions.
std::vector<TByteSpan> TextsOf(std::string_view bytes, const TProjectElement& root) {
  std::vector<TByteSpan> texts;
  ForEachElement(root, [&](const TProjectElement& element) {
    if (element.Children.empty()) texts.push_back(element.Content);
    if (!IsAction(element)) return;
    if (const auto condition = ValueSpan(bytes, element, "Condition")) texts.push_back(*condition);
  });
  return texts;
}

// The places of the name in all references.
std::vector<TByteSpan> References(std::string_view bytes, const TProjectElement& root, TNameKind kind,
                                  std::u16string_view name) {
  std::vector<TByteSpan> places;
  for (const TByteSpan span : TextsOf(bytes, root)) {
    if (bytes.substr(span.Begin, span.End - span.Begin).find_first_of("%$&") == std::string_view::npos)
      continue;
    const auto text = ReadPlacedText(bytes, span);
    for (const std::size_t at : PlacesOfName(text.Text, kind, name))
      places.push_back({text.Places[at].Begin, text.Places[at + name.size() - 1].End});
  }
  return places;
}

// The loops that set this variable.
std::vector<TByteSpan> LoopsSetting(std::string_view bytes, const TProjectElement& root,
                                    std::u16string_view name) {
  std::vector<TByteSpan> places;
  ForEachElement(root, [&](const TProjectElement& element) {
    if (element.Name != u"LoopVariable" || !text::EqualsIgnoreCase(element.Text, name)) return;
    const auto text = ReadPlacedText(bytes, element.Content);
    places.push_back({text.Places.front().Begin, text.Places.back().End});
  });
  return places;
}

// In front of a function only such a name is read as one.
bool CanBeReferredTo(std::u16string_view action) {
  return action.find_first_of(u"(\"%$\r\n") == action.npos;
}

} // namespace

std::size_t TProjectText::RenameVariable(std::u16string_view name, std::u16string_view to) {
  const TProjectElement* list = root_.Child(u"Variables");
  const TProjectElement* variable = list == nullptr ? nullptr : list->Named(name);
  if (variable == nullptr) RefuseMissing(u"variable", name);
  if (!IsVariableName(to))
    throw EKxException(Quoted(to) +
                       u" cannot be the name of a variable: letters, digits, \"_\" and \".\" can.");
  const auto uses = [&](std::u16string_view of) {
    auto places = References(bytes_, root_, TNameKind::Variable, of);
    std::ranges::copy(LoopsSetting(bytes_, root_, of), std::back_inserter(places));
    return places;
  };
  if (!text::EqualsIgnoreCase(name, to) && (list->Named(to) != nullptr || !uses(to).empty()))
    throw EKxException(u"The project uses the name " + Quoted(to) +
                       u" already: what it stands for would be another thing then.");
  const auto places = uses(name);
  TTextEdits edits;
  edits.Replace(*ValueSpan(bytes_, *variable, "Name"), text::ToUtf8(to));
  for (const TByteSpan place : places)
    edits.Replace(place, text::ToUtf8(to));
  Apply(edits);
  return places.size();
}

// What stands in a loop cannot be needed.
bool TProjectText::IsNeedable(std::u16string_view name) const {
  const TProjectElement* list = ActionsOf(root_);
  return list != nullptr && std::ranges::any_of(list->Children, [&](const TProjectElement& row) {
           const auto isNamed = [&](const TProjectElement& one) { return IsNamed(one, name); };
           return isNamed(row) || (IsGroup(row) && std::ranges::any_of(row.Children, isNamed));
         });
}

void TProjectText::RenameNeeds(std::u16string_view was, std::u16string_view name) {
  TTextEdits edits;
  ForEachElement(root_, [&](const TProjectElement& element) {
    const auto needs = IsAction(element) || IsGroup(element) ? element.Attribute(u"Needs") : std::nullopt;
    auto names = ReadNeeds(needs.value_or(u""));
    const auto isMeant = [&](const std::u16string& one) { return text::EqualsIgnoreCase(one, was); };
    if (std::ranges::none_of(names, isMeant)) return;
    std::ranges::replace_if(names, isMeant, std::u16string(name));
    edits.Replace(*FindAttribute(bytes_, element, "Needs"), AttributeText(u"Needs", NeedsText(names)));
  });
  Apply(edits);
}

void TProjectText::RenameReferences(std::u16string_view was, std::u16string_view name) {
  bool isOther = false;
  ForEachElement(root_, [&](const TProjectElement& element) {
    isOther = isOther || (IsAction(element) && IsNamed(element, was));
  });
  if (isOther || !CanBeReferredTo(name)) return;
  TTextEdits edits;
  for (const TByteSpan place : References(bytes_, root_, TNameKind::Action, was))
    edits.Replace(place, text::ToUtf8(XmlEscape(name)));
  Apply(edits);
}

void TProjectText::Rename(const TRowPath& row, std::u16string_view name) {
  const std::u16string was = RowAt(row).Attribute(u"Name").value_or(u"");
  const bool isGroup = IsGroup(RowAt(row));
  if (isGroup && text::Trim(name).empty()) throw EKxException(u"A group has a name.");
  SetAttribute(row, u"Name", name.empty() ? std::nullopt : std::optional(name));
  if (was.empty() || name.empty()) return;
  const bool wasNeedable = isGroup || ActionAt(row)->size() == 1;
  if (wasNeedable && !IsNeedable(was)) RenameNeeds(was, name);
  if (!isGroup) RenameReferences(was, name);
}

} // namespace kx
