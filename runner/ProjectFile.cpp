#include "runner/ProjectFile.h"

#include "host/Exceptions.h"
#include "platform/Files.h"
#include "runner/ActionWriter.h"
#include "runner/Messages.h"
#include "runner/ProjectReader.h"
#include "runner/ProjectXml.h"
#include "text/WindowsPath.h"

#include <map>
#include <unordered_map>

namespace kx {

using TNodes = std::vector<std::unique_ptr<TActionNode>>;

struct TProjectFile::TState {
  explicit TState(TProject& project) : Project(project) {}

  // Pairs the actions, which stand in the order of their elements, with the elements.
  void Bind(const TNodes& nodes, const TProjectElement& holder) {
    const TProjectElement* list = ActionsOf(holder);
    if (list == nullptr) return;
    for (std::size_t i = 0; i < list->Children.size(); ++i) {
      const auto& defaults = Defaults.try_emplace(&nodes[i]->Type(), *nodes[i]).first->second;
      Places.emplace(nodes[i].get(), Sources.size());
      Sources.emplace_back(*nodes[i], list->Children[i], defaults);
      Bind(nodes[i]->Children(), list->Children[i]);
    }
  }

  void Take(std::string bytes, TProjectElement root) {
    Bytes = std::move(bytes);
    Root = std::move(root);
    Sources.clear();
    Places.clear();
    Bind(Project.Actions(), Root);
  }

  // Those of the actions that no element stands for yet.
  std::vector<const TActionNode*> Added(const TNodes& nodes) const {
    std::vector<const TActionNode*> added;
    for (const auto& node : nodes)
      if (!Places.contains(node.get())) added.push_back(node.get());
    return added;
  }

  TProject& Project;
  std::string Bytes;
  TProjectElement Root;
  std::vector<TActionSource> Sources;
  std::unordered_map<const TActionNode*, std::size_t> Places; // in Sources
  std::map<const TRegisteredAction*, TPropertyTexts> Defaults;
};

TProjectFile::TProjectFile(TProject& project) : state_(std::make_unique<TState>(project)) {}
TProjectFile::~TProjectFile() = default;

void TProjectFile::Load(std::u16string_view fileName) {
  auto bytes = platform::ReadFile(fileName);
  if (!bytes) throw EKxParseError(bytes.Message());
  LoadBytes(*std::move(bytes), fileName);
}

void TProjectFile::LoadBytes(std::string bytes, std::u16string_view fileName) {
  TProject& project = state_->Project;
  TProjectElement root = ParseProjectXml(bytes, fileName);
  project.FileName = text::ExpandPath(fileName, platform::CurrentDirectory());
  ReadProject(root, fileName, project);
  state_->Take(std::move(bytes), std::move(root));
}

void TProjectFile::NoteEdited(const TActionNode& node, const TKxPublishedProperty& property) {
  const auto place = state_->Places.find(&node);
  if (place != state_->Places.end()) state_->Sources[place->second].Edited.insert(&property);
}

std::string TProjectFile::Text() const {
  TTextEdits edits;
  TActionWriter writer(state_->Bytes, edits);
  writer.Append(state_->Root, state_->Added(state_->Project.Actions()));
  for (const auto& source : state_->Sources)
    writer.Update(source, state_->Added(source.Node->Children()));
  return edits.Apply(state_->Bytes);
}

platform::Status TProjectFile::Save() {
  std::string text = Text();
  if (text == state_->Bytes) return platform::Done{};
  const std::u16string& file = state_->Project.FileName;
  const auto present = platform::ReadFile(file);
  if (present && *present != state_->Bytes)
    return platform::Failure{u"The project " + file +
                             u" has been edited since it was read; what the run changed is not saved."};
  auto written = platform::SaveFile(file, text);
  if (!written) return written;
  TProjectElement root = ParseProjectXml(text, file);
  state_->Take(std::move(text), std::move(root));
  return written;
}

} // namespace kx
