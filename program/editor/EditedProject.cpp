#include "program/editor/EditedProject.h"

#include "contract/TablePage.h"
#include "foundation/platform/Files.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"

#include <algorithm>

namespace kx::editor {

namespace {

using TNodes = std::vector<std::unique_ptr<TActionNode>>;

constexpr std::string_view EmptyProject =
    "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<BuildProject>\n  <Actions>\n"
    "  </Actions>\n</BuildProject>\n";
constexpr std::size_t MostSteps = 500;
constexpr std::size_t MostBytesOfSteps = std::size_t{4} << 20; // but for the last step, which is always kept

std::map<const TKxPublishedProperty*, std::u16string> StoredTexts(const TActionNode& node) {
  std::map<const TKxPublishedProperty*, std::u16string> texts;
  for (const auto* property : node.Properties())
    if (property->Stored && !property->ReadOnly)
      texts.emplace(property, PropertyToText(*property, property->Get(node.Action())));
  return texts;
}

bool HasErrors(const TKxPropertyPage& page) {
  return std::ranges::any_of(page.Fields(), [](const auto& field) { return !field.Error.empty(); });
}

bool AwaitsAccept(const TKxPropertyPage& page, std::u16string_view field) {
  return std::ranges::any_of(page.Field(field).Buttons,
                             [](const auto& button) { return button.Kind == TKxButtonKind::Accept; });
}

bool FindPath(const std::vector<std::unique_ptr<TActionNode>>& nodes, const TActionNode& wanted,
              TActionPath& path) {
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    path.push_back(i);
    if (nodes[i].get() == &wanted || FindPath(nodes[i]->Children(), wanted, path)) return true;
    path.pop_back();
  }
  return false;
}

TActionNode& NodeIn(const TProject& project, const TActionPath& path) {
  const auto* nodes = &project.Actions();
  TActionNode* node = nullptr;
  for (const std::size_t position : path) {
    if (position >= nodes->size()) throw EKxException(u"The project has no such action any more.");
    node = (*nodes)[position].get();
    nodes = &node->Children();
  }
  if (node == nullptr) throw EKxException(u"No action is named.");
  return *node;
}

// As far as they are the same actions.
void CopyValues(const TNodes& to, const TNodes& from, TProjectFile& file) {
  for (std::size_t i = 0; i < std::min(to.size(), from.size()); ++i) {
    if (to[i]->Type().Class != from[i]->Type().Class) return;
    for (const auto* property : to[i]->Properties()) {
      if (!property->Stored || property->ReadOnly) continue;
      const auto value = property->Get(from[i]->Action());
      if (property->Get(to[i]->Action()) == value) continue;
      property->Set(to[i]->Action(), value);
      file.NoteEdited(*to[i], *property);
    }
    CopyValues(to[i]->Children(), from[i]->Children(), file);
  }
}

} // namespace

TEditedProject::TLoaded::TLoaded(const TServiceRegistry& services, TKxEvent& stop,
                                 const TRunSettings& settings)
    : Runner(services, stop, settings), File(Runner.Project()) {}

TEditedProject::TEditedProject(const TServiceRegistry& services, TRunSettings settings,
                               std::u16string fileName)
    : services_(services), settings_(std::move(settings)), fileName_(std::move(fileName)) {
  if (platform::FileExists(fileName_)) {
    auto bytes = platform::ReadFile(fileName_);
    if (!bytes) throw EKxParseError(bytes.Message());
    disk_ = *std::move(bytes);
    saved_ = *disk_;
  }
  Show(disk_.value_or(std::string(EmptyProject)));
  if (!disk_) saved_ = text_; // nobody misses a project that nobody has begun
}

TEditedProject::TEditedProject(const TEditedProject& other, TKxEvent& stop)
    : services_(other.services_), settings_(other.settings_), fileName_(other.fileName_), stop_(stop) {
  Show(other.text_);
}

std::unique_ptr<TEditedProject> TEditedProject::Copy(TKxEvent& stop) const {
  return std::unique_ptr<TEditedProject>(new TEditedProject(*this, stop));
}

std::unique_ptr<TEditedProject::TLoaded> TEditedProject::Load(std::string text) const {
  auto loaded = std::make_unique<TLoaded>(services_, stop_, settings_);
  loaded->File.LoadBytes(std::move(text), fileName_);
  return loaded;
}

void TEditedProject::Show(std::string text) {
  auto loaded = Load(std::move(text));
  pages_.clear();
  pending_.reset();
  loaded_ = std::move(loaded);
  text_ = loaded_->File.Text();
  ++generation_;
}

TActionNode& TEditedProject::NodeAt(const TActionPath& path) const {
  return NodeIn(Project(), path);
}

TActionPath TEditedProject::PathOf(const TActionNode& node) const {
  TActionPath path;
  FindPath(Project().Actions(), node, path);
  return path;
}

TPages TEditedProject::MakePages(const TKxActionClass& actionClass, TCustomKxAction& action) const {
  TPages pages;
  for (const auto& registered : services_.Pages())
    if (registered.Class == &actionClass)
      for (const auto* page : registered.Pages)
        pages.push_back(page->Create());
  pages.push_back(std::make_unique<TKxTablePage>(u"All Properties"));
  for (const auto& page : pages) {
    page->InitFrame();
    page->InitPage(action);
    page->ReadActionData();
  }
  return pages;
}

TPages& TEditedProject::PagesOf(TActionNode& node) {
  const auto found = pages_.find(&node);
  if (found != pages_.end()) return found->second;
  return pages_.emplace(&node, MakePages(*node.Type().Class, node.Action())).first->second;
}

TPages TEditedProject::PagesOfNew(const TActionNode& node) const {
  const auto action = node.Type().Class->Create();
  action->Attach(loaded_->Runner); // what a page shows may be computed with its help
  return MakePages(*node.Type().Class, *action);
}

void TEditedProject::ReadAgain(TActionNode& node) {
  for (const auto& page : PagesOf(node))
    page->ReadActionData();
}

// Each step leads on from the one behind it: without this one the earlier ones lead nowhere.
void TEditedProject::Remember(const std::string& before, std::u16string_view what) {
  redo_.clear();
  try {
    const bool goesOn = !what.empty() && what == lastEdit_;
    auto step = TTextChange::Between(text_, goesOn ? undo_.back().AppliedTo(before) : before);
    if (goesOn) undo_.pop_back();
    undo_.push_back(std::move(step));
    lastEdit_ = what;
  } catch (...) {
    undo_.clear();
    lastEdit_.clear();
    throw;
  }
  ForgetOldSteps();
}

void TEditedProject::ForgetOldSteps() {
  std::size_t bytes = 0;
  std::size_t kept = 0;
  for (auto step = undo_.rbegin(); step != undo_.rend() && kept < MostSteps; ++step, ++kept) {
    bytes += step->Text.size();
    if (kept > 0 && bytes > MostBytesOfSteps) break;
  }
  undo_.erase(undo_.begin(), undo_.end() - static_cast<std::ptrdiff_t>(kept));
}

void TEditedProject::EditPage(TActionNode& node, std::size_t page, std::u16string_view field,
                              const std::function<void(TKxPropertyPage&)>& change) {
  TPages& pages = PagesOf(node);
  if (page >= pages.size()) throw EKxException(u"The action has no such page.");
  if (pending_ && (pending_->Node != &node || pending_->Page != page)) Accept();
  change(*pages[page]);
  if (AwaitsAccept(*pages[page], field) && !pages[page]->Field(field).Value.empty()) {
    pending_ = TPending{&node, page};
    return;
  }
  std::u16string what = text::FromInteger(static_cast<std::int64_t>(page)) + u" " + std::u16string(field);
  for (const std::size_t position : PathOf(node))
    what += u"/" + text::FromInteger(static_cast<std::int64_t>(position));
  Write(node, page, what);
}

void TEditedProject::Write(TActionNode& node, std::size_t page, std::u16string_view what) {
  TPages& pages = PagesOf(node);
  if (HasErrors(*pages[page])) return;
  const auto before = StoredTexts(node);
  pages[page]->WriteActionData();
  for (const auto& [property, text] : StoredTexts(node))
    if (before.at(property) != text) loaded_->File.NoteEdited(node, *property);
  std::string now = loaded_->File.Text();
  if (now == text_) return;
  Remember(std::exchange(text_, std::move(now)), what);
  for (std::size_t other = 0; other < pages.size(); ++other)
    if (other != page && !HasErrors(*pages[other])) pages[other]->ReadActionData();
}

void TEditedProject::Accept() {
  if (!pending_) return;
  const TPending pending = *std::exchange(pending_, std::nullopt);
  Write(*pending.Node, pending.Page, {});
}

void TEditedProject::EditText(const std::function<void(TProjectText&)>& edit) {
  Accept();
  TProjectText text(text_);
  edit(text);
  if (text.Bytes() != text_) Replace(text.Bytes());
}

void TEditedProject::Replace(std::string text) {
  std::string before = text_;
  Show(std::move(text));
  Remember(before, {});
}

TActionNode& TEditedProject::AddAction(std::u16string_view type, const TRowPath& at) {
  Accept();
  if (at.empty()) throw EKxException(u"There is no such place for an action.");
  // The writer appends what was added to the loop or the project; from there it goes to its place.
  const TProjectText before(text_);
  const TRowPath holder(at.begin(), at.end() - 1);
  const auto parent = holder.empty() ? std::nullopt : before.ActionAt(holder);
  const auto made = Load(text_);
  const TProject& project = made->Runner.Project();
  made->Runner.Project().AddAction(type, parent ? &NodeIn(project, *parent) : nullptr);
  TRowPath last = parent ? holder : TRowPath();
  last.push_back(before.RowsIn(last));
  TRowPath place = at;
  place.back() = std::min(place.back(), before.RowsIn(holder));
  TProjectText text(made->File.Text());
  text.MoveRow(last, place);
  Replace(text.Bytes());
  return NodeAt(*text.ActionAt(place));
}

void TEditedProject::SetProperty(TActionNode& node, std::u16string_view property, std::u16string_view text) {
  Accept();
  node.Set(property, text);
  loaded_->File.NoteEdited(node, node.RequireProperty(property));
  std::string now = loaded_->File.Text();
  if (now == text_) return;
  Remember(std::exchange(text_, std::move(now)), {});
  ReadAgain(node);
}

void TEditedProject::Undo() {
  if (pending_) { // the text that awaits its button is the last thing that was done
    pages_.erase(pending_->Node);
    pending_.reset();
    return;
  }
  Step(undo_, redo_);
}

void TEditedProject::Redo() {
  Step(redo_, undo_);
}

void TEditedProject::Step(std::deque<TTextChange>& from, std::deque<TTextChange>& to) {
  if (from.empty()) return;
  std::string text = from.back().AppliedTo(text_);
  to.push_back(from.back().ReversedFor(text_));
  try {
    Show(std::move(text));
  } catch (...) {
    to.pop_back();
    throw;
  }
  from.pop_back();
  lastEdit_.clear();
}

bool TEditedProject::TSaving::Write(std::string& present) const {
  const auto lock = LockForSaving(FileName, {.Longest = std::chrono::milliseconds(900)});
  if (!lock) throw EKxException(lock.Message());
  if (How == ESave::Safely && platform::FileExists(FileName)) {
    auto bytes = platform::ReadFile(FileName);
    if (!bytes) throw EKxException(bytes.Message());
    present = *std::move(bytes);
    if (present != Disk && present != Text) return false;
  }
  const auto written = platform::SaveFile(FileName, Text);
  if (!written) throw EKxException(written.Message());
  return true;
}

// Not when the text has other values in these places either.
bool TEditedProject::TakeCounted(const std::string& present) {
  if (!disk_) return false;
  try {
    const auto before = Load(*disk_), now = Load(present);
    CopyValues(before->Runner.Project().Actions(), now->Runner.Project().Actions(), before->File);
    if (before->File.Text() != present) return false;
    Replace(before->File.TextWithChanges(text_));
    disk_ = present;
    return true;
  } catch (const EKxException&) {
    return false;
  }
}

TEditedProject::TSaving TEditedProject::BeginSave(ESave how) {
  Accept();
  return {.FileName = fileName_, .Text = text_, .How = how, .Disk = disk_};
}

void TEditedProject::EndSave(const TSaving& saving) {
  disk_ = saving.Text;
  saved_ = saving.Text;
  lastEdit_.clear();
}

void TEditedProject::Reload(std::string present) {
  std::string before = text_;
  Show(present);
  disk_ = std::move(present);
  saved_ = *disk_;
  Remember(before, {});
}

} // namespace kx::editor
