#include "program/runner/ProjectFile.h"

#include "foundation/platform/Files.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/WindowsPath.h"
#include "program/runner/ActionWriter.h"
#include "program/runner/Messages.h"
#include "program/runner/ProjectMatch.h"
#include "program/runner/ProjectReader.h"
#include "program/runner/ProjectXml.h"

#include <algorithm>
#include <map>
#include <unordered_map>

namespace kx {

using TNodes = std::vector<std::unique_ptr<TActionNode>>;

namespace {

// A text of the project and its elements.
struct TParsedText {
  std::string Bytes;
  TProjectElement Root;
};

TParsedText Parsed(std::string bytes, std::u16string_view fileName) {
  TProjectElement root = ParseProjectXml(bytes, fileName);
  return {std::move(bytes), std::move(root)};
}

// The bytes that state a property of the action; empty when nothing does.
std::string_view Stated(const TParsedText& text, const TProjectElement* action,
                        std::u16string_view property) {
  const TProjectElement* element = action == nullptr ? nullptr : PropertyElement(*action, property);
  if (element == nullptr) return {};
  return std::string_view(text.Bytes).substr(element->Whole.Begin, element->Whole.End - element->Whole.Begin);
}

std::u16string ValueOf(const TActionNode& node, const TKxPublishedProperty& property) {
  return PropertyToText(property, property.Get(node.Action()));
}

} // namespace

struct TProjectFile::TState {
  using TPlaces = std::unordered_map<const TActionNode*, std::size_t>;

  explicit TState(TProject& project) : Project(project) {}

  // Pairs the actions, which stand in the order of their elements, with the elements.
  void Bind(const TNodes& nodes, const TProjectElement& holder, std::vector<TActionSource>& sources,
            TPlaces& places) {
    const auto elements = ActionElementsOf(holder);
    for (std::size_t i = 0; i < elements.size(); ++i) {
      const auto& defaults = Defaults.try_emplace(&nodes[i]->Type(), *nodes[i]).first->second;
      places.emplace(nodes[i].get(), sources.size());
      sources.emplace_back(*nodes[i], *elements[i].Action, defaults);
      Bind(nodes[i]->Children(), *elements[i].Action, sources, places);
    }
  }

  // All of it or nothing, should memory run out: an action without its element would be written a second
  // time.
  void Take(TParsedText text) {
    std::vector<TActionSource> sources;
    TPlaces places;
    Bind(Project.Actions(), text.Root, sources, places);
    Own = std::move(text); // the elements stay where they are
    Sources = std::move(sources);
    Places = std::move(places);
  }

  const TParsedText& Seen() const { return Others ? *Others : Own; }

  // Those of the actions that no element stands for yet.
  std::vector<const TActionNode*> Added(const TNodes& nodes) const {
    std::vector<const TActionNode*> added;
    for (const auto& node : nodes)
      if (!Places.contains(node.get())) added.push_back(node.get());
    return added;
  }

  // As it is compared with what the file holds by now.
  TActionSource Unsaved(const TActionSource& source) const {
    TActionSource unsaved = source;
    const auto saved = Saved.find(source.Node);
    if (saved == Saved.end()) return unsaved;
    for (const auto& [property, value] : saved->second)
      unsaved.Baseline.Put(*property, value);
    return unsaved;
  }

  bool HasChanges() const {
    return !Added(Project.Actions()).empty() || std::ranges::any_of(Sources, [this](const auto& source) {
      return !ChangedProperties(Unsaved(source)).empty() || !Added(source.Node->Children()).empty();
    });
  }

  // The properties of an action that somebody is changing: what others have made of them is known.
  struct TKnown {
    const TActionNode* Node = nullptr;
    std::span<const std::u16string_view> Properties = {};

    bool Holds(const TActionNode* node, std::u16string_view property) const {
      return node == Node && std::ranges::find(Properties, property) != Properties.end();
    }
  };

  std::string OwnText() const;
  std::string TextIn(const TParsedText& other, const TKnown& known) const; // raises EKxException
  bool IsStoredAnew(const TActionSource& source, std::u16string_view property,
                    const TParsedText& present) const;
  void TakeStored(const TActionSource& source, const TKnown& known, const TParsedText& present);
  TParsedText Present() const; // raises EKxException
  platform::Status SaveInto(const TParsedText& present, const TKnown& known);
  platform::Status Change(const TActionSource& source, const TKnown& known,
                          const std::function<void()>& change);

  TProject& Project;
  TParsedText Own; // what the project was read from
  std::vector<TActionSource> Sources;
  TPlaces Places; // in Sources
  std::map<const TRegisteredAction*, TPropertyTexts> Defaults;
  std::optional<TParsedText> Others; // what the file held when it was looked at last, when that is not Own
  // What has been saved into a text that is not Own, so that the sources do not know.
  std::map<const TActionNode*, std::map<const TKxPublishedProperty*, std::u16string>> Saved;
};

TProjectFile::TProjectFile(TProject& project) : state_(std::make_unique<TState>(project)) {}
TProjectFile::~TProjectFile() = default;

void TProjectFile::Load(std::u16string_view fileName) {
  auto bytes = platform::ReadFile(fileName);
  if (!bytes) throw EKxParseError(bytes.Message());
  LoadBytes(*std::move(bytes), fileName);
}

void TProjectFile::LoadBytes(std::string bytes, std::u16string_view fileName,
                             std::optional<std::string> stored) {
  TProject& project = state_->Project;
  TParsedText text = Parsed(std::move(bytes), fileName);
  project.FileName = text::ExpandPath(fileName, platform::CurrentDirectory());
  ReadProject(text.Root, fileName, project);
  state_->Saved.clear();
  state_->Others.reset();
  if (stored && *stored != text.Bytes) state_->Others = Parsed(*std::move(stored), fileName);
  state_->Take(std::move(text));
}

void TProjectFile::NoteEdited(const TActionNode& node, const TKxPublishedProperty& property) {
  const auto place = state_->Places.find(&node);
  if (place != state_->Places.end()) state_->Sources[place->second].Edited.insert(&property);
}

void TProjectFile::KeepAsItStands(const TActionNode& node, const TKxPublishedProperty& property) {
  const auto source = std::ranges::find(state_->Sources, &node, &TActionSource::Node);
  if (source != state_->Sources.end()) source->Untouched.insert(&property);
}

std::string TProjectFile::Text() const {
  return state_->OwnText();
}

std::string TProjectFile::TextWithChanges(std::string_view other) const {
  return state_->TextIn(Parsed(std::string(other), state_->Project.FileName), {});
}

platform::Status TProjectFile::Save(const TSavePatience& patience) {
  if (!state_->HasChanges()) return platform::Done{};
  const auto lock = LockForSaving(state_->Project.FileName, patience);
  if (!lock) return platform::Failure{lock.Message()};
  try {
    return state_->SaveInto(state_->Present(), {});
  } catch (const EKxException& error) {
    return platform::Failure{error.Message()};
  }
}

platform::Status TProjectFile::Change(const TActionNode& node,
                                      std::span<const std::u16string_view> properties,
                                      const std::function<void()>& change, const TSavePatience& patience) {
  const auto source = std::ranges::find(state_->Sources, &node, &TActionSource::Node);
  const bool isStored = source != state_->Sources.end() && platform::FileExists(state_->Project.FileName) &&
                        FindCounterpart(*source->Element, state_->Own.Root, state_->Seen().Root) != nullptr;
  if (!isStored) {
    change();
    return platform::Done{};
  }
  const auto lock = LockForSaving(state_->Project.FileName, patience);
  if (!lock) return platform::Failure{lock.Message()};
  try {
    return state_->Change(*source, {&node, properties}, change);
  } catch (const EKxException& error) {
    return platform::Failure{error.Message()};
  }
}

std::string TProjectFile::TState::OwnText() const {
  TTextEdits edits;
  TActionWriter writer(Own.Bytes, edits);
  writer.Append(Own.Root, Added(Project.Actions()));
  for (const auto& source : Sources)
    writer.Update(source, Added(source.Node->Children()));
  return edits.Apply(Own.Bytes);
}

std::string TProjectFile::TState::TextIn(const TParsedText& other, const TKnown& known) const {
  const auto refuse = [this] {
    return EKxException(u"The project " + Project.FileName +
                        u" has been edited since it was read; what the run changed is not saved.");
  };
  if (!Added(Project.Actions()).empty()) throw refuse();
  TTextEdits edits;
  TActionWriter writer(other.Bytes, edits);
  for (const auto& source : Sources) {
    if (!Added(source.Node->Children()).empty()) throw refuse();
    TActionSource unsaved = Unsaved(source);
    const auto changed = ChangedProperties(unsaved);
    if (changed.empty()) continue;
    unsaved.Element = FindCounterpart(*source.Element, Own.Root, other.Root);
    if (unsaved.Element == nullptr) throw refuse();
    for (const auto* property : changed) {
      const TProjectElement* stated = PropertyElement(*unsaved.Element, property->Name);
      const bool isSaid =
          stated != nullptr && WithHostLineEnds(stated->Text) == ValueOf(*source.Node, *property);
      if (!isSaid && !known.Holds(source.Node, property->Name) && IsStoredAnew(source, property->Name, other))
        throw refuse();
    }
    writer.Update(unsaved, {});
  }
  return edits.Apply(other.Bytes);
}

// Others have given the property another value since the file was looked at last.
bool TProjectFile::TState::IsStoredAnew(const TActionSource& source, std::u16string_view property,
                                        const TParsedText& present) const {
  const auto stated = [&](const TParsedText& text) {
    return Stated(text, FindCounterpart(*source.Element, Own.Root, text.Root), property);
  };
  return stated(present) != stated(Seen());
}

void TProjectFile::TState::TakeStored(const TActionSource& source, const TKnown& known,
                                      const TParsedText& present) {
  const auto* now = FindCounterpart(*source.Element, Own.Root, present.Root);
  const auto* seen = FindCounterpart(*source.Element, Own.Root, Seen().Root);
  if (now == nullptr)
    throw EKxException(u"The action " + source.Node->DisplayName() + u" cannot be found in " +
                       Project.FileName + u" any more, so its numbers cannot be stored.");
  for (const auto name : known.Properties) {
    // A value that was edited and not saved yet is the user's newest.
    const bool isEdited =
        !Saved.contains(source.Node) && Stated(Own, source.Element, name) != Stated(Seen(), seen, name);
    const auto* element = PropertyElement(*now, name);
    if (!isEdited && element != nullptr && IsStoredAnew(source, name, present))
      Project.FindNode(source.Node->Action())->Set(name, element->Text);
  }
}

TParsedText TProjectFile::TState::Present() const {
  if (!platform::FileExists(Project.FileName)) return Seen();
  auto bytes = platform::ReadFile(Project.FileName);
  if (!bytes) throw EKxException(bytes.Message());
  if (*bytes == Seen().Bytes) return Seen();
  return Parsed(*std::move(bytes), Project.FileName);
}

platform::Status TProjectFile::TState::SaveInto(const TParsedText& present, const TKnown& known) {
  const bool isOwn = !Others && present.Bytes == Own.Bytes;
  const std::string text = isOwn ? OwnText() : TextIn(present, known);
  if (text != present.Bytes)
    if (auto written = platform::SaveFile(Project.FileName, text); !written) return written;
  TParsedText now = Parsed(text, Project.FileName);
  if (isOwn) {
    Take(std::move(now));
    return platform::Done{};
  }
  for (const auto& source : Sources)
    for (const auto* property : ChangedProperties(Unsaved(source)))
      Saved[source.Node][property] = ValueOf(*source.Node, *property);
  Others = std::move(now);
  return platform::Done{};
}

platform::Status TProjectFile::TState::Change(const TActionSource& source, const TKnown& known,
                                              const std::function<void()>& change) {
  TActionNode& node = *Project.FindNode(source.Node->Action());
  std::vector<std::u16string> before;
  before.reserve(known.Properties.size());
  for (const auto name : known.Properties)
    before.push_back(ValueOf(node, node.RequireProperty(name)));
  const TParsedText present = Present();
  TakeStored(source, known, present);
  change();
  auto saved = SaveInto(present, known);
  for (std::size_t i = 0; !saved && i < before.size(); ++i)
    node.Set(known.Properties[i], before[i]);
  return saved;
}

} // namespace kx
