#include "program/editor/EditorSession.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "program/editor/ProjectPaths.h"
#include "program/editor/SessionArguments.h"
#include "program/runner/ActionTerms.h"

#include <algorithm>

namespace kx::editor {

namespace {

constexpr std::u16string_view NeedsName = u"Needs";

bool HasAttribute(bool isGroup, std::u16string_view name) {
  if (isGroup) return name == NeedsName;
  return name == u"ContinueOnError" || FindTermAttribute(name) != nullptr;
}

} // namespace

// Of an action or a group.
TJson TEditorSession::Attribute(const TJson& arguments) {
  const std::u16string name = TextOf(arguments, "name");
  const std::u16string value = TextOf(arguments, "value");
  if (name == u"LoopVariable") {
    project_.SetProperty(project_.NodeAt(PathOf(arguments)), name, value);
    return State(arguments);
  }
  EditRow(arguments, [&](TProjectText& text, const TRowPath& row) {
    if (name == u"Name") return text.Rename(row, value);
    if (!HasAttribute(!text.ActionAt(row), name))
      throw EKxException(u"An action has no attribute " + name + u".");
    const bool isNothing = name == NeedsName && text::Trim(value) == NoNeeds;
    text.SetAttribute(row, name,
                      value.empty() ? std::nullopt
                                    : std::optional<std::u16string_view>(isNothing ? u"" : value));
  });
  return State(arguments);
}

void TEditorSession::EditRow(const TJson& arguments,
                             const std::function<void(TProjectText&, const TRowPath&)>& edit) {
  const std::string id = text::ToUtf8(TextOf(arguments, "id"));
  project_.EditText([&](TProjectText& text) { edit(text, RowOfId(text, id)); });
}

// The project, and where in it what was changed stands now.
TJson TEditorSession::Moved(const TRowPath& row) {
  TJson answer = State({});
  answer["id"] = IdOfRow(TProjectText(project_.Text()), row);
  return answer;
}

TJson TEditorSession::Add(const TJson& arguments) {
  const TActionNode& made = project_.AddAction(TextOf(arguments, "type"), PathOf(arguments, "to"));
  TJson answer = State(arguments);
  answer["id"] = PathText(project_.PathOf(made));
  return answer;
}

TJson TEditorSession::Move(const TJson& arguments) {
  TRowPath to = PathOf(arguments, "to");
  EditRow(arguments, [&](TProjectText& text, const TRowPath& from) {
    text.MoveRow(from, to);
    // Behind it everything in its old list has moved up by one.
    const std::size_t depth = from.size() - 1;
    const bool sameList = to.size() >= from.size() && std::equal(from.begin(), from.end() - 1, to.begin());
    if (sameList && to[depth] > from[depth]) --to[depth];
  });
  return Moved(to);
}

TJson TEditorSession::Copy(const TJson& arguments) {
  const TRowPath to = PathOf(arguments, "to");
  EditRow(arguments, [&](TProjectText& text, const TRowPath& row) { text.CopyRow(row, to); });
  return Moved(to);
}

TJson TEditorSession::Remove(const TJson& arguments) {
  EditRow(arguments, [](TProjectText& text, const TRowPath& row) { text.RemoveRow(row); });
  return State(arguments);
}

// A new group around an action.
TJson TEditorSession::Group(const TJson& arguments) {
  const std::u16string name = TextOf(arguments, "name");
  TRowPath group;
  EditRow(arguments, [&](TProjectText& text, const TRowPath& row) {
    if (row.size() > 1 || !text.ActionAt(row))
      throw EKxException(u"A group holds actions that stand in no loop and in no other group.");
    text.AddGroup(name, row);
    text.MoveRow({row.front() + 1}, {row.front(), 0});
    group = row;
  });
  return Moved(group);
}

// The actions stay where they are.
TJson TEditorSession::Dissolve(const TJson& arguments) {
  EditRow(arguments, [](TProjectText& text, const TRowPath& row) { text.DissolveGroup(row); });
  return State(arguments);
}

TJson TEditorSession::Variable(const TJson& arguments) {
  const std::u16string name = TextOf(arguments, "name");
  const auto value = OptionalText(arguments, "value");
  project_.EditText([&](TProjectText& text) { text.SetVariable(name, value); });
  return State(arguments);
}

// "followed" is how many places use it.
TJson TEditorSession::RenameVariable(const TJson& arguments) {
  std::size_t followed = 0;
  project_.EditText([&](TProjectText& text) {
    followed = text.RenameVariable(TextOf(arguments, "name"), TextOf(arguments, "to"));
  });
  TJson answer = State(arguments);
  answer["followed"] = followed;
  return answer;
}

TJson TEditorSession::PropertySet(const TJson& arguments) {
  const std::u16string name = TextOf(arguments, "name");
  const auto kind = OptionalText(arguments, "kind");
  project_.EditText([&](TProjectText& text) {
    if (kind) {
      text.AddPropertySet(name, *kind);
    } else {
      text.RemovePropertySet(name);
    }
  });
  return State(arguments);
}

TJson TEditorSession::PropertySetValue(const TJson& arguments) {
  const std::u16string name = TextOf(arguments, "name");
  if (text::Trim(name).empty()) throw EKxException(u"A value of a property set has a name.");
  const auto value = OptionalText(arguments, "value");
  project_.EditText(
      [&](TProjectText& text) { text.SetPropertySetValue(TextOf(arguments, "set"), name, value); });
  return State(arguments);
}

TJson TEditorSession::Undo(const TJson& arguments) {
  project_.Undo();
  return State(arguments);
}

TJson TEditorSession::Redo(const TJson& arguments) {
  project_.Redo();
  return State(arguments);
}

} // namespace kx::editor
