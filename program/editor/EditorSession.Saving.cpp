#include "program/editor/EditorSession.h"

#include "foundation/platform/Files.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "program/editor/SessionArguments.h"
#include "program/editor/UnsavedCopies.h"

#include <algorithm>

namespace kx::editor {

namespace {

constexpr auto LongestSave = std::chrono::seconds(3); // that the end of the program waits for

} // namespace

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

std::u16string TEditorSession::KeepUnsaved() {
  std::unique_lock lock(mutex_);
  // A save that hangs keeps nobody from trying once more, under another name.
  saved_.wait_for(lock, LongestSave, [this] { return !isSaving_; });
  TakeRunResult(lock);
  project_.Accept();
  if (!project_.IsDirty() || discarded_) return {};
  if (!keptFile_.empty() && keptText_ == project_.Text()) return keptFile_;
  std::string text = project_.Text(); // what is kept is known to be, whatever there is no memory for then
  keptFile_ = KeepUnsavedCopy(project_.FileName(), text);
  keptText_ = std::move(text);
  for (const auto& taken : takenCopies_) // the new copy holds what they held
    static_cast<void>(platform::RemoveFile(taken));
  takenCopies_ = {keptFile_};
  return keptFile_;
}

} // namespace kx::editor
