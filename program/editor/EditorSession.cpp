#include "program/editor/EditorSession.h"

#include "foundation/platform/Files.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "program/editor/FileChooser.h"
#include "program/editor/SessionArguments.h"
#include "program/editor/SourceLines.h"
#include "program/runner/FileLink.h"

#include <algorithm>
#include <array>

namespace kx::editor {

namespace {

void CollectLoopVariables(const std::vector<std::unique_ptr<TActionNode>>& nodes, text::TStringList& names) {
  for (const auto& node : nodes) {
    if (node->Iterator() == nullptr) continue;
    const std::u16string& name = node->Iterator()->GetLoopVariable();
    if (!name.empty() && !names.IndexOf(name)) names.Add(name);
    CollectLoopVariables(node->Children(), names);
  }
}

// Those of the project, and those that its loops set without being there.
text::TStringList VariableNames(const TProject& project) {
  text::TStringList names;
  for (const auto& variable : project.Variables)
    names.Add(variable.Name);
  CollectLoopVariables(project.Actions(), names);
  return names;
}

} // namespace

TEditorSession::TEditorSession(TServiceRegistry& services, TEditorDesign& design,
                               const TSessionSettings& settings)
    : services_(services), design_(design), project_(services, settings.Run, settings.FileName),
      history_(settings.History), runs_(services, settings.Run, settings.History) {
  design_.VariableNames = [this] { return VariableNames(project_.Project()); };
  LookForCopies();
}

TEditorSession::~TEditorSession() {
  design_.VariableNames = nullptr;
}

TEditorSession::TOperation TEditorSession::FindOperation(std::string_view name) {
  using T = TEditorSession;
  static constexpr std::array<std::pair<std::string_view, TOperation>, 31> operations{{
      {"state", &T::State},
      {"ping", &T::Ping},
      {"action", &T::Action},       // {id}: its pages, as they are now
      {"set", &T::Set},             // {id, page, field, value}
      {"click", &T::Click},         // {id, page, field, button, choice}
      {"offers", &T::Offers},       // {id, page, field}
      {"attribute", &T::Attribute}, // {id, name, value}: Name, ContinueOnError, LoopVariable, the terms
      {"add", &T::Add},             // {type, to}, the path of a row
      {"move", &T::Move},           // {id, to}
      {"copy", &T::Copy},           // {id, to}
      {"remove", &T::Remove},       // {id}
      {"group", &T::Group},         // {id, name}: puts the action into a new group
      {"dissolve", &T::Dissolve},   // {id}, a group
      {"variable", &T::Variable},   // {name, value}; null removes
      {"renameVariable", &T::RenameVariable},     // {name, to}, with all that refers to it
      {"propertySet", &T::PropertySet},           // {name, kind}; null removes
      {"propertySetValue", &T::PropertySetValue}, // {set, name, value}; null removes
      {"undo", &T::Undo},
      {"redo", &T::Redo},
      {"save", &T::Save}, // {overwrite}
      {"reload", &T::Reload},
      {"validate", &T::Validate},
      {"list", &T::List}, // {path, patterns}
      {"run", &T::Run},   // {dryRun}
      {"stop", &T::Stop},
      {"runs", &T::Runs},
      {"history", &T::History},   // {run}: all of that one; without, what there is
      {"source", &T::Source},     // {event} or {finding}
      {"timeline", &T::Timeline}, // of the newest run
      {"unsaved", &T::Unsaved},   // {file, take}: takes over what was kept, else removes it
      {"quit", &T::Quit},         // {discard}
  }};
  const auto found = std::ranges::find(operations, name, &std::pair<std::string_view, TOperation>::first);
  if (found == operations.end()) throw EKxException(u"There is no operation " + text::FromUtf8(name) + u".");
  return found->second;
}

TJson TEditorSession::Handle(std::string_view operation, const TJson& arguments, TKxEvent& stop) {
  std::unique_lock lock(mutex_);
  if (!arguments.is_object()) throw EKxException(u"A request is an object.");
  const TOperation function = FindOperation(operation);
  TakeRunResult(lock);
  RequireEditable(operation, arguments);
  stop_ = &stop;
  aside_ = then_ = nullptr;
  TJson answer = (this->*function)(arguments);
  while (const auto work = std::exchange(aside_, nullptr)) {
    const auto then = std::exchange(then_, nullptr);
    lock.unlock();
    answer.update(DoAside(work, stop));
    lock.lock();
    if (!then) break;
    if (stop.IsRaised()) throw EKxException(u"This was stopped. Nothing was changed.");
    RequireEditable(operation, arguments); // it may be another project meanwhile
    answer.update(then());
  }
  answer.update(Brief());
  return answer;
}

TJson TEditorSession::DoAside(const TWork& work, TKxEvent& stop) {
  const auto change = [&](bool begins) {
    const std::lock_guard lock(asideMutex_);
    if (begins) {
      underWay_.insert(&stop);
      if (isEnding_) stop.Raise();
    } else {
      underWay_.erase(&stop);
    }
  };
  change(true);
  const std::unique_ptr<void, std::function<void(void*)>> end(this, [&](void*) { change(false); });
  return work();
}

// For what comes back from the side: the project may be another one meanwhile.
std::unique_lock<std::mutex> TEditorSession::LockForEditing() {
  std::unique_lock lock(mutex_);
  RequireEditable("", TJson::object());
  return lock;
}

// A running project has its own copy of the actions, but shares the services with those in here. And paths of
// a page that has not seen the last move mean others now.
void TEditorSession::RequireEditable(std::string_view operation, const TJson& arguments) {
  static constexpr std::array<std::string_view, 10> reading{"state", "ping",   "list",    "stop",     "runs",
                                                            "run",   "source", "history", "timeline", "quit"};
  if (std::ranges::find(reading, operation) != reading.end()) return;
  if (runs_.IsRunning())
    throw EKxException(u"The project is running. It can be edited when the run has ended.");
  const auto generation = arguments.find("generation");
  if (generation != arguments.end() && *generation != project_.Generation())
    throw EKxException(
        u"The project has been changed in another window. Nothing was done; here is how it is now.");
}

// What every answer tells.
TJson TEditorSession::Brief() {
  TJson messages = TJson::array();
  for (const auto& message : std::exchange(design_.Messages, {}))
    messages.push_back(text::ToUtf8(message));
  return {{"answer", ++answers_}, // requests may overtake one another
          {"generation", project_.Generation()},
          {"dirty", project_.IsDirty()},
          {"hasFile", project_.HasFile()},
          {"canUndo", project_.CanUndo()},
          {"canRedo", project_.CanRedo()},
          {"running", runs_.IsRunning()},
          {"messages", messages}};
}

void TEditorSession::TakeRunResult(std::unique_lock<std::mutex>& lock) {
  auto text = runs_.IsRunning() ? std::nullopt : runs_.TakeResult();
  if (!text) return;
  project_.Replace(*std::move(text));
  if (!wasCleanAtStart_) return;
  std::u16string problem = u"The run has counted up numbers of the project, which are not saved";
  try {
    const auto saving = BeginSave(TEditedProject::ESave::Safely);
    lock.unlock();
    const bool saved = Save(saving);
    lock.lock();
    if (saved) return;
    problem += u": the file has been edited by somebody else.";
  } catch (const EKxException& error) {
    if (!lock.owns_lock()) lock.lock();
    problem += u". " + error.Message();
  }
  design_.Messages.push_back(problem);
}

TJson TEditorSession::State(const TJson& /*arguments*/) {
  const TProject& project = project_.Project();
  const TProjectText text(project_.Text());
  return {{"name", text::ToUtf8(project.Name)},
          {"file", text::ToUtf8(project_.FileName())},
          {"tree", TreeJson(project, text)},
          {"types", ActionTypesJson(services_)},
          {"variables", VariablesJson(project)},
          {"propertySets", PropertySetsJson(text)},
          {"unsaved", UnsavedJson()}};
}

TJson TEditorSession::Ping(const TJson& /*arguments*/) {
  return TJson::object();
}

TJson TEditorSession::Validate(const TJson& /*arguments*/) {
  aside_ = [this, copy = std::shared_ptr(project_.Copy(*stop_)), generation = project_.Generation(),
            stop = stop_] {
    const auto found = [&] {
      const std::shared_lock reading(optionsMutex_);
      return copy->Runner().Validate();
    }();
    const std::lock_guard lock(mutex_);
    // Of what is not there any more nothing is said: who changed it asks again.
    if (stop->IsRaised() || generation != project_.Generation()) return TJson{{"isOutdated", true}};
    return TJson{{"entries", ValidationJson(found, *copy, project_)}};
  };
  return TJson::object();
}

TJson TEditorSession::List(const TJson& arguments) {
  aside_ = [path = TextOf(arguments, "path"), base = std::u16string(project_.Project().Directory()),
            patterns = OptionalText(arguments, "patterns").value_or(u"")] {
    return FolderJson(ListChooserFolder(path, base, patterns));
  };
  return TJson::object();
}

TJson TEditorSession::Run(const TJson& arguments) {
  if (runs_.IsRunning()) throw EKxException(u"The project is running already.");
  // A run reads the options without asking.
  if (!std::shared_lock(optionsMutex_, ShortWait)) throw EKxException(u"The options are being saved.");
  project_.Accept();
  wasCleanAtStart_ = !project_.IsDirty();
  runs_.Start(project_.Text(), project_.FileName(), project_.Stored(), Flag(arguments, "dryRun"));
  return TJson::object();
}

TJson TEditorSession::Stop(const TJson& /*arguments*/) {
  runs_.Stop();
  return TJson::object();
}

TJson TEditorSession::Runs(const TJson& /*arguments*/) {
  return {{"runs", runs_.Summaries()}};
}

// As markup, empty where there is none: it is drawn as in a report.
TJson TEditorSession::Timeline(const TJson& /*arguments*/) {
  return {{"markup", runs_.Timeline()}};
}

// To the place in the user's own editor; empty: none is set, or what somebody wrote into the options is no
// link.
std::string TEditorSession::LinkTo(const TEditorRuns::TLocation& location) {
  const auto link = [this] {
    const std::shared_lock reading(optionsMutex_);
    return services_.Store().Get(OpenFileOption()).value_or(u"");
  }();
  try {
    const auto file = platform::ResolveExisting(location.File).value_or(location.File);
    return link.empty() ? std::string() : FileLink(text::Trim(link), file, location.Line, location.Column);
  } catch (const EKxException&) {
    return {};
  }
}

// Some lines around a problem. The page names an event or the place of a finding, never a file.
TJson TEditorSession::Source(const TJson& arguments) {
  const bool isFinding = arguments.contains("finding");
  aside_ = [this, isFinding, index = IndexOf(arguments, isFinding ? "finding" : "event"), stop = stop_] {
    const auto location = isFinding ? runs_.LocationOfFinding(index) : runs_.LocationOf(index);
    if (!location) throw EKxException(u"The message names no place.");
    TJson source = SourceJson(ReadSourceLines(location->File, location->Line, *stop));
    source["open"] = LinkTo(*location);
    return source;
  };
  return TJson::object();
}

TJson TEditorSession::Quit(const TJson& arguments) {
  if (runs_.IsRunning()) throw EKxException(u"The project is running. Stop the run first.");
  project_.Accept();
  ended_ = !project_.IsDirty() || Flag(arguments, "discard");
  if (ended_ && project_.IsDirty()) discarded_ = true;
  return {{"ended", ended_.load()}};
}

std::string_view TEditorSession::Image(std::u16string_view type) const {
  return services_.FindImage(type);
}

bool TEditorSession::IsDirty() {
  const std::lock_guard lock(mutex_);
  return project_.IsDirty() || runs_.HasResult();
}

void TEditorSession::StopAsides() {
  const std::lock_guard lock(asideMutex_);
  for (auto* stop : underWay_)
    stop->Raise();
}

void TEditorSession::End(std::chrono::milliseconds wait) {
  {
    const std::lock_guard lock(asideMutex_);
    isEnding_ = true;
  }
  StopAsides();
  runs_.End(wait);
}

} // namespace kx::editor
