#include "program/editor/EditorSession.h"

#include "foundation/platform/Files.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "program/editor/FileChooser.h"
#include "program/editor/HostOptionsPage.h"
#include "program/editor/ProjectPaths.h"
#include "program/editor/SourceLines.h"
#include "program/editor/UnsavedCopies.h"

#include <algorithm>
#include <array>

namespace kx::editor {

namespace {

constexpr std::string_view OptionsId = "options";
constexpr auto ShortWait = std::chrono::milliseconds(300); // in which a person notices nothing
constexpr auto LongestSave = std::chrono::seconds(3);      // that the end of the program waits for

std::u16string TextOf(const TJson& arguments, const char* name) {
  const auto found = arguments.find(name);
  if (found == arguments.end() || !found->is_string())
    throw EKxException(u"The request has no text \"" + text::FromAscii(name) + u"\".");
  return text::FromUtf8(found->get_ref<const std::string&>());
}

std::optional<std::u16string> OptionalText(const TJson& arguments, const char* name) {
  const auto found = arguments.find(name);
  return found == arguments.end() || found->is_null() ? std::nullopt : std::optional(TextOf(arguments, name));
}

bool Flag(const TJson& arguments, const char* name) {
  const auto found = arguments.find(name);
  return found != arguments.end() && found->is_boolean() && found->get<bool>();
}

std::size_t IndexOf(const TJson& arguments, const char* name) {
  const auto found = arguments.find(name);
  if (found == arguments.end() || !found->is_number_integer() || *found < 0)
    throw EKxException(u"The request has no number \"" + text::FromAscii(name) + u"\".");
  return found->get<std::size_t>();
}

TActionPath PathOf(const TJson& arguments, const char* name = "id") {
  return ParsePath(text::ToUtf8(TextOf(arguments, name)));
}

// As the project file says it; empty for what need not be said.
const char* ContinueOnErrorText(TOnFailure onFailure) {
  switch (onFailure) {
  case TOnFailure::Continue:
    return "true";
  case TOnFailure::Ignore:
    return "ignore";
  case TOnFailure::Stop:
    break;
  }
  return "";
}

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

// What a page shows but could not write, because a field beside it has an error.
void ShowUnwritten(const TKxPropertyPage& shown, TKxPropertyPage& page) {
  for (const auto& field : shown.Fields()) {
    if (field.Name.empty() || !field.Enabled || !field.Error.empty() || field.Kind == TKxFieldKind::Secret)
      continue;
    const TKxPageField& own = page.Field(field.Name);
    if (own.Enabled && own.Value != field.Value) page.SetValue(field.Name, field.Value);
  }
}

} // namespace

TEditorSession::TEditorSession(TServiceRegistry& services, TEditorDesign& design,
                               const TSessionSettings& settings)
    : services_(services), design_(design), project_(services, settings.Run, settings.FileName),
      runs_(services, settings.Run) {
  design_.VariableNames = [this] { return VariableNames(project_.Project()); };
  LookForCopies();
}

TEditorSession::~TEditorSession() {
  design_.VariableNames = nullptr;
}

TEditorSession::TOperation TEditorSession::FindOperation(std::string_view name) {
  using T = TEditorSession;
  static constexpr std::array<std::pair<std::string_view, TOperation>, 26> operations{{
      {"state", &T::State},
      {"ping", &T::Ping},
      {"action", &T::Action},                     // {id}: its pages, as they are now
      {"set", &T::Set},                           // {id, page, field, value}
      {"click", &T::Click},                       // {id, page, field, button, choice}
      {"offers", &T::Offers},                     // {id, page, field}
      {"attribute", &T::Attribute},               // {id, name, value}: Name, ContinueOnError, LoopVariable
      {"add", &T::Add},                           // {type, to}
      {"move", &T::Move},                         // {id, to}
      {"copy", &T::Copy},                         // {id, to}
      {"remove", &T::Remove},                     // {id}
      {"variable", &T::Variable},                 // {name, value}; null removes
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
      {"source", &T::Source},   // {event}
      {"unsaved", &T::Unsaved}, // {file, take}: takes over what was kept, else removes it
      {"quit", &T::Quit},       // {discard}
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
  aside_ = nullptr;
  TJson answer = (this->*function)(arguments);
  if (const auto work = std::exchange(aside_, nullptr)) {
    lock.unlock();
    answer.update(DoAside(work, stop));
    lock.lock();
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
  static constexpr std::array<std::string_view, 8> reading{"state", "ping", "list",   "stop",
                                                           "runs",  "run",  "source", "quit"};
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
  return {{"name", text::ToUtf8(project.Name)},
          {"file", text::ToUtf8(project_.FileName())},
          {"tree", TreeJson(project)},
          {"types", ActionTypesJson(services_)},
          {"variables", VariablesJson(project)},
          {"propertySets", PropertySetsJson(TProjectText(project_.Text()))},
          {"unsaved", UnsavedJson()}};
}

TJson TEditorSession::Ping(const TJson& /*arguments*/) {
  return TJson::object();
}

TJson TEditorSession::Action(const TJson& arguments) {
  project_.Accept();
  if (TextOf(arguments, "id") != text::FromAscii(OptionsId)) {
    TActionNode& node = project_.NodeAt(PathOf(arguments));
    project_.ReadAgain(node);
  }
  return PagesJson(arguments);
}

// Those of the packages and, behind them, the host's own.
TPages& TEditorSession::OptionsPages() {
  if (!optionsPages_.empty()) return optionsPages_;
  for (const auto& row : services_.Options()) {
    if (row.Page == nullptr) continue;
    auto& page = optionsPages_.emplace_back(row.Page->Create());
    page->InitFrame();
    page->InitPage(*row.Object);
  }
  optionsPages_.push_back(std::make_unique<THostOptionsPage>(services_));
  optionsPages_.back()->InitFrame();
  for (const auto& page : optionsPages_)
    page->ReadActionData();
  return optionsPages_;
}

TKxPropertyPage& TEditorSession::OptionsPage(std::size_t index) {
  auto& pages = OptionsPages();
  if (index >= pages.size()) throw EKxException(u"There is no such page of options.");
  return *pages[index];
}

TKxPropertyPage& TEditorSession::PageOf(const TJson& arguments) {
  const std::size_t index = IndexOf(arguments, "page");
  if (TextOf(arguments, "id") == text::FromAscii(OptionsId)) return OptionsPage(index);
  auto& pages = project_.PagesOf(project_.NodeAt(PathOf(arguments)));
  if (index >= pages.size()) throw EKxException(u"The action has no such page.");
  return *pages[index];
}

TJson TEditorSession::PagesJson(const TJson& arguments) {
  TJson pages = TJson::array();
  if (TextOf(arguments, "id") == text::FromAscii(OptionsId)) {
    for (const auto& page : OptionsPages())
      pages.push_back(PageJson(*page));
    return {{"id", OptionsId}, {"pages", pages}};
  }
  TActionNode& node = project_.NodeAt(PathOf(arguments));
  for (const auto& page : project_.PagesOf(node))
    pages.push_back(PageJson(*page));
  TellApart(pages);
  TJson answer = {{"id", PathText(project_.PathOf(node))},
                  {"name", text::ToUtf8(node.Name())},
                  {"typeName", text::ToUtf8(node.Action().GetActionName())},
                  {"continueOnError", ContinueOnErrorText(node.OnFailure())},
                  {"pages", pages}};
  // The pages of a loop say which variable it sets; the form of a table without pages cannot.
  if (node.Iterator() != nullptr && pages.size() == 1)
    answer["loopVariable"] = text::ToUtf8(node.Iterator()->GetLoopVariable());
  return answer;
}

void TEditorSession::EditPage(const TJson& arguments, const std::function<void(TKxPropertyPage&)>& change) {
  if (TextOf(arguments, "id") == text::FromAscii(OptionsId)) {
    EditOptions(OptionsPage(IndexOf(arguments, "page")), change);
    return;
  }
  project_.EditPage(project_.NodeAt(PathOf(arguments)), IndexOf(arguments, "page"),
                    TextOf(arguments, "field"), change);
}

// Nobody reads an option while it changes. Who only looks for something is sent away: the page asks again.
void TEditorSession::EditOptions(TKxPropertyPage& page, const std::function<void(TKxPropertyPage&)>& change) {
  StopAsides();
  auto alone = std::make_shared<std::unique_lock<std::shared_timed_mutex>>(optionsMutex_, ShortWait);
  if (!alone->owns_lock())
    throw EKxException(
        u"Something is still being looked for, or options are being saved. Nothing was changed; "
        u"try it again in a moment.");
  change(page);
  if (std::ranges::any_of(page.Fields(), [](const auto& field) { return !field.Error.empty(); })) return;
  page.WriteActionData();
  aside_ = [this, alone] {
    const auto saved = services_.SaveOptions();
    if (!saved) throw EKxException(saved.Message());
    return TJson::object();
  };
}

TJson TEditorSession::Set(const TJson& arguments) {
  const std::u16string name = TextOf(arguments, "field");
  const std::u16string value = TextOf(arguments, "value");
  EditPage(arguments, [&](TKxPropertyPage& page) {
    if (page.Field(name).TakesNewItems && !value.empty() && !IsVariableName(value))
      throw EKxException(u"\"" + value +
                         u"\" cannot be the name of a variable: letters, digits, \"_\" and \".\" can.");
    page.SetValue(name, value);
  });
  return PagesJson(arguments);
}

// What the chooser gave, as the page shall see it: a full path, or a text that only a run turns into one.
std::u16string TEditorSession::FullChoice(std::u16string_view choice) const {
  if (!text::IsAbsolutePath(choice) && HasReferences(choice)) return std::u16string(choice);
  return text::ExpandPath(choice, project_.Project().Directory());
}

TJson TEditorSession::Click(const TJson& arguments) {
  const TKxButtonKind button = ParseButton(text::ToUtf8(TextOf(arguments, "button")));
  const std::u16string name = TextOf(arguments, "field");
  const auto choice = OptionalText(arguments, "choice");
  const bool isProjects = TextOf(arguments, "id") != text::FromAscii(OptionsId);
  EditPage(arguments, [&](TKxPropertyPage& page) {
    design_.Choice = choice ? std::optional(FullChoice(*choice)) : std::nullopt;
    page.Click(name, button);
    const TKxPageField& field = page.Field(name);
    if (choice && isProjects && text::IsAbsolutePath(field.Value))
      page.SetValue(name,
                    PathForProject(field.Value, project_.Project().Directory(), field.IsSeenFromProject));
  });
  design_.Choice.reset();
  return PagesJson(arguments);
}

TJson TEditorSession::Offers(const TJson& arguments) {
  const std::u16string field = TextOf(arguments, "field");
  const TKxPropertyPage& shown = PageOf(arguments);
  if (TextOf(arguments, "id") == text::FromAscii(OptionsId)) return OffersJson({});
  std::shared_ptr<TEditedProject> copy = project_.Copy(*stop_);
  TKxPropertyPage& page = *copy->PagesOf(copy->NodeAt(PathOf(arguments)))[IndexOf(arguments, "page")];
  ShowUnwritten(shown, page);
  aside_ = [this, copy, &page, field, stop = stop_] {
    const std::shared_lock reading(optionsMutex_);
    return OffersJson(page.Offers(field, stop));
  };
  return TJson::object();
}

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

TJson TEditorSession::Save(const TJson& arguments) {
  const auto how =
      Flag(arguments, "overwrite") ? TEditedProject::ESave::Overwrite : TEditedProject::ESave::Safely;
  aside_ = [this, saving = BeginSave(how)] { return TJson{{"saved", Save(saving)}}; };
  return TJson::object();
}

TEditedProject::TSaving TEditorSession::BeginSave(TEditedProject::ESave how) {
  if (isSaving_) throw EKxException(u"The project is being saved already.");
  auto saving = project_.BeginSave(how);
  isSaving_ = true;
  return saving;
}

// Without the lock. Copies that were taken over are in the project then.
bool TEditorSession::Save(TEditedProject::TSaving saving) {
  bool written = false;
  std::set<std::u16string> superfluous;
  const auto end = [&] {
    const std::lock_guard lock(mutex_);
    isSaving_ = false;
    if (written) {
      project_.EndSave(saving);
      superfluous.swap(takenCopies_);
      std::erase_if(copies_, [&](const auto& file) { return superfluous.contains(file); });
    }
    saved_.notify_all();
  };
  try {
    std::string present;
    written = saving.Write(present);
    if (!written && TakeCounted(present, saving)) written = saving.Write(present);
  } catch (...) {
    end();
    throw;
  }
  end();
  for (const auto& file : superfluous)
    static_cast<void>(platform::RemoveFile(file));
  return written;
}

bool TEditorSession::TakeCounted(const std::string& present, TEditedProject::TSaving& saving) {
  const std::lock_guard lock(mutex_);
  if (!project_.TakeCounted(present)) return false;
  saving = project_.BeginSave(saving.How);
  return true;
}

void TEditorSession::LookForCopies() {
  copies_ = FindUnsavedCopies(project_.FileName());
}

TJson TEditorSession::UnsavedJson() const {
  TJson files = TJson::array();
  for (const auto& file : copies_)
    if (!takenCopies_.contains(file)) files.push_back(text::ToUtf8(file));
  return files;
}

TJson TEditorSession::Unsaved(const TJson& arguments) {
  const std::u16string file = TextOf(arguments, "file");
  if (std::ranges::find(copies_, file) == copies_.end())
    throw EKxException(u"That file is not there any more.");
  if (Flag(arguments, "take")) {
    aside_ = [this, file] {
      auto bytes = platform::ReadFile(file);
      if (!bytes) throw EKxException(bytes.Message());
      const auto lock = LockForEditing();
      project_.Accept();
      project_.Replace(*std::move(bytes));
      takenCopies_.insert(file);
      return State({});
    };
  } else {
    aside_ = [this, file] {
      const auto removed = platform::RemoveFile(file);
      if (!removed) throw EKxException(removed.Message());
      const auto lock = LockForEditing();
      std::erase(copies_, file);
      return State({});
    };
  }
  return TJson::object();
}

TJson TEditorSession::Reload(const TJson& /*arguments*/) {
  aside_ = [this, file = project_.FileName()] {
    auto present = platform::ReadFile(file);
    if (!present) throw EKxException(present.Message());
    const auto lock = LockForEditing();
    project_.Reload(*std::move(present));
    return State({});
  };
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

// Some lines around a problem of the log. The page names an event, never a file.
TJson TEditorSession::Source(const TJson& arguments) {
  aside_ = [this, event = IndexOf(arguments, "event"), stop = stop_] {
    const auto location = runs_.LocationOf(event);
    if (!location) throw EKxException(u"The message names no place.");
    return SourceJson(ReadSourceLines(location->File, location->Line, *stop));
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

std::u16string TEditorSession::KeepUnsaved() {
  std::unique_lock lock(mutex_);
  // A save that hangs keeps nobody from trying once more, under another name.
  saved_.wait_for(lock, LongestSave, [this] { return !isSaving_; });
  TakeRunResult(lock);
  project_.Accept();
  if (!project_.IsDirty() || discarded_) return {};
  if (!keptFile_.empty() && keptText_ == project_.Text()) return keptFile_;
  keptFile_ = KeepUnsavedCopy(project_.FileName(), project_.Text());
  keptText_ = project_.Text();
  for (const auto& taken : takenCopies_) // the new copy holds what they held
    static_cast<void>(platform::RemoveFile(taken));
  takenCopies_ = {keptFile_};
  return keptFile_;
}

} // namespace kx::editor
