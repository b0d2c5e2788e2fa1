// A project file whose actions are changed in memory and saved: the first part is the project, then follow
// changes, each a digit with its operands. What was set reads back, the other actions keep their bytes,
// saving again changes nothing.
#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "fuzz/ProjectSupport.h"
#include "program/runner/ProjectFile.h"
#include "program/runner/ProjectXml.h"
#include "tests/runner/TestActions.h"

#include <array>

namespace kx::fuzz {
namespace {

constexpr std::u16string_view Name = u"/p/a.kxproj";

struct TOpen {
  explicit TOpen(std::string_view bytes) { File.LoadBytes(std::string(bytes), Name); }
  TProject Project{QuietHost().Services, QuietHost().Host};
  TProjectFile File{Project};
};

using TNodes = std::vector<std::unique_ptr<TActionNode>>;

// All actions in the order of the file.
void Collect(const TNodes& nodes, std::vector<TActionNode*>& all) {
  for (const auto& node : nodes) {
    all.push_back(node.get());
    Collect(node->Children(), all);
  }
}

void Collect(const TProjectElement& element, std::string_view bytes, std::vector<std::string>& actions) {
  if (element.Name == u"Action")
    actions.emplace_back(bytes.substr(element.Whole.Begin, element.Whole.End - element.Whole.Begin));
  for (const auto& child : element.Children)
    Collect(child, bytes, actions);
}

std::vector<std::string> ActionBytes(std::string_view bytes) {
  std::vector<std::string> actions;
  Collect(ParseProjectXml(bytes, Name), bytes, actions);
  return actions;
}

// What a project file keeps of the actions.
std::u16string Describe(const TProject& project) {
  std::vector<TActionNode*> all;
  Collect(project.Actions(), all);
  std::u16string text;
  for (const auto* node : all) {
    text += node->Type().Identifier + u" " + node->Name() + u"\n";
    for (const auto* property : node->Properties())
      if (property->Stored && !property->ReadOnly)
        text += PropertyToText(*property, property->Get(node->Action())) + u"\n";
  }
  return text;
}

// Whether the action took the value.
bool Set(TOpen& open, TActionNode& node, TInput& input) {
  constexpr std::array<std::u16string_view, 6> names{u"Text",   u"Number", u"Flag",
                                                     u"Colour", u"Lines",  u"Values"};
  const auto name = names[input.Below(names.size())];
  const std::u16string text = StorableText(input.Line());
  if (node.FindProperty(name) == nullptr) return false;
  try {
    node.Set(name, text);
  } catch (const EKxException&) { // no number, no colour
    return false;
  }
  open.File.NoteEdited(node, node.RequireProperty(name));
  return true;
}

void CheckSaved(const TOpen& open, const std::string& saved) {
  TOpen again(saved);
  Require(Describe(again.Project) == Describe(open.Project), "what was saved reads back");
  Require(again.File.Text() == saved, "saving again changes nothing");
}

void Change(std::string_view bytes, TInput& input) {
  TOpen open(bytes);
  std::vector<TActionNode*> nodes;
  Collect(open.Project.Actions(), nodes);
  // A secret in clear text goes when its action is saved.
  const bool holdsSecret = bytes.find("Password") != bytes.npos;
  if (!holdsSecret) Require(open.File.Text() == bytes, "what did not change keeps its bytes");
  if (nodes.empty() || holdsSecret) return;
  const std::size_t changed = input.Below(static_cast<unsigned>(nodes.size()));
  for (int i = 0; i < 8 && !input.IsEmpty(); ++i)
    Set(open, *nodes[changed], input);
  const std::string saved = open.File.Text();
  CheckSaved(open, saved);
  const auto before = ActionBytes(bytes);
  const auto after = ActionBytes(saved);
  for (std::size_t i = 0; i < before.size(); ++i)
    if (before[i].find(before[changed]) == before[i].npos)
      Require(before[i] == after[i], "the other actions keep their bytes");
  open.Project.AddAction(u"STEP", nodes[changed]->Iterator() != nullptr ? nodes[changed] : nullptr);
  CheckSaved(open, open.File.Text());
}

void Check(std::string_view bytes) {
  TInput input(bytes);
  const std::string_view project = input.Part();
  try {
    Change(project, input);
  } catch (const EKxParseError&) {
    Require(!IsProject(project), "what was a project is still one");
  }
}

const TRegistration registration({"project_file", Check});

} // namespace
} // namespace kx::fuzz
