#include "program/editor/EditorSession.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "program/editor/ProjectPaths.h"
#include "program/editor/SessionArguments.h"

namespace kx::editor {

TJson TEditorSession::Attribute(const TJson& arguments) {
  const std::u16string name = TextOf(arguments, "name");
  const std::u16string value = TextOf(arguments, "value");
  const TActionPath path = PathOf(arguments);
  TActionNode& node = project_.NodeAt(path);
  if (name == u"LoopVariable") {
    project_.SetProperty(node, name, value);
  } else if (name == u"Name" || name == u"ContinueOnError") {
    project_.EditText([&](TProjectText& text) {
      text.SetActionAttribute(path, name,
                              value.empty() ? std::nullopt : std::optional<std::u16string_view>(value));
    });
  } else {
    throw EKxException(u"An action has no attribute " + name + u".");
  }
  return State(arguments);
}

TJson TEditorSession::Moved(std::string_view id) {
  TJson answer = State({});
  answer["id"] = id;
  return answer;
}

TJson TEditorSession::Add(const TJson& arguments) {
  const TActionNode& made = project_.AddAction(TextOf(arguments, "type"), PathOf(arguments, "to"));
  return Moved(PathText(project_.PathOf(made)));
}

TJson TEditorSession::Move(const TJson& arguments) {
  const TActionPath from = PathOf(arguments);
  TActionPath to = PathOf(arguments, "to");
  project_.EditText([&](TProjectText& text) { text.MoveAction(from, to); });
  // Behind it everything in its old list has moved up by one.
  const std::size_t depth = from.size() - 1;
  const bool sameList = to.size() >= from.size() && std::equal(from.begin(), from.end() - 1, to.begin());
  if (sameList && to[depth] > from[depth]) --to[depth];
  return Moved(PathText(to));
}

TJson TEditorSession::Copy(const TJson& arguments) {
  const TActionPath to = PathOf(arguments, "to");
  project_.EditText([&](TProjectText& text) { text.CopyAction(PathOf(arguments), to); });
  return Moved(PathText(to));
}

TJson TEditorSession::Remove(const TJson& arguments) {
  project_.EditText([&](TProjectText& text) { text.RemoveAction(PathOf(arguments)); });
  return State(arguments);
}

TJson TEditorSession::Variable(const TJson& arguments) {
  const std::u16string name = TextOf(arguments, "name");
  const auto value = OptionalText(arguments, "value");
  project_.EditText([&](TProjectText& text) { text.SetVariable(name, value); });
  return State(arguments);
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
