#include "editor/EditorSession.h"

#include "editor/FileChooser.h"
#include "editor/HostOptionsPage.h"
#include "editor/ProjectPaths.h"
#include "editor/UnsavedCopies.h"
#include "host/Exceptions.h"
#include "platform/Files.h"
#include "text/Encoding.h"
#include "text/Text.h"
#include "text/WindowsPath.h"

#include <algorithm>
#include <array>

namespace kx::editor {

namespace {

constexpr std::string_view OptionsId = "options";

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

} // namespace

TEditorSession::TEditorSession(TServiceRegistry& services, TEditorDesign& design,
                               const TSessionSettings& settings)
    : services_(services), design_(design), project_(services, settings.Run, settings.FileName),
      runs_(services, settings.Run) {
  design_.VariableNames = [this] { return VariableNames(project_.Project()); };
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

TJson TEditorSession::Handle(std::string_view operation, const TJson& arguments) {
  const std::lock_guard lock(mutex_);
  if (!arguments.is_object()) throw EKxException(u"A request is an object.");
  const TOperation function = FindOperation(operation);
  TakeRunResult();
  RequireEditable(operation, arguments);
  TJson answer = (this->*function)(arguments);
  answer.update(Brief());
  return answer;
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
  return {{"generation", project_.Generation()},
          {"dirty", project_.IsDirty()},
          {"hasFile", project_.HasFile()},
          {"canUndo", project_.CanUndo()},
          {"canRedo", project_.CanRedo()},
          {"running", runs_.IsRunning()},
          {"messages", messages}};
}

void TEditorSession::TakeRunResult() {
  auto text = runs_.IsRunning() ? std::nullopt : runs_.TakeResult();
  if (!text) return;
  project_.Replace(*std::move(text));
  if (!wasCleanAtStart_) return;
  try {
    if (SaveProject(TEditedProject::ESave::Safely)) return;
    design_.Messages.emplace_back(u"The run has counted up numbers of the project, which are not saved: the "
                                  u"file has been edited by somebody else.");
  } catch (const EKxException& error) {
    design_.Messages.push_back(u"The run has counted up numbers of the project, which are not saved. " +
                               error.Message());
  }
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
    TKxPropertyPage& page = OptionsPage(IndexOf(arguments, "page"));
    change(page);
    if (std::ranges::any_of(page.Fields(), [](const auto& field) { return !field.Error.empty(); })) return;
    page.WriteActionData();
    const auto saved = services_.SaveOptions();
    if (!saved) throw EKxException(saved.Message());
    return;
  }
  project_.EditPage(project_.NodeAt(PathOf(arguments)), IndexOf(arguments, "page"),
                    TextOf(arguments, "field"), change);
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
  return OffersJson(PageOf(arguments).Offers(TextOf(arguments, "field"), &project_.SearchStop()));
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
  return {{"saved", SaveProject(how)}};
}

// Copies that were taken over are in the project now.
bool TEditorSession::SaveProject(TEditedProject::ESave how) {
  if (!project_.Save(how)) return false;
  for (const auto& file : std::exchange(takenCopies_, {}))
    static_cast<void>(platform::RemoveFile(file));
  return true;
}

TJson TEditorSession::UnsavedJson() const {
  TJson files = TJson::array();
  for (const auto& file : FindUnsavedCopies(project_.FileName()))
    if (!takenCopies_.contains(file)) files.push_back(text::ToUtf8(file));
  return files;
}

TJson TEditorSession::Unsaved(const TJson& arguments) {
  const std::u16string file = TextOf(arguments, "file");
  const auto known = FindUnsavedCopies(project_.FileName());
  if (std::ranges::find(known, file) == known.end()) throw EKxException(u"That file is not there any more.");
  if (Flag(arguments, "take")) {
    auto bytes = platform::ReadFile(file);
    if (!bytes) throw EKxException(bytes.Message());
    project_.Accept();
    project_.Replace(*std::move(bytes));
    takenCopies_.insert(file);
  } else if (const auto removed = platform::RemoveFile(file); !removed) {
    throw EKxException(removed.Message());
  }
  return State(arguments);
}

TJson TEditorSession::Reload(const TJson& arguments) {
  project_.Reload();
  return State(arguments);
}

TJson TEditorSession::Validate(const TJson& /*arguments*/) {
  return {{"entries", ValidationJson(project_.Runner().Validate(), project_)}};
}

TJson TEditorSession::List(const TJson& arguments) {
  const auto folder = ListChooserFolder(TextOf(arguments, "path"), project_.Project().Directory(),
                                        OptionalText(arguments, "patterns").value_or(u""));
  const auto names = [](const std::vector<std::u16string>& list) {
    TJson texts = TJson::array();
    for (const auto& name : list)
      texts.push_back(text::ToUtf8(name));
    return texts;
  };
  return {{"path", text::ToUtf8(folder.Path)},  {"parent", text::ToUtf8(folder.Parent)},
          {"isThere", folder.IsThere},          {"folders", names(folder.Folders)},
          {"files", names(folder.Files)},       {"separator", text::IsPosixPath(folder.Path) ? "/" : "\\"},
          {"error", text::ToUtf8(folder.Error)}};
}

TJson TEditorSession::Run(const TJson& arguments) {
  if (runs_.IsRunning()) throw EKxException(u"The project is running already.");
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
  constexpr int around = 8;
  const auto location = runs_.LocationOf(IndexOf(arguments, "event"));
  if (!location) throw EKxException(u"The message names no place.");
  const auto bytes = platform::ReadFile(location->File);
  if (!bytes) throw EKxException(bytes.Message());
  const std::u16string content = text::IsValidUtf8(*bytes)
                                     ? text::FromUtf8(*bytes)
                                     : text::FromSingleByte(*bytes, text::SingleBytePage::Windows1252);
  const auto lines = text::SplitLines(content);
  TJson shown = TJson::array();
  const int first = std::max(1, location->Line - around);
  const int last = std::min(static_cast<int>(lines.size()), location->Line + around);
  for (int number = first; number <= last; ++number)
    shown.push_back(text::ToUtf8(text::VisibleControls(lines[static_cast<std::size_t>(number - 1)])));
  return {
      {"file", text::ToUtf8(location->File)}, {"line", location->Line}, {"first", first}, {"lines", shown}};
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
  TakeRunResult();
  return project_.IsDirty();
}

void TEditorSession::EndRun() {
  project_.EndSearches();
  runs_.End();
}

std::u16string TEditorSession::KeepUnsaved() {
  const std::lock_guard lock(mutex_);
  TakeRunResult();
  project_.Accept();
  if (!project_.IsDirty() || discarded_) return {};
  std::u16string file = KeepUnsavedCopy(project_.FileName(), project_.Text());
  for (const auto& taken : takenCopies_) // the new copy holds what they held
    static_cast<void>(platform::RemoveFile(taken));
  return file;
}

} // namespace kx::editor
