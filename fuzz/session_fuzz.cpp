// A session of the editor: the first part is the project, then follow lines of an operation and its arguments
// as JSON. An operation is done or refused; what is refused changes nothing, what is done can be undone and
// done again, and the project can be read all the time.
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "fuzz/FuzzTarget.h"
#include "tests/editor/SessionWorld.h"

#include <algorithm>
#include <array>

namespace kx::fuzz {
namespace {

using editor::TEditorSession;
using editor::TJson;

// What of a state undoing gives back.
TJson ProjectOf(TJson state) {
  for (const char* other :
       {"answer", "generation", "canUndo", "canRedo", "messages", "unsaved", "hasFile", "dirty", "id"})
    state.erase(other);
  return state;
}

bool IsOneOf(std::span<const std::string_view> names, std::string_view name) {
  return std::ranges::find(names, name) != names.end();
}

// A project that runs would start whatever programs the input names.
constexpr std::array<std::string_view, 1> NeverAsked{"run"};
// Each of these is one step of undoing.
constexpr std::array<std::string_view, 8> Steps{"attribute", "add",      "move",        "copy",
                                                "remove",    "variable", "propertySet", "propertySetValue"};

TJson Ask(TEditorSession& session, std::string_view operation, const TJson& arguments) {
  TKxEvent stop;
  return session.Handle(operation, arguments, stop);
}

TJson State(TEditorSession& session) {
  return Ask(session, "state", TJson::object());
}

// Back and forth again.
void CheckUndo(TEditorSession& session, const TJson& before) {
  const TJson after = State(session);
  if (ProjectOf(after) == ProjectOf(before)) return;
  Require(ProjectOf(Ask(session, "undo", TJson::object())) == ProjectOf(before),
          "undoing gives back what was");
  Require(ProjectOf(Ask(session, "redo", TJson::object())) == ProjectOf(after), "redoing does it again");
}

void Do(TEditorSession& session, std::string_view operation, const TJson& arguments) {
  if (IsOneOf(NeverAsked, operation)) return;
  const TJson before = State(session);
  bool isDone = false;
  try {
    const TJson answer = Ask(session, operation, arguments);
    Require(!answer.dump(-1, ' ', false, TJson::error_handler_t::replace).empty(), "an answer can be sent");
    isDone = true;
  } catch (const EKxException&) {
  }
  if (!isDone) Require(ProjectOf(State(session)) == ProjectOf(before), "what is refused changes nothing");
  if (isDone && IsOneOf(Steps, operation)) CheckUndo(session, before);
}

void Check(std::string_view bytes) {
  static tests::TSessionWorld world;
  TInput input(bytes);
  world.Folder.Write("p.kxproj", input.Part());
  try {
    const auto session = world.Open();
    for (int i = 0; i < 12 && !input.IsEmpty(); ++i) {
      const std::string_view line = input.Line();
      const std::size_t blank = std::min(line.find(' '), line.size());
      const auto arguments = TJson::parse(line.substr(blank), nullptr, false);
      if (!arguments.is_discarded()) Do(*session, line.substr(0, blank), arguments);
    }
    Ask(*session, "save", {{"overwrite", true}});
    Ask(*session, "reload", TJson::object());
  } catch (const EKxParseError&) { // no project
  }
}

const TRegistration registration({"session", Check});

} // namespace
} // namespace kx::fuzz
