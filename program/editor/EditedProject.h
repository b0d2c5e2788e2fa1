// The project under the editor's hands: its text, the actions that the text makes, and the pages that edit
// them.
#pragma once

#include "contract/Pages.h"
#include "program/editor/TextChange.h"
#include "program/runner/ProjectFile.h"
#include "program/runner/ProjectText.h"
#include "program/runner/Run.h"

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kx::editor {

using TPages = std::vector<std::unique_ptr<TKxPropertyPage>>;

// The text is what counts: each change makes the text that would be saved, and undoing goes back to an
// earlier one. Actions and pages are made anew when actions come, go or move, and stay while fields are
// edited.
class TEditedProject {
public:
  // Reads the file; one that is missing is an empty project. Raises EKxParseError. `services` outlives it.
  TEditedProject(const TServiceRegistry& services, TRunSettings settings, std::u16string fileName);
  // A second one as the first is now, for what takes its time away from it: nothing of one is seen in the
  // other. `stop` ends what the actions look for in a solution, and outlives it.
  std::unique_ptr<TEditedProject> Copy(TKxEvent& stop) const;

  const std::u16string& FileName() const { return fileName_; }
  TProject& Project() const { return loaded_->Runner.Project(); }
  TProjectRunner& Runner() const { return loaded_->Runner; }
  const std::string& Text() const { return text_; }
  bool IsDirty() const { return text_ != saved_; }
  // What the file held when it was read or written last; nothing: there was no file.
  const std::optional<std::string>& Stored() const { return disk_; }
  bool HasFile() const { return disk_.has_value(); } // False until the first save of a new project
  bool CanUndo() const { return !undo_.empty(); }
  bool CanRedo() const { return !redo_.empty(); }
  // Counts how often the actions were made anew: paths that somebody noted before may mean others now.
  int Generation() const { return generation_; }

  TActionNode& NodeAt(const TActionPath& path) const; // raises EKxException
  TActionPath PathOf(const TActionNode& node) const;  // which is of the project
  // The registered pages of the action and, behind them, a form of all its properties. Read when first asked.
  TPages& PagesOf(TActionNode& node);
  // What these pages show of an action of the same class that nobody has set anything of: they can be read,
  // no more.
  TPages PagesOfNew(const TActionNode& node) const;

  // The user gave the field of a page a value, or clicked (then `change` does it). What follows for the
  // action is written at once; only a text that awaits its accept button stays in its page until Accept. A
  // field with an error keeps its page from being written.
  void EditPage(TActionNode& node, std::size_t page, std::u16string_view field,
                const std::function<void(TKxPropertyPage&)>& change);
  void Accept();
  // The pages of the action show what it holds now.
  void ReadAgain(TActionNode& node);

  void EditText(const std::function<void(TProjectText&)>& edit);
  // Makes an action with its default values at this place; gives it back.
  TActionNode& AddAction(std::u16string_view type, const TRowPath& at);
  void SetProperty(TActionNode& node, std::u16string_view property, std::u16string_view text);
  void Replace(std::string text); // by what a run has changed, or a copy that was kept

  void Undo();
  void Redo();

  // Saving in three steps, since a disk may take its time: what is to be saved, the writing, which touches
  // nothing in here and may happen on any thread, and the note that it is done.
  enum class ESave { Safely, Overwrite };
  struct TSaving {
    std::u16string FileName;
    std::string Text;
    ESave How = ESave::Safely;
    std::optional<std::string> Disk = {}; // as read or written last

    // False, and nothing is written, when the file is not as it was read or saved last; `present` is what it
    // holds then. Raises EKxException.
    bool Write(std::string& present) const;
  };
  TSaving BeginSave(ESave how);
  void EndSave(const TSaving& saving);
  // What a run has counted up in the file since it was read or saved last is taken over, so that saving can
  // be begun anew. False, and nothing has changed, when more than that has been changed in it.
  bool TakeCounted(const std::string& present);
  // Takes what is on the disk now; undoing gives back what was there before.
  void Reload(std::string present);

private:
  TEditedProject(const TEditedProject& other, TKxEvent& stop);
  // Made from one text.
  struct TLoaded {
    TLoaded(const TServiceRegistry& services, TKxEvent& stop, const TRunSettings& settings);
    TProjectRunner Runner; // which runs nothing here
    TProjectFile File;
  };
  std::unique_ptr<TLoaded> Load(std::string text) const;
  TPages MakePages(const TKxActionClass& actionClass, TCustomKxAction& action) const;
  void Show(std::string text); // as the project's present state
  void Remember(const std::string& before, std::u16string_view what);
  void ForgetOldSteps();
  void Step(std::deque<TTextChange>& from, std::deque<TTextChange>& to);
  void Write(TActionNode& node, std::size_t page, std::u16string_view what);

  const TServiceRegistry& services_;
  TRunSettings settings_;
  std::u16string fileName_;
  TKxEvent ownStop_; // never raised: nothing takes its time where the user edits
  TKxEvent& stop_ = ownStop_;
  std::optional<std::string> disk_; // as read or written last; nothing: there was no file
  std::string saved_;
  std::string text_;
  std::unique_ptr<TLoaded> loaded_;
  std::map<const TActionNode*, TPages> pages_; // which go before the actions that they edit
  std::deque<TTextChange> undo_;               // the last one leads from the present text to the one before
  std::deque<TTextChange> redo_;
  std::u16string lastEdit_; // several edits of one field are undone together
  struct TPending {
    TActionNode* Node;
    std::size_t Page;
  };
  std::optional<TPending> pending_; // a text that awaits its accept button
  int generation_ = 0;
};

} // namespace kx::editor
